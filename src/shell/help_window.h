// The help pages, shown inside the program: the shipped help is HTML, and a
// desktop may have no browser to hand it to. One window, "Tracelab Help",
// follows the pages' own links; a link out of the help goes to the desktop.
#pragma once

#include <QDialog>
#include <QString>

class QTextBrowser;

namespace tl::shell {

class HelpWindow : public QDialog {
    Q_OBJECT
  public:
    explicit HelpWindow(QWidget* parent = nullptr);
    // Shows the page (a local HTML file) and brings the window up.
    void ShowPage(const QString& path);
    QTextBrowser* Browser() const { return browser_; }

  private:
    QTextBrowser* browser_;
};

// The one help window of the program, created on first use over parent.
HelpWindow* ShowHelpPage(const QString& path, QWidget* parent);

}  // namespace tl::shell
