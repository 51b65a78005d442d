// frmVQMsgBox: the program's own message form, title "Error Report".
//
// A modal dialog with a read-only multi-line MsgText and an OkButton beneath.
// The original asked the text box for its line count (EM_GETLINECOUNT) and
// sized the box and the form for that many lines; here the wrapped line count
// is measured with the box's font at its fixed width, and the box is given
// exactly that many lines (up to kMaxVisibleLines; longer texts scroll).
#pragma once

#include <QDialog>
#include <QString>

class QPlainTextEdit;
class QPushButton;

namespace tl::qt {

class VQMsgBox : public QDialog {
    Q_OBJECT
  public:
    static constexpr int kMaxVisibleLines = 30;

    explicit VQMsgBox(QWidget* parent = nullptr);
    // Puts the text in MsgText and sizes the box and the form for its lines.
    void SetMessage(const QString& text);
    // The number of lines the text occupies in MsgText (after word wrap).
    int LineCount() const { return lineCount_; }
    // Centres the form on the given window (the screen when null).
    void CentreOn(const QWidget* window);

  private:
    QPlainTextEdit* msgText_;
    QPushButton* okButton_;
    int lineCount_ = 0;
};

}  // namespace tl::qt
