#include "shell/performance_form.h"

#include <QApplication>
#include <QButtonGroup>
#include <QClipboard>
#include <QCloseEvent>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QStackedWidget>
#include <QTabBar>
#include <QTableWidget>
#include <QVBoxLayout>
#include <algorithm>
#include <cstdio>

#include "store/run_store.h"

namespace tl::shell {
namespace {

QString Q(const std::string& text) {
    return QString::fromStdString(text);
}

QRadioButton* Option(const char* name, const char* caption) {
    auto* b = new QRadioButton(QString::fromUtf8(caption));
    b->setObjectName(QString::fromUtf8(name));
    return b;
}

QLineEdit* Edit(const char* name, const QString& text) {
    auto* edit = new QLineEdit(text);
    edit->setObjectName(QString::fromUtf8(name));
    edit->setMaximumWidth(edit->fontMetrics().horizontalAdvance(QLatin1Char('0')) * 10 + 12);
    return edit;
}

// Two buttons as one choice.
QGroupBox* Pair(QRadioButton* a, QRadioButton* b) {
    auto* box = new QGroupBox;
    auto* row = new QHBoxLayout(box);
    row->addWidget(a);
    row->addWidget(b);
    row->addStretch(1);
    auto* group = new QButtonGroup(box);
    group->addButton(a);
    group->addButton(b);
    return box;
}

// A run's length in seconds, to the hundredth below its last row.
QString RunLength(int32_t run) {
    if (run < 1 || run > Store().RunCount) return QStringLiteral("0");
    const RunRecord& info = Store().RunInfo[run];
    char text[32];
    std::snprintf(text, sizeof text, "%.2f", std::max(0, info.RunEnd - info.RunStart - 1) / 100.0);
    return QString::fromUtf8(text);
}

}  // namespace

PerformanceForm::PerformanceForm(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("frmPerformanceTable"));
    setWindowTitle(QStringLiteral("Calculated Performance Table"));
    tabs_ = new QTabBar;
    tabs_->setObjectName(QStringLiteral("SSTab"));
    for (const char* caption : {"Test", "Times", "Distances", "Summary"})
        tabs_->addTab(QString::fromUtf8(caption));
    tabs_->setExpanding(false);
    pages_ = new QStackedWidget;
    pages_->addWidget(BuildTestPage());
    pages_->addWidget(BuildGridPage(accel_, "AccelGrid"));
    pages_->addWidget(BuildGridPage(distance_, "DistanceGrid"));
    auto* summaryPage = new QWidget;
    auto* summaryLayout = new QVBoxLayout(summaryPage);
    summary_ = new QPlainTextEdit;
    summary_->setObjectName(QStringLiteral("UserSummary"));
    summary_->setReadOnly(true);
    summaryLayout->addWidget(summary_, 1);
    summaryLayout->addWidget(
        new QLabel(QStringLiteral("This results are defined in file \"SummaryPerformance.cfg\"")));
    pages_->addWidget(summaryPage);

    copy_ = new QPushButton(QStringLiteral("Copy"));
    copy_->setObjectName(QStringLiteral("CopyToExcelBtn"));
    copy_->setToolTip(
        QStringLiteral("Copy data to the clipboard, suitable for pasting into Excel"));
    copy_->setAutoDefault(false);
    connect(copy_, &QPushButton::clicked, this, [this] { CopyToClipboard(); });
    auto* bottom = new QHBoxLayout;
    bottom->addStretch(1);
    bottom->addWidget(copy_);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->addWidget(tabs_);
    layout->addWidget(pages_, 1);
    layout->addLayout(bottom);
    connect(tabs_, &QTabBar::currentChanged, this, [this](int page) {
        if (!filling_) SSTab_Click(page);
    });

    // Form load: the options stored last, the first run and its whole length.
    const PerformanceOptions options = LoadPerformanceOptions();
    (options.assembled ? assembled_ : notAssembled_)->setChecked(true);
    (options.mph ? mph_ : kph_)->setChecked(true);
    (options.feet ? feet_ : metres_)->setChecked(true);
    trigger_->setText(Q(options.trigger));
    RunChanged();
    CheckPerformanceVariables();
}

PerformanceForm::~PerformanceForm() {
    StoreOptions();
}

void PerformanceForm::StoreOptions() {
    if (stored_) return;
    stored_ = true;
    SavePerformanceOptions(TypedOptions());
}

void PerformanceForm::closeEvent(QCloseEvent* event) {
    StoreOptions();
    QWidget::closeEvent(event);
}

void PerformanceForm::keyPressEvent(QKeyEvent* event) {
    if (event->matches(QKeySequence::Copy) ||
        (event->key() == Qt::Key_C && (event->modifiers() & Qt::ControlModifier))) {
        CopyToClipboard();
        return;
    }
    QWidget::keyPressEvent(event);
}

QWidget* PerformanceForm::BuildTestPage() {
    auto* page = new QWidget;
    auto* form = new QFormLayout;
    run_ = new QSpinBox;
    run_->setObjectName(QStringLiteral("RunToDisplay"));
    run_->setRange(1, std::max(1, Store().RunCount));
    runName_ = new QLabel;
    runName_->setObjectName(QStringLiteral("RunName"));
    auto* runRow = new QHBoxLayout;
    runRow->addWidget(run_);
    runRow->addWidget(runName_, 1);
    connect(run_, &QSpinBox::valueChanged, this, [this] {
        if (!filling_) RunChanged();
    });
    form->addRow(QStringLiteral("Run"), runRow);
    startTime_ = Edit("StartTimeTxt", QStringLiteral("0"));
    endTime_ = Edit("EndTimeTxt", QString());
    trigger_ = Edit("TriggerGTxt", QString());
    form->addRow(QStringLiteral("Start time of test [s]"), startTime_);
    form->addRow(QStringLiteral("End time of test [s]"), endTime_);
    form->addRow(QStringLiteral("Trigger acceleration for test [g]"), trigger_);

    assembled_ = Option("AssembledDataOption",
                        "Assemble timings and distances from the best interval timings");
    notAssembled_ = Option("NoAssembledDataOption",
                           "Take all timings and distances directly from best in the data");
    auto* assembly = new QGroupBox;
    auto* assemblyColumn = new QVBoxLayout(assembly);
    assemblyColumn->addWidget(assembled_);
    assemblyColumn->addWidget(notAssembled_);
    auto* assemblyGroup = new QButtonGroup(assembly);
    assemblyGroup->addButton(assembled_);
    assemblyGroup->addButton(notAssembled_);
    kph_ = Option("KphOption", "kph");
    mph_ = Option("MphOption", "mph");
    metres_ = Option("MetersOption", "Meters");
    feet_ = Option("FeetOption", "Feet");

    auto* layout = new QVBoxLayout(page);
    layout->addLayout(form);
    layout->addWidget(assembly);
    auto* units = new QHBoxLayout;
    units->addWidget(Pair(kph_, mph_));
    units->addWidget(Pair(metres_, feet_));
    units->addStretch(1);
    layout->addLayout(units);
    layout->addStretch(1);
    return page;
}

QWidget* PerformanceForm::BuildGridPage(QTableWidget*& grid, const char* name) {
    auto* page = new QWidget;
    grid = new QTableWidget;
    grid->setObjectName(QString::fromUtf8(name));
    grid->horizontalHeader()->setVisible(false);
    grid->verticalHeader()->setVisible(false);
    grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    grid->verticalHeader()->setDefaultSectionSize(QFontMetrics(grid->font()).height() + 8);
    auto* start = new QLabel(QStringLiteral("Start Speed"));
    start->setAlignment(Qt::AlignCenter);
    // "End Speed" down the side, one letter under the other.
    auto* end = new QLabel(QStringLiteral("E\nn\nd\n\nS\np\ne\ne\nd"));
    end->setAccessibleName(QStringLiteral("End Speed"));
    end->setAlignment(Qt::AlignCenter);
    auto* layout = new QGridLayout(page);
    layout->addWidget(start, 0, 1);
    layout->addWidget(end, 1, 0);
    layout->addWidget(grid, 1, 1);
    layout->setColumnStretch(1, 1);
    layout->setRowStretch(1, 1);
    return page;
}

void PerformanceForm::RunChanged() {
    filling_ = true;
    run_->setRange(1, std::max(1, Store().RunCount));
    const int32_t run = run_->value();
    runName_->setText(run <= Store().RunCount ? Q(Store().RunInfo[run].Name) : QString());
    endTime_->setText(RunLength(run));
    filling_ = false;
}

PerformanceOptions PerformanceForm::TypedOptions() const {
    PerformanceOptions options;
    options.mph = mph_->isChecked();
    options.feet = feet_->isChecked();
    options.assembled = assembled_->isChecked();
    options.trigger = trigger_->text().toStdString();
    return options;
}

int PerformanceForm::CurrentPage() const {
    return tabs_->currentIndex();
}

void PerformanceForm::SSTab_Click(int page) {
    if (tabs_->currentIndex() != page) {
        filling_ = true;
        tabs_->setCurrentIndex(page);
        filling_ = false;
    }
    pages_->setCurrentIndex(page);
    if (page != TestPage) Calculate();
    copy_->setEnabled(page != TestPage);
}

bool PerformanceForm::Calculate() {
    PerformanceTables tables = CalculatePerformance(run_->value(), startTime_->text().toStdString(),
                                                    endTime_->text().toStdString(), TypedOptions());
    if (!tables.ok) return false;
    tables_ = std::move(tables);
    ShowGrid(accel_, tables_.accel);
    ShowGrid(distance_, tables_.distance);
    summary_->setPlainText(Q(tables_.summary).remove(QLatin1Char('\r')));
    return true;
}

void PerformanceForm::Regenerate() {
    RunChanged();
    if (CurrentPage() != TestPage) Calculate();
}

void PerformanceForm::ShowGrid(QTableWidget* grid, const PerformanceGrid& cells) {
    grid->setUpdatesEnabled(false);
    grid->clear();
    grid->setRowCount(cells.rows);
    grid->setColumnCount(cells.cols);
    const QColor fixed(0xE0, 0xE0, 0xE0);
    for (int r = 0; r < cells.rows; ++r) {
        for (int c = 0; c < cells.cols; ++c) {
            auto* item = new QTableWidgetItem(Q(cells.Text(r, c)));
            item->setTextAlignment(Qt::AlignCenter);
            if (r == 0 || c == 0) {
                item->setBackground(fixed);
            } else if (const uint32_t fore = cells.fore[static_cast<size_t>(r) * cells.cols + c]) {
                item->setForeground(QColor(static_cast<int>(fore & 0xFF),
                                           static_cast<int>((fore >> 8) & 0xFF),
                                           static_cast<int>((fore >> 16) & 0xFF)));
            }
            grid->setItem(r, c, item);
        }
    }
    // Every column as wide as the widest text, 800 twips at least.
    grid->resizeColumnsToContents();
    for (int c = 0; c < cells.cols; ++c)
        grid->setColumnWidth(c, std::max(grid->columnWidth(c), 800 / 15));
    grid->setUpdatesEnabled(true);
}

void PerformanceForm::CopyToClipboard() {
    const PerformanceGrid& shown =
        CurrentPage() == DistancesPage ? tables_.distance : tables_.accel;
    QApplication::clipboard()->setText(Q(PerformanceGridText(shown)));
}

}  // namespace tl::shell
