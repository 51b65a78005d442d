#include "shell/help_window.h"

#include <QDesktopServices>
#include <QHBoxLayout>
#include <QPointer>
#include <QPushButton>
#include <QTextBrowser>
#include <QUrl>
#include <QVBoxLayout>

#include "shell/app_icons.h"

namespace tl::shell {

HelpWindow::HelpWindow(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("HelpWindow"));
    setWindowTitle(QStringLiteral("Tracelab Help"));
    setWindowIcon(AppIcon());
    setModal(false);
    browser_ = new QTextBrowser(this);
    browser_->setObjectName(QStringLiteral("HelpBrowser"));
    browser_->setOpenExternalLinks(false);
    browser_->setOpenLinks(false);
    connect(browser_, &QTextBrowser::anchorClicked, this, [this](const QUrl& url) {
        if (url.isLocalFile() || url.isRelative())
            browser_->setSource(browser_->source().resolved(url));
        else
            QDesktopServices::openUrl(url);
    });
    auto* back = new QPushButton(QStringLiteral("Back"), this);
    back->setObjectName(QStringLiteral("BackBtn"));
    connect(back, &QPushButton::clicked, browser_, &QTextBrowser::backward);
    connect(browser_, &QTextBrowser::backwardAvailable, back, &QPushButton::setEnabled);
    back->setEnabled(false);
    auto* close = new QPushButton(QStringLiteral("Close"), this);
    close->setObjectName(QStringLiteral("CloseBtn"));
    connect(close, &QPushButton::clicked, this, &QDialog::close);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(back);
    buttons->addStretch(1);
    buttons->addWidget(close);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(browser_, 1);
    layout->addLayout(buttons);
    resize(720, 560);
}

void HelpWindow::ShowPage(const QString& path) {
    browser_->setSource(QUrl::fromLocalFile(path));
    show();
    raise();
    activateWindow();
}

HelpWindow* ShowHelpPage(const QString& path, QWidget* parent) {
    // Closing hides the window; it goes with its parent (or at exit).
    static QPointer<HelpWindow> window;
    if (window.isNull()) window = new HelpWindow(parent);
    window->ShowPage(path);
    return window.data();
}

}  // namespace tl::shell
