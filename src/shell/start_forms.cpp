#include "shell/start_forms.h"

#include "shell/help_window.h"

#include <QDesktopServices>
#include <QFont>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QUrl>
#include <QVBoxLayout>

#include "core/build_profile.h"
#include "core/config_store.h"
#include "core/log.h"

namespace tl::shell {

StartBanner::StartBanner(const QString& versionLabel, QWidget* parent)
    : QWidget(parent, Qt::SplashScreen | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint) {
    setObjectName(QStringLiteral("frmStartBanner"));
    setWindowTitle(QStringLiteral("Tracelab"));
    setAttribute(Qt::WA_DeleteOnClose);
    setAutoFillBackground(true);

    auto* title = new QLabel(QStringLiteral("Tracelab"), this);
    title->setObjectName(QStringLiteral("TitleLabel"));
    QFont big = title->font();
    big.setPointSize(big.pointSize() * 3);
    big.setBold(true);
    title->setFont(big);
    title->setAlignment(Qt::AlignCenter);

    auto* subtitle =
        new QLabel(QStringLiteral("Data analysis for loggers and performance meters"), this);
    subtitle->setAlignment(Qt::AlignCenter);

    version_ = new QLabel(versionLabel, this);
    version_->setObjectName(QStringLiteral("VersionLabel"));
    version_->setAlignment(Qt::AlignCenter);

    auto* close = new QPushButton(QStringLiteral("Close"), this);
    close->setObjectName(QStringLiteral("CloseBtn"));
    connect(close, &QPushButton::clicked, this, &QWidget::close);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(32, 24, 32, 16);
    layout->addWidget(title);
    layout->addWidget(subtitle);
    layout->addSpacing(16);
    layout->addWidget(version_);
    layout->addWidget(close, 0, Qt::AlignRight);
    setMinimumWidth(460);
}

FirstRunForm::FirstRunForm(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmFirstRun"));
    setWindowTitle(QStringLiteral("Welcome to Tracelab"));
    setModal(true);

    auto* text = new QLabel(
        QStringLiteral(
            "This is the first time Tracelab has been run on this computer.\n\n"
            "Runs, exports and car option files will be kept in Tracelab's "
            "configuration folder until you choose other places under File, Set Default Paths.\n\n"
            "Press Quick Start for a guide to the first steps."),
        this);
    text->setObjectName(QStringLiteral("WelcomeText"));
    text->setWordWrap(true);
    text->setMinimumWidth(380);

    auto* okay = new QPushButton(QStringLiteral("OK"), this);
    okay->setObjectName(QStringLiteral("Okay"));
    okay->setDefault(true);
    connect(okay, &QPushButton::clicked, this, &QDialog::accept);

    auto* quick = new QPushButton(QStringLiteral("Quick Start"), this);
    quick->setObjectName(QStringLiteral("QuickStart"));
    quick->setAutoDefault(false);
    connect(quick, &QPushButton::clicked, this, [] { OpenHelpContents(); });

    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(quick);
    buttons->addWidget(okay);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(text);
    layout->addLayout(buttons);
}

bool FirstRunForm::OpenHelpContents() {
    const QString path = QString::fromStdString(Paths().HelpPath);
    LogDebug("open the help contents: " + Paths().HelpPath);
    if (!FileReadable(Paths().HelpPath)) return false;
    ShowHelpPage(path, nullptr);
    return true;
}

}  // namespace tl::shell
