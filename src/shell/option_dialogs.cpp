#include "shell/option_dialogs.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QFileSystemModel>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QStorageInfo>
#include <QTableWidget>
#include <QTreeView>
#include <QVBoxLayout>

#include "convert/accel_channels.h"
#include "core/build_profile.h"
#include "core/config_store.h"
#include "core/support.h"
#include "core/ui_services.h"
#include "derived/reference_lap.h"
#include "road/options_model.h"
#include "shell/dialog_rows.h"
#include "shell/start_forms.h"
#include "store/catalogue.h"
#include "store/run_procedures.h"
#include "store/run_store.h"

namespace tl::shell {

namespace {

QString Q(const std::string& text) {
    return QString::fromStdString(text);
}

std::string S(const QString& text) {
    return text.toStdString();
}

QLineEdit* NumberBox(const QString& name, const std::string& file) {
    auto* edit = new QLineEdit(Q(OptionNumberText(GetConfig(file, S(name)))));
    edit->setObjectName(name);
    edit->setMaximumWidth(110);
    return edit;
}

// A caption broken into lines of about `width` characters at blanks: a check
// box does not wrap its text, and the long captions of the options would
// otherwise make their dialogs wider than a laptop's screen.
QString Wrapped(const QString& text, int width = 56) {
    QString out;
    int line = 0;
    for (const QString& word : text.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        if (line > 0 && line + 1 + word.size() > width) {
            out += QLatin1Char('\n');
            line = 0;
        } else if (line > 0) {
            out += QLatin1Char(' ');
            ++line;
        }
        out += word;
        line += static_cast<int>(word.size());
    }
    return out;
}

QCheckBox* CheckBox(const char* name, const char* caption, const std::string& file) {
    auto* box = new QCheckBox(Wrapped(QString::fromUtf8(caption)));
    box->setObjectName(QString::fromUtf8(name));
    box->setChecked(GetConfig(file, name) != 0.0f);
    return box;
}

template <class T>
T* Find(QWidget* form, const char* name) {
    return form->findChild<T*>(QString::fromUtf8(name));
}

}  // namespace

// --- frmCarOptions ---

CarOptionsForm::CarOptionsForm(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmCarOptions"));
    setWindowTitle(QStringLiteral("Vehicle Options"));
    ShowPleaseWait("Checking Configuration");
    const std::string& car = Paths().CarCfgPath;
    const BuildProfile& p = Profile();
    auto* layout = new QVBoxLayout(this);
    auto* columns = new QHBoxLayout;
    layout->addLayout(columns);

    auto* gears = new QGroupBox(QStringLiteral("Gearbox"));
    auto* gearForm = new QFormLayout(gears);
    static const char* const ordinals[] = {"1st", "2nd", "3rd", "4th", "5th", "6th", "7th"};
    for (int g = 1; g <= 7; ++g)
        gearForm->addRow(
            QStringLiteral("%1 Gear Ratio [-]").arg(QString::fromUtf8(ordinals[g - 1])),
            NumberBox(QStringLiteral("GearRatioVal%1").arg(g), car));
    gearForm->addRow(QStringLiteral("Final Drive Ratio [-]"),
                     NumberBox(QStringLiteral("FinalDriveRat"), car));
    gearForm->addRow(new QLabel(QStringLiteral("For an automatic gearbox enter 0 in all fields.")));
    columns->addWidget(gears);

    auto* middle = new QVBoxLayout;
    auto* hx40 = new QGroupBox(QStringLiteral("Wheel Speed"));
    hx40->setObjectName(QStringLiteral("HX40WheelSpdFrame"));
    auto* hx40Form = new QFormLayout(hx40);
    hx40Form->addRow(QStringLiteral("Pulses Per Wheel Revolution [-]"),
                     NumberBox(QStringLiteral("WheelPulsesRev"), car));
    hx40Form->addRow(QStringLiteral("Rolling Circumference Of The Wheel [m]"),
                     NumberBox(QStringLiteral("DrivenRollingCircVal"), car));
    hx40->setVisible(p.HardwareHX40);
    middle->addWidget(hx40);
    auto* mq7 = new QGroupBox(QStringLiteral("Wheel Speed"));
    mq7->setObjectName(QStringLiteral("MQ7WheelSpdFrame"));
    auto* mq7Layout = new QVBoxLayout(mq7);
    auto* formulaRow = new QHBoxLayout;
    formulaRow->addWidget(new QLabel(QStringLiteral("Wheel Speed [kph] =")));
    auto* formula = new QLineEdit(Q(GetConfigString(car, "WheelSpeedFormula")));
    formula->setObjectName(QStringLiteral("WheelSpeedFormulaTxtBox"));
    formulaRow->addWidget(formula);
    mq7Layout->addLayout(formulaRow);
    auto* varNames = new QTableWidget(0, 2);
    varNames->setObjectName(QStringLiteral("MSFlexGridVarNames"));
    varNames->setHorizontalHeaderLabels({QStringLiteral("Name"), QStringLiteral("Variable")});
    varNames->setEditTriggers(QAbstractItemView::NoEditTriggers);
    for (int n = 1; n < kNoDataSlot; ++n) {
        const RunVar& v = Catalogue().RunVars[n];
        if (!v.Available || v.Name.empty()) continue;
        const int row = varNames->rowCount();
        varNames->insertRow(row);
        varNames->setItem(
            row, 0, new QTableWidgetItem(QStringLiteral("VAR_%1").arg(n, 2, 10, QLatin1Char('0'))));
        varNames->setItem(row, 1, new QTableWidgetItem(Q(v.Name)));
    }
    varNames->horizontalHeader()->setStretchLastSection(true);
    mq7Layout->addWidget(varNames);
    mq7->setVisible(p.HardwareMQ7);
    middle->addWidget(mq7);

    auto* engine = new QGroupBox(QStringLiteral("Engine and Vehicle"));
    auto* engineForm = new QFormLayout(engine);
    engineForm->addRow(QStringLiteral("Ignition Pulses Per Revolution [-]"),
                       NumberBox(QStringLiteral("IgntionPulsesRev"), car));
    engineForm->addRow(QStringLiteral("Aerodynamic Resistance CdA [m²]"),
                       NumberBox(QStringLiteral("CdaVal"), car));
    engineForm->addRow(QStringLiteral("Rolling Resistance [N/m²]"),
                       NumberBox(QStringLiteral("RollingVal"), car));
    engineForm->addRow(QStringLiteral("Vehicle Mass [kg]"),
                       NumberBox(QStringLiteral("CarMass"), car));
    QCheckBox* rpm = CheckBox("UseWheelForRpm",
                              "Use The Wheel Speed Input For TTL Level RPM Input (only possible if "
                              "speed speed input is not required)",
                              car);
    engineForm->addRow(rpm);
    middle->addWidget(engine);
    columns->addLayout(middle);

    auto* right = new QVBoxLayout;
    auto* accels = new QGroupBox(QStringLiteral("Accelerometer Options"));
    auto* accelLayout = new QVBoxLayout(accels);
    QCheckBox* autoZero =
        CheckBox("AutoZeroAccelerometers", "Auto-Zero Accelerometers Before Each Run", car);
    accelLayout->addWidget(autoZero);
    auto* manual = new QGroupBox(QStringLiteral("Manual Offsets"));
    manual->setObjectName(QStringLiteral("ManualAngleFrame"));
    auto* manualForm = new QFormLayout(manual);
    QLineEdit* longOffset = NumberBox(QStringLiteral("LongAccelOffset"), car);
    QLineEdit* latOffset = NumberBox(QStringLiteral("LatAccelOffset"), car);
    manualForm->addRow(QStringLiteral("Longitudinal Offset Angle [Degrees]"), longOffset);
    manualForm->addRow(QStringLiteral("Lateral Offset Angle [Degrees]"), latOffset);
    auto* calc = new QPushButton(QStringLiteral("Calculate Offsets"));
    calc->setObjectName(QStringLiteral("CalcOffsets"));
    calc->setToolTip(QStringLiteral(
        "Calculate The Accelerometer Offsets Based On The First Second Of The Current Run"));
    calc->setAutoDefault(false);
    manualForm->addRow(calc);
    accelLayout->addWidget(manual);
    accelLayout->addWidget(
        CheckBox("ReverseAccels",
                 "Reverse accelerometers (only use if device was mounted 'backwards')", car));
    right->addWidget(accels);
    auto* constants = new QTableWidget(10, 2);
    constants->setObjectName(QStringLiteral("MSFlexGridConstants"));
    constants->setHorizontalHeaderLabels({QStringLiteral("Constant"), QStringLiteral("Value")});
    for (int n = 1; n <= 10; ++n) {
        auto* name = new QTableWidgetItem(QStringLiteral("Car Constant %1 [-]").arg(n));
        name->setFlags(Qt::ItemIsEnabled);
        constants->setItem(n - 1, 0, name);
        constants->setItem(n - 1, 1,
                           new QTableWidgetItem(Q(OptionNumberText(
                               GetConfig(car, "Car Constant" + std::to_string(n))))));
    }
    constants->verticalHeader()->hide();
    constants->horizontalHeader()->setStretchLastSection(true);
    constants->resizeColumnToContents(0);
    right->addWidget(constants);
    columns->addLayout(right);

    // The frame switched off is greyed, which keeps its boxes out of reach.
    auto syncManual = [manual, autoZero] { manual->setEnabled(!autoZero->isChecked()); };
    connect(autoZero, &QCheckBox::toggled, this, syncManual);
    syncManual();
    auto syncRpm = [hx40, rpm, p] {
        if (p.HardwareHX40) hx40->setEnabled(!rpm->isChecked());
    };
    connect(rpm, &QCheckBox::toggled, this, syncRpm);
    syncRpm();
    connect(calc, &QPushButton::clicked, this, [latOffset, longOffset] {
        float lat = 0, lng = 0;
        if (!CalculateAccelAngles(lat, lng)) return;
        latOffset->setText(QString::number(lat, 'f', 3));
        longOffset->setText(QString::number(lng, 'f', 3));
    });

    QPushButton* ok = AddOkCancel(this, layout, "Okay");
    connect(ok, &QPushButton::clicked, this, [this] {
        Save();
        accept();
    });
    ApplyProfileToOptions();
    HidePleaseWait();
}

void CarOptionsForm::Save() {
    ShowPleaseWait("Saving Configuration");
    const std::string& car = Paths().CarCfgPath;
    auto number = [&](const std::string& key) {
        if (auto* box = findChild<QLineEdit*>(Q(key)))
            SetConfig(car, key, static_cast<float>(GetVal(S(box->text()))));
    };
    auto check = [&](const char* key) {
        if (auto* box = Find<QCheckBox>(this, key)) SetConfig(car, key, box->isChecked() ? 1 : 0);
    };
    for (const std::string& key : CarOptionNumberKeys()) {
        number(key);
        if (key == "DrivenRollingCircVal") {
            SetConfigString(car, "WheelSpeedFormula",
                            S(Find<QLineEdit>(this, "WheelSpeedFormulaTxtBox")->text()));
        }
        if (key == "CarMass") check("AutoZeroAccelerometers");
    }
    check("ReverseAccels");
    check("UseWheelForRpm");
    auto* constants = Find<QTableWidget>(this, "MSFlexGridConstants");
    for (int n = 1; n <= constants->rowCount(); ++n) {
        const QTableWidgetItem* cell = constants->item(n - 1, 1);
        SetConfig(car, "Car Constant" + std::to_string(n),
                  static_cast<float>(GetVal(cell != nullptr ? S(cell->text()) : std::string())));
    }
    HidePleaseWait();
    Message(kOptionsSavedMessage);
}

// --- frmTracelabOptions ---

namespace {

QGroupBox* OptionGroup(const char* title, const char* arrayName,
                       std::initializer_list<const char*> captions, int selected) {
    auto* group = new QGroupBox(QString::fromUtf8(title));
    auto* layout = new QVBoxLayout(group);
    int index = 0;
    for (const char* caption : captions) {
        auto* option = new QRadioButton(QString::fromUtf8(caption));
        option->setObjectName(QString::fromUtf8(arrayName));
        option->setProperty("index", index);
        option->setChecked(index == selected);
        layout->addWidget(option);
        ++index;
    }
    return group;
}

// The index of the ticked option of an option array, 0 when none is.
int Selected(QWidget* form, const char* arrayName) {
    for (QRadioButton* option : form->findChildren<QRadioButton*>(QString::fromUtf8(arrayName))) {
        if (option->isChecked()) return option->property("index").toInt();
    }
    return 0;
}

QRadioButton* Radio(const char* name, const char* caption, bool checked) {
    auto* option = new QRadioButton(QString::fromUtf8(caption));
    option->setObjectName(QString::fromUtf8(name));
    option->setChecked(checked);
    return option;
}

}  // namespace

TracelabOptionsForm::TracelabOptionsForm(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmTracelabOptions"));
    setWindowTitle(QStringLiteral("Tracelab Options"));
    const std::string& file = Paths().TracelabCfgPath;
    auto* layout = new QVBoxLayout(this);
    auto* top = new QHBoxLayout;
    layout->addLayout(top);

    auto* mapping = new QGroupBox(QStringLiteral("Mapping Options"));
    auto* mappingLayout = new QVBoxLayout(mapping);
    QGroupBox* basis = OptionGroup(
        "Mapping based on:", "MappingMode",
        {"GPS data only", "Use GPS for speed only, map using inertial data and lap beacon",
         "Use only the wheel speed sensor and lap beacon, no GPS present."},
        MappingModeShown(GetConfig(file, "MappingMode")));
    mappingLayout->addWidget(basis);
    for (QCheckBox* box :
         {CheckBox("TrustAccels",
                   "Trust accelerometer data over GPS data. To use this option, it is very "
                   "important that the accelerometers are zeroed correctly. see 'accelerometer "
                   "options'.",
                   file),
          CheckBox("UseRawGPSData",
                   "When calculating a map of the track using GPS, DON'T combine the data with "
                   "accelerometers. This speeds up processing, but track maps are less smooth "
                   "and precise.",
                   file),
          CheckBox("AllDataOntoTrack",
                   "Force mapping data before the first lap beacon and after the last beacon "
                   "onto the reference lap.",
                   file)}) {
        mappingLayout->addWidget(box);
    }
    // The control of UseRawGPSData is named UseRawGpsData in the form.
    Find<QCheckBox>(this, "UseRawGPSData");
    mappingLayout->itemAt(2)->widget()->setObjectName(QStringLiteral("UseRawGpsData"));
    top->addWidget(mapping, 2);

    // Four small groups in two columns, so the dialog stays low enough for a
    // laptop's screen.
    auto* side = new QGridLayout;
    side->addWidget(OptionGroup("Source of Speed Information", "PowerSpeedSource",
                                {"Use GPS for speed when calculating speed",
                                 "Use wheel speed when calculating speed"},
                                GetConfigInt(file, "PowerSpeedSource")),
                    0, 0);
    side->addWidget(OptionGroup("Distance", "DistanceOption",
                                {"Calculate distances using GPS positions",
                                 "Calculate distances using GPS speeds",
                                 "Calculate distances using wheel speeds"},
                                GetConfigInt(file, "DistanceMode")),
                    1, 0);
    auto* units = new QGroupBox(QStringLiteral("Power HP Units"));
    auto* unitsLayout = new QVBoxLayout(units);
    const bool imperial = GetConfig(file, "PowerUnit") == 2.0f;
    unitsLayout->addWidget(Radio("MetricHP", "Metric HP (PS)  (735.5W)", !imperial));
    unitsLayout->addWidget(Radio("ImperialHP", "Imperial HP (745.7W)", imperial));
    side->addWidget(units, 0, 1);
    auto* standard = new QGroupBox(QStringLiteral("Power Correction Standard"));
    auto* standardLayout = new QVBoxLayout(standard);
    const int hp = HPCorrectionShown(GetConfig(file, "HPCorrection"));
    standardLayout->addWidget(
        Radio("HPCorrectionSAE", "SAE 99 kPa, 25 C (85% ME Assumed)", hp == 1));
    standardLayout->addWidget(Radio("HPCorrectionECE", "ECE 99kPa, 25 C", hp == 2));
    standardLayout->addWidget(Radio("HPCorrectionDIN", "DIN 101.3kPa, 20 C", hp == 3));
    standardLayout->addWidget(
        Radio("HPCorrectionSTP", "STP 103.3 kPa, 15.5 C (85% ME Assumed)", hp == 4));
    side->addWidget(standard, 1, 1);
    side->setRowStretch(2, 1);
    top->addLayout(side, 1);

    grid_ = new QTableWidget(0, 5);
    grid_->setObjectName(QStringLiteral("MsGridFilterOptions"));
    // The headings in two lines each, so the columns can be narrow.
    grid_->setHorizontalHeaderLabels({QStringLiteral("Variable"),
                                      QStringLiteral("Linear filter time\nconstant [s]"),
                                      QStringLiteral("Max rate of change in\nvariable [units/s]"),
                                      QStringLiteral("Min Possible\nValue [units]"),
                                      QStringLiteral("Max Possible\nValue [units]")});
    for (const FilterRow& row : LoadFilterRows()) {
        const int r = grid_->rowCount();
        grid_->insertRow(r);
        auto* name = new QTableWidgetItem(Q(row.name));
        name->setFlags(Qt::ItemIsEnabled);
        grid_->setItem(r, 0, name);
        const std::string* cells[4] = {&row.timeFilt, &row.rateFilt, &row.minPos, &row.maxPos};
        for (int k = 0; k < 4; ++k) grid_->setItem(r, k + 1, new QTableWidgetItem(Q(*cells[k])));
    }
    grid_->verticalHeader()->hide();
    grid_->resizeColumnToContents(0);
    for (int k = 1; k <= 4; ++k)
        grid_->horizontalHeader()->setSectionResizeMode(k, QHeaderView::Stretch);
    grid_->setMinimumHeight(160);
    layout->addWidget(grid_, 1);
    layout->addWidget(new QLabel(QStringLiteral(
        "See the help index under \"filtering\" for the meaning of these settings.")));

    QPushButton* ok = AddOkCancel(this, layout, "Okay");
    connect(ok, &QPushButton::clicked, this, [this] {
        Save();
        accept();
    });
    ApplyProfileToOptions();
    resize(sizeHint().expandedTo(QSize(900, 600)));
}

void TracelabOptionsForm::Save() {
    ShowPleaseWait("Saving Configuration");
    const std::string& file = Paths().TracelabCfgPath;
    int hp = 4;
    if (Find<QRadioButton>(this, "HPCorrectionSAE")->isChecked()) hp = 1;
    if (Find<QRadioButton>(this, "HPCorrectionECE")->isChecked()) hp = 2;
    if (Find<QRadioButton>(this, "HPCorrectionDIN")->isChecked()) hp = 3;
    SetConfig(file, "HPCorrection", static_cast<float>(hp));
    SetConfig(file, "PowerUnit", Find<QRadioButton>(this, "ImperialHP")->isChecked() ? 2 : 1);
    std::vector<FilterRow> rows;
    auto text = [this](int r, int c) {
        const QTableWidgetItem* cell = grid_->item(r, c);
        return cell != nullptr ? S(cell->text()) : std::string();
    };
    for (int r = 0; r < grid_->rowCount(); ++r)
        rows.push_back({text(r, 0), text(r, 1), text(r, 2), text(r, 3), text(r, 4)});
    SaveFilterRows(rows);
    SetConfig(file, "MappingMode", static_cast<float>(Selected(this, "MappingMode")));
    SetConfig(file, "TrustAccels", Find<QCheckBox>(this, "TrustAccels")->isChecked() ? 1 : 0);
    SetConfig(file, "UseRawGPSData", Find<QCheckBox>(this, "UseRawGpsData")->isChecked() ? 1 : 0);
    SetConfig(file, "AllDataOntoTrack",
              Find<QCheckBox>(this, "AllDataOntoTrack")->isChecked() ? 1 : 0);
    SetConfig(file, "DistanceMode", static_cast<float>(Selected(this, "DistanceOption")));
    SetConfig(file, "PowerSpeedSource", static_cast<float>(Selected(this, "PowerSpeedSource")));
    HidePleaseWait();
    Message(kOptionsSavedMessage);
}

// --- frmRefLapOptions ---

RefLapOptionsForm::RefLapOptionsForm(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmRefLapOptions"));
    setWindowTitle(QStringLiteral("Reference Lap Options"));
    auto* layout = new QVBoxLayout(this);
    auto* form = new QFormLayout;
    auto* combo = new QComboBox;
    combo->setObjectName(QStringLiteral("RunNameRefLapCbo"));
    const RunStore& s = Store();
    if (s.RunCount == 0) {
        combo->addItem(QStringLiteral("No Runs Loaded"), 0);
    } else {
        for (int32_t run = 1; run <= s.RunCount; ++run) combo->addItem(Q(s.RunInfo[run].Name), run);
        const int at = combo->findData(RefLap().RefRun);
        combo->setCurrentIndex(at >= 0 ? at : 0);
    }
    auto* beacons = new QLineEdit(QString::number(RefLap().NumOfBeacons));
    beacons->setObjectName(QStringLiteral("NumLapBeaconsTxt"));
    form->addRow(QStringLiteral("Reference run:"), combo);
    form->addRow(QStringLiteral("Number of lap beacons:"), beacons);
    layout->addLayout(form);
    QPushButton* ok = AddOkCancel(this, layout, "Okay");
    connect(ok, &QPushButton::clicked, this, [this, combo, beacons] {
        // With no runs the combo's only entry stands for run 0.
        const int32_t chosen =
            Store().RunCount == 0 ? RefLap().RefRun : combo->currentData().toInt();
        if (RefLapOptionsOkay(chosen, S(beacons->text()))) accept();
    });
}

// --- frmSetDefaultDirectories and frmSelectDirectory ---

DefaultDirectoriesForm::DefaultDirectoriesForm(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmSetDefaultDirectories"));
    setWindowTitle(QStringLiteral("Set Default Paths"));
    const std::string& file = Paths().TracelabCfgPath;
    auto* layout = new QVBoxLayout(this);
    auto* grid = new QGridLayout;
    const char* const labels[3] = {"Run Files:", "Car Files:", "Export To:"};
    const char* const buttons[3] = {"ChangeRunPath", "ChangeCarPath", "ChangeExportPath"};
    for (int i = 0; i < 3; ++i) {
        auto* edit = new QLineEdit(Q(GetConfigString(file, kDefaultPathKeys[i])));
        edit->setObjectName(QString::fromUtf8(kDefaultPathKeys[i]));
        edit->setMinimumWidth(360);
        auto* change = new QPushButton(QStringLiteral("Change.."));
        change->setObjectName(QString::fromUtf8(buttons[i]));
        change->setAutoDefault(false);
        connect(change, &QPushButton::clicked, this, [this, edit] {
            const QString answer = SelectDirectory(this, edit->text());
            if (!answer.isEmpty()) edit->setText(answer);
        });
        grid->addWidget(new QLabel(QString::fromUtf8(labels[i])), i, 0);
        grid->addWidget(edit, i, 1);
        grid->addWidget(change, i, 2);
    }
    layout->addLayout(grid);
    QPushButton* ok = AddOkCancel(this, layout, "OK");
    connect(ok, &QPushButton::clicked, this, [this] {
        for (const char* key : kDefaultPathKeys)
            SetConfigString(Paths().TracelabCfgPath, key, S(Find<QLineEdit>(this, key)->text()));
        accept();
    });
}

namespace {

// frmSelectDirectory. The drive list becomes the list of mounted volumes
// (Drive1); the directory list a tree of the chosen volume's folders (Dir1).
// A volume that is not ready is covered by BlankingText.
class SelectDirectoryForm : public QDialog {
  public:
    SelectDirectoryForm(QWidget* parent, const QString& start) : QDialog(parent) {
        setObjectName(QStringLiteral("frmSelectDirectory"));
        setWindowTitle(QStringLiteral("Select Directory"));
        auto* layout = new QVBoxLayout(this);
        drives_ = new QComboBox;
        drives_->setObjectName(QStringLiteral("Drive1"));
        for (const QStorageInfo& volume : QStorageInfo::mountedVolumes())
            drives_->addItem(volume.rootPath(), volume.rootPath());
        layout->addWidget(drives_);
        model_ = new QFileSystemModel(this);
        model_->setFilter(QDir::AllDirs | QDir::NoDotAndDotDot);
        model_->setRootPath(QStringLiteral("/"));
        dirs_ = new QTreeView;
        dirs_->setObjectName(QStringLiteral("Dir1"));
        dirs_->setModel(model_);
        for (int c = 1; c < model_->columnCount(); ++c) dirs_->hideColumn(c);
        dirs_->setHeaderHidden(true);
        layout->addWidget(dirs_, 1);
        blank_ = new QLabel(QStringLiteral("Drive Is Not Available, Please Select Another"));
        blank_->setObjectName(QStringLiteral("BlankingText"));
        blank_->setAlignment(Qt::AlignCenter);
        blank_->hide();
        layout->addWidget(blank_, 1);
        QPushButton* ok = AddOkCancel(this, layout, "OK");
        connect(ok, &QPushButton::clicked, this, [this] {
            if (!blank_->isVisible()) answer = model_->filePath(dirs_->currentIndex());
            accept();
        });
        connect(drives_, &QComboBox::currentIndexChanged, this, [this] { Drive1_Change(); });
        const QString from = start.isEmpty() ? QDir::homePath() : start;
        dirs_->setCurrentIndex(model_->index(from));
        dirs_->scrollTo(dirs_->currentIndex());
        resize(420, 460);
    }
    QString answer;

  private:
    void Drive1_Change() {
        const QStorageInfo volume(drives_->currentData().toString());
        const bool ready = volume.isValid() && volume.isReady();
        dirs_->setVisible(ready);
        blank_->setVisible(!ready);
        if (ready) dirs_->setCurrentIndex(model_->index(volume.rootPath()));
    }
    QComboBox* drives_;
    QFileSystemModel* model_;
    QTreeView* dirs_;
    QLabel* blank_;
};

}  // namespace

QString SelectDirectory(QWidget* parent, const QString& start) {
    SelectDirectoryForm form(parent, start);
    if (form.exec() != QDialog::Accepted) return {};
    return form.answer;
}

// --- frmSelectGraphXAxis ---

SelectGraphXAxisForm::SelectGraphXAxisForm(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmSelectGraphXAxis"));
    setWindowTitle(QStringLiteral("Select X Axis"));
    auto* layout = new QVBoxLayout(this);
    auto* group = new QButtonGroup(this);
    const auto& vars = Catalogue().RunVars;
    static const char* const captions[4] = {"Time", "Distance [ft]", "Distance [miles]",
                                            "Distance [km]"};
    int i = 0;
    // Tested in this order, so the last enabled one is selected.
    for (const XAxisChoice& choice : kXAxisChoices) {
        auto* option = new QRadioButton(QString::fromUtf8(captions[i++]));
        option->setObjectName(QString::fromUtf8(choice.control));
        group->addButton(option);
        option->setEnabled(vars[choice.slot].Enabled);
        if (vars[choice.slot].Enabled) option->setChecked(true);
        layout->addWidget(option);
    }
    auto* otherRow = new QHBoxLayout;
    auto* other = new QRadioButton(QStringLiteral("Other:"));
    other->setObjectName(QStringLiteral("XAxisOther"));
    group->addButton(other);
    auto* otherVar = new QComboBox;
    otherVar->setObjectName(QStringLiteral("OtherXVar"));
    otherVar->addItem(QStringLiteral("Select Variable"));
    for (int n = 1; n < kNoDataSlot; ++n) {
        if (vars[n].Enabled && !vars[n].Name.empty()) otherVar->addItem(Q(vars[n].Name));
    }
    connect(otherVar, &QComboBox::activated, other, [other] { other->setChecked(true); });
    otherRow->addWidget(other);
    otherRow->addWidget(otherVar, 1);
    layout->addLayout(otherRow);
    QPushButton* ok = AddOkCancel(this, layout, "OK");
    connect(ok, &QPushButton::clicked, this, [this, group, otherVar] {
        QAbstractButton* chosen = group->checkedButton();
        GraphXAxisVar() = GraphXAxisAnswer(chosen != nullptr ? S(chosen->objectName()) : "",
                                           S(otherVar->currentText()));
        accept();
    });
}

void ShowAboutBanner(QWidget* parent) {
    auto* banner = new StartBanner(QStringLiteral("BuildCode:") + Q(BuildIdString()), parent);
    banner->setAttribute(Qt::WA_DeleteOnClose);
    // A dialog of the program's like any other, not the start's topmost
    // splash: a message that comes up meanwhile stands above it and can be
    // answered with the mouse.
    banner->setWindowFlags(Qt::Dialog | Qt::WindowTitleHint | Qt::WindowCloseButtonHint);
    banner->setWindowTitle(QStringLiteral("About Tracelab"));
    banner->setWindowModality(Qt::ApplicationModal);
    banner->show();
}

}  // namespace tl::shell
