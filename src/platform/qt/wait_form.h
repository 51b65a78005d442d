// frmPleaseWait: a small frameless tool window with one line of text
// (ReasonForWait), kept above every other window. The original made it
// topmost with SetWindowPos(HWND_TOPMOST, SWP_NOMOVE | SWP_NOSIZE); here it
// carries Qt::WindowStaysOnTopHint, which the window manager honours in the
// same way.
#pragma once

#include <QFrame>
#include <QString>

class QLabel;

namespace tl::qt {

class PleaseWaitForm : public QFrame {
    Q_OBJECT
  public:
    explicit PleaseWaitForm(QWidget* parent = nullptr);
    void SetReason(const QString& reason);
    // Centres the form on the given window (the screen when null).
    void CentreOn(const QWidget* window);

  private:
    QLabel* reason_;
};

}  // namespace tl::qt
