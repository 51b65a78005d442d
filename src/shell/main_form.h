// frmMain: the parent window of the whole application, a multi-document
// frame. Views open as sub-windows of its QMdiArea; the menu bar and the
// toolbar (Toolbar1) are filled by the shell's command table.
#pragma once

#include <QMainWindow>

class QMdiArea;
class QToolBar;

namespace tl::shell {

class MainForm : public QMainWindow {
    Q_OBJECT
  public:
    explicit MainForm(QWidget* parent = nullptr);
    QMdiArea* MdiArea() const { return mdi_; }
    QToolBar* Toolbar() const { return toolbar_; }
    // "VQ Tracelab - " + BuildIdString.
    static QString Caption();

  private:
    QMdiArea* mdi_;
    QToolBar* toolbar_;
};

}  // namespace tl::shell
