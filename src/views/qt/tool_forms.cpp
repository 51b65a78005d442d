#include "views/qt/tool_forms.h"

#include <QApplication>
#include <QCheckBox>
#include <QCloseEvent>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMdiSubWindow>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>
#include <cmath>

#include "core/support.h"
#include "results/track_markers.h"
#include "store/run_store.h"
#include "views/qt/surface_box.h"

namespace tl::views {
namespace {

QString Q(const std::string& text) {
    return QString::fromStdString(text);
}

int Px(double twips) {
    return static_cast<int>(std::lround(twips / kTwipsPerPixel));
}

// Typing "#" in the marker's name beeps and the character is dropped.
class MarkerNameEdit : public QLineEdit {
  public:
    using QLineEdit::QLineEdit;

  protected:
    void keyPressEvent(QKeyEvent* event) override {
        const QString text = event->text();
        if (!text.isEmpty() && IsRefusedMarkerNameChar(text.at(0).unicode())) {
            QApplication::beep();
            return;
        }
        QLineEdit::keyPressEvent(event);
    }
};

}  // namespace

// --- frmVirtualDash -----------------------------------------------------------

DashboardForm::DashboardForm(int panel, QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("frmVirtualDash"));
    setAttribute(Qt::WA_DeleteOnClose);
    box_ = new SurfaceBox(QStringLiteral("DashBoard"), this);
    box_->setMinimumSize(240, 110);
    dash_ = std::make_unique<Dashboard>(box_->Surface(), panel);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(3, 3, 3, 3);
    layout->addWidget(box_);
    dash_->FindDialLimits();
    box_->resized = [this] {
        if (dash_->DashResizing) return;
        dash_->ReDrawDash();
        dash_->UpdateDash(dash_->DashRow);
    };
    Sync();
}

DashboardForm::~DashboardForm() {
    Release();
}

QSize DashboardForm::sizeHint() const {
    // Form_Load's 7000 x 3000 twips.
    return {Px(kDashWidth) + 6, Px(kDashHeight) + 6};
}

void DashboardForm::Release() {
    // Form_Unload: the panel's entry is free again, so playback skips it.
    if (DashForms().At(dash_->PanelIndex) == dash_.get()) DashForms().Close(dash_->PanelIndex);
}

void DashboardForm::closeEvent(QCloseEvent* event) {
    Release();
    QWidget::closeEvent(event);
}

void DashboardForm::Sync() {
    const QString caption =
        dash_->Caption.empty() ? QStringLiteral("Virtual Dashboard: ") : Q(dash_->Caption);
    if (windowTitle() != caption) {
        setWindowTitle(caption);
        if (auto* sub = qobject_cast<QMdiSubWindow*>(parentWidget())) sub->setWindowTitle(caption);
    }
    // The panel's colour frames the black board.
    QPalette pal = palette();
    const QColor frame = FromVbColour(VqColorIndex(dash_->PanelIndex, false));
    if (pal.color(QPalette::Window) != frame) {
        pal.setColor(QPalette::Window, frame);
        setPalette(pal);
        setAutoFillBackground(true);
    }
}

void DashboardForm::Regenerate() {
    dash_->Refresh();
    box_->update();
}

DashboardForm* DashboardFormOf(int panel) {
    Dashboard* dash = DashForms().At(panel);
    if (dash == nullptr) return nullptr;
    for (QWidget* w : QApplication::allWidgets()) {
        auto* form = qobject_cast<DashboardForm*>(w);
        if (form != nullptr && &form->Dash() == dash) return form;
    }
    return nullptr;
}

// --- frmMiniMap ---------------------------------------------------------------

MiniMapForm::MiniMapForm(QWidget* parent) : QWidget(parent, Qt::Tool) {
    setObjectName(QStringLiteral("frmMiniMap"));
    setWindowTitle(QStringLiteral("Mini Track Map"));
    setAttribute(Qt::WA_DeleteOnClose);
    box_ = new SurfaceBox(QStringLiteral("MiniMapBox"), this);
    box_->setMinimumSize(120, 100);
    map_ = std::make_unique<MiniMap>(box_->Surface());
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(box_);
    box_->resized = [this] {
        // The path of a run in memory; no runs, an empty map.
        if (map_->MiniRun < 1 || map_->MiniRun > Store().RunCount) {
            map_->MiniRun = 1;
            if (Store().RunCount < 1) {
                box_->Surface().Cls();
                return;
            }
        }
        map_->SetMapScale(map_->MiniRun);
        map_->ReDraw(map_->MiniRun);
    };
    resize(220, 180);
}

void MiniMapForm::Move(int32_t row, int32_t run, int colourIndex) {
    map_->UpDateGraphAni(row, run, colourIndex);
    box_->update();
}

void MiniMapForm::Regenerate() {
    map_->ReDraw(map_->MiniRun);
    box_->update();
}

// --- frmValueTable ------------------------------------------------------------

ValueTableForm::ValueTableForm(QWidget* parent) : QWidget(parent, Qt::Tool) {
    setObjectName(QStringLiteral("frmValueTable"));
    setWindowTitle(QStringLiteral("Variable Values Table"));
    setAttribute(Qt::WA_DeleteOnClose);
    grid_ = new QTableWidget(this);
    grid_->setObjectName(QStringLiteral("ValuesGrid"));
    QFont font(Q(table_.FontName));
    font.setPointSizeF(table_.FontSize + 1);
    grid_->setFont(font);
    grid_->horizontalHeader()->setVisible(false);
    grid_->verticalHeader()->setVisible(false);
    grid_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    grid_->setSelectionMode(QAbstractItemView::NoSelection);
    grid_->setFocusPolicy(Qt::NoFocus);
    grid_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(grid_);
    const QFontMetrics metrics(font);
    table_.SetTextMeasure(
        [metrics](const std::string& t) {
            return metrics.horizontalAdvance(Q(t)) * kTwipsPerPixel + 8 * kTwipsPerPixel;
        },
        [metrics](const std::string&) { return metrics.height() * kTwipsPerPixel; });
    table_.Load();
    table_.RegenerateTable();
    resize(260, 360);
    ShowModel();
}

ValueTableForm::~ValueTableForm() {
    if (!unloaded_ && table_.Open()) {
        unloaded_ = true;
        table_.Unload();
    }
}

void ValueTableForm::closeEvent(QCloseEvent* event) {
    // Form_Unload: the place written, the flag cleared.
    if (!unloaded_) {
        unloaded_ = true;
        table_.Place = {static_cast<float>(x()), static_cast<float>(y()),
                        static_cast<float>(width()), static_cast<float>(height())};
        table_.Unload();
    }
    QWidget::closeEvent(event);
}

void ValueTableForm::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    table_.Resize(grid_->viewport()->width() * kTwipsPerPixel,
                  grid_->viewport()->height() * kTwipsPerPixel);
    ShowModel();
}

void ValueTableForm::ShowModel() {
    if (table_.Generation() == shown_) return;
    shown_ = table_.Generation();
    grid_->setUpdatesEnabled(false);
    if (grid_->rowCount() != table_.Rows()) grid_->setRowCount(table_.Rows());
    if (grid_->columnCount() != table_.Cols()) grid_->setColumnCount(table_.Cols());
    for (int32_t r = 0; r < table_.Rows(); ++r) {
        for (int32_t c = 0; c < table_.Cols(); ++c) {
            const ValueTable::Cell& cell = table_.At(r, c);
            QTableWidgetItem* item = grid_->item(r, c);
            if (item == nullptr) {
                item = new QTableWidgetItem;
                if (c > 0) item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
                grid_->setItem(r, c, item);
            }
            const QString text = Q(cell.text);
            if (item->text() != text) item->setText(text);
            const QColor colour = FromVbColour(cell.colour);
            if (item->foreground().color() != colour) item->setForeground(colour);
        }
    }
    const int last = table_.Cols() - 1;
    for (int32_t c = 0; c < table_.Cols(); ++c) {
        int w = Px(table_.ColumnWidth(c));
        // The last column takes what rounding left.
        if (c == last && c > 0) {
            int used = 0;
            for (int32_t k = 0; k < last; ++k) used += grid_->columnWidth(k);
            w = std::max(w, grid_->viewport()->width() - used);
        }
        grid_->setColumnWidth(c, std::max(w, 20));
    }
    const int rowHeight = grid_->fontMetrics().height() + 4;
    for (int32_t r = 0; r < table_.Rows(); ++r) grid_->setRowHeight(r, rowHeight);
    grid_->setUpdatesEnabled(true);
}

void ValueTableForm::Regenerate() {
    table_.RegenerateTable();
    table_.Resize(grid_->viewport()->width() * kTwipsPerPixel,
                  grid_->viewport()->height() * kTwipsPerPixel);
    ShowModel();
}

// --- frmAddTrackMarker ----------------------------------------------------------

AddTrackMarkerForm::AddTrackMarkerForm(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmAddTrackMarker"));
    setWindowTitle(QStringLiteral("Enter details forthe new marker"));
    setModal(true);
    name_ = new MarkerNameEdit(this);
    name_->setObjectName(QStringLiteral("MarkerNameText"));
    useAsLap_ = new QCheckBox(QStringLiteral("Use this marker as the lap marker"), this);
    useAsLap_->setObjectName(QStringLiteral("UseAsLapCheck"));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Ok)->setObjectName(QStringLiteral("OKButton"));
    buttons->button(QDialogButtonBox::Cancel)->setObjectName(QStringLiteral("CancelButton"));
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(QStringLiteral("Marker name:"), this));
    layout->addWidget(name_);
    layout->addWidget(useAsLap_);
    layout->addWidget(buttons);
}

int AddTrackMarkerForm::Exec() {
    const NewMarkerProposal proposal = ProposeNewMarker();
    if (proposal.index < 0) return -1;
    index_ = proposal.index;
    name_->setText(Q(proposal.name));
    name_->selectAll();
    useAsLap_->setChecked(proposal.useAsLap);
    return exec() == QDialog::Accepted ? index_ : -1;
}

void AddTrackMarkerForm::accept() {
    // A name another marker has keeps the dialog open.
    if (!AcceptNewMarkerName(index_, name_->text().toStdString(), useAsLap_->isChecked())) return;
    QDialog::accept();
}

}  // namespace tl::views
