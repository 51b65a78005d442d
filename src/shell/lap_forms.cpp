#include "shell/lap_forms.h"

#include <QCheckBox>
#include <QColor>
#include <QComboBox>
#include <QFontMetrics>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTableWidget>
#include <QVBoxLayout>
#include <algorithm>

#include "results/laps.h"
#include "results/track_markers.h"
#include "road/run_road.h"
#include "shell/main_form.h"
#include "store/run_procedures.h"
#include "store/run_store.h"
#include "views/qt/graph_xy_form.h"

namespace tl::shell {

namespace {

QPushButton* Button(QWidget* owner, const char* name, const char* caption, const char* tip) {
    auto* b = new QPushButton(QString::fromUtf8(caption), owner);
    b->setObjectName(QString::fromUtf8(name));
    b->setAutoDefault(false);
    if (tip != nullptr) b->setToolTip(QString::fromUtf8(tip));
    return b;
}

QString Q(const std::string& text) {
    return QString::fromStdString(text);
}

// A colour packed low byte red, then green, then blue.
QColor Packed(uint32_t colour) {
    return QColor(static_cast<int>(colour & 0xFF), static_cast<int>((colour >> 8) & 0xFF),
                  static_cast<int>((colour >> 16) & 0xFF));
}

}  // namespace

// --- FrmLapsSectors ------------------------------------------------------------

LapsSectorsForm::LapsSectorsForm(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("FrmLapsSectors"));
    setWindowTitle(QStringLiteral("Laps and Sectors"));

    runs_ = new QComboBox;
    runs_->setObjectName(QStringLiteral("RunToDisplay"));
    lapMarker_ = new QComboBox;
    lapMarker_->setObjectName(QStringLiteral("LapMarkerCmbo"));
    markerLength_ = new QLineEdit;
    markerLength_->setObjectName(QStringLiteral("MarkerLengthTxt"));
    sectorCount_ = new QLineEdit;
    sectorCount_->setObjectName(QStringLiteral("NumOfAutoSectorsTxt"));
    autoLaps_ =
        new QCheckBox(QStringLiteral("Automatically place a lap marker when first run is loaded"));
    autoLaps_->setObjectName(QStringLiteral("AutoPlaceLaps"));
    autoSectors_ =
        new QCheckBox(QStringLiteral("Automatically add sectors when a lap marker is added"));
    autoSectors_->setObjectName(QStringLiteral("AutoPlaceSectors"));

    sectors_ = new QTableWidget(0, 3);
    sectors_->setObjectName(QStringLiteral("SectorDefinitionGrid"));
    sectors_->setHorizontalHeaderLabels(
        {QStringLiteral("Sector"), QStringLiteral("Start Marker"), QStringLiteral("End Marker")});
    sectors_->verticalHeader()->setVisible(false);
    sectors_->setSelectionBehavior(QAbstractItemView::SelectRows);
    sectors_->setSelectionMode(QAbstractItemView::SingleSelection);
    sectors_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    sectors_->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    sectors_->verticalHeader()->setDefaultSectionSize(sectors_->fontMetrics().height() + 6);

    QPushButton* autoLap = Button(this, "AutoAddLapMarkerCmd", "Auto Add Lap Marker",
                                  "Place a lap marker on the fastest straight of the run");
    QPushButton* autoSectors =
        Button(this, "AutoAddSectorsCmd", "Auto Add Sectors",
               "Place sector markers at the straightest fast points of a lap");
    QPushButton* clear = Button(this, "ClearAllSectorsBtn", "Clear All Sectors", nullptr);
    QPushButton* add =
        Button(this, "AddSectorBtn", "Add Sector...", "Define the sector on the selected line");
    QPushButton* okay = Button(this, "OkayBtn", "OK", nullptr);

    auto* markers = new QGroupBox(QStringLiteral("Lap Marker"));
    auto* markerForm = new QFormLayout(markers);
    markerForm->addRow(QStringLiteral("Run:"), runs_);
    markerForm->addRow(QStringLiteral("Lap marker:"), lapMarker_);
    markerForm->addRow(QStringLiteral("Marker length [m]:"), markerLength_);
    markerForm->addRow(autoLap);
    markerForm->addRow(autoLaps_);

    auto* auto_ = new QGroupBox(QStringLiteral("Sectors"));
    auto* sectorForm = new QFormLayout(auto_);
    sectorForm->addRow(QStringLiteral("Number of sectors:"), sectorCount_);
    sectorForm->addRow(autoSectors);
    sectorForm->addRow(autoSectors_);

    auto* gridButtons = new QHBoxLayout;
    gridButtons->addWidget(add);
    gridButtons->addWidget(clear);
    gridButtons->addStretch();
    gridButtons->addWidget(okay);

    auto* layout = new QVBoxLayout(this);
    auto* top = new QHBoxLayout;
    top->addWidget(markers, 1);
    top->addWidget(auto_, 1);
    layout->addLayout(top);
    layout->addWidget(new QLabel(QStringLiteral("Sector definitions")));
    layout->addWidget(sectors_, 1);
    layout->addLayout(gridButtons);

    // Load: the runs, the markers, the sectors, the options as limited.
    for (int32_t run = 1; run <= Store().RunCount; ++run)
        runs_->addItem(Q(Store().RunInfo[run].Name));
    const LapSectorOptions options = LoadLapSectorOptions();
    markerLength_->setText(Q(options.markerLength));
    sectorCount_->setText(Q(options.sectorCount));
    autoLaps_->setChecked(options.autoPlaceLaps);
    autoSectors_->setChecked(options.autoPlaceSectors);
    FillMarkers();
    FillSectors();
    const bool runs = Store().RunCount > 0;
    autoLap->setEnabled(runs);
    autoSectors->setEnabled(runs);

    connect(autoLap, &QPushButton::clicked, this, [this] {
        const int run = RunToDisplay();
        if (run == 0) return;
        markerLength_->setText(
            QString::number(LimitMarkerLength(markerLength_->text().toStdString())));
        AutoAddLapMarkerCmd(run, markerLength_->text().toStdString());
        FillMarkers();
        FillSectors();
    });
    connect(autoSectors, &QPushButton::clicked, this, [this] {
        const int run = RunToDisplay();
        if (run == 0) return;
        sectorCount_->setText(
            QString::number(LimitAutoSectorCount(sectorCount_->text().toStdString())));
        markerLength_->setText(
            QString::number(LimitMarkerLength(markerLength_->text().toStdString())));
        AutoAddSectorsCmd(run, sectorCount_->text().toStdString(),
                          markerLength_->text().toStdString());
        FillMarkers();
        FillSectors();
    });
    connect(clear, &QPushButton::clicked, this, [this] {
        ClearAllSectors();
        CheckInternalDataStillValid();
        FillSectors();
    });
    connect(add, &QPushButton::clicked, this, &LapsSectorsForm::AddSector);
    connect(lapMarker_, &QComboBox::currentIndexChanged, this, [this](int at) {
        if (filling_ || at < 0) return;
        const int index = lapMarker_->itemData(at).toInt();
        if (index == CheckForLapMarker()) return;
        SetLapMarker(index);
        CheckInternalDataStillValid();
        FillMarkers();
        FillSectors();
    });
    connect(okay, &QPushButton::clicked, this, [this] {
        SaveLapSectorOptions(TypedOptions());
        accept();
    });
    resize(640, 520);
}

int LapsSectorsForm::RunToDisplay() const {
    const int at = runs_->currentIndex();
    return at >= 0 && at < Store().RunCount ? at + 1 : 0;
}

LapSectorOptions LapsSectorsForm::TypedOptions() const {
    return {markerLength_->text().toStdString(), sectorCount_->text().toStdString(),
            autoLaps_->isChecked(), autoSectors_->isChecked()};
}

void LapsSectorsForm::FillMarkers() {
    filling_ = true;
    lapMarker_->clear();
    const MarkerChoices choices = LapMarkerChoices();
    for (const MarkerChoice& m : choices.markers) lapMarker_->addItem(Q(m.shown), m.index);
    lapMarker_->setCurrentIndex(choices.lapMarker);
    filling_ = false;
}

void LapsSectorsForm::FillSectors() {
    const int keep = sectors_->currentRow();
    const std::vector<SectorLine> lines = SectorLines();
    sectors_->setRowCount(static_cast<int>(lines.size()));
    for (int i = 0; i < static_cast<int>(lines.size()); ++i) {
        sectors_->setItem(i, 0, new QTableWidgetItem(Q(lines[i].name)));
        sectors_->setItem(i, 1, new QTableWidgetItem(Q(lines[i].startMarker)));
        sectors_->setItem(i, 2, new QTableWidgetItem(Q(lines[i].endMarker)));
    }
    if (keep >= 0 && keep < sectors_->rowCount()) sectors_->selectRow(keep);
}

void LapsSectorsForm::AddSector() {
    // The selected line, or else the first free one.
    int line = sectors_->currentRow();
    if (line < 0) {
        const std::vector<SectorLine> lines = SectorLines();
        for (int i = 0; i < static_cast<int>(lines.size()) && line < 0; ++i)
            if (lines[i].name.empty()) line = i;
    }
    if (line < 0) return;
    AddSectorForm form(line, this);
    if (form.exec() != QDialog::Accepted) return;
    CheckInternalDataStillValid();
    FillSectors();
}

// --- frmAddSector -------------------------------------------------------------

AddSectorForm::AddSectorForm(int line, QWidget* parent) : QDialog(parent), line_(line) {
    setObjectName(QStringLiteral("frmAddSector"));
    setWindowTitle(QStringLiteral("Add a sector definition"));
    name_ = new QLineEdit;
    name_->setObjectName(QStringLiteral("SectorNameText"));
    start_ = new QComboBox;
    start_->setObjectName(QStringLiteral("StartMarkerCmbo"));
    end_ = new QComboBox;
    end_->setObjectName(QStringLiteral("EndMarkerCmbo"));
    for (const std::string& name : MarkerNames()) {
        start_->addItem(Q(name));
        end_->addItem(Q(name));
    }
    start_->setCurrentIndex(-1);
    end_->setCurrentIndex(-1);
    // The line's present definition, when it has one.
    const std::vector<SectorLine> lines = SectorLines();
    if (line >= 0 && line < static_cast<int>(lines.size())) {
        name_->setText(Q(lines[line].name));
        start_->setCurrentIndex(start_->findText(Q(lines[line].startMarker)));
        end_->setCurrentIndex(end_->findText(Q(lines[line].endMarker)));
    }
    ok_ = Button(this, "OkBtn", "OK", nullptr);
    QPushButton* cancel = Button(this, "CancelBtn", "Cancel", nullptr);
    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("Sector name:"), name_);
    form->addRow(QStringLiteral("Start marker:"), start_);
    form->addRow(QStringLiteral("End marker:"), end_);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(ok_);
    buttons->addWidget(cancel);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addLayout(buttons);
    connect(name_, &QLineEdit::textChanged, this, &AddSectorForm::Check);
    connect(start_, &QComboBox::currentIndexChanged, this, &AddSectorForm::Check);
    connect(end_, &QComboBox::currentIndexChanged, this, &AddSectorForm::Check);
    connect(ok_, &QPushButton::clicked, this, [this] {
        if (WriteSectorRow(line_, name_->text().trimmed().toStdString(),
                           start_->currentText().toStdString(), end_->currentText().toStdString()))
            accept();
    });
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    Check();
}

void AddSectorForm::Check() {
    // OK stands greyed until the sector has a name and both markers.
    ok_->setEnabled(!name_->text().trimmed().isEmpty() && start_->currentIndex() >= 0 &&
                    end_->currentIndex() >= 0);
}

// --- FrmLapAndSectorTimes -----------------------------------------------------

LapSectorTimesForm::LapSectorTimesForm(QWidget* parent) : QWidget(parent, Qt::Tool) {
    setObjectName(QStringLiteral("FrmLapAndSectorTimes"));
    setWindowTitle(QStringLiteral("Lap and Sector Times"));
    setAttribute(Qt::WA_DeleteOnClose);
    grid_ = new QTableWidget(this);
    grid_->setObjectName(QStringLiteral("LapAndSectorsGrid"));
    grid_->setFont(QFont(QStringLiteral("Microsoft Sans Serif"), 7));
    grid_->horizontalHeader()->setVisible(false);
    grid_->verticalHeader()->setVisible(false);
    grid_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    grid_->setSelectionMode(QAbstractItemView::NoSelection);
    grid_->setFocusPolicy(Qt::NoFocus);
    grid_->verticalHeader()->setDefaultSectionSize(QFontMetrics(grid_->font()).height() + 6);
    // A graph of the selected cells, laid over each other; greyed until a
    // cell is selected.
    graph_ = Button(this, "CmdGenerateGraph", "Graph", "Graph the selected laps and sectors");
    graph_->setEnabled(false);
    connect(graph_, &QPushButton::clicked, this, [this] { GenerateGraph(); });
    auto* label = new QLabel(QStringLiteral("Click up to 5 cells to select them."));
    auto* bottom = new QHBoxLayout;
    bottom->addWidget(label, 1);
    bottom->addWidget(graph_);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(4, 4, 4, 4);
    layout->addWidget(grid_, 1);
    layout->addLayout(bottom);
    connect(grid_, &QTableWidget::cellClicked, this, &LapSectorTimesForm::ClickCell);
    Update_Table();
}

void LapSectorTimesForm::Update_Table() {
    table_.Update();
    ShowGrid();
}

void LapSectorTimesForm::ClickCell(int row, int col) {
    if (table_.Click(row, col)) ShowSelection();
}

void LapSectorTimesForm::ShowGrid() {
    const TableGrid& g = table_.Grid();
    grid_->setUpdatesEnabled(false);
    grid_->clearContents();
    grid_->setRowCount(g.rows);
    grid_->setColumnCount(g.cols);
    const QColor fixed(0xE0, 0xE0, 0xE0);
    for (int r = 0; r < g.rows; ++r) {
        for (int c = 0; c < g.cols; ++c) {
            const std::string& text = g.Text(r, c);
            if (text.empty() && r > 0 && c > 0) continue;
            auto* item = new QTableWidgetItem(Q(text));
            if (r == 0 || c == 0) item->setBackground(fixed);
            grid_->setItem(r, c, item);
        }
    }
    // Column 0 is 100 wide and then widened to its text; a sector column
    // without a heading is not shown.
    grid_->resizeColumnToContents(0);
    grid_->setColumnWidth(0, std::max(grid_->columnWidth(0), 100));
    for (int c = 1; c < g.cols; ++c) {
        const bool used = g.rows > 0 && !g.Text(0, c).empty();
        grid_->setColumnHidden(c, !used);
        if (used) grid_->resizeColumnToContents(c);
    }
    grid_->setUpdatesEnabled(true);
    ShowSelection();
}

void LapSectorTimesForm::ShowSelection() {
    const TableGrid& g = table_.Grid();
    graph_->setEnabled(!table_.Selected().empty());
    const QColor fixed(0xE0, 0xE0, 0xE0);
    for (int r = 1; r < g.rows; ++r) {
        for (int c = 0; c < g.cols; ++c) {
            QTableWidgetItem* item = grid_->item(r, c);
            if (item == nullptr) continue;
            if (table_.IsSelected(r, c)) {
                item->setBackground(Packed(kSelectedCellColour));
                item->setForeground(Qt::white);
            } else {
                item->setBackground(c == 0 ? QBrush(fixed) : QBrush());
                item->setForeground(QBrush());
            }
        }
    }
}

views::GraphXYForm* LapSectorTimesForm::GenerateGraph() {
    const std::vector<OverlayCell> cells = table_.SelectedCells();
    if (cells.empty()) return nullptr;
    SectorGraphSelectorForm selector(this);
    if (selector.exec() != QDialog::Accepted) return nullptr;
    MainForm* frame = qobject_cast<MainForm*>(parentWidget());
    if (frame == nullptr) return nullptr;
    views::GraphXYForm* graph = frame->NewGraph();
    SetUpLapOverlay(graph->Model(), cells, selector.Axes());
    graph->Regenerate();
    return graph;
}

// --- frmSectorGraphSelector ---------------------------------------------------

namespace {
// The choice is kept from one use to the next while the program runs.
struct SectorGraphMemory {
    int option = 0;
    std::string x, y;
};
SectorGraphMemory& Remembered() {
    static SectorGraphMemory memory;
    return memory;
}
}  // namespace

SectorGraphSelectorForm::SectorGraphSelectorForm(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmSectorGraphSelector"));
    setWindowTitle(QStringLiteral("Graph Type"));
    setModal(true);
    const char* captions[] = {"Speed v Distance", "Lateral Acceleration v Distance",
                              "Time Slip Rate v Distance", "g-Circle", "Other"};
    auto* box = new QGroupBox(QStringLiteral("Graph Type"));
    auto* column = new QVBoxLayout(box);
    for (int i = 0; i < 5; ++i) {
        options_[i] = new QRadioButton(QString::fromUtf8(captions[i]));
        options_[i]->setObjectName(QStringLiteral("OptionGraphType_%1").arg(i));
        column->addWidget(options_[i]);
        connect(options_[i], &QRadioButton::toggled, this, [this] { ShowChoice(); });
    }
    xVar_ = new QComboBox;
    xVar_->setObjectName(QStringLiteral("CmboXAxisVar"));
    yVar_ = new QComboBox;
    yVar_->setObjectName(QStringLiteral("CmboYAxisVar"));
    for (QComboBox* combo : {xVar_, yVar_}) {
        combo->setSizeAdjustPolicy(QComboBox::AdjustToContents);
        for (const std::string& name : GraphModel::VariableNames()) combo->addItem(Q(name));
    }
    // The other option starts from the names used last, each put back to
    // distance or speed when it is no longer an enabled variable.
    const SectorGraphAxes other =
        AxesOfSectorGraph(SectorGraphType::Other, Remembered().x, Remembered().y);
    xVar_->setCurrentIndex(xVar_->findText(Q(other.x)));
    yVar_->setCurrentIndex(yVar_->findText(Q(other.y)));
    auto* axes = new QFormLayout;
    axes->addRow(QStringLiteral("X Axis"), xVar_);
    axes->addRow(QStringLiteral("Y Axis"), yVar_);
    column->addLayout(axes);

    auto* ok = Button(this, "OkayBtn", "OK", nullptr);
    ok->setDefault(true);
    auto* cancel = Button(this, "CancelBtn", "Cancel", nullptr);
    connect(ok, &QPushButton::clicked, this, &QDialog::accept);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(ok);
    buttons->addWidget(cancel);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(box);
    layout->addLayout(buttons);
    options_[std::clamp(Remembered().option, 0, 4)]->setChecked(true);
    ShowChoice();
}

SectorGraphType SectorGraphSelectorForm::Choice() const {
    for (int i = 0; i < 5; ++i) {
        if (options_[i]->isChecked()) return static_cast<SectorGraphType>(i);
    }
    return SectorGraphType::Speed;
}

SectorGraphAxes SectorGraphSelectorForm::Axes() const {
    return AxesOfSectorGraph(Choice(), xVar_->currentText().toStdString(),
                             yVar_->currentText().toStdString());
}

void SectorGraphSelectorForm::ShowChoice() {
    // The two lists are for the other option; the fixed ones show theirs.
    const bool other = options_[4] != nullptr && options_[4]->isChecked();
    xVar_->setEnabled(other);
    yVar_->setEnabled(other);
    if (other) return;
    const SectorGraphAxes axes = Axes();
    xVar_->setCurrentIndex(xVar_->findText(Q(axes.x)));
    yVar_->setCurrentIndex(yVar_->findText(Q(axes.y)));
}

void SectorGraphSelectorForm::accept() {
    Remembered().option = static_cast<int>(Choice());
    if (Choice() == SectorGraphType::Other) {
        Remembered().x = xVar_->currentText().toStdString();
        Remembered().y = yVar_->currentText().toStdString();
    }
    QDialog::accept();
}

}  // namespace tl::shell
