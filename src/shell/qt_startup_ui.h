// The windows Main shows, in Qt: the start banner, frmMain and the first-run
// form. Main itself (src/core/startup.h) decides when each appears.
#pragma once

#include <QPointer>

#include <string>

#include "road/startup.h"

namespace tl::qt {
class QtPlatform;
}

namespace tl::shell {

class MainForm;
class StartBanner;

class QtStartupUi : public StartupUi {
  public:
    explicit QtStartupUi(qt::QtPlatform& platform);
    ~QtStartupUi() override;
    QtStartupUi(const QtStartupUi&) = delete;
    QtStartupUi& operator=(const QtStartupUi&) = delete;

    bool ShowBanner(const std::string& versionLabel) override;
    void HideBanner() override;
    void ShowMainForm() override;
    bool ShowFirstRunForm() override;
    bool MainFormLoaded() const override;

    MainForm* MainWindow() const { return main_.data(); }

  private:
    qt::QtPlatform& platform_;
    QPointer<StartBanner> banner_;
    QPointer<MainForm> main_;
};

}  // namespace tl::shell
