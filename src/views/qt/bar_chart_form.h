// frmHistoGraph, the bar chart window: the ChartTab strip with its three
// pages ("Bar Chart": GraphBox; "Setup": SetupFrame, the variable, its range,
// the condition and the five axes; "Options": OptionsFrame, the switches and
// the main title), over a BarChart that is the truth of every setting.
// Widgets write into the chart's BarChartSettings as the user edits them and
// are filled again from it after anything that changes settings on its own
// (the run's wrap, the bars-or-lines rule, the ticks a typed limit sets).
//
// Control arrays are named "<control>_<index>": per axis 0 to 4
// AxisEnabled_k, AxisRun_k, AxisRunName_k, ConstrainMin_k, ConstrainMax_k,
// AxisTitle_k.
//
// Each open chart has its entry in BarChartForms (views/view_forms.h), which
// gives it its number. Ctrl+C puts the bins on the clipboard.
#pragma once

#include <QWidget>
#include <array>

#include "platform/qt/view_window.h"
#include "views/bar_chart.h"

class QCheckBox;
class QLabel;
class QLineEdit;
class QSpinBox;
class QStackedWidget;
class QTabBar;

namespace tl::views {

class SurfaceBox;
class VariableCombo;

class BarChartForm : public QWidget, public qt::ViewWindow {
    Q_OBJECT
  public:
    // Takes the lowest free number of BarChartForms and loads the chart.
    explicit BarChartForm(QWidget* parent = nullptr);
    ~BarChartForm() override;

    BarChart& Chart() { return chart_; }
    SurfaceBox* Box() const { return box_; }
    int32_t Number() const { return chart_.GraphNumber; }

    // CalcFrequency and the paint.
    void Regenerate() override;
    // ChartTab_Click: 0 "Bar Chart", 1 "Setup", 2 "Options".
    void ChartTab_Click(int tab);
    int CurrentTab() const;
    // Every control filled again from the chart's settings.
    void RefreshControls();
    // The bins as the clipboard gets them on Ctrl+C.
    void CopyToClipboard();

  protected:
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    struct AxisRow {
        QCheckBox* enabled = nullptr;
        QSpinBox* run = nullptr;
        QLabel* runName = nullptr;
        QLineEdit* min = nullptr;
        QLineEdit* max = nullptr;
        QLineEdit* title = nullptr;
    };
    QWidget* BuildSetupPage();
    QWidget* BuildOptionsPage();
    void Paint();
    void Release();

    BarChart chart_;
    SurfaceBox* box_ = nullptr;
    QTabBar* tabs_ = nullptr;
    QStackedWidget* pages_ = nullptr;
    VariableCombo* displayVar_ = nullptr;
    QCheckBox* autoMin_ = nullptr;
    QLineEdit* dispMin_ = nullptr;
    QCheckBox* autoMax_ = nullptr;
    QLineEdit* dispMax_ = nullptr;
    QLineEdit* binCount_ = nullptr;
    VariableCombo* constrainVar_ = nullptr;
    QCheckBox* constrain_ = nullptr;
    QCheckBox* multiBar_ = nullptr;
    QLabel* hideMultipleAxis_ = nullptr;
    std::array<AxisRow, kBarChartAxes> axes_;
    QCheckBox* showGrid_ = nullptr;
    QCheckBox* percentFreq_ = nullptr;
    QCheckBox* showBars_ = nullptr;
    QCheckBox* showLines_ = nullptr;
    QLineEdit* mainTitle_ = nullptr;
    bool filling_ = false;
};

// The open bar chart windows, by number.
std::vector<BarChartForm*> OpenBarChartForms();

}  // namespace tl::views
