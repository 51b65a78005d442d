#include "platform/qt/message_form.h"

#include <QFontMetrics>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTextLayout>
#include <QVBoxLayout>

#include "platform/qt/window_placement.h"

#include <algorithm>

namespace tl::qt {

namespace {

// Width of MsgText in pixels: the original form was a fixed width and grew
// only in height.
constexpr int kTextWidth = 420;

// Lines the text takes when laid out with word wrap at the given width, the
// way the text box itself wraps it (a long word is broken anywhere).
int WrappedLineCount(const QString& text, const QFont& font, int width) {
    int lines = 0;
    const QStringList paragraphs = text.split(QLatin1Char('\n'));
    for (QString paragraph : paragraphs) {
        if (paragraph.endsWith(QLatin1Char('\r'))) paragraph.chop(1);
        QTextLayout layout(paragraph, font);
        QTextOption option;
        option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
        layout.setTextOption(option);
        layout.beginLayout();
        int paragraphLines = 0;
        for (;;) {
            QTextLine line = layout.createLine();
            if (!line.isValid()) break;
            line.setLineWidth(width);
            ++paragraphLines;
        }
        layout.endLayout();
        lines += std::max(paragraphLines, 1);
    }
    return std::max(lines, 1);
}

}  // namespace

VQMsgBox::VQMsgBox(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmVQMsgBox"));
    setWindowTitle(QStringLiteral("Error Report"));
    setModal(true);

    msgText_ = new QPlainTextEdit(this);
    msgText_->setObjectName(QStringLiteral("MsgText"));
    msgText_->setReadOnly(true);
    msgText_->setLineWrapMode(QPlainTextEdit::WidgetWidth);
    msgText_->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    msgText_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    msgText_->setFixedWidth(kTextWidth);

    okButton_ = new QPushButton(QStringLiteral("OK"), this);
    okButton_->setObjectName(QStringLiteral("OkButton"));
    okButton_->setDefault(true);
    okButton_->setAutoDefault(true);
    connect(okButton_, &QPushButton::clicked, this, &QDialog::accept);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(msgText_);
    layout->addWidget(okButton_, 0, Qt::AlignHCenter);
    layout->setSizeConstraint(QLayout::SetFixedSize);
}

void VQMsgBox::SetMessage(const QString& text) {
    msgText_->setPlainText(text);
    // The width the text wraps at: the box less its frame, margins and the
    // room of a scroll bar, which appears only for the longest messages.
    const int margin =
        2 * (msgText_->frameWidth() + static_cast<int>(msgText_->document()->documentMargin()));
    const int wrapWidth = std::max(kTextWidth - margin, 40);
    lineCount_ = WrappedLineCount(text, msgText_->font(), wrapWidth);
    const int visible = std::min(lineCount_, kMaxVisibleLines);
    const QFontMetrics metrics(msgText_->font());
    msgText_->setFixedHeight(visible * metrics.lineSpacing() + margin + 2);
    adjustSize();
    okButton_->setFocus();
}

void VQMsgBox::CentreOn(const QWidget* window) {
    CentreWidgetOn(this, window);
}

}  // namespace tl::qt
