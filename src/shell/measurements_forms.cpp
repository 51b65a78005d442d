#include "shell/measurements_forms.h"

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>
#include <algorithm>
#include <charconv>
#include <cstdio>

#include "core/support.h"
#include "results/track_markers.h"
#include "shell/dialog_rows.h"
#include "shell/main_form.h"
#include "store/catalogue.h"
#include "store/run_store.h"
#include "views/graph_model.h"
#include "views/lap_overlay.h"
#include "views/measurement_highlights.h"
#include "views/qt/bar_chart_form.h"
#include "views/qt/graph_xy_form.h"
#include "views/qt/view_links.h"

namespace tl::shell {
namespace {

QString Q(const std::string& text) {
    return QString::fromStdString(text);
}

QPushButton* Button(QWidget* owner, const char* name, const char* caption, const char* tip) {
    auto* b = new QPushButton(QString::fromUtf8(caption), owner);
    b->setObjectName(QString::fromUtf8(name));
    b->setAutoDefault(false);
    if (tip != nullptr) b->setToolTip(QString::fromUtf8(tip));
    return b;
}

QColor Packed(uint32_t colour) {
    return QColor(static_cast<int>(colour & 0xFF), static_cast<int>((colour >> 8) & 0xFF),
                  static_cast<int>((colour >> 16) & 0xFF));
}

std::vector<std::string> MarkerNames() {
    std::vector<std::string> names;
    for (int i = 1; i <= kLastMarkerEntry; ++i) {
        if (!Markers().Entries[i].Name.empty()) names.push_back(Markers().Entries[i].Name);
    }
    return names;
}

float ValueAt(int32_t row, int slotNumber) {
    const RunArray& rd = Store().RunData;
    const int32_t column = ColumnOf(slotNumber);
    if (row < 0 || row > rd.UpperRow() || column < 0 || column >= rd.Columns()) return 0.0f;
    return rd(row, column);
}

// The shortest text that reads back to the same single-precision number.
std::string ExactText(float value) {
    char buffer[64];
    const auto result =
        std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed);
    return std::string(buffer, result.ptr);
}

// "Maximum of Speed [kph] Between 12.30s And 45.10s": how a cell names the
// stretch it covers, by the run's own clock.
std::string CellLabel(const CellRequest& cell) {
    const int32_t start =
        cell.run >= 1 && cell.run <= Store().RunCount ? Store().RunInfo[cell.run].RunStart : 0;
    auto seconds = [start](int32_t row) {
        char text[32];
        std::snprintf(text, sizeof text, "%.2f", (row - start) / 100.0);
        return std::string(text);
    };
    const std::string what =
        cell.mode == "Complete Laps" ? std::string("Complete Lap") : cell.mode + " " + cell.varName;
    return what + " Between " + seconds(cell.startRow) + "s And " + seconds(cell.endRow) + "s";
}

bool IsCopyKey(const QKeyEvent* event) {
    return event->matches(QKeySequence::Copy) ||
           (event->key() == Qt::Key_C && (event->modifiers() & Qt::ControlModifier));
}

}  // namespace

// --- frmAddMeasurement ----------------------------------------------------------

AddMeasurementForm::AddMeasurementForm(int row, QWidget* parent) : QDialog(parent), row_(row) {
    setObjectName(QStringLiteral("frmAddMeasurement"));
    setWindowTitle(QStringLiteral("Add Measurement"));
    setModal(true);
    mode_ = new QComboBox;
    mode_->setObjectName(QStringLiteral("MeasMode"));
    for (const std::string& mode : MeasurementModes()) mode_->addItem(Q(mode));
    var_ = new QComboBox;
    var_->setObjectName(QStringLiteral("MeasVar"));
    for (const std::string& name : GraphModel::VariableNames()) var_->addItem(Q(name));
    start_ = new QComboBox;
    start_->setObjectName(QStringLiteral("StartNode"));
    end_ = new QComboBox;
    end_->setObjectName(QStringLiteral("EndNode"));
    for (const std::string& name : MarkerNames()) {
        start_->addItem(Q(name));
        end_->addItem(Q(name));
    }
    for (QComboBox* combo : {mode_, var_, start_, end_})
        combo->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    // The row's present fields, or speed from the first marker round to it.
    const MeasurementRow& present = Measurements().Rows[row];
    auto choose = [](QComboBox* combo, const std::string& text) {
        const int at = combo->findText(Q(text));
        if (at >= 0) combo->setCurrentIndex(at);
    };
    choose(mode_, present.Mode.empty() ? std::string("Maximum of") : present.Mode);
    choose(var_,
           present.VarName.empty() ? Catalogue().RunVars[slot::SpeedKph].Name : present.VarName);
    choose(start_, present.StartMarker);
    choose(end_, present.EndMarker);

    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("Measure"), mode_);
    form->addRow(QStringLiteral("Variable"), var_);
    form->addRow(QStringLiteral("From"), start_);
    until_ = new QLabel(QStringLiteral("Until"));
    form->addRow(until_, end_);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    QPushButton* ok = AddOkCancel(this, layout, "OkayBtn", "CancelBtn");
    connect(ok, &QPushButton::clicked, this, &QDialog::accept);
    connect(mode_, &QComboBox::currentIndexChanged, this, [this] { ShowMode(); });
    ShowMode();
}

void AddMeasurementForm::ShowMode() {
    const bool valueOf = mode_->currentText() == QLatin1String("Value of");
    until_->setVisible(!valueOf);
    end_->setVisible(!valueOf);
}

void AddMeasurementForm::accept() {
    if (!WriteMeasurementRow(row_, mode_->currentText().toStdString(),
                             var_->currentText().toStdString(), start_->currentText().toStdString(),
                             end_->currentText().toStdString()))
        return;
    QDialog::accept();
}

// --- frmTrackMeasurements ----------------------------------------------------------

MeasurementsForm::MeasurementsForm(MainForm* frame, QWidget* parent)
    : QWidget(parent), frame_(frame) {
    setObjectName(QStringLiteral("frmTrackMeasurements"));
    setWindowTitle(QStringLiteral("Track Measurements"));
    grid_ = new QTableWidget(this);
    grid_->setObjectName(QStringLiteral("BPGrid"));
    grid_->setFont(QFont(QStringLiteral("Microsoft Sans Serif"), 8));
    grid_->horizontalHeader()->setVisible(false);
    grid_->verticalHeader()->setVisible(false);
    grid_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    grid_->setSelectionMode(QAbstractItemView::NoSelection);
    grid_->verticalHeader()->setDefaultSectionSize(QFontMetrics(grid_->font()).height() + 6);
    grid_->installEventFilter(this);
    connect(grid_, &QTableWidget::cellClicked, this, &MeasurementsForm::ClickCell);
    connect(grid_, &QTableWidget::cellDoubleClicked, this, [this](int row, int col) {
        // A heading opened again for editing.
        if (row != 0 || col < kFirstMeasurementRow || col > kLastMeasurementRow) return;
        column_ = col;
        AddMeasurementForm dialog(col, this);
        if (dialog.exec() == QDialog::Accepted) Update();
    });

    auto* add = Button(this, "AddMeasurementBtn", "Add",
                       "Add a measurement in the chosen column (click its heading)");
    connect(add, &QPushButton::clicked, this, [this] { AddMeasurementRow(); });
    auto* remove = Button(this, "DeleteMeasurementBtn", "Delete",
                          "Delete the measurement of the chosen column");
    connect(remove, &QPushButton::clicked, this, [this] { DeleteMeasurementRow(); });
    auto* update = Button(this, "ReprocessStats", "Update", "Calculate the table again");
    connect(update, &QPushButton::clicked, this, [this] { Update(); });
    auto* clear = Button(this, "ClearAllMeasurements", "Clear", "Clear all measurements");
    connect(clear, &QPushButton::clicked, this, [this] {
        if (tl::ClearAllMeasurements()) Update();
    });
    auto* graph = Button(this, "GenerateGraph", "Graph", "Graph the selected cells");
    connect(graph, &QPushButton::clicked, this, [this] { GenerateGraph(); });
    auto* highlight = Button(this, "HighLightOnMap", "Highlight",
                             "Highlight the selected cells on the track map");
    connect(highlight, &QPushButton::clicked, this, [this] { HighlightOnMap(); });
    auto* deselect = Button(this, "ClearSelections", "Deselect", "Deselect all cells");
    connect(deselect, &QPushButton::clicked, this, [this] {
        table_.ClearSelections();
        ShowSelection();
    });
    auto* buttons = new QHBoxLayout;
    for (QPushButton* b : {add, remove, update, clear}) buttons->addWidget(b);
    buttons->addStretch(1);
    for (QPushButton* b : {graph, highlight, deselect}) buttons->addWidget(b);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(4, 4, 4, 4);
    layout->addLayout(buttons);
    layout->addWidget(grid_, 1);
    Update();
}

void MeasurementsForm::Update() {
    table_.Update();
    ShowGrid();
}

void MeasurementsForm::ClickCell(int row, int col) {
    if (col >= kFirstMeasurementRow && col <= kLastMeasurementRow) column_ = col;
    if (table_.Click(row, col)) ShowSelection();
}

bool MeasurementsForm::AddMeasurementRow() {
    const int m = column_;
    if (!tl::AddMeasurement(m)) return false;
    AddMeasurementForm dialog(m, this);
    const bool written = dialog.exec() == QDialog::Accepted;
    if (!written) tl::DeleteMeasurement(m);
    Update();
    return written;
}

void MeasurementsForm::DeleteMeasurementRow() {
    tl::DeleteMeasurement(column_);
    Update();
}

QWidget* MeasurementsForm::GenerateGraph() {
    int kind = 0;
    const std::vector<CellRequest> cells = table_.GraphCells(&kind);
    ShowSelection();
    if (cells.empty() || frame_ == nullptr) return nullptr;
    const auto& vars = Catalogue().RunVars;
    if (kind == 1) {
        std::vector<OverlayCell> overlay;
        for (const CellRequest& c : cells)
            overlay.push_back({c.run, c.startRow, c.endRow, CellLabel(c)});
        const std::string y = cells.front().mode == "Complete Laps" ? vars[slot::SpeedKph].Name
                                                                    : cells.front().varName;
        views::GraphXYForm* graph = frame_->NewGraph();
        SetUpLapOverlay(graph->Model(), overlay, {vars[slot::DistanceKm].Name, y});
        graph->Regenerate();
        return graph;
    }
    if (kind == 2) {
        // One axis per cell, each counting its run between the cell's two
        // times.
        views::BarChartForm* form = frame_->NewBarChart();
        BarChart& chart = form->Chart();
        BarChartSettings& s = chart.settings;
        s.DisplayVar = cells.front().varName;
        s.ConstrainVar = vars[slot::Time].Name;
        s.Constrain = 1;
        s.MultiBar = 1;
        const int count = std::min(static_cast<int>(cells.size()), kBarChartAxes);
        for (int k = 0; k < count; ++k) {
            BarChartAxisSettings& a = s.Axes[k];
            a.AxisEnabled = 1;
            a.AxisRun = std::to_string(cells[k].run);
            a.ConstrainMin = ExactText(ValueAt(cells[k].startRow, slot::Time));
            a.ConstrainMax = ExactText(ValueAt(cells[k].endRow, slot::Time));
            a.AxisTitle = CellLabel(cells[k]);
            chart.AxisRun_Change(k);
        }
        form->ChartTab_Click(static_cast<int>(ChartTabs::BarChart));
        return form;
    }
    return nullptr;
}

bool MeasurementsForm::HighlightOnMap() {
    const std::vector<CellRequest> cells = table_.HighlightCells();
    ShowSelection();
    if (cells.empty()) return false;
    SetHighlightSections(cells);
    views::Hub().RedrawMap();
    return true;
}

void MeasurementsForm::CopyToClipboard() {
    QApplication::clipboard()->setText(Q(table_.CopyText()));
}

bool MeasurementsForm::eventFilter(QObject* watched, QEvent* event) {
    if (watched == grid_ && event->type() == QEvent::KeyPress &&
        IsCopyKey(static_cast<QKeyEvent*>(event))) {
        CopyToClipboard();
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

void MeasurementsForm::ShowGrid() {
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
    // The lap column at least 100 wide; each measurement as wide as its
    // heading, the empty ones narrow so that a new one is in reach.
    grid_->resizeColumnToContents(0);
    grid_->setColumnWidth(0, std::max(grid_->columnWidth(0), 100));
    for (int c = 1; c < g.cols; ++c) {
        if (g.rows > 0 && !g.Text(0, c).empty())
            grid_->resizeColumnToContents(c);
        else
            grid_->setColumnWidth(c, 60);
    }
    grid_->setUpdatesEnabled(true);
    ShowSelection();
}

void MeasurementsForm::ShowSelection() {
    const TableGrid& g = table_.Grid();
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

}  // namespace tl::shell
