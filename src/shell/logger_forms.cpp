#include "shell/logger_forms.h"

#include <QApplication>
#include <QButtonGroup>
#include <QCheckBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include <algorithm>

#include "core/build_profile.h"
#include "core/support.h"
#include "core/ui_services.h"
#include "link/serial_link.h"
#include "platform/qt/qt_serial_port.h"
#include "road/convert_driver.h"
#include "road/run_road.h"
#include "shell/dialog_rows.h"

namespace tl::shell {

namespace {

QString Q(const std::string& text) {
    return QString::fromStdString(text);
}

QPushButton* Button(const char* name, const char* caption) {
    auto* button = new QPushButton(QString::fromUtf8(caption));
    button->setObjectName(QString::fromUtf8(name));
    return button;
}

// DownloadingAni and Animation1: a busy bar in place of the clip.
QProgressBar* Animation(const char* name) {
    auto* bar = new QProgressBar;
    bar->setObjectName(QString::fromUtf8(name));
    bar->setRange(0, 0);
    bar->setTextVisible(false);
    bar->setMaximumHeight(12);
    bar->hide();
    return bar;
}

// The converter as the download's callback (its derived pipeline runs).
void ConvertDownloadedRun(int32_t run) {
    ConvertRawToRunData(run);
}

}  // namespace

// --- frmCommSetup -----------------------------------------------------------------

CommSetupForm::CommSetupForm(QWidget* parent)
    : QDialog(parent), list_(new QListWidget), device_(new QLineEdit) {
    setObjectName(QStringLiteral("frmCommSetup"));
    setWindowTitle(QStringLiteral("Open Serial Port"));
    list_->setObjectName(QStringLiteral("SelectPort"));
    device_->setObjectName(QStringLiteral("DevicePathTxt"));
    device_->setPlaceholderText(QStringLiteral("/dev/ttyUSB0"));

    const std::vector<CommPortEntry> ports = DetectSerialPorts();
    portsFound_ = !ports.empty();
    const int stored = StoredCommPort();
    std::vector<std::string> numbered;
    for (int n = 1; n <= kSerialPortCount; ++n) numbered.push_back(SerialPortDevice(n));
    for (const CommPortEntry& port : ports) {
        auto* item = new QListWidgetItem(Q(port.text), list_);
        item->setData(Qt::UserRole, port.number);
        item->setToolTip(Q(port.device));
        if (port.number == stored) list_->setCurrentItem(item);
    }
    // The system's other serial devices (USB adapters past the sixteen), by
    // their paths.
    for (const std::string& device : qt::KnownSerialDevices()) {
        if (std::find(numbered.begin(), numbered.end(), device) != numbered.end()) continue;
        auto* item = new QListWidgetItem(Q(device), list_);
        item->setData(Qt::UserRole, 0);
        item->setData(Qt::UserRole + 1, Q(device));
    }
    if (stored == 0) device_->setText(Q(CommPortDevicePath()));
    connect(list_, &QListWidget::itemDoubleClicked, this, [this] { OpenPort(); });

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(list_);
    auto* typed = new QFormLayout;
    typed->addRow(QStringLiteral("Device:"), device_);
    layout->addLayout(typed);
    auto* row = new QHBoxLayout;
    row->addStretch();
    QPushButton* open = Button("OpenPort", "OK");
    open->setDefault(true);
    QPushButton* cancel = Button("Cancel", "Cancel");
    row->addWidget(open);
    row->addWidget(cancel);
    layout->addLayout(row);
    connect(open, &QPushButton::clicked, this, [this] { OpenPort(); });
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    resize(360, 300);
}

void CommSetupForm::OpenPort() {
    const std::string typed = device_->text().trimmed().toStdString();
    if (!typed.empty()) {
        // A device typed by hand: its number when it is one of the sixteen.
        int number = 0;
        for (int n = 1; n <= kSerialPortCount && number == 0; ++n)
            if (SerialPortDevice(n) == typed) number = n;
        SelectCommPort(number, typed);
    } else if (QListWidgetItem* item = list_->currentItem()) {
        const int number = item->data(Qt::UserRole).toInt();
        SelectCommPort(number, item->data(Qt::UserRole + 1).toString().toStdString());
    } else {
        return;
    }
    accept();
}

void ShowCommSetup(QWidget* parent) {
    CommSetupForm form(parent);
    if (!form.PortsFound()) Message("Cannot find any accessible serial ports!");
    form.exec();
}

// --- frmDownloadControl ---------------------------------------------------------

DownloadControlForm::DownloadControlForm(QWidget* parent)
    : QDialog(parent),
      grid_(new QTableWidget(0, 2)),
      progress_(new QLabel),
      animation_(Animation("DownloadingAni")),
      download_(Button("DownloadBtn", "Download")),
      selectAll_(Button("SelectAllBtn", "Select All")),
      clearAll_(Button("ClearAllBtn", "Clear All")),
      cancel_(Button("CancelBtn", "Cancel")),
      abort_(Button("AbortBtn", "Abort")) {
    setObjectName(QStringLiteral("frmDownloadControl"));
    setWindowTitle(QStringLiteral("Loading run information...."));
    grid_->setObjectName(QStringLiteral("RunListBox"));
    grid_->setHorizontalHeaderLabels({QString(), QStringLiteral("Run")});
    grid_->verticalHeader()->hide();
    grid_->horizontalHeader()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    grid_->horizontalHeader()->setStretchLastSection(true);
    grid_->setSelectionMode(QAbstractItemView::NoSelection);
    grid_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    grid_->setMinimumSize(520, 200);
    progress_->setObjectName(QStringLiteral("DownloadProgressLbl"));
    progress_->setMinimumWidth(520);
    abort_->setEnabled(false);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(grid_);
    layout->addWidget(progress_);
    layout->addWidget(animation_);
    auto* row = new QHBoxLayout;
    row->addWidget(selectAll_);
    row->addWidget(clearAll_);
    row->addStretch();
    row->addWidget(download_);
    row->addWidget(abort_);
    row->addWidget(cancel_);
    layout->addLayout(row);
    download_->setDefault(true);

    connect(selectAll_, &QPushButton::clicked, this, [this] {
        for (ListedRun& run : model_.runs) run.ticked = true;
        FillList();
    });
    connect(clearAll_, &QPushButton::clicked, this, [this] {
        for (ListedRun& run : model_.runs) run.ticked = false;
        FillList();
    });
    connect(grid_, &QTableWidget::itemChanged, this, [this](QTableWidgetItem* item) {
        if (item->column() != 0 || item->row() >= static_cast<int>(model_.runs.size())) return;
        model_.runs[static_cast<size_t>(item->row())].ticked = item->checkState() == Qt::Checked;
    });
    connect(download_, &QPushButton::clicked, this, [this] { Download(); });
    connect(abort_, &QPushButton::clicked, this, [this] { Abort(); });
    connect(cancel_, &QPushButton::clicked, this, &QDialog::reject);

    model_.convertRun = &ConvertDownloadedRun;
    model_.onRefresh = [this] { Refresh(); };
    model_.chooseOption = [this] {
        DownloadOptionForm options(this);
        return options.exec() == QDialog::Accepted ? options.Choice() : DownloadOption::Cancel;
    };
}

void DownloadControlForm::Load() {
    SetBusy(true);
    abort_->setEnabled(false);
    Link().AbortFlag = false;
    LoadDownloadForm(model_);
    SetBusy(false);
    FillList();
    Refresh();
    loaded_ = true;
}

void DownloadControlForm::FillList() {
    const QSignalBlocker block(grid_);
    grid_->setRowCount(static_cast<int>(model_.runs.size()));
    for (int row = 0; row < grid_->rowCount(); ++row) {
        const ListedRun& run = model_.runs[static_cast<size_t>(row)];
        auto* tick = new QTableWidgetItem;
        tick->setFlags(Qt::ItemIsEnabled | Qt::ItemIsUserCheckable);
        tick->setCheckState(run.ticked ? Qt::Checked : Qt::Unchecked);
        grid_->setItem(row, 0, tick);
        auto* line = new QTableWidgetItem(Q(run.line));
        line->setFlags(Qt::ItemIsEnabled);
        grid_->setItem(row, 1, line);
        grid_->setRowHidden(row, run.line.empty());
    }
    grid_->resizeColumnToContents(0);
}

void DownloadControlForm::Refresh() {
    if (Link().AbortFlag && abortClicked_.isValid() && abortLatency_ < 0)
        abortLatency_ = static_cast<double>(abortClicked_.nsecsElapsed()) * 1e-9;
    if (!model_.caption.empty()) setWindowTitle(Q(model_.caption));
    progress_->setText(Q(model_.DownloadProgressLbl));
}

void DownloadControlForm::SetBusy(bool busy) {
    busy_ = busy;
    download_->setEnabled(!busy);
    selectAll_->setEnabled(!busy);
    clearAll_->setEnabled(!busy);
    cancel_->setEnabled(!busy);
    grid_->setEnabled(!busy);
    abort_->setEnabled(busy);
    animation_->setVisible(busy);
}

void DownloadControlForm::Download() {
    if (busy_) return;
    SetBusy(true);
    abortClicked_.invalidate();
    abortLatency_ = -1.0;
    DownloadSelected(model_);
    // The flag is this form's: left raised, it would end the next job's
    // first wait at once.
    Link().AbortFlag = false;
    SetBusy(false);
    Refresh();
    // A run ticked and nothing else wrong: the flow has run, the form goes.
    if (!model_.runs.empty() && std::any_of(model_.runs.begin(), model_.runs.end(),
                                            [](const ListedRun& r) { return r.ticked; }))
        accept();
}

void DownloadControlForm::Abort() {
    if (!busy_) return;
    abortClicked_.start();
    Link().AbortFlag = true;
}

void DownloadControlForm::reject() {
    // Closing the window while a run comes in stands for AbortBtn: the
    // download's loop still holds this form.
    if (busy_) {
        Abort();
        return;
    }
    QDialog::reject();
}

void ShowDownloadControl(QWidget* parent) {
    {
        DownloadControlForm form(parent);
        form.setWindowModality(Qt::ApplicationModal);
        form.show();
        form.Load();
        form.exec();
    }
    CheckInternalDataStillValid();
}

// --- DownloadOptionFrm -----------------------------------------------------------

DownloadOptionForm::DownloadOptionForm(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("DownloadOptionFrm"));
    setWindowTitle(QStringLiteral("Download Options"));
    static const char* const kTexts[3] = {
        "Download Each Run Individually And Save It To The Default Directory Without Processing",
        "Download All Runs Into Memory, But Don't Process Them",
        "Download All The Runs Into Memory And Process Them"};
    auto* layout = new QVBoxLayout(this);
    for (int k = 0; k < 3; ++k) {
        options_[k] = new QRadioButton(QString::fromUtf8(kTexts[k]));
        options_[k]->setObjectName(QStringLiteral("Option%1").arg(k + 1));
        layout->addWidget(options_[k]);
    }
    options_[2]->setChecked(true);
    auto* row = new QHBoxLayout;
    row->addStretch();
    QPushButton* ok = Button("OkayBtn", "OK");
    ok->setDefault(true);
    QPushButton* cancel = Button("CancelBtn", "Cancel");
    row->addWidget(ok);
    row->addWidget(cancel);
    layout->addLayout(row);
    connect(ok, &QPushButton::clicked, this, &QDialog::accept);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
}

DownloadOption DownloadOptionForm::Choice() const {
    if (options_[0]->isChecked()) return DownloadOption::SaveEachToDisk;
    if (options_[1]->isChecked()) return DownloadOption::IntoMemory;
    return DownloadOption::IntoMemoryAndProcess;
}

// --- frmSetUpLogger --------------------------------------------------------------

namespace {

template <class T>
T* Named(QWidget* form, const char* name) {
    return form->findChild<T*>(QString::fromUtf8(name));
}

QGroupBox* SpanGroup(const char* title, const char* fiveName, const char* twelveName) {
    auto* group = new QGroupBox(QString::fromUtf8(title));
    auto* five = new QRadioButton(QStringLiteral("Maximum 5v"));
    five->setObjectName(QString::fromUtf8(fiveName));
    auto* twelve = new QRadioButton(QStringLiteral("Maximum 12v"));
    twelve->setObjectName(QString::fromUtf8(twelveName));
    twelve->setChecked(true);
    auto* layout = new QVBoxLayout(group);
    layout->addWidget(five);
    layout->addWidget(twelve);
    return group;
}

QLineEdit* NumberBox(const char* name) {
    auto* edit = new QLineEdit;
    edit->setObjectName(QString::fromUtf8(name));
    edit->setMaximumWidth(90);
    return edit;
}

}  // namespace

SetUpLoggerForm::SetUpLoggerForm(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmSetUpLogger"));
    setWindowTitle(QStringLiteral("Logger Configuration"));
    auto* layout = new QVBoxLayout(this);
    auto* spans = new QHBoxLayout;
    spans->addWidget(SpanGroup("Analogue Channel 1", "Anal15vFSD", "Anal112vFSD"));
    spans->addWidget(SpanGroup("Analogue Channel 2", "Anal25vFSD", "Anal212vFSD"));
    layout->addLayout(spans);

    auto* digital = new QGroupBox(QStringLiteral("Digital Input"));
    auto* thresholds = new QFormLayout(digital);
    thresholds->addRow(QStringLiteral("Lower Threshold (0-12) [V]"),
                       NumberBox("DigitalLowerThres"));
    thresholds->addRow(QStringLiteral("Upper Threshold (0-12) [V]"),
                       NumberBox("DigitalUpperThres"));
    layout->addWidget(digital);

    auto* autoStart = new QGroupBox(QStringLiteral("Auto Start"));
    autoStart->setObjectName(QStringLiteral("AutoStartFrm"));
    auto* autoLayout = new QGridLayout(autoStart);
    auto* check = new QCheckBox(QStringLiteral("Enable Auto Start"));
    check->setObjectName(QStringLiteral("AutoStartChkBox"));
    auto* label = new QLabel(QStringLiteral("Trigger Acceleration (0.1 - 0.5)  [g]"));
    label->setObjectName(QStringLiteral("AutoStartTextLbl"));
    autoLayout->addWidget(check, 0, 0, 1, 2);
    autoLayout->addWidget(label, 1, 0);
    autoLayout->addWidget(NumberBox("StartAccelTxtBox"), 1, 1);
    layout->addWidget(autoStart);

    auto* channels = new QGroupBox(QStringLiteral("Channels"));
    auto* channelLayout = new QVBoxLayout(channels);
    const std::pair<const char*, const char*> logs[] = {
        {"LogAll", "Log all channels including GPS (where available)"},
        {"LogAllButGps", "Log all channels except GPS"},
        {"LogGpsOnly", "Log only GPS"}};
    for (const auto& [name, caption] : logs) {
        auto* option = new QRadioButton(QString::fromUtf8(caption));
        option->setObjectName(QString::fromUtf8(name));
        channelLayout->addWidget(option);
    }
    layout->addWidget(channels);
    Named<QRadioButton>(this, "LogAll")->setChecked(true);

    QPushButton* ok = AddOkCancel(this, layout, "OK");
    connect(ok, &QPushButton::clicked, this, [this] { OkClick(); });
}

void SetUpLoggerForm::Show(const LoggerSettings& s) {
    Named<QRadioButton>(this, s.channel1Span == 5 ? "Anal15vFSD" : "Anal112vFSD")->setChecked(true);
    Named<QRadioButton>(this, s.channel2Span == 5 ? "Anal25vFSD" : "Anal212vFSD")->setChecked(true);
    Named<QLineEdit>(this, "DigitalLowerThres")->setText(QString::number(s.lower, 'f', 2));
    Named<QLineEdit>(this, "DigitalUpperThres")->setText(QString::number(s.upper, 'f', 2));
    // The frame and each of its controls, as the logger answers "h" or not.
    Named<QGroupBox>(this, "AutoStartFrm")->setEnabled(s.autoStartEnabled);
    Named<QCheckBox>(this, "AutoStartChkBox")->setEnabled(s.autoStartEnabled);
    Named<QLabel>(this, "AutoStartTextLbl")->setEnabled(s.autoStartEnabled);
    Named<QLineEdit>(this, "StartAccelTxtBox")->setEnabled(s.autoStartEnabled);
    if (s.autoStartEnabled) {
        Named<QLineEdit>(this, "StartAccelTxtBox")->setText(QString::number(s.trigger, 'f', 2));
        Named<QCheckBox>(this, "AutoStartChkBox")->setChecked(s.autoStart);
    }
    const char* log = s.logChannels == 1   ? "LogAllButGps"
                      : s.logChannels == 2 ? "LogGpsOnly"
                                           : "LogAll";
    Named<QRadioButton>(this, log)->setChecked(true);
}

bool SetUpLoggerForm::Load() {
    LoggerSettings settings;
    const bool loaded = LoadLoggerSettings(settings);
    Show(settings);
    return loaded;
}

LoggerSettings SetUpLoggerForm::Settings() const {
    auto* self = const_cast<SetUpLoggerForm*>(this);
    LoggerSettings s;
    s.channel1Span = Named<QRadioButton>(self, "Anal15vFSD")->isChecked() ? 5 : 12;
    s.channel2Span = Named<QRadioButton>(self, "Anal25vFSD")->isChecked() ? 5 : 12;
    s.lower = static_cast<float>(
        GetVal(Named<QLineEdit>(self, "DigitalLowerThres")->text().toStdString()));
    s.upper = static_cast<float>(
        GetVal(Named<QLineEdit>(self, "DigitalUpperThres")->text().toStdString()));
    s.autoStartEnabled = Named<QGroupBox>(self, "AutoStartFrm")->isEnabled();
    s.autoStart = Named<QCheckBox>(self, "AutoStartChkBox")->isChecked();
    s.trigger = static_cast<float>(
        GetVal(Named<QLineEdit>(self, "StartAccelTxtBox")->text().toStdString()));
    s.logChannels = Named<QRadioButton>(self, "LogAllButGps")->isChecked() ? 1
                    : Named<QRadioButton>(self, "LogGpsOnly")->isChecked() ? 2
                                                                           : 0;
    return s;
}

void SetUpLoggerForm::OkClick() {
    if (ApplyLoggerSettings(Settings())) accept();
}

void ShowSetUpLogger(QWidget* parent) {
    SetUpLoggerForm form(parent);
    if (!form.Load()) return;
    form.exec();
}

// --- frmConfirmErase -------------------------------------------------------------

ConfirmEraseForm::ConfirmEraseForm(QWidget* parent)
    : QDialog(parent),
      question_(new QLabel(QString::fromUtf8(kEraseQuestion))),
      animation_(Animation("Animation1")),
      ok_(Button("OkButton", "OK")),
      cancel_(Button("CancelButton", "Cancel")) {
    setObjectName(QStringLiteral("frmConfirmErase"));
    setWindowTitle(QStringLiteral("Erase"));
    question_->setObjectName(QStringLiteral("Label1"));
    question_->setWordWrap(true);
    question_->setMinimumWidth(360);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(question_);
    layout->addWidget(animation_);
    auto* row = new QHBoxLayout;
    row->addStretch();
    ok_->setDefault(true);
    row->addWidget(ok_);
    row->addWidget(cancel_);
    layout->addLayout(row);
    connect(ok_, &QPushButton::clicked, this, [this] { OkClick(); });
    connect(cancel_, &QPushButton::clicked, this, &QDialog::reject);
}

void ConfirmEraseForm::OkClick() {
    question_->hide();
    ok_->setEnabled(false);
    cancel_->setEnabled(false);
    animation_->show();
    result_ = EraseLogger();
    animation_->hide();
    accept();
}

void ShowConfirmErase(QWidget* parent) {
    ConfirmEraseForm form(parent);
    form.exec();
}

}  // namespace tl::shell
