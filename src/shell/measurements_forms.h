// The windows of the measurements table (logic in results/measurements_form.h):
// - frmTrackMeasurements ("Track Measurements"), the grid BPGrid (column m
//   holds measurement row m, each run's laps down the side) with the buttons
//   AddMeasurementBtn ("Add", a measurement in the chosen column, the rows
//   from there on moving right), DeleteMeasurementBtn ("Delete"),
//   ReprocessStats ("Update"), ClearAllMeasurements ("Clear"), GenerateGraph
//   ("Graph": the selected cells in a new XY graph or bar chart as their
//   mode asks), HighLightOnMap ("Highlight": the track map draws the
//   selected stretches wide) and ClearSelections ("Deselect"); Ctrl+C copies
//   the grid;
// - frmAddMeasurement ("Add Measurement"): MeasMode, MeasVar, StartNode and
//   EndNode, the end marker and its label "Until" hidden for "Value of".
#pragma once

#include <QDialog>
#include <QWidget>

#include "platform/qt/view_window.h"
#include "results/measurements_form.h"

class QComboBox;
class QLabel;
class QPushButton;
class QTableWidget;

namespace tl::views {
class BarChartForm;
class GraphXYForm;
}  // namespace tl::views

namespace tl::shell {

class MainForm;

class AddMeasurementForm : public QDialog {
    Q_OBJECT
  public:
    // row: the measurement row (1 to 89) the fields are written to on OK;
    // its present fields are shown.
    AddMeasurementForm(int row, QWidget* parent = nullptr);
    void accept() override;

  private:
    void ShowMode();
    int row_;
    QComboBox* mode_;
    QComboBox* var_;
    QComboBox* start_;
    QComboBox* end_;
    QLabel* until_;
};

class MeasurementsForm : public QWidget, public qt::ViewWindow {
    Q_OBJECT
  public:
    explicit MeasurementsForm(MainForm* frame, QWidget* parent = nullptr);

    // ReprocessStats: the cells again from the runs and the rows.
    void Update();
    void Regenerate() override { Update(); }
    const MeasurementsTable& Table() const { return table_; }
    // A click on a cell of BPGrid: a heading chooses the column new
    // measurements go to; a cell with a value toggles its selection.
    void ClickCell(int row, int col);
    // The column "Add" and "Delete" work on (1 to 89).
    int ChosenColumn() const { return column_; }
    // "Add": a blank row in the chosen column, then frmAddMeasurement on it
    // (Cancel takes the blank row out again). True when a row was written.
    bool AddMeasurementRow();
    // "Delete": the chosen column's row taken out.
    void DeleteMeasurementRow();
    // "Graph": a new XY graph (one slot per cell) or bar chart (one axis per
    // cell) over the selected cells; nullptr when the checks refused.
    QWidget* GenerateGraph();
    // "Highlight": the selected cells become the map's highlighted stretches
    // and an open map draws them.
    bool HighlightOnMap();
    void CopyToClipboard();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void ShowGrid();
    void ShowSelection();
    MainForm* frame_;
    MeasurementsTable table_;
    QTableWidget* grid_;
    int column_ = 1;
};

}  // namespace tl::shell
