// The two small forms of the start: frmStartBanner, shown while Main sets up,
// and frmFirstRun, the welcome shown once per family on a fresh installation.
#pragma once

#include <QDialog>
#include <QWidget>

class QLabel;

namespace tl::shell {

// frmStartBanner: "BuildCode:" + BuildIdString in VersionLabel; CloseBtn
// unloads it.
class StartBanner : public QWidget {
    Q_OBJECT
  public:
    explicit StartBanner(const QString& versionLabel, QWidget* parent = nullptr);

  private:
    QLabel* version_;
};

// frmFirstRun: Okay unloads it; QuickStart opens the contents page of the help
// (the original called the help viewer with command 1, HH_DISPLAY_TOC; here
// the desktop opens the shipped HTML contents page, Paths().HelpPath).
class FirstRunForm : public QDialog {
    Q_OBJECT
  public:
    explicit FirstRunForm(QWidget* parent = nullptr);
    // Opens the help contents page; false when the desktop could not.
    static bool OpenHelpContents();
};

}  // namespace tl::shell
