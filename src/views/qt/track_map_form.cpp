#include "views/qt/track_map_form.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QStackedWidget>
#include <QTabBar>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>

#include "core/support.h"
#include "core/ui_services.h"
#include "views/qt/graph_xy_form.h"
#include "views/qt/map_icons.h"
#include "views/qt/surface_box.h"
#include "views/qt/view_links.h"

namespace tl::views {
namespace {

QString Q(const std::string& text) {
    return QString::fromStdString(text);
}

QString Indexed(const char* control, int index) {
    return QStringLiteral("%1_%2").arg(QString::fromUtf8(control)).arg(index);
}

// The playback time's face: seven segments where the desktop has them.
QFont DigitalReadout() {
    QFont font(QStringLiteral("DSEG7 Classic"));
    font.setStyleHint(QFont::Monospace);
    font.setFamilies({QStringLiteral("DSEG7 Classic"), QStringLiteral("Digital Readout"),
                      QStringLiteral("monospace")});
    font.setPointSizeF(9);
    return font;
}

// The map colour's list always begins with "No Color Coding".
class ColourCombo : public VariableCombo {
  public:
    using VariableCombo::VariableCombo;
    void showPopup() override {
        Refill();
        if (findText(QString::fromUtf8(kNoColorCoding)) < 0)
            insertItem(0, QString::fromUtf8(kNoColorCoding));
        QComboBox::showPopup();
    }
};

QToolButton* ToolButton(const char* control, const QString& tip) {
    auto* b = new QToolButton;
    b->setObjectName(QString::fromUtf8(control));
    b->setIcon(MapIcon(QString::fromUtf8(control)));
    b->setIconSize(QSize(20, 20));
    b->setAutoRaise(true);
    b->setToolTip(tip);
    return b;
}

// A pair of small arrows, up and down (RunUpDown, JumpTimeAdj).
QWidget* UpDown(const QString& name, const std::function<void(int)>& step) {
    auto* box = new QWidget;
    box->setObjectName(name);
    auto* col = new QVBoxLayout(box);
    col->setContentsMargins(0, 0, 0, 0);
    col->setSpacing(0);
    for (const int dir : {1, -1}) {
        auto* b = new QToolButton;
        b->setObjectName(name + (dir > 0 ? QStringLiteral("_Up") : QStringLiteral("_Down")));
        b->setArrowType(dir > 0 ? Qt::UpArrow : Qt::DownArrow);
        b->setFixedSize(16, 11);
        b->setAutoRaise(false);
        QObject::connect(b, &QToolButton::clicked, box, [step, dir] { step(dir); });
        col->addWidget(b);
    }
    return box;
}

}  // namespace

TrackMapForm::TrackMapForm(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("frmTrackMap"));
    setWindowTitle(QStringLiteral("Track Map"));
    setAttribute(Qt::WA_DeleteOnClose);
    Hub().map = this;
    timer_ = new QTimer(this);
    timer_->setObjectName(QStringLiteral("PlaybackTimer"));
    timer_->setSingleShot(true);
    timer_->setTimerType(Qt::PreciseTimer);
    connect(timer_, &QTimer::timeout, this, [this] { PlayStep(); });

    tabs_ = new QTabBar;
    tabs_->setObjectName(QStringLiteral("TrackTab"));
    tabs_->addTab(QStringLiteral("Track Map"));
    tabs_->addTab(QStringLiteral("Options"));
    tabs_->setExpanding(false);
    pages_ = new QStackedWidget;
    QWidget* mapPage = BuildMapPage();
    map_ = std::make_unique<TrackMap>(mapBox_->Surface(), &Hub());
    playback_ = std::make_unique<Playback>(Hub());
    pages_->addWidget(mapPage);
    pages_->addWidget(BuildOptionsPage());
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->setSpacing(0);
    layout->addWidget(tabs_);
    layout->addWidget(pages_, 1);
    connect(tabs_, &QTabBar::currentChanged, this, [this](int tab) {
        if (!filling_) TrackTab_Click(tab);
    });
    RebuildPanels();
    PanelsToMap();
    RefreshControls();
}

TrackMapForm::~TrackMapForm() {
    timer_->stop();
    mapBox_->resized = nullptr;
}

bool TrackMapForm::OptionsUp() const {
    return map_ && map_->view.optionsUp;
}

QWidget* TrackMapForm::BuildMapPage() {
    auto* page = new QWidget;
    // The tool buttons, then the colour strip and the scale bar.
    auto* tools = new QHBoxLayout;
    tools->setContentsMargins(2, 2, 2, 2);
    tools->setSpacing(1);
    const std::pair<const char*, const char*> buttons[] = {
        {"ZoomIn", "Zoom In"},
        {"ZoomOut", "Zoom Out"},
        {"ZoomWindow", "Zoom To A Window Dragged On The Map"},
        {"ShowWholeTrack", "Show The Whole Track"},
        {"RotateCW", "Rotate The Map Clockwise"},
        {"RotateCCW", "Rotate The Map Anticlockwise"},
        {"AddNewNode", "Add A Track Marker: Drag A Line Across The Track"},
        {"DeleteNode", "Delete A Track Marker: Click One Of Its Ends"}};
    for (const auto& [control, tip] : buttons) {
        QToolButton* b = ToolButton(control, QString::fromUtf8(tip));
        const QString name = QString::fromUtf8(control);
        const bool mode = name == QLatin1String("ZoomWindow") ||
                          name == QLatin1String("AddNewNode") ||
                          name == QLatin1String("DeleteNode");
        if (mode) {
            b->setCheckable(true);
            modeButtons_.push_back(b);
        }
        connect(b, &QToolButton::clicked, this, [this, name] {
            TrackMap& m = *map_;
            PanelsToMap();
            if (name == QLatin1String("ZoomIn")) m.ZoomIn_Click();
            if (name == QLatin1String("ZoomOut")) m.ZoomOut_Click();
            if (name == QLatin1String("ZoomWindow")) m.ZoomWindow_Click();
            if (name == QLatin1String("ShowWholeTrack")) m.ShowWholeTrack_Click();
            if (name == QLatin1String("RotateCW")) m.RotateCW_Click();
            if (name == QLatin1String("RotateCCW")) m.RotateCCW_Click();
            if (name == QLatin1String("AddNewNode")) m.AddNewNode_Click();
            if (name == QLatin1String("DeleteNode")) m.DeleteNode_Click();
            AfterMapCall();
            if (name == QLatin1String("ShowWholeTrack") || name.startsWith(QLatin1String("Rot")) ||
                name.startsWith(QLatin1String("ZoomI")) || name.startsWith(QLatin1String("ZoomO")))
                Player().UpdateRunAnimation();
            Hub().RefreshViews();
        });
        tools->addWidget(b);
        if (name == QLatin1String("ShowWholeTrack") || name == QLatin1String("RotateCCW"))
            tools->addSpacing(8);
    }
    tools->addStretch(1);
    scaleMin_ = new QLabel;
    scaleMin_->setObjectName(QStringLiteral("ScaleMin"));
    scaleMin_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    scaleMin_->setMinimumWidth(40);
    colorScale_ = new SurfaceBox(QStringLiteral("ColorScale"));
    colorScale_->setFixedSize(150, 14);
    colorScale_->setToolTip(QStringLiteral("Map Colour Based On"));
    scaleMax_ = new QLabel;
    scaleMax_->setObjectName(QStringLiteral("ScaleMax"));
    scaleMax_->setMinimumWidth(40);
    mapScale_ = new SurfaceBox(QStringLiteral("MapScale"));
    // The bar's strip is 2000 twips wide; the bar stands at 350.
    mapScale_->setFixedSize(134, 27);
    scaleLabel_ = new QLabel;
    scaleLabel_->setObjectName(QStringLiteral("ScaleLabel"));
    scaleLabel_->setMinimumWidth(90);
    tools->addWidget(scaleMin_);
    tools->addWidget(colorScale_);
    tools->addWidget(scaleMax_);
    tools->addSpacing(12);
    tools->addWidget(mapScale_);
    tools->addWidget(scaleLabel_);
    colorScale_->resized = [this] { DrawStrips(); };
    mapScale_->resized = [this] { DrawStrips(); };

    mapBox_ = new SurfaceBox(QStringLiteral("Map"));
    mapBox_->setMinimumSize(240, 160);
    mapBox_->resized = [this] {
        if (!map_) return;
        PanelsToMap();
        map_->Resize();
        PanelsFromMap();
        AfterMapCall();
        Hub().RefreshViews();
    };
    mapBox_->pressed = [this](int button, double x, double y) {
        map_->Map_MouseDown(button, x, y);
        AfterMapCall();
        Hub().RefreshViews();
    };
    mapBox_->moved = [this](int button, double x, double y) {
        map_->Map_MouseMove(button, x, y);
        AfterMapCall();
        Hub().RefreshViews();
    };
    mapBox_->released = [this](int button, double x, double y) {
        map_->Map_MouseUp(button, x, y);
        AfterMapCall();
        Hub().RefreshViews();
    };
    mapBox_->doubleClicked = [this] {
        map_->Map_DblClick();
        AfterMapCall();
        Hub().RefreshViews();
    };
    mapBox_->keyPressed = [this](int ascii) {
        if (ascii != 27) return false;
        map_->Form_KeyPress(27);
        AfterMapCall();
        return true;
    };
    hScroll_ = new QScrollBar(Qt::Horizontal);
    hScroll_->setObjectName(QStringLiteral("HScroll"));
    vScroll_ = new QScrollBar(Qt::Vertical);
    vScroll_->setObjectName(QStringLiteral("VScroll"));
    connect(hScroll_, &QScrollBar::valueChanged, this, [this](int v) {
        if (scrolling_) return;
        map_->HScroll_Change(v);
        AfterMapCall();
        Hub().RefreshViews();
    });
    connect(vScroll_, &QScrollBar::valueChanged, this, [this](int v) {
        if (scrolling_) return;
        map_->VScroll_Change(v);
        AfterMapCall();
        Hub().RefreshViews();
    });
    auto* grid = new QGridLayout;
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setSpacing(0);
    grid->addWidget(mapBox_, 0, 0);
    grid->addWidget(vScroll_, 0, 1);
    grid->addWidget(hScroll_, 1, 0);

    panelsFrame_ = new QWidget;
    panelsFrame_->setObjectName(QStringLiteral("PanelsFrame"));
    panelsLayout_ = new QVBoxLayout(panelsFrame_);
    panelsLayout_->setContentsMargins(0, 2, 0, 0);
    panelsLayout_->setSpacing(1);

    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(tools);
    layout->addLayout(grid, 1);
    layout->addWidget(panelsFrame_);
    return page;
}

QWidget* TrackMapForm::BuildOptionsPage() {
    auto* frame = new QWidget;
    frame->setObjectName(QStringLiteral("OptionsScreenFrame"));
    auto* form = new QFormLayout;
    auto check = [this](const char* name, const char* caption, auto apply) {
        auto* box = new QCheckBox(QString::fromUtf8(caption));
        box->setObjectName(QString::fromUtf8(name));
        connect(box, &QCheckBox::toggled, this, [this, apply](bool on) {
            if (filling_) return;
            apply(static_cast<int16_t>(on ? 1 : 0));
        });
        return box;
    };
    auto& s = map_->settings;
    varToAdd_ = new VariableCombo;
    varToAdd_->setObjectName(QStringLiteral("VarToAdd"));
    connect(varToAdd_, &QComboBox::currentTextChanged, this, [this, &s](const QString& t) {
        if (!filling_) s.VarToAdd = t.toStdString();
    });
    showVariable_ = check("ShowVariable", "Show Variable", [&s](int16_t v) { s.ShowVariable = v; });
    numOfTicks_ = new QLineEdit;
    numOfTicks_->setObjectName(QStringLiteral("NumOfTicks"));
    numOfTicks_->setMaximumWidth(80);
    connect(numOfTicks_, &QLineEdit::editingFinished, this,
            [this, &s] { s.NumOfTicks = numOfTicks_->text().toStdString(); });
    mapColorVar_ = new ColourCombo;
    mapColorVar_->setObjectName(QStringLiteral("MapColorVar"));
    connect(mapColorVar_, &QComboBox::currentTextChanged, this, [this, &s](const QString& t) {
        if (!filling_) s.MapColorVar = t.toStdString();
    });
    showGVectors_ = check("ShowGVectors", "Display G Force Vectors During Playback",
                          [&s](int16_t v) { s.ShowGVectors = v; });
    reverseGVectors_ = check("ReverseGVectors", "Reverse G Force Vectors Display",
                             [&s](int16_t v) { s.ReverseGVectors = v; });
    showReferenceLap_ = check("ShowReferenceLap", "When Possible Show Reference Lap",
                              [&s](int16_t v) { s.ShowReferenceLap = v; });
    autoPan_ = check("AutoPan", "Auto Pan Map To Keep Vehicle In View",
                     [this](int16_t v) { playback_->AutoPan = v != 0; });
    runsDisplayed_ = new QLineEdit;
    runsDisplayed_->setObjectName(QStringLiteral("RunsDisplayed"));
    runsDisplayed_->setMaximumWidth(80);
    connect(runsDisplayed_, &QLineEdit::editingFinished, this, [this] {
        if (filling_) return;
        playback_->RunsDisplayed = runsDisplayed_->text().toStdString();
        playback_->RunsDisplayed_Change();
        PanelsToMap();
        RefreshControls();
    });
    form->addRow(QStringLiteral("Variable To Show"), varToAdd_);
    form->addRow(QString(), showVariable_);
    form->addRow(QStringLiteral("Number Of Ticks"), numOfTicks_);
    form->addRow(QStringLiteral("Map Colour Based On"), mapColorVar_);
    form->addRow(QString(), showGVectors_);
    form->addRow(QString(), reverseGVectors_);
    form->addRow(QString(), showReferenceLap_);
    form->addRow(QString(), autoPan_);
    form->addRow(QStringLiteral("Maximum Runs To Display (Max 10)"), runsDisplayed_);

    auto* dash = new QGroupBox(QStringLiteral("Virtual Dashboard"));
    dash->setObjectName(QStringLiteral("DashFrame"));
    auto* dashForm = new QFormLayout(dash);
    for (int k = 0; k < 4; ++k) {
        auto* combo = new VariableCombo;
        combo->setObjectName(Indexed("DashVar", k));
        connect(combo, &QComboBox::currentTextChanged, this, [this, k](const QString& t) {
            if (filling_) return;
            playback_->DashVar[static_cast<size_t>(k)] = t.toStdString();
            PanelsToMap();
            playback_->DashVar_Click();
            Hub().RefreshViews();
        });
        dashVar_.push_back(combo);
        dashForm->addRow(QStringLiteral("Dial %1").arg(k + 1), combo);
    }
    auto* show = new QPushButton(QStringLiteral("Show Dashboards"));
    show->setObjectName(QStringLiteral("ShowDash"));
    auto* hide = new QPushButton(QStringLiteral("Hide Dashboards"));
    hide->setObjectName(QStringLiteral("HideDash"));
    connect(show, &QPushButton::clicked, this, [this] {
        playback_->RunsDisplayed = runsDisplayed_->text().toStdString();
        playback_->ShowDash_Click();
        PanelsToMap();
        RefreshControls();
        Hub().RefreshViews();
    });
    connect(hide, &QPushButton::clicked, this, [this] {
        playback_->HideDash_Click();
        Hub().RefreshViews();
    });
    auto* dashButtons = new QHBoxLayout;
    dashButtons->addWidget(show);
    dashButtons->addWidget(hide);
    dashButtons->addStretch(1);
    dashForm->addRow(dashButtons);

    auto* column = new QVBoxLayout(frame);
    column->addLayout(form);
    column->addWidget(dash);
    column->addStretch(1);
    auto* scroll = new QScrollArea;
    scroll->setWidget(frame);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    return scroll;
}

QWidget* TrackMapForm::BuildPanelRow(int index, bool common) {
    auto* frame = new QWidget;
    frame->setObjectName(Indexed("PanelRow", index));
    frame->setAutoFillBackground(true);
    QPalette pal = frame->palette();
    const QColor colour =
        common ? pal.color(QPalette::Window) : FromVbColour(VqColorIndex(index, false));
    pal.setColor(QPalette::Window, colour);
    pal.setColor(QPalette::WindowText, colour.lightness() < 110 ? Qt::white : Qt::black);
    frame->setPalette(pal);
    auto* row = new QHBoxLayout(frame);
    row->setContentsMargins(4, 1, 4, 1);
    row->setSpacing(2);
    PanelRow controls;
    controls.frame = frame;
    const int charW = fontMetrics().horizontalAdvance(QLatin1Char('0'));
    if (!common) {
        auto* label = new QLabel(QStringLiteral("Run"));
        label->setObjectName(Indexed("RunNumberLabel", index));
        row->addWidget(label);
        controls.runToDisplay = new QLineEdit;
        controls.runToDisplay->setObjectName(Indexed("RunToDisplay", index));
        controls.runToDisplay->setFixedWidth(charW * 3 + 10);
        connect(controls.runToDisplay, &QLineEdit::editingFinished, this, [this, index] {
            if (filling_ || index >= int(rows_.size())) return;
            PanelAction([this, index] {
                playback_->Panel(index).RunToDisplay =
                    rows_[index].runToDisplay->text().toStdString();
                playback_->RunToDisplay_Change(index);
            });
        });
        row->addWidget(controls.runToDisplay);
        row->addWidget(UpDown(Indexed("RunUpDown", index), [this, index](int dir) {
            PanelAction([this, index, dir] {
                PlaybackPanel& p = playback_->Panel(index);
                p.RunToDisplay = std::to_string(static_cast<int>(GetVal(p.RunToDisplay)) + dir);
                playback_->RunToDisplay_Change(index);
            });
        }));
        controls.runName = new QLineEdit;
        controls.runName->setObjectName(Indexed("AniRunNameTxt", index));
        controls.runName->setReadOnly(true);
        controls.runName->setMinimumWidth(charW * 12);
        row->addWidget(controls.runName, 2);
        controls.playTime = new QLineEdit;
        controls.playTime->setObjectName(Indexed("PlayTime", index));
        controls.playTime->setReadOnly(true);
        controls.playTime->setFont(DigitalReadout());
        controls.playTime->setAlignment(Qt::AlignRight);
        controls.playTime->setFixedWidth(
            QFontMetrics(DigitalReadout()).horizontalAdvance(QStringLiteral("8888.88")) + 14);
        controls.playTime->setToolTip(
            QStringLiteral("The Current Time Of The Playback In Seconds"));
        QPalette lcd = controls.playTime->palette();
        lcd.setColor(QPalette::Base, QColor(0x10, 0x18, 0x10));
        lcd.setColor(QPalette::Text, QColor(0x50, 0xFF, 0x60));
        controls.playTime->setPalette(lcd);
        row->addWidget(controls.playTime);
    } else {
        auto* label = new QLabel(QStringLiteral("All runs"));
        label->setObjectName(Indexed("RunNumberLabel", index));
        row->addWidget(label, 1);
    }
    const char* pause = "Pause The Real Time Playback";
    const std::pair<const char*, const char*> buttons[] = {
        {"RewindToMarker", pause},
        {"RewindButton", "Rewind The Real Time Playback"},
        {"StopButton", pause},
        {"SlowPlayButton", "Start The Real Time Playback"},
        {"PlayButton", "Start The Real Time Playback"},
        {"FForwardButton", "Fastforward The Real Time Playback"},
        {"ForwardToMarker", pause}};
    for (const auto& [control, tip] : buttons) {
        QToolButton* b = ToolButton(control, QString::fromUtf8(tip));
        b->setObjectName(Indexed(control, index));
        b->setAutoRaise(false);
        const QString name = QString::fromUtf8(control);
        connect(b, &QToolButton::clicked, this, [this, name, index] {
            PanelAction([this, name, index] {
                Playback& p = *playback_;
                if (name == QLatin1String("RewindToMarker")) p.RewindToMarker_Click(index);
                if (name == QLatin1String("RewindButton")) p.RewindButton_Click(index);
                if (name == QLatin1String("StopButton")) p.StopButton_Click(index);
                if (name == QLatin1String("SlowPlayButton")) p.SlowPlayButton_Click(index);
                if (name == QLatin1String("PlayButton")) p.PlayButton_Click(index);
                if (name == QLatin1String("FForwardButton")) p.FForwardButton_Click(index);
                if (name == QLatin1String("ForwardToMarker")) p.ForwardToMarker_Click(index);
            });
        });
        row->addWidget(b);
    }
    row->addSpacing(6);
    controls.jumpToTime = new QLineEdit;
    controls.jumpToTime->setObjectName(Indexed("JumpToTime", index));
    controls.jumpToTime->setFont(DigitalReadout());
    controls.jumpToTime->setAlignment(Qt::AlignRight);
    controls.jumpToTime->setFixedWidth(
        QFontMetrics(DigitalReadout()).horizontalAdvance(QStringLiteral("8888.88")) + 14);
    controls.jumpToTime->setToolTip(QStringLiteral("The Time To Jump To In Seconds"));
    connect(controls.jumpToTime, &QLineEdit::editingFinished, this, [this, index, common] {
        if (filling_) return;
        QLineEdit* edit = rows_[static_cast<size_t>(index)].jumpToTime;
        PanelAction([this, index, common, edit] {
            (common ? playback_->CommonJumpToTime : playback_->Panel(index).JumpToTime) =
                edit->text().toStdString();
            playback_->JumpToTime_LostFocus(index);
        });
    });
    row->addWidget(controls.jumpToTime);
    row->addWidget(UpDown(Indexed("JumpTimeAdj", index), [this, index](int dir) {
        PanelAction([this, index, dir] { playback_->JumpTimeAdj_Change(index, dir); });
    }));
    QToolButton* jump = ToolButton("JumpButton", QStringLiteral("Jump To The Specified Time"));
    jump->setObjectName(Indexed("JumpButton", index));
    jump->setAutoRaise(false);
    connect(jump, &QToolButton::clicked, this, [this, index, common] {
        PanelAction([this, index, common] {
            QLineEdit* edit = rows_[static_cast<size_t>(index)].jumpToTime;
            (common ? playback_->CommonJumpToTime : playback_->Panel(index).JumpToTime) =
                edit->text().toStdString();
            playback_->JumpButton_Click(index);
        });
    });
    row->addWidget(jump);
    if (common) row->addStretch(0);
    rows_.push_back(controls);
    return frame;
}

void TrackMapForm::RebuildPanels() {
    for (const PanelRow& r : rows_) delete r.frame;
    rows_.clear();
    const int n = playback_->RunsInUse();
    for (int i = 0; i < n; ++i) panelsLayout_->addWidget(BuildPanelRow(i, false));
    if (n > 1) panelsLayout_->addWidget(BuildPanelRow(n, true));
    RefreshControls();
}

void TrackMapForm::PanelAction(const std::function<void()>& action) {
    PanelsToMap();
    action();
    PanelsToMap();
    RefreshControls();
    Hub().RefreshViews();
}

void TrackMapForm::PanelsToMap() {
    TrackMapSettings& s = map_->settings;
    const Playback& pb = *playback_;
    const int n = pb.RunsInUse();
    s.RunsInUse = n;
    s.RunToDisplay.resize(static_cast<size_t>(n));
    s.AniRunNameTxt.resize(static_cast<size_t>(n));
    for (int i = 0; i < n; ++i) {
        s.RunToDisplay[size_t(i)] = pb.Panel(i).RunToDisplay;
        s.AniRunNameTxt[size_t(i)] = pb.Panel(i).AniRunNameTxt;
    }
    s.RunsDisplayed = pb.RunsDisplayed;
    s.AutoPan = pb.AutoPan ? 1 : 0;
    s.DashVar = pb.DashVar;
}

void TrackMapForm::PanelsFromMap() {
    const TrackMapSettings& s = map_->settings;
    const int n = std::min<int>(playback_->RunsInUse(), int(s.RunToDisplay.size()));
    for (int i = 0; i < n; ++i) {
        playback_->Panel(i).RunToDisplay = s.RunToDisplay[size_t(i)];
        if (size_t(i) < s.AniRunNameTxt.size())
            playback_->Panel(i).AniRunNameTxt = s.AniRunNameTxt[size_t(i)];
    }
}

void TrackMapForm::RefreshControls() {
    filling_ = true;
    const Playback& pb = *playback_;
    for (int i = 0; i < int(rows_.size()); ++i) {
        const PanelRow& r = rows_[size_t(i)];
        if (i < pb.RunsInUse()) {
            const PlaybackPanel& p = pb.Panel(i);
            if (r.runToDisplay && !r.runToDisplay->hasFocus())
                r.runToDisplay->setText(Q(p.RunToDisplay));
            if (r.runName) r.runName->setText(Q(p.AniRunNameTxt));
            if (r.playTime) r.playTime->setText(Q(p.PlayTime));
            if (!r.jumpToTime->hasFocus()) r.jumpToTime->setText(Q(p.JumpToTime));
        } else if (!r.jumpToTime->hasFocus()) {
            r.jumpToTime->setText(Q(pb.CommonJumpToTime));
        }
    }
    const TrackMapSettings& s = map_->settings;
    varToAdd_->ShowOnly(Q(s.VarToAdd));
    showVariable_->setChecked(s.ShowVariable != 0);
    numOfTicks_->setText(Q(s.NumOfTicks));
    mapColorVar_->ShowOnly(Q(s.MapColorVar));
    showGVectors_->setChecked(s.ShowGVectors != 0);
    reverseGVectors_->setChecked(s.ReverseGVectors != 0);
    showReferenceLap_->setChecked(s.ShowReferenceLap != 0);
    autoPan_->setChecked(pb.AutoPan);
    autoPan_->setEnabled(pb.AutoPanEnabled);
    runsDisplayed_->setText(Q(pb.RunsDisplayed));
    for (int k = 0; k < 4; ++k) dashVar_[size_t(k)]->ShowOnly(Q(pb.DashVar[size_t(k)]));
    filling_ = false;
}

void TrackMapForm::ShowPlayTime(int panel, const std::string& text) {
    if (panel >= 0 && panel < int(rows_.size()) && rows_[size_t(panel)].playTime)
        rows_[size_t(panel)].playTime->setText(Q(text));
}

void TrackMapForm::SetScrollBars() {
    const MapScrollBars& b = map_->view.scroll;
    scrolling_ = true;
    hScroll_->setRange(b.HMin, b.HMax);
    hScroll_->setValue(b.HValue);
    vScroll_->setRange(b.VMin, b.VMax);
    vScroll_->setValue(b.VValue);
    scrolling_ = false;
}

void TrackMapForm::DrawStrips() {
    if (!map_) return;
    map_->DrawColorScale(colorScale_->Surface());
    map_->DrawMapScale(mapScale_->Surface());
    const MapStrips& s = map_->view.strips;
    scaleMin_->setText(Q(s.ScaleMin));
    scaleMax_->setText(Q(s.ScaleMax));
    scaleLabel_->setText(Q(s.ScaleLabel));
    colorScale_->setVisible(s.coded);
    colorScale_->update();
    mapScale_->update();
}

void TrackMapForm::AfterMapCall() {
    switch (map_->view.pointer) {
        case MapPointer::Cross:
            mapBox_->setCursor(Qt::CrossCursor);
            break;
        case MapPointer::Pointing:
            mapBox_->setCursor(Qt::PointingHandCursor);
            break;
        default:
            mapBox_->unsetCursor();
            break;
    }
    const TrackView& v = map_->view;
    const bool modes[] = {v.ZoomWindowMode, v.AddMarkerMode, v.DeleteMarkerMode};
    for (size_t i = 0; i < modeButtons_.size(); ++i) modeButtons_[i]->setChecked(modes[i]);
    SetScrollBars();
    DrawStrips();
    mapBox_->update();
}

void TrackMapForm::Regenerate() {
    RedrawMap();
    playback_->UpdateRunAnimation();
    Hub().RefreshViews();
}

void TrackMapForm::RedrawMap() {
    PanelsToMap();
    map_->ReDraw();
    PanelsFromMap();
    AfterMapCall();
}

void TrackMapForm::PanelsChanged() {
    RebuildPanels();
    PanelsToMap();
}

void TrackMapForm::TrackTab_Click(int tab) {
    pages_->setCurrentIndex(tab);
    if (tab == 1) {
        playback_->StopButton_Click(playback_->RunsInUse());
        map_->view.optionsUp = true;
        RefreshControls();
        return;
    }
    map_->view.optionsUp = false;
    playback_->RunsDisplayed = runsDisplayed_->text().toStdString();
    playback_->ReGenerateAniControls();
    RedrawMap();
    playback_->UpdateRunAnimation();
    RefreshControls();
    Hub().RefreshViews();
}

void TrackMapForm::PlaybackStarted() {
    ScheduleStep(Timer());
}

void TrackMapForm::ScheduleStep(double notBefore) {
    const double wait = std::clamp(notBefore - Timer(), 0.0, 1.0);
    timer_->start(static_cast<int>(std::ceil(wait * 1000.0)));
}

void TrackMapForm::PlayStep() {
    PanelsToMap();
    const tl::PlayStep r = playback_->Step(Timer());
    RefreshControls();
    Hub().RefreshViews();
    // A clock that has not moved on is asked again a little later.
    if (r.playing) ScheduleStep(r.stepped ? r.notBefore : Timer() + 0.01);
}

void TrackMapForm::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape) {
        map_->Form_KeyPress(27);
        AfterMapCall();
        return;
    }
    QWidget::keyPressEvent(event);
}

void TrackMapForm::closeEvent(QCloseEvent* event) {
    // Form_Unload: playback ends, TrackMapOpen is cleared.
    timer_->stop();
    playback_->StopButton_Click(playback_->RunsInUse());
    if (Hub().map == this) Hub().map = nullptr;
    QWidget::closeEvent(event);
}

}  // namespace tl::views
