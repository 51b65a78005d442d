// frmRunManager: a row of controls for each run in memory and a column of
// buttons acting on it; and the small forms it opens: frmRunDetails,
// frmSetAmbientConditions and frmTrimRun.
//
// Each button column is the original's control array: the widgets of one
// column share the control's name (DeleteRunBtn, TrimRun, ...) and carry the
// run's index (run - 1) in the property "index", in the order of the rows.
#pragma once

#include <QDialog>
#include <QWidget>

#include <cstdint>

class QGridLayout;
class QLabel;
class QLineEdit;
class QPlainTextEdit;

namespace tl::shell {

class RunManagerForm : public QWidget {
    Q_OBJECT
  public:
    explicit RunManagerForm(QWidget* parent = nullptr);
    // Rebuilds the rows from the run store.
    void ResetControls();
    // Hide and show in the same place (the sub-window when inside frmMain).
    void HideManager();
    void ShowManager();
    // The width the rows ask for.
    int RowsWidth() const;

    // The per-run commands, by run number (1 to RunCount).
    void ChangeRunName(int32_t run);
    void ReProcessRun(int32_t run);
    void DeleteRunBtn(int32_t run);
    void ChangeCarFile(int32_t run);
    void TrimRun(int32_t run);
    void ReadRunDetails(int32_t run);
    void SaveRunButton(int32_t run);
    void ExportRun(int32_t run);
    void SetAmbient(int32_t run);

  private:
    QWidget* Frame();
    QWidget* rows_;
    QGridLayout* grid_;
};

// frmRunDetails: RunDetailsBox (generated, read-only), UserRunDetailsBox
// (the user's comments); Okay stores them, Cancel closes.
class RunDetailsForm : public QDialog {
    Q_OBJECT
  public:
    RunDetailsForm(int32_t run, QWidget* parent = nullptr);
};

// frmSetAmbientConditions: AmbientTempTxt, AmbientRhTxt, AmbientPressTxt;
// OkBtn tests the ranges and stays open on a refusal.
class AmbientConditionsForm : public QDialog {
    Q_OBJECT
  public:
    AmbientConditionsForm(int32_t run, QWidget* parent = nullptr);
};

// frmTrimRun: StartTime and EndTime in seconds; OkBtn trims (the engine's
// TrimRun), staying open on the refusals that ask for other times.
class TrimRunForm : public QDialog {
    Q_OBJECT
  public:
    TrimRunForm(int32_t run, QWidget* parent = nullptr);
};

}  // namespace tl::shell
