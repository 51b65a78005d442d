#include "shell/run_manager.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMdiSubWindow>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>

#include "core/build_profile.h"
#include "core/log.h"
#include "core/platform.h"
#include "core/support.h"
#include "core/ui_services.h"
#include "derived/reference_lap.h"
#include "files/car_files.h"
#include "files/csv_export.h"
#include "files/raw_run_files.h"
#include "road/convert_driver.h"
#include "road/run_road.h"
#include "shell/dialog_rows.h"
#include "store/menu_profile.h"
#include "store/run_procedures.h"
#include "store/run_store.h"

namespace tl::shell {

namespace {

QString Q(const std::string& text) {
    return QString::fromStdString(text);
}

QPushButton* Button(const char* name, const char* caption, const char* tip, int index) {
    auto* button = new QPushButton(QString::fromUtf8(caption));
    button->setObjectName(QString::fromUtf8(name));
    if (tip != nullptr) button->setToolTip(QString::fromUtf8(tip));
    button->setProperty("index", index);
    button->setAutoDefault(false);
    return button;
}

}  // namespace

RunManagerForm::RunManagerForm(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("frmRunManager"));
    setWindowTitle(QStringLiteral("Run Manager"));
    auto* layout = new QVBoxLayout(this);
    auto* scroll = new QScrollArea;
    scroll->setWidgetResizable(true);
    rows_ = new QWidget;
    grid_ = new QGridLayout(rows_);
    grid_->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    grid_->setHorizontalSpacing(4);
    scroll->setWidget(rows_);
    layout->addWidget(scroll, 1);
    auto* bottom = new QHBoxLayout;
    bottom->addStretch();
    QPushButton* close = Button("CloseButton", "Close", "Close the run manager", 0);
    connect(close, &QPushButton::clicked, this, [this] { Frame()->close(); });
    bottom->addWidget(close);
    layout->addLayout(bottom);
    ResetControls();
}

QWidget* RunManagerForm::Frame() {
    if (auto* sub = qobject_cast<QMdiSubWindow*>(parentWidget())) return sub;
    return this;
}

int RunManagerForm::RowsWidth() const {
    return grid_->sizeHint().width();
}

void RunManagerForm::HideManager() {
    Frame()->hide();
}

void RunManagerForm::ShowManager() {
    Frame()->show();
    show();
    Frame()->raise();
}

void RunManagerForm::ResetControls() {
    static const char* const arrays[] = {"RunName",      "CarFileLabel",   "ChangeRunName",
                                         "ReProcessRun", "DeleteRunBtn",   "ChangeCarFile",
                                         "TrimRun",      "ReadRunDetails", "SaveRunButton",
                                         "ExportRun",    "SetAmbient"};
    // The old rows go (the original unloaded each array's elements above 0).
    for (const char* name : arrays) {
        int index = 0;
        for (QWidget* old : rows_->findChildren<QWidget*>(QString::fromUtf8(name))) {
            if (index > 0) LogDebug("Unloading " + std::to_string(index) + ":");
            ++index;
            grid_->removeWidget(old);
            old->hide();
            old->deleteLater();
        }
    }
    if (QWidget* none = rows_->findChild<QWidget*>(QStringLiteral("NoRunsLabel"))) {
        grid_->removeWidget(none);
        none->deleteLater();
    }
    const RunStore& s = Store();
    if (s.RunCount == 0) {
        auto* none = new QLabel(QStringLiteral("There are no runs loaded"));
        none->setObjectName(QStringLiteral("NoRunsLabel"));
        // The first element of RunName carries the text, as in the original.
        auto* name = new QLabel(QStringLiteral("There are no runs loaded"));
        name->setObjectName(QStringLiteral("RunName"));
        name->setProperty("index", 0);
        grid_->addWidget(name, 0, 0, 1, 4);
        none->hide();
        grid_->addWidget(none, 1, 0);
        return;
    }
    for (int32_t run = 1; run <= s.RunCount; ++run) {
        const int i = run - 1;
        auto* name = new QLabel(Q(s.RunInfo[run].Name));
        name->setObjectName(QStringLiteral("RunName"));
        name->setProperty("index", i);
        name->setFrameStyle(QFrame::Panel | QFrame::Sunken);
        name->setMinimumWidth(150);
        auto* car = new QLabel(Q(CarFileLabelText(run)));
        car->setObjectName(QStringLiteral("CarFileLabel"));
        car->setProperty("index", i);
        car->setMinimumWidth(110);
        int col = 0;
        grid_->addWidget(name, i, col++);
        grid_->addWidget(car, i, col++);
        struct ButtonDef {
            const char* name;
            const char* caption;
            const char* tip;
            void (RunManagerForm::*command)(int32_t);
        };
        static const ButtonDef buttons[] = {
            {"ChangeRunName", "Set Run Name", "Change the name of this run",
             &RunManagerForm::ChangeRunName},
            {"ReProcessRun", "Process", "Process the raw run data into real data",
             &RunManagerForm::ReProcessRun},
            {"DeleteRunBtn", "Delete", "Delete the run from memory", &RunManagerForm::DeleteRunBtn},
            {"ChangeCarFile", "Change Vehicle", "Change the options file associated with this run",
             &RunManagerForm::ChangeCarFile},
            {"TrimRun", "Trim", "Trim the data from this run", &RunManagerForm::TrimRun},
            {"ReadRunDetails", "View Details", "View the details of this run",
             &RunManagerForm::ReadRunDetails},
            {"SaveRunButton", "Save Raw", "Save the raw data from this run to disk",
             &RunManagerForm::SaveRunButton},
            {"ExportRun", "Export To .csv",
             "Export the run data to a .CSV file for loading into Excel",
             &RunManagerForm::ExportRun},
            {"SetAmbient", "Set Ambient", nullptr, &RunManagerForm::SetAmbient},
        };
        for (const ButtonDef& def : buttons) {
            QPushButton* button = Button(def.name, def.caption, def.tip, i);
            const auto command = def.command;
            connect(button, &QPushButton::clicked, this,
                    [this, command, run] { (this->*command)(run); });
            grid_->addWidget(button, i, col++);
        }
    }
}

void RunManagerForm::ChangeRunName(int32_t run) {
    RunStore& s = Store();
    if (run < 1 || run > s.RunCount) return;
    const std::optional<std::string> answer = CurrentPlatform().messages->InputBox(
        "Please Enter A Name For " + s.RunInfo[run].Name, "New Run Name", s.RunInfo[run].Name);
    if (!answer) return;
    s.RunInfo[run].Name = *answer;
    CheckInternalDataStillValid();
    ResetControls();
}

void RunManagerForm::ReProcessRun(int32_t run) {
    HideManager();
    ConvertRawToRunData(run);
    ShowManager();
}

void RunManagerForm::DeleteRunBtn(int32_t run) {
    if (YesNoBox("Delete run", "Are you sure you wish to delete this run")) {
        ShowPleaseWait("Deleting Run");
        DeleteRun(run);
        HidePleaseWait();
        ShowManager();
        ResetControls();
        CheckInternalDataStillValid();
    } else {
        ShowManager();
    }
}

void RunManagerForm::ChangeCarFile(int32_t run) {
    RunStore& s = Store();
    if (run < 1 || run > s.RunCount) return;
    if (Profile().HardwareSV63) {
        // frmSelectSv63Car belongs to the meter's options, not built yet: the
        // vehicle number is asked for in an input box, 0 to 3.
        const std::optional<std::string> answer = CurrentPlatform().messages->InputBox(
            "Vehicle number (0 to 3)", "Select Vehicle", s.RunInfo[run].CarFile);
        if (!answer) return;
        const int number = static_cast<int>(GetVal(*answer));
        if (number < 0 || number > 3) return;
        s.RunInfo[run].CarFile = std::to_string(number);
    } else {
        const std::string path = ChooseRunCarFile();
        if (path.empty()) return;
        s.RunInfo[run].CarFile = path;
    }
    ResetControls();
    if (ReprocessQuestion()) ConvertRawToRunData(run);
}

void RunManagerForm::TrimRun(int32_t run) {
    RunStore& s = Store();
    if (run < 1 || run > s.RunCount) return;
    // The original's test let every run through the first branch; the
    // reference run's question stands behind it, unreachable, as it did.
    const bool trimAllowed = run != RefLap().RefRun || true;
    if (trimAllowed) {
        LogDebug("trim run " + std::to_string(run));
        const int32_t rawEnd = s.RunInfo[s.RunCount].RawEnd;
        HideManager();
        TrimRunForm form(run, window());
        form.exec();
        if (s.RunCount >= 1 && s.RunInfo[s.RunCount].RawEnd != rawEnd && ReprocessQuestion()) {
            LogDebug("Reprocess run ");
            ConvertRawToRunData(run);
        }
    } else {
        LogDebug("requested that you trim the reference lap ");
        if (!YesNoBox("Change Reference Lap",
                      "Are You Sure? This run is used to calculate the reference track map, so "
                      "changing it will require that you re-process any runs that the reference "
                      "track map")) {
            LogDebug("changed my mind.. don't trim the reference run!");
        }
    }
    LogDebug("Reset controls");
    ResetControls();
    LogDebug("Check internal data is valid");
    CheckInternalDataStillValid();
    LogDebug("show the run manager");
    ShowManager();
}

void RunManagerForm::ReadRunDetails(int32_t run) {
    RunDetailsForm form(run, window());
    form.exec();
}

void RunManagerForm::SaveRunButton(int32_t run) {
    SaveDataToFile(run);
}

void RunManagerForm::ExportRun(int32_t run) {
    if (Profile().TimeStampExport) {
        ExportDataToFileWithTimeStamp(run);
    } else {
        ExportDataToFile(run);
    }
}

void RunManagerForm::SetAmbient(int32_t run) {
    AmbientConditionsForm form(run, window());
    form.exec();
}

// --- frmRunDetails ---

RunDetailsForm::RunDetailsForm(int32_t run, QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmRunDetails"));
    setWindowTitle(QStringLiteral("Run Details"));
    auto* layout = new QVBoxLayout(this);
    auto* details = new QPlainTextEdit;
    details->setObjectName(QStringLiteral("RunDetailsBox"));
    details->setReadOnly(true);
    auto* user = new QPlainTextEdit;
    user->setObjectName(QStringLiteral("UserRunDetailsBox"));
    const RunStore& s = Store();
    if (run >= 1 && run <= s.RunCount) {
        setWindowTitle(QStringLiteral("Run Details: ") + Q(s.RunInfo[run].Name));
        details->setPlainText(Q(s.RunInfo[run].Details));
        user->setPlainText(Q(s.RunInfo[run].UserDetails));
    }
    layout->addWidget(new QLabel(QStringLiteral("Run details:")));
    layout->addWidget(details, 2);
    layout->addWidget(new QLabel(QStringLiteral("Your comments:")));
    layout->addWidget(user, 1);
    QPushButton* okay = AddOkCancel(this, layout, "Okay", "Cancel");
    connect(okay, &QPushButton::clicked, this, [this, run, user] {
        RunStore& store = Store();
        if (run >= 1 && run <= store.RunCount)
            store.RunInfo[run].UserDetails = user->toPlainText().toStdString();
        accept();
    });
    resize(520, 420);
}

// --- frmSetAmbientConditions ---

AmbientConditionsForm::AmbientConditionsForm(int32_t run, QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmSetAmbientConditions"));
    setWindowTitle(QStringLiteral("Set Ambient Conditions"));
    const AmbientTexts shown = AmbientShownFor(run);
    auto* form = new QFormLayout;
    auto field = [&](const char* name, const char* label, const std::string& text) {
        auto* edit = new QLineEdit(Q(text));
        edit->setObjectName(QString::fromUtf8(name));
        form->addRow(QString::fromUtf8(label), edit);
        return edit;
    };
    QLineEdit* temp = field("AmbientTempTxt", "Ambient Temperature [C]", shown.temperature);
    QLineEdit* rh = field("AmbientRhTxt", "Relative Humidity [%]", shown.humidity);
    QLineEdit* press = field("AmbientPressTxt", "Ambient Pressure [kPa]", shown.pressure);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    QPushButton* ok = AddOkCancel(this, layout, "OkBtn", "CancelBtn");
    connect(ok, &QPushButton::clicked, this, [this, run, temp, rh, press] {
        const std::string refusal = SetAmbientConditions(
            run,
            {temp->text().toStdString(), rh->text().toStdString(), press->text().toStdString()});
        if (!refusal.empty()) {
            Message(refusal);
            return;
        }
        accept();
    });
}

// --- frmTrimRun ---

TrimRunForm::TrimRunForm(int32_t run, QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmTrimRun"));
    const TrimDefaults defaults = TrimRunDefaults(run);
    setWindowTitle(Q(defaults.title));
    auto* form = new QFormLayout;
    auto* start = new QLineEdit(Q(defaults.startTime));
    start->setObjectName(QStringLiteral("StartTime"));
    auto* end = new QLineEdit(Q(defaults.endTime));
    end->setObjectName(QStringLiteral("EndTime"));
    form->addRow(QStringLiteral("Start Time [s]"), start);
    form->addRow(QStringLiteral("End Time [s]"), end);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(
        new QLabel(QStringLiteral("Everything outside this time window is removed from the run.")));
    layout->addLayout(form);
    QPushButton* ok = AddOkCancel(this, layout, "OkBtn", "CancelBtn");
    connect(ok, &QPushButton::clicked, this, [this, run, start, end] {
        const TrimResult result =
            tl::TrimRun(run, start->text().toStdString(), end->text().toStdString());
        switch (result) {
            case TrimResult::EndNotAfterStart:
            case TrimResult::NegativeTime:
            case TrimResult::EndAfterRunEnd:
                return;  // the form stays open for other times
            case TrimResult::Done:
                accept();
                return;
            case TrimResult::NoHardware:
            case TrimResult::NotAvailable:
                reject();
                return;
        }
    });
}

}  // namespace tl::shell
