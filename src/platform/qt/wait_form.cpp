#include "platform/qt/wait_form.h"

#include <QLabel>
#include <QVBoxLayout>

#include "platform/qt/window_placement.h"

namespace tl::qt {

PleaseWaitForm::PleaseWaitForm(QWidget* parent)
    : QFrame(parent, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint) {
    setObjectName(QStringLiteral("frmPleaseWait"));
    setWindowTitle(QStringLiteral("Please Wait"));
    setFrameStyle(QFrame::Panel | QFrame::Raised);
    setLineWidth(2);
    // It must never take the focus away from the work going on behind it.
    setAttribute(Qt::WA_ShowWithoutActivating);

    reason_ = new QLabel(this);
    reason_->setObjectName(QStringLiteral("ReasonForWait"));
    reason_->setAlignment(Qt::AlignCenter);
    reason_->setWordWrap(true);
    reason_->setMinimumWidth(280);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(18, 14, 18, 14);
    layout->addWidget(reason_);
}

void PleaseWaitForm::SetReason(const QString& reason) {
    if (reason_->text() == reason) return;
    reason_->setText(reason);
    // Grows for a longer text; never shrinks while shown, so it does not jump.
    const QSize wanted = sizeHint();
    if (!isVisible() || wanted.width() > width() || wanted.height() > height()) adjustSize();
}

void PleaseWaitForm::CentreOn(const QWidget* window) {
    CentreWidgetOn(this, window);
}

}  // namespace tl::qt
