#include "views/qt/graph_xy_form.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMdiSubWindow>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPushButton>
#include <QScrollArea>
#include <QSpinBox>
#include <QStackedWidget>
#include <QTabBar>
#include <QToolButton>
#include <QVBoxLayout>
#include <cmath>

#include "core/support.h"
#include "store/catalogue.h"
#include "store/run_store.h"
#include "views/qt/view_links.h"
#include "views/view_forms.h"

namespace tl::views {
namespace {

QString Q(const std::string& text) {
    return QString::fromStdString(text);
}

QColor SlotColour(int k) {
    const uint32_t c = VqColorIndex(k, false);
    return QColor(c & 0xFF, (c >> 8) & 0xFF, (c >> 16) & 0xFF);
}

// The twips of a logical pixel at 100 %.
constexpr double kTwipsPerPixel = 15.0;

int Buttons(Qt::MouseButtons b) {
    int v = 0;
    if (b & Qt::LeftButton) v |= 1;
    if (b & Qt::RightButton) v |= 2;
    if (b & Qt::MiddleButton) v |= 4;
    return v;
}

int ShiftState(Qt::KeyboardModifiers m) {
    int v = 0;
    if (m & Qt::ShiftModifier) v |= kShiftMask;
    if (m & Qt::ControlModifier) v |= kCtrlMask;
    if (m & Qt::AltModifier) v |= 4;
    return v;
}

// The toolbar's pictures, drawn at any resolution: a magnifier with a back
// arrow, a dashed window, a minus, a reset frame; four pan arrows.
QIcon ToolbarIcon(bool zoom, int index) {
    QIcon icon;
    for (const qreal ratio : {1.0, 2.0}) {
        QPixmap pixmap(QSize(20, 20) * ratio);
        pixmap.setDevicePixelRatio(ratio);
        pixmap.fill(Qt::transparent);
        QPainter p(&pixmap);
        p.setRenderHint(QPainter::Antialiasing);
        const QColor ink(0x20, 0x40, 0x80);
        QPen pen(ink, 1.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
        p.setPen(pen);
        auto arrow = [&p, &ink](QPointF from, QPointF to) {
            p.drawLine(from, to);
            const QPointF d = (to - from) / std::hypot(to.x() - from.x(), to.y() - from.y());
            const QPointF n(-d.y(), d.x());
            QPainterPath head;
            head.moveTo(to + d * 1.5);
            head.lineTo(to - d * 3.5 + n * 3.5);
            head.lineTo(to - d * 3.5 - n * 3.5);
            head.closeSubpath();
            p.fillPath(head, ink);
        };
        if (zoom) {
            const QPointF centre(8, 8);
            if (index != 1 && index != 3) {
                p.drawEllipse(centre, 5.5, 5.5);
                p.setPen(QPen(ink, 2.6, Qt::SolidLine, Qt::RoundCap));
                p.drawLine(QPointF(12.2, 12.2), QPointF(17.5, 17.5));
                p.setPen(pen);
            }
            if (index == 0) {
                arrow(QPointF(10.5, 8), QPointF(5.5, 8));
            } else if (index == 1) {
                p.setPen(QPen(ink, 1.4, Qt::DashLine));
                p.drawRect(QRectF(2.5, 2.5, 11, 9));
                p.setPen(pen);
                arrow(QPointF(9, 7), QPointF(16, 15));
            } else if (index == 2) {
                p.drawLine(QPointF(5, 8), QPointF(11, 8));
            } else {
                p.drawRect(QRectF(2.5, 4.5, 15, 11));
                p.drawLine(QPointF(5, 13), QPointF(8.5, 8.5));
                p.drawLine(QPointF(8.5, 8.5), QPointF(11, 11));
                p.drawLine(QPointF(11, 11), QPointF(15, 6.5));
            }
        } else {
            const QPointF c(10, 10);
            const QPointF ends[] = {{-7, 0}, {0, -7}, {0, 7}, {7, 0}};
            arrow(c - ends[index] * 0.8, c + ends[index]);
        }
        p.end();
        icon.addPixmap(pixmap);
    }
    return icon;
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

// A line edit that reports a click into it (the setup table's small rules).
class ClickFilter : public QObject {
  public:
    ClickFilter(QObject* parent, std::function<void()> clicked)
        : QObject(parent), clicked_(std::move(clicked)) {}
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::MouseButtonPress) clicked_();
        return QObject::eventFilter(watched, event);
    }

  private:
    std::function<void()> clicked_;
};

}  // namespace

// --- VariableCombo --------------------------------------------------------------

VariableCombo::VariableCombo(QWidget* parent) : QComboBox(parent) {
    setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    setMinimumContentsLength(12);
}

void VariableCombo::Refill() {
    const QString chosen = currentText();
    const QSignalBlocker block(this);
    clear();
    for (const std::string& name : GraphModel::VariableNames()) addItem(Q(name));
    int at = findText(chosen);
    if (at < 0) {
        insertItem(0, chosen);
        at = 0;
    }
    setCurrentIndex(at);
}

void VariableCombo::ShowOnly(const QString& text) {
    const QSignalBlocker block(this);
    clear();
    addItem(text);
    setCurrentIndex(0);
}

void VariableCombo::showPopup() {
    Refill();
    QComboBox::showPopup();
}

// --- GraphBox -------------------------------------------------------------------

GraphBox::GraphBox(QWidget* parent) : QWidget(parent), surface_(1, 1, 96.0) {
    setObjectName(QStringLiteral("GraphBox"));
    setFocusPolicy(Qt::ClickFocus);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMinimumSize(200, 150);
    setMouseTracking(false);
}

void GraphBox::FitSurface() {
    const qreal ratio = devicePixelRatioF();
    surface_.Resize(std::max(1, static_cast<int>(std::lround(width() * ratio))),
                    std::max(1, static_cast<int>(std::lround(height() * ratio))), 96.0 * ratio);
}

void GraphBox::paintEvent(QPaintEvent*) {
    const qreal ratio = devicePixelRatioF();
    if (std::abs(surface_.PixelsPerTwip() * kTwipsPerInch / 96.0 - ratio) > 1e-6) {
        // Moved to a screen of another scale: drawn again at its resolution.
        FitSurface();
        if (resized) resized();
    }
    QPainter p(this);
    const QImage& image = surface_.Image();
    p.drawImage(QRectF(0, 0, image.width() / ratio, image.height() / ratio), image,
                QRectF(image.rect()));
}

void GraphBox::resizeEvent(QResizeEvent*) {
    FitSurface();
    if (resized) resized();
}

void GraphBox::mousePressEvent(QMouseEvent* event) {
    setFocus(Qt::MouseFocusReason);
    if (cursors_ == nullptr) return;
    const QPointF at = event->position() * kTwipsPerPixel;
    cursors_->MouseDown(Buttons(event->button()), ShiftState(event->modifiers()), at.x(), at.y());
    update();
}

void GraphBox::mouseMoveEvent(QMouseEvent* event) {
    if (cursors_ == nullptr) return;
    const QPointF at = event->position() * kTwipsPerPixel;
    cursors_->MouseMove(Buttons(event->buttons()), ShiftState(event->modifiers()), at.x(), at.y());
    update();
}

void GraphBox::mouseReleaseEvent(QMouseEvent* event) {
    if (cursors_ == nullptr) return;
    const QPointF at = event->position() * kTwipsPerPixel;
    const bool regenerated =
        cursors_->MouseUp(Buttons(event->button()), ShiftState(event->modifiers()), at.x(), at.y());
    unsetCursor();
    if (regenerated && zoomed) zoomed();
    update();
}

void GraphBox::keyPressEvent(QKeyEvent* event) {
    if (cursors_ == nullptr) return;
    int ascii = 0;
    if (event->matches(QKeySequence::Copy) ||
        (event->key() == Qt::Key_C && (event->modifiers() & Qt::ControlModifier))) {
        ascii = 3;
    } else if (!event->text().isEmpty()) {
        ascii = event->text().at(0).unicode();
    }
    if (ascii != 0 && cursors_->KeyPress(ascii)) {
        update();
        return;
    }
    QWidget::keyPressEvent(event);
}

// --- GraphXYForm ------------------------------------------------------------------

std::vector<GraphXYForm*> OpenGraphForms() {
    std::vector<GraphXYForm*> forms;
    for (void* form : XYGraphForms().OpenForms()) forms.push_back(static_cast<GraphXYForm*>(form));
    return forms;
}

GraphXYForm::GraphXYForm(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("frmGraphXY"));
    model_.Load(XYGraphForms().Open(this));
    box_ = new GraphBox;
    cursors_ = std::make_unique<GraphCursors>(model_, box_->Surface(), &Hub());
    box_->SetCursors(cursors_.get());
    box_->resized = [this] {
        model_.SetTickCounts(box_->Surface().ScaleWidth(), box_->Surface().ScaleHeight());
        PaintGraph();
    };
    box_->zoomed = [this] {
        PaintGraph();
        RefreshControls();
    };

    tabs_ = new QTabBar;
    tabs_->setObjectName(QStringLiteral("GraphTab"));
    tabs_->addTab(QStringLiteral("Graph"));
    tabs_->addTab(QStringLiteral("Setup"));
    tabs_->addTab(QStringLiteral("Options"));
    tabs_->setExpanding(false);
    pages_ = new QStackedWidget;
    pages_->addWidget(BuildGraphPage());
    pages_->addWidget(BuildSetupPage());
    pages_->addWidget(BuildOptionsPage());
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->setSpacing(0);
    layout->addWidget(tabs_);
    layout->addWidget(pages_, 1);
    connect(tabs_, &QTabBar::currentChanged, this, [this](int tab) {
        if (!filling_) GraphTab_Click(tab);
    });
    setWindowTitle(Q(model_.Caption()));
    RefreshControls();
}

GraphXYForm::~GraphXYForm() {
    box_->SetCursors(nullptr);
    if (XYGraphForms().NumberOf(this) == model_.GraphNumber) XYGraphForms().Close(Number());
}

void GraphXYForm::closeEvent(QCloseEvent* event) {
    // Form_Unload: the number is free again.
    if (XYGraphForms().NumberOf(this) == model_.GraphNumber) XYGraphForms().Close(Number());
    QWidget::closeEvent(event);
}

QWidget* GraphXYForm::BuildGraphPage() {
    auto* page = new QWidget;
    auto* toolbar = new QWidget;
    toolbar->setObjectName(QStringLiteral("ToolBarFrame"));
    auto* row = new QHBoxLayout(toolbar);
    row->setContentsMargins(2, 2, 2, 2);
    row->setSpacing(1);
    for (const bool zoom : {true, false}) {
        for (int i = 0; i < 4; ++i) {
            auto* button = new QToolButton;
            button->setObjectName(
                QStringLiteral("%1_%2")
                    .arg(zoom ? QStringLiteral("ZoomBtn") : QStringLiteral("PanBtn"))
                    .arg(i));
            button->setIcon(ToolbarIcon(zoom, i));
            button->setIconSize(QSize(20, 20));
            button->setAutoRaise(true);
            button->setToolTip(
                Q(zoom ? GraphModel::ZoomBtnToolTip(i) : GraphModel::PanBtnToolTip(i)));
            connect(button, &QToolButton::clicked, this,
                    [this, zoom, i] { ToolbarClicked(zoom, i); });
            row->addWidget(button);
        }
        if (zoom) row->addSpacing(10);
    }
    row->addStretch(1);
    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(toolbar);
    layout->addWidget(box_, 1);
    return page;
}

void GraphXYForm::ToolbarClicked(bool zoom, int index) {
    if (zoom) {
        model_.ZoomBtn_Click(index);
        if (index == 1) {
            // The zoom window is armed: the next drag on the graph draws it.
            box_->setCursor(Qt::CrossCursor);
            return;
        }
    } else {
        model_.PanBtn_Click(index);
    }
    PaintGraph();
    RefreshControls();
}

QWidget* GraphXYForm::BuildSetupPage() {
    auto* frame = new QWidget;
    frame->setObjectName(QStringLiteral("SetupFrame"));
    auto* grid = new QGridLayout(frame);
    grid->setHorizontalSpacing(8);
    grid->setVerticalSpacing(4);
    // One line per field, one column per slot in its plotting colour.
    const char* labels[] = {
        "Y Axis Variable",     "Plot This Axis", "Minimum",   "Maximum",
        "Only Display If ",    "Is Between",     "And",       "Run",
        "X Axis Variable",     "X Minimum",      "X Maximum", "Axis Title (Optional)",
        "Start Axis From Zero"};
    for (int r = 0; r < static_cast<int>(std::size(labels)); ++r) {
        auto* label = new QLabel(QString::fromUtf8(labels[r]));
        grid->addWidget(label, r + 1, 0);
        if (r >= 4 && r <= 6) conditionRows_.push_back(label);
    }
    for (int k = 0; k < kGraphSlots; ++k) {
        auto* heading = new QLabel(QStringLiteral("Axis %1").arg(k + 1));
        QFont bold = heading->font();
        bold.setBold(true);
        heading->setFont(bold);
        QPalette palette = heading->palette();
        palette.setColor(QPalette::WindowText, SlotColour(k));
        heading->setPalette(palette);
        grid->addWidget(heading, 0, k + 1);
        BuildSlot(k, grid, k + 1);
    }
    hideLimitVars_ = new QLabel(
        QStringLiteral("Conditions are off: tick \"Only Display Data If Condition Met\" under "
                       "Options to use them."));
    hideLimitVars_->setObjectName(QStringLiteral("HideLimitVars"));
    hideLimitVars_->setWordWrap(true);
    grid->addWidget(hideLimitVars_, 5, 1, 3, kGraphSlots);
    grid->setColumnStretch(kGraphSlots + 1, 1);
    grid->setRowStretch(14, 1);
    auto* scroll = new QScrollArea;
    scroll->setWidget(frame);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    return scroll;
}

void GraphXYForm::BuildSlot(int k, QGridLayout* grid, int column) {
    SlotRow& w = slots_[k];
    auto name = [k](const char* control) {
        return QStringLiteral("%1_%2").arg(QString::fromUtf8(control)).arg(k);
    };
    auto pair = [](QWidget* a, QWidget* b) {
        auto* cell = new QWidget;
        auto* row = new QHBoxLayout(cell);
        row->setContentsMargins(0, 0, 0, 0);
        row->setSpacing(4);
        row->addWidget(a);
        row->addWidget(b, 1);
        return cell;
    };
    GraphSlotSettings& s = model_.settings.Slots[k];
    w.selY = new VariableCombo;
    w.selY->setObjectName(name("SelYAxis"));
    w.activate = Check(name("ActivateYAxis"));
    w.autoMinY = Check(name("AutoMinY"));
    w.minY = Edit(name("MinYAxis"));
    w.autoMaxY = Check(name("AutoMaxY"));
    w.maxY = Edit(name("MaxYAxis"));
    w.limitVar = new VariableCombo;
    w.limitVar->setObjectName(name("LimitVar"));
    w.displayIf = Check(name("DisplayIf"));
    w.limitMin = Edit(name("LimitVarMin"));
    w.limitMax = Edit(name("LimitVarMax"));
    w.run = new QSpinBox;
    w.run->setObjectName(name("AxisRun"));
    // The up-down wraps by AxisRun_Change's rule: 0 and RunCount + 1 are
    // let through for it to turn round.
    w.run->setRange(0, 12);
    w.runName = new QLabel;
    w.runName->setObjectName(name("AxisRunName"));
    w.selX = new VariableCombo;
    w.selX->setObjectName(name("SelXAxis"));
    w.autoMinX = Check(name("AutoMinX"));
    w.minX = Edit(name("MinXAxis"));
    w.autoMaxX = Check(name("AutoMaxX"));
    w.maxX = Edit(name("MaxXAxis"));
    w.title = Edit(name("AxisTitle"), 12);
    w.title->setPlaceholderText(QStringLiteral("Axis Title (Optional)"));
    w.zeroBase = Check(name("ZeroBaseXAxis"));

    QWidget* cells[] = {w.selY,
                        w.activate,
                        pair(w.autoMinY, w.minY),
                        pair(w.autoMaxY, w.maxY),
                        pair(w.displayIf, w.limitVar),
                        w.limitMin,
                        w.limitMax,
                        pair(w.run, w.runName),
                        w.selX,
                        pair(w.autoMinX, w.minX),
                        pair(w.autoMaxX, w.maxX),
                        w.title,
                        w.zeroBase};
    for (int r = 0; r < static_cast<int>(std::size(cells)); ++r) {
        grid->addWidget(cells[r], r + 1, column);
        if (r >= 4 && r <= 6) conditionRows_.push_back(cells[r]);
    }

    auto text = [this](QLineEdit* edit, std::string& field, std::function<void()> after = {}) {
        connect(edit, &QLineEdit::textEdited, this, [this, &field, edit, after] {
            field = edit->text().toStdString();
            if (after) after();
        });
    };
    auto check = [this](QCheckBox* box, int16_t& field, std::function<void()> after = {}) {
        connect(box, &QCheckBox::toggled, this, [this, &field, after](bool on) {
            if (filling_) return;
            field = on ? 1 : 0;
            if (after) after();
        });
    };
    auto clicked = [this](QLineEdit* edit, std::function<void()> action) {
        edit->installEventFilter(new ClickFilter(edit, [this, action] {
            if (filling_) return;
            action();
            RefreshControls();
        }));
    };
    auto choose = [this](VariableCombo* combo, std::string& field,
                         std::function<void()> after = {}) {
        connect(combo, &QComboBox::currentTextChanged, this,
                [this, &field, after](const QString& chosen) {
                    if (filling_ || chosen.isEmpty()) return;
                    field = chosen.toStdString();
                    if (after) after();
                });
    };
    const auto xChanged = [this, k] { XFieldChanged(k); };

    choose(w.selY, s.SelYAxis, [this, k] {
        model_.SelYAxis_Click(k);
        RefreshControls();
    });
    check(w.activate, s.ActivateYAxis);
    check(w.autoMinY, s.AutoMinY);
    text(w.minY, s.MinYAxis);
    clicked(w.minY, [this, k] { model_.MinYAxis_Click(k); });
    check(w.autoMaxY, s.AutoMaxY);
    text(w.maxY, s.MaxYAxis);
    clicked(w.maxY, [this, k] { model_.MaxYAxis_Click(k); });
    choose(w.limitVar, s.LimitVar);
    check(w.displayIf, s.DisplayIf);
    text(w.limitMin, s.LimitVarMin);
    text(w.limitMax, s.LimitVarMax);
    connect(w.run, &QSpinBox::valueChanged, this, [this, k, &s](int value) {
        if (filling_) return;
        s.AxisRun = std::to_string(value);
        model_.AxisRun_Change(k);
        RefreshControls();
    });
    choose(w.selX, s.SelXAxis, xChanged);
    check(w.autoMinX, s.AutoMinX, xChanged);
    text(w.minX, s.MinXAxis, xChanged);
    clicked(w.minX, [this, k] { model_.MinXAxis_Click(k); });
    check(w.autoMaxX, s.AutoMaxX, xChanged);
    text(w.maxX, s.MaxXAxis, xChanged);
    clicked(w.maxX, [this, k] { model_.MaxXAxis_Click(k); });
    text(w.title, s.AxisTitle, xChanged);
    check(w.zeroBase, s.ZeroBaseXAxis, xChanged);
}

void GraphXYForm::XFieldChanged(int k) {
    if (k != 0) return;
    model_.MultipleXAxis_Click();
    RefreshControls();
}

QWidget* GraphXYForm::BuildOptionsPage() {
    auto* frame = new QWidget;
    frame->setObjectName(QStringLiteral("OptionsFrame"));
    GraphSettings& g = model_.settings;
    auto* layout = new QVBoxLayout(frame);
    layout->setSpacing(6);
    auto check = [this, layout](QCheckBox*& box, const char* control, const char* caption,
                                int16_t& field, std::function<void()> after = {}) {
        box = Check(QString::fromUtf8(control), QString::fromUtf8(caption));
        connect(box, &QCheckBox::toggled, this, [this, &field, after](bool on) {
            if (filling_) return;
            field = on ? 1 : 0;
            if (after) after();
        });
        layout->addWidget(box);
    };
    check(multipleX_, "MultipleXAxis", "Plot Multiple X Axis", g.MultipleXAxis, [this] {
        model_.MultipleXAxis_Click();
        RefreshControls();
    });
    check(limitVariables_, "LimitVariables", "Only Display Data If Condition Met", g.LimitVariables,
          [this] { RefreshControls(); });
    check(joinPoints_, "JoinPoints", "Join Graph Points", g.JoinPoints);
    check(showGrid_, "ShowGrid", "Display Grid", g.ShowGrid);
    check(circGrid_, "DispCircGrid", "Display Circular Grid", g.DispCircGrid);
    check(realTime_, "RealTimeUpdate", "Show Playback Cursor", g.RealTimeUpdate);

    auto* points = new QHBoxLayout;
    fastPlot_ = Check(QStringLiteral("FastPlot"), QStringLiteral("Only Plot a Maximum of"));
    connect(fastPlot_, &QCheckBox::toggled, this, [this, &g](bool on) {
        if (!filling_) g.FastPlot = on ? 1 : 0;
    });
    maxPoints_ = Edit(QStringLiteral("MaximumPoints"), 7);
    maxPoints_->setMaximumWidth(maxPoints_->minimumWidth() + 10);
    connect(maxPoints_, &QLineEdit::textEdited, this,
            [&g](const QString& t) { g.MaximumPoints = t.toStdString(); });
    points->addWidget(fastPlot_);
    points->addWidget(maxPoints_);
    points->addWidget(new QLabel(QStringLiteral("  Points")));
    points->addStretch(1);
    layout->addLayout(points);
    check(selectNearest_, "SelectMultiNearestChk", "Select Nearest Points On Graphs",
          g.SelectMultiNearestChk);
    check(trackMarkers_, "DispTrackMarkers", "Display Track Markers On The Graph",
          g.DispTrackMarkers);

    auto* titleRow = new QHBoxLayout;
    titleRow->addWidget(new QLabel(QStringLiteral("Main Title (Optional)")));
    mainTitle_ = Edit(QStringLiteral("MainTitle"), 30);
    connect(mainTitle_, &QLineEdit::textEdited, this,
            [&g](const QString& t) { g.MainTitle = t.toStdString(); });
    mainTitle_->setMaximumWidth(mainTitle_->minimumWidth() * 2);
    titleRow->addWidget(mainTitle_, 1);
    titleRow->addStretch(1);
    layout->addSpacing(6);
    layout->addLayout(titleRow);

    auto* resetRow = new QHBoxLayout;
    auto* reset = new QPushButton(QStringLiteral("Reset"));
    reset->setObjectName(QStringLiteral("ClearMinsMaxs"));
    reset->setToolTip(QStringLiteral("Reset All The Current Manual Minimums And Maximums"));
    connect(reset, &QPushButton::clicked, this, [this] {
        model_.ClearMinsMaxs_Click();
        RefreshControls();
    });
    resetRow->addWidget(reset);
    resetRow->addWidget(new QLabel(QStringLiteral("Reset All Minimums and Maximums")));
    resetRow->addStretch(1);
    layout->addLayout(resetRow);
    layout->addStretch(1);
    auto* scroll = new QScrollArea;
    scroll->setWidget(frame);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    return scroll;
}

void GraphXYForm::RefreshControls() {
    filling_ = true;
    const GraphSettings& g = model_.settings;
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
    const bool multipleX = g.MultipleXAxis != 0;
    for (int k = 0; k < kGraphSlots; ++k) {
        const GraphSlotSettings& s = g.Slots[k];
        SlotRow& w = slots_[k];
        setCombo(w.selY, s.SelYAxis);
        w.activate->setChecked(s.ActivateYAxis != 0);
        w.autoMinY->setChecked(s.AutoMinY != 0);
        setText(w.minY, s.MinYAxis);
        w.autoMaxY->setChecked(s.AutoMaxY != 0);
        setText(w.maxY, s.MaxYAxis);
        setCombo(w.limitVar, s.LimitVar);
        w.displayIf->setChecked(s.DisplayIf != 0);
        setText(w.limitMin, s.LimitVarMin);
        setText(w.limitMax, s.LimitVarMax);
        w.run->setValue(static_cast<int>(std::lround(GetVal(s.AxisRun))));
        w.runName->setText(Q(model_.AxisRunName[k]));
        setCombo(w.selX, s.SelXAxis);
        w.autoMinX->setChecked(s.AutoMinX != 0);
        setText(w.minX, s.MinXAxis);
        w.autoMaxX->setChecked(s.AutoMaxX != 0);
        setText(w.maxX, s.MaxXAxis);
        setText(w.title, s.AxisTitle);
        w.zeroBase->setChecked(s.ZeroBaseXAxis != 0);
        // HideMultipleXAxis: with one X axis, the X fields of slots 1 to 4
        // follow slot 0 and are not for typing.
        const bool ownX = k == 0 || multipleX;
        for (QWidget* x : std::initializer_list<QWidget*>{w.run, w.selX, w.autoMinX, w.minX,
                                                          w.autoMaxX, w.maxX, w.title, w.zeroBase})
            x->setEnabled(ownX);
    }
    const bool conditions = g.LimitVariables != 0;
    for (QWidget* row : conditionRows_) row->setVisible(conditions);
    hideLimitVars_->setVisible(!conditions);
    multipleX_->setChecked(multipleX);
    limitVariables_->setChecked(conditions);
    joinPoints_->setChecked(g.JoinPoints != 0);
    showGrid_->setChecked(g.ShowGrid != 0);
    circGrid_->setChecked(g.DispCircGrid != 0);
    realTime_->setChecked(g.RealTimeUpdate != 0);
    fastPlot_->setChecked(g.FastPlot != 0);
    setText(maxPoints_, g.MaximumPoints);
    selectNearest_->setChecked(g.SelectMultiNearestChk != 0);
    trackMarkers_->setChecked(g.DispTrackMarkers != 0);
    setText(mainTitle_, g.MainTitle);
    setWindowTitle(Q(model_.Caption()));
    filling_ = false;
}

int GraphXYForm::CurrentTab() const {
    return tabs_->currentIndex();
}

void GraphXYForm::GraphTab_Click(int tab) {
    if (tabs_->currentIndex() != tab) {
        filling_ = true;
        tabs_->setCurrentIndex(tab);
        filling_ = false;
    }
    pages_->setCurrentIndex(tab);
    if (tab == 0) {
        cursors_->graphTabUp = true;
        model_.ShowGraphTab();
        PaintGraph();
    } else {
        cursors_->graphTabUp = false;
        model_.MultipleXAxis_Click();
        model_.FollowRunsByName();
    }
    RefreshControls();
}

void GraphXYForm::Regenerate() {
    model_.ReGenerateGraph();
    PaintGraph();
    RefreshControls();
}

void GraphXYForm::PaintGraph() {
    if (XYGraphForms().NumberOf(this) != 0) XYGraphForms().At(Number())->cursorDrawn = false;
    cursors_->Paint();
    setWindowTitle(Q(model_.Caption()));
    box_->update();
}

}  // namespace tl::views
