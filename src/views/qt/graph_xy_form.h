// frmGraphXY, the XY graph window: the GraphTab strip with its three pages
// ("Graph": GraphBox and ToolBarFrame; "Setup": SetupFrame, the table of the
// five slots; "Options": OptionsFrame, the switches), over a GraphModel that
// is the truth of every setting. Widgets write into the model's
// GraphSettings as the user edits them and are filled again from it after
// anything that changes settings on its own (the zoom and pan buttons, the
// end of a zoom drag, "Reset", the X fields that follow slot 0).
//
// Control arrays are named "<control>_<index>": ZoomBtn_0 to ZoomBtn_3,
// PanBtn_0 to PanBtn_3, and per slot 0 to 4 SelYAxis_k, ActivateYAxis_k,
// MinYAxis_k, AutoMinY_k, MaxYAxis_k, AutoMaxY_k, LimitVar_k, DisplayIf_k,
// LimitVarMin_k, LimitVarMax_k, AxisRun_k, AxisRunName_k, SelXAxis_k,
// MinXAxis_k, AutoMinX_k, MaxXAxis_k, AutoMaxX_k, AxisTitle_k,
// ZeroBaseXAxis_k.
//
// Each open graph has its entry in XYGraphForms (views/view_forms.h), which
// gives it its number and through which a click on one graph moves the
// playback cursor of the others.
#pragma once

#include <QComboBox>
#include <QWidget>
#include <array>
#include <functional>
#include <memory>

#include "platform/qt/view_window.h"
#include "platform/render/painter_surface.h"
#include "views/graph_cursors.h"
#include "views/graph_model.h"

class QCheckBox;
class QGridLayout;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;
class QTabBar;
class QStackedWidget;
class QToolButton;

namespace tl::views {

// A drop-down of variables, filled at the moment it opens with the names of
// every enabled slot and reselecting the entry that was chosen.
class VariableCombo : public QComboBox {
    Q_OBJECT
  public:
    explicit VariableCombo(QWidget* parent = nullptr);
    // The list of variables with the current text selected.
    void Refill();
    // Only the given text (the closed state between uses).
    void ShowOnly(const QString& text);
    void showPopup() override;
};

// The drawing area: a raster surface at the widget's size times its device
// pixel ratio (crisp lines at 200 %), mouse and keys in twips forwarded to
// the graph's cursors.
class GraphBox : public QWidget {
    Q_OBJECT
  public:
    explicit GraphBox(QWidget* parent = nullptr);
    render::RasterSurface& Surface() { return surface_; }
    void SetCursors(GraphCursors* cursors) { cursors_ = cursors; }
    // Run after a resize of the surface (tick counts and the paint).
    std::function<void()> resized;
    // Run when a mouse release regenerated the graph (the end of a zoom).
    std::function<void()> zoomed;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    void FitSurface();
    render::RasterSurface surface_;
    GraphCursors* cursors_ = nullptr;
};

class GraphXYForm : public QWidget, public qt::ViewWindow {
    Q_OBJECT
  public:
    // Takes the lowest free number of XYGraphForms and loads the model.
    explicit GraphXYForm(QWidget* parent = nullptr);
    ~GraphXYForm() override;

    GraphModel& Model() { return model_; }
    GraphCursors& Cursors() { return *cursors_; }
    GraphBox* Box() const { return box_; }
    int32_t Number() const { return model_.GraphNumber; }

    // ReGenerateGraph and the paint.
    void Regenerate() override;
    // GraphTab_Click: 0 "Graph", 1 "Setup", 2 "Options".
    void GraphTab_Click(int tab);
    int CurrentTab() const;
    // The picture again from the model's data (Graphbox_Paint and the
    // playback cursor), shown.
    void PaintGraph();
    // Every control filled again from the model's settings.
    void RefreshControls();

  protected:
    void closeEvent(QCloseEvent* event) override;

  private:
    struct SlotRow {
        VariableCombo* selY = nullptr;
        QCheckBox* activate = nullptr;
        QCheckBox* autoMinY = nullptr;
        QLineEdit* minY = nullptr;
        QCheckBox* autoMaxY = nullptr;
        QLineEdit* maxY = nullptr;
        VariableCombo* limitVar = nullptr;
        QCheckBox* displayIf = nullptr;
        QLineEdit* limitMin = nullptr;
        QLineEdit* limitMax = nullptr;
        QSpinBox* run = nullptr;
        QLabel* runName = nullptr;
        VariableCombo* selX = nullptr;
        QCheckBox* autoMinX = nullptr;
        QLineEdit* minX = nullptr;
        QCheckBox* autoMaxX = nullptr;
        QLineEdit* maxX = nullptr;
        QLineEdit* title = nullptr;
        QCheckBox* zeroBase = nullptr;
    };

    QWidget* BuildGraphPage();
    QWidget* BuildSetupPage();
    QWidget* BuildOptionsPage();
    void BuildSlot(int k, QGridLayout* grid, int column);
    // After a change to a slot-0 X field: MultipleXAxis_Click, the other
    // slots' X fields shown again.
    void XFieldChanged(int k);
    void ToolbarClicked(bool zoom, int index);

    GraphModel model_;
    GraphBox* box_ = nullptr;
    std::unique_ptr<GraphCursors> cursors_;
    QTabBar* tabs_ = nullptr;
    QStackedWidget* pages_ = nullptr;
    std::array<SlotRow, kGraphSlots> slots_;
    std::vector<QWidget*> conditionRows_;  // shown with LimitVariables
    QLabel* hideLimitVars_ = nullptr;
    QCheckBox* multipleX_ = nullptr;
    QCheckBox* limitVariables_ = nullptr;
    QCheckBox* joinPoints_ = nullptr;
    QCheckBox* showGrid_ = nullptr;
    QCheckBox* circGrid_ = nullptr;
    QCheckBox* realTime_ = nullptr;
    QCheckBox* fastPlot_ = nullptr;
    QLineEdit* maxPoints_ = nullptr;
    QCheckBox* selectNearest_ = nullptr;
    QCheckBox* trackMarkers_ = nullptr;
    QLineEdit* mainTitle_ = nullptr;
    bool filling_ = false;
};

// The open graph windows, by number.
std::vector<GraphXYForm*> OpenGraphForms();

}  // namespace tl::views
