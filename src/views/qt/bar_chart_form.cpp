#include "views/qt/bar_chart_form.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QCloseEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QScrollArea>
#include <QSpinBox>
#include <QStackedWidget>
#include <QTabBar>
#include <QVBoxLayout>
#include <cmath>

#include "core/support.h"
#include "store/run_store.h"
#include "views/qt/graph_xy_form.h"
#include "views/qt/surface_box.h"
#include "views/view_forms.h"

namespace tl::views {
namespace {

QString Q(const std::string& text) {
    return QString::fromStdString(text);
}

QCheckBox* Check(const QString& name, const QString& text = QString()) {
    auto* box = new QCheckBox(text);
    box->setObjectName(name);
    return box;
}

QLineEdit* Edit(const QString& name, int chars = 8) {
    auto* edit = new QLineEdit;
    edit->setObjectName(name);
    edit->setMinimumWidth(edit->fontMetrics().horizontalAdvance(QLatin1Char('0')) * chars + 12);
    return edit;
}

QWidget* Scrolled(QWidget* frame) {
    auto* scroll = new QScrollArea;
    scroll->setWidget(frame);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    return scroll;
}

bool IsCopyKey(const QKeyEvent* event) {
    return event->matches(QKeySequence::Copy) ||
           (event->key() == Qt::Key_C && (event->modifiers() & Qt::ControlModifier));
}

}  // namespace

std::vector<BarChartForm*> OpenBarChartForms() {
    std::vector<BarChartForm*> forms;
    for (void* form : BarChartForms().OpenForms())
        forms.push_back(static_cast<BarChartForm*>(form));
    return forms;
}

BarChartForm::BarChartForm(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("frmHistoGraph"));
    chart_.Load(BarChartForms().Open(this));
    box_ = new SurfaceBox(QStringLiteral("GraphBox"));
    box_->setMinimumSize(200, 150);
    box_->resized = [this] { Paint(); };
    box_->keyPressed = [this](int ascii) {
        if (ascii != 3) return false;
        CopyToClipboard();
        return true;
    };

    tabs_ = new QTabBar;
    tabs_->setObjectName(QStringLiteral("ChartTab"));
    for (const ChartTabs tab : {ChartTabs::BarChart, ChartTabs::Setup, ChartTabs::Options})
        tabs_->addTab(Q(BarChart::TabCaption(tab)));
    tabs_->setExpanding(false);
    pages_ = new QStackedWidget;
    pages_->addWidget(box_);
    pages_->addWidget(BuildSetupPage());
    pages_->addWidget(BuildOptionsPage());
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->setSpacing(0);
    layout->addWidget(tabs_);
    layout->addWidget(pages_, 1);
    connect(tabs_, &QTabBar::currentChanged, this, [this](int tab) {
        if (!filling_) ChartTab_Click(tab);
    });
    setWindowTitle(Q(chart_.Caption()));
    RefreshControls();
}

BarChartForm::~BarChartForm() {
    Release();
}

void BarChartForm::Release() {
    // Form_Unload: the number is free again.
    if (chart_.GraphNumber != 0 && BarChartForms().NumberOf(this) == chart_.GraphNumber)
        BarChartForms().Close(chart_.GraphNumber);
}

void BarChartForm::closeEvent(QCloseEvent* event) {
    Release();
    QWidget::closeEvent(event);
}

void BarChartForm::keyPressEvent(QKeyEvent* event) {
    if (IsCopyKey(event)) {
        CopyToClipboard();
        return;
    }
    QWidget::keyPressEvent(event);
}

void BarChartForm::CopyToClipboard() {
    QApplication::clipboard()->setText(Q(chart_.ClipboardText()));
}

QWidget* BarChartForm::BuildSetupPage() {
    auto* frame = new QWidget;
    frame->setObjectName(QStringLiteral("SetupFrame"));
    auto* layout = new QVBoxLayout(frame);
    BarChartSettings& s = chart_.settings;

    auto* top = new QGridLayout;
    top->setHorizontalSpacing(8);
    displayVar_ = new VariableCombo;
    displayVar_->setObjectName(QStringLiteral("DisplayVar"));
    connect(displayVar_, &QComboBox::currentTextChanged, this, [this](const QString& t) {
        if (!filling_) chart_.settings.DisplayVar = t.toStdString();
    });
    top->addWidget(new QLabel(QStringLiteral("Variable To Display")), 0, 0);
    top->addWidget(displayVar_, 0, 1, 1, 3);

    autoMin_ = Check(QStringLiteral("AutoMin"), QStringLiteral("Minimum"));
    connect(autoMin_, &QCheckBox::toggled, this, [&s, this](bool on) {
        if (!filling_) s.AutoMin = on ? 1 : 0;
    });
    dispMin_ = Edit(QStringLiteral("DispVarMin"));
    connect(dispMin_, &QLineEdit::textEdited, this, [this](const QString& t) {
        chart_.settings.DispVarMin = t.toStdString();
        chart_.DispVarMin_Change();
        RefreshControls();
    });
    autoMax_ = Check(QStringLiteral("AutoMax"), QStringLiteral("Maximum"));
    connect(autoMax_, &QCheckBox::toggled, this, [&s, this](bool on) {
        if (!filling_) s.AutoMax = on ? 1 : 0;
    });
    dispMax_ = Edit(QStringLiteral("DispVarMax"));
    connect(dispMax_, &QLineEdit::textEdited, this, [this](const QString& t) {
        chart_.settings.DispVarMax = t.toStdString();
        chart_.DispVarMax_Change();
        RefreshControls();
    });
    top->addWidget(autoMin_, 1, 0);
    top->addWidget(dispMin_, 1, 1);
    top->addWidget(autoMax_, 1, 2);
    top->addWidget(dispMax_, 1, 3);

    binCount_ = Edit(QStringLiteral("BinCount"), 5);
    connect(binCount_, &QLineEdit::textEdited, this,
            [&s](const QString& t) { s.BinCount = t.toStdString(); });
    top->addWidget(new QLabel(QStringLiteral("Number of Bars")), 2, 0);
    top->addWidget(binCount_, 2, 1);

    constrain_ = Check(QStringLiteral("Constrain"), QStringLiteral("Only Count If"));
    connect(constrain_, &QCheckBox::toggled, this, [&s, this](bool on) {
        if (!filling_) s.Constrain = on ? 1 : 0;
    });
    constrainVar_ = new VariableCombo;
    constrainVar_->setObjectName(QStringLiteral("ConstrainVar"));
    connect(constrainVar_, &QComboBox::currentTextChanged, this, [this](const QString& t) {
        if (!filling_) chart_.settings.ConstrainVar = t.toStdString();
    });
    top->addWidget(constrain_, 3, 0);
    top->addWidget(constrainVar_, 3, 1, 1, 3);

    multiBar_ = Check(QStringLiteral("MultiBar"), QStringLiteral("Show Multiple Bar Charts"));
    connect(multiBar_, &QCheckBox::toggled, this, [&s, this](bool on) {
        if (filling_) return;
        s.MultiBar = on ? 1 : 0;
        RefreshControls();
    });
    top->addWidget(multiBar_, 4, 0, 1, 4);
    top->setColumnStretch(4, 1);
    layout->addLayout(top);
    layout->addSpacing(8);

    // The five axes, one line each in its colour; axes 1 to 4 are covered
    // while there is one chart.
    auto* grid = new QGridLayout;
    grid->setHorizontalSpacing(8);
    const char* headings[] = {
        "", "Run", "", "Count If Above", "And Below", "Axis Title (optional)"};
    for (int c = 0; c < static_cast<int>(std::size(headings)); ++c)
        grid->addWidget(new QLabel(QString::fromUtf8(headings[c])), 0, c);
    for (int k = 0; k < kBarChartAxes; ++k) {
        AxisRow& w = axes_[k];
        auto name = [k](const char* control) {
            return QStringLiteral("%1_%2").arg(QString::fromUtf8(control)).arg(k);
        };
        w.enabled = Check(name("AxisEnabled"), QStringLiteral("Axis %1").arg(k + 1));
        const uint32_t c = VqColorIndex(k, false);
        QPalette palette = w.enabled->palette();
        palette.setColor(QPalette::WindowText, QColor(c & 0xFF, (c >> 8) & 0xFF, (c >> 16) & 0xFF));
        w.enabled->setPalette(palette);
        connect(w.enabled, &QCheckBox::toggled, this, [this, k](bool on) {
            if (!filling_) chart_.settings.Axes[k].AxisEnabled = on ? 1 : 0;
        });
        w.run = new QSpinBox;
        w.run->setObjectName(name("AxisRun"));
        w.run->setRange(0, 1000);
        connect(w.run, &QSpinBox::valueChanged, this, [this, k](int run) {
            if (filling_) return;
            chart_.settings.Axes[k].AxisRun = std::to_string(run);
            chart_.AxisRun_Change(k);
            RefreshControls();
        });
        w.runName = new QLabel;
        w.runName->setObjectName(name("AxisRunName"));
        w.runName->setMinimumWidth(w.runName->fontMetrics().horizontalAdvance(QLatin1Char('0')) *
                                   14);
        w.min = Edit(name("ConstrainMin"));
        connect(w.min, &QLineEdit::textEdited, this, [this, k](const QString& t) {
            chart_.settings.Axes[k].ConstrainMin = t.toStdString();
            chart_.ConstrainMin_Change();
            RefreshControls();
        });
        w.max = Edit(name("ConstrainMax"));
        connect(w.max, &QLineEdit::textEdited, this, [this, k](const QString& t) {
            chart_.settings.Axes[k].ConstrainMax = t.toStdString();
            chart_.ConstrainMax_Change();
            RefreshControls();
        });
        w.title = Edit(name("AxisTitle"), 20);
        connect(w.title, &QLineEdit::textEdited, this, [this, k](const QString& t) {
            chart_.settings.Axes[k].AxisTitle = t.toStdString();
        });
        grid->addWidget(w.enabled, k + 1, 0);
        grid->addWidget(w.run, k + 1, 1);
        grid->addWidget(w.runName, k + 1, 2);
        grid->addWidget(w.min, k + 1, 3);
        grid->addWidget(w.max, k + 1, 4);
        grid->addWidget(w.title, k + 1, 5);
    }
    hideMultipleAxis_ = new QLabel(
        QStringLiteral("One chart: tick \"Show Multiple Bar Charts\" to count up to five runs or "
                       "conditions at once."));
    hideMultipleAxis_->setObjectName(QStringLiteral("HideMultipleAxis"));
    hideMultipleAxis_->setWordWrap(true);
    hideMultipleAxis_->setAutoFillBackground(true);
    grid->addWidget(hideMultipleAxis_, 2, 0, kBarChartAxes - 1, 6);
    grid->setColumnStretch(6, 1);
    layout->addLayout(grid);
    layout->addStretch(1);
    return Scrolled(frame);
}

QWidget* BarChartForm::BuildOptionsPage() {
    auto* frame = new QWidget;
    frame->setObjectName(QStringLiteral("OptionsFrame"));
    auto* layout = new QVBoxLayout(frame);
    BarChartSettings& s = chart_.settings;
    auto check = [&](QCheckBox*& box, const char* name, const char* text, int16_t& field) {
        box = Check(QString::fromUtf8(name), QString::fromUtf8(text));
        connect(box, &QCheckBox::toggled, this, [this, &field](bool on) {
            if (!filling_) field = on ? 1 : 0;
        });
        layout->addWidget(box);
    };
    check(showGrid_, "ShowGrid", "Show Grid", s.ShowGrid);
    check(percentFreq_, "PercentFreq", "Show Results as a Percentage", s.PercentFreq);
    showBars_ = Check(QStringLiteral("ShowBars"), QStringLiteral("Show Bars"));
    connect(showBars_, &QCheckBox::toggled, this, [this](bool on) {
        if (filling_) return;
        chart_.settings.ShowBars = on ? 1 : 0;
        chart_.ShowBars_Click();
        RefreshControls();
    });
    layout->addWidget(showBars_);
    showLines_ = Check(QStringLiteral("ShowLines"), QStringLiteral("Show Lines"));
    connect(showLines_, &QCheckBox::toggled, this, [this](bool on) {
        if (filling_) return;
        chart_.settings.ShowLines = on ? 1 : 0;
        chart_.ShowLines_Click();
        RefreshControls();
    });
    layout->addWidget(showLines_);
    auto* titleRow = new QHBoxLayout;
    titleRow->addWidget(new QLabel(QStringLiteral("Main Title (optional)")));
    mainTitle_ = Edit(QStringLiteral("MainTitle"), 30);
    connect(mainTitle_, &QLineEdit::textEdited, this, [this](const QString& t) {
        chart_.settings.MainTitle = t.toStdString();
        setWindowTitle(Q(chart_.Caption()));
    });
    titleRow->addWidget(mainTitle_, 1);
    titleRow->addStretch(1);
    layout->addSpacing(6);
    layout->addLayout(titleRow);
    layout->addStretch(1);
    return Scrolled(frame);
}

void BarChartForm::RefreshControls() {
    filling_ = true;
    const BarChartSettings& s = chart_.settings;
    auto setText = [](QLineEdit* edit, const std::string& text) {
        if (edit->text() != Q(text)) edit->setText(Q(text));
    };
    auto setCombo = [](VariableCombo* combo, const std::string& text) {
        if (combo->count() > 1 && combo->findText(Q(text)) >= 0) {
            const QSignalBlocker block(combo);
            combo->setCurrentIndex(combo->findText(Q(text)));
        } else if (combo->currentText() != Q(text) || combo->count() != 1) {
            combo->ShowOnly(Q(text));
        }
    };
    setCombo(displayVar_, s.DisplayVar);
    autoMin_->setChecked(s.AutoMin != 0);
    setText(dispMin_, s.DispVarMin);
    autoMax_->setChecked(s.AutoMax != 0);
    setText(dispMax_, s.DispVarMax);
    setText(binCount_, s.BinCount);
    setCombo(constrainVar_, s.ConstrainVar);
    constrain_->setChecked(s.Constrain != 0);
    multiBar_->setChecked(s.MultiBar != 0);
    const bool multi = !chart_.HideMultipleAxisVisible();
    for (int k = 0; k < kBarChartAxes; ++k) {
        const BarChartAxisSettings& a = s.Axes[k];
        AxisRow& w = axes_[k];
        w.enabled->setChecked(a.AxisEnabled != 0);
        w.run->setValue(static_cast<int>(std::lround(GetVal(a.AxisRun))));
        w.runName->setText(Q(chart_.AxisRunName[k]));
        setText(w.min, a.ConstrainMin);
        setText(w.max, a.ConstrainMax);
        setText(w.title, a.AxisTitle);
        // With one chart only axis 0's run and condition count.
        w.enabled->setEnabled(multi);
        for (QWidget* field :
             std::initializer_list<QWidget*>{w.enabled, w.run, w.runName, w.min, w.max, w.title})
            field->setVisible(k == 0 || multi);
    }
    hideMultipleAxis_->setVisible(!multi);
    showGrid_->setChecked(s.ShowGrid != 0);
    percentFreq_->setChecked(s.PercentFreq != 0);
    showBars_->setChecked(s.ShowBars != 0);
    showLines_->setChecked(s.ShowLines != 0);
    setText(mainTitle_, s.MainTitle);
    setWindowTitle(Q(chart_.Caption()));
    filling_ = false;
}

int BarChartForm::CurrentTab() const {
    return tabs_->currentIndex();
}

void BarChartForm::ChartTab_Click(int tab) {
    if (tabs_->currentIndex() != tab) {
        filling_ = true;
        tabs_->setCurrentIndex(tab);
        filling_ = false;
    }
    pages_->setCurrentIndex(tab);
    if (chart_.ChartTab_Click(static_cast<ChartTabs>(tab))) Paint();
    RefreshControls();
}

void BarChartForm::Regenerate() {
    chart_.CalcFrequency();
    Paint();
    RefreshControls();
}

void BarChartForm::Paint() {
    GraphBox_Paint(chart_, box_->Surface());
    setWindowTitle(Q(chart_.Caption()));
    box_->update();
}

}  // namespace tl::views
