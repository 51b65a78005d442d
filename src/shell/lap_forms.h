// The windows of laps and sectors:
// - FrmLapsSectors, the options and the sector definitions: RunToDisplay,
//   LapMarkerCmbo, MarkerLengthTxt, NumOfAutoSectorsTxt, the two Auto...
//   check boxes, AutoAddLapMarkerCmd, AutoAddSectorsCmd, ClearAllSectorsBtn,
//   AddSectorBtn (frmAddSector on the grid's selected line),
//   SectorDefinitionGrid and OkayBtn;
// - frmAddSector, "Add a sector definition": SectorNameText, StartMarkerCmbo,
//   EndMarkerCmbo;
// - FrmLapAndSectorTimes, the floating table of lap and sector times
//   (LapAndSectorsGrid), toggled by MnuLapSectorTimes; its CmdGenerateGraph
//   lays the selected cells over each other in a new graph;
// - frmSectorGraphSelector, "Graph Type": the two variables of that graph
//   (OptionGraphType_0 to OptionGraphType_4, CmboXAxisVar, CmboYAxisVar).
// The logic is in results/laps.h and shell/laps_model.h.
#pragma once

#include <QDialog>
#include <QWidget>

#include "platform/qt/view_window.h"
#include "shell/laps_model.h"

class QCheckBox;
class QComboBox;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QTableWidget;

namespace tl::views {
class GraphXYForm;
}

namespace tl::shell {

class LapsSectorsForm : public QDialog {
    Q_OBJECT
  public:
    explicit LapsSectorsForm(QWidget* parent = nullptr);
    // The run chosen in RunToDisplay (1 to RunCount), 0 when none is loaded.
    int RunToDisplay() const;

  private:
    void FillMarkers();
    void FillSectors();
    void AddSector();
    LapSectorOptions TypedOptions() const;

    QComboBox* runs_;
    QComboBox* lapMarker_;
    QLineEdit* markerLength_;
    QLineEdit* sectorCount_;
    QCheckBox* autoLaps_;
    QCheckBox* autoSectors_;
    QTableWidget* sectors_;
    bool filling_ = false;
};

class AddSectorForm : public QDialog {
    Q_OBJECT
  public:
    // line: the grid's line the definition is written to (0 for row 90).
    AddSectorForm(int line, QWidget* parent = nullptr);

  private:
    void Check();
    int line_;
    QLineEdit* name_;
    QComboBox* start_;
    QComboBox* end_;
    QPushButton* ok_;
};

class SectorGraphSelectorForm : public QDialog {
    Q_OBJECT
  public:
    explicit SectorGraphSelectorForm(QWidget* parent = nullptr);
    SectorGraphType Choice() const;
    // The variables of the choice (the other option's names checked).
    SectorGraphAxes Axes() const;
    void accept() override;

  private:
    void ShowChoice();
    QRadioButton* options_[5] = {};
    QComboBox* xVar_;
    QComboBox* yVar_;
};

class LapSectorTimesForm : public QWidget, public qt::ViewWindow {
    Q_OBJECT
  public:
    explicit LapSectorTimesForm(QWidget* parent = nullptr);
    // Rebuilds the table from the runs, the lap marker and the sector rows.
    void Update_Table();
    void Regenerate() override { Update_Table(); }
    const LapSectorTimesTable& Table() const { return table_; }
    // HighLightCells: a click on a cell of LapAndSectorsGrid.
    void ClickCell(int row, int col);
    // CmdGenerateGraph: frmSectorGraphSelector, then a new graph of the
    // selected cells. The graph, or nullptr when nothing was opened.
    views::GraphXYForm* GenerateGraph();

  private:
    void ShowGrid();
    void ShowSelection();
    LapSectorTimesTable table_;
    QTableWidget* grid_;
    QPushButton* graph_;
};

}  // namespace tl::shell
