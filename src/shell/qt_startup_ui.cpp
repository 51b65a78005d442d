#include "shell/qt_startup_ui.h"

#include <QApplication>

#include "platform/qt/qt_platform.h"
#include "platform/qt/window_placement.h"
#include "shell/main_form.h"
#include "shell/start_forms.h"

namespace tl::shell {

QtStartupUi::QtStartupUi(qt::QtPlatform& platform) : platform_(platform) {}

QtStartupUi::~QtStartupUi() {
    delete banner_.data();
    // frmMain lives on after Main (the event loop carries the program); it is
    // deleted when it closes, or here when the program ends without closing.
    if (!main_.isNull() && QApplication::instance() != nullptr) {
        if (platform_.MainWindow() == main_.data()) platform_.SetMainWindow(nullptr);
        delete main_.data();
    }
}

bool QtStartupUi::ShowBanner(const std::string& versionLabel) {
    if (banner_.isNull()) banner_ = new StartBanner(QString::fromStdString(versionLabel));
    banner_->adjustSize();
    qt::CentreWidgetOn(banner_, nullptr);
    banner_->show();
    banner_->raise();
    banner_->repaint();
    QCoreApplication::processEvents();
    return true;
}

void QtStartupUi::HideBanner() {
    if (banner_.isNull()) return;
    banner_->hide();
    delete banner_.data();
}

void QtStartupUi::ShowMainForm() {
    if (main_.isNull()) main_ = new MainForm;
    platform_.SetMainWindow(main_);
    main_->ShowAtStart();
    main_->raise();
    main_->activateWindow();
    QCoreApplication::processEvents();
    main_->ShowToolWindowsAtStart();
}

bool QtStartupUi::ShowFirstRunForm() {
    FirstRunForm form(MainFormLoaded() ? main_.data() : nullptr);
    form.exec();
    return true;
}

bool QtStartupUi::MainFormLoaded() const {
    // UnloadMainForm lets go of the window at once, though Qt deletes it later.
    return !main_.isNull() && platform_.MainWindow() == main_.data();
}

}  // namespace tl::shell
