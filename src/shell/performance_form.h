// frmPerformanceTable ("Calculated Performance Table"), the window over
// results/performance.h. The SSTab strip's first page holds the test:
// RunToDisplay (the run, with its name beside it), StartTimeTxt, EndTimeTxt,
// TriggerGTxt, the pairs AssembledDataOption / NoAssembledDataOption,
// KphOption / MphOption and MetersOption / FeetOption; the other pages show
// AccelGrid (times), DistanceGrid (distances), each under its "Start Speed"
// label (the columns) and beside its "End Speed" label (the rows), and
// UserSummary. Moving to any of those
// pages calculates the tables; CopyToExcelBtn (and Ctrl+C) copies the grid
// shown, the times when the summary is up. The options are read on load and
// stored on close.
#pragma once

#include <QWidget>

#include "platform/qt/view_window.h"
#include "results/performance.h"

class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QRadioButton;
class QSpinBox;
class QStackedWidget;
class QTabBar;
class QTableWidget;

namespace tl::shell {

class PerformanceForm : public QWidget, public qt::ViewWindow {
    Q_OBJECT
  public:
    // The pages of SSTab.
    enum Page { TestPage = 0, TimesPage = 1, DistancesPage = 2, SummaryPage = 3 };

    explicit PerformanceForm(QWidget* parent = nullptr);
    ~PerformanceForm() override;

    // SSTab_Click: a page of results calculates the tables first (refused
    // windows leave the grids as they were).
    void SSTab_Click(int page);
    int CurrentPage() const;
    // The tables of the run and times typed, shown; false when refused.
    bool Calculate();
    void Regenerate() override;
    const PerformanceTables& Tables() const { return tables_; }
    PerformanceOptions TypedOptions() const;
    // CopyToExcelBtn: the grid shown on the clipboard.
    void CopyToClipboard();

  protected:
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    QWidget* BuildTestPage();
    QWidget* BuildGridPage(QTableWidget*& grid, const char* name);
    void ShowGrid(QTableWidget* grid, const PerformanceGrid& cells);
    void RunChanged();
    void StoreOptions();

    QTabBar* tabs_;
    QStackedWidget* pages_;
    QSpinBox* run_ = nullptr;
    QLabel* runName_ = nullptr;
    QLineEdit* startTime_ = nullptr;
    QLineEdit* endTime_ = nullptr;
    QLineEdit* trigger_ = nullptr;
    QRadioButton* assembled_ = nullptr;
    QRadioButton* notAssembled_ = nullptr;
    QRadioButton* kph_ = nullptr;
    QRadioButton* mph_ = nullptr;
    QRadioButton* metres_ = nullptr;
    QRadioButton* feet_ = nullptr;
    QTableWidget* accel_ = nullptr;
    QTableWidget* distance_ = nullptr;
    QPlainTextEdit* summary_ = nullptr;
    QPushButton* copy_ = nullptr;
    PerformanceTables tables_;
    bool stored_ = false;
    bool filling_ = false;
};

}  // namespace tl::shell
