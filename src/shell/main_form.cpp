#include "shell/main_form.h"

#include <QMdiArea>
#include <QMenuBar>
#include <QToolBar>

#include "core/build_profile.h"

namespace tl::shell {

MainForm::MainForm(QWidget* parent) : QMainWindow(parent) {
    setObjectName(QStringLiteral("frmMain"));
    setWindowTitle(Caption());
    // The process ends when the last form unloads; frmMain is the last one.
    setAttribute(Qt::WA_DeleteOnClose);

    mdi_ = new QMdiArea(this);
    mdi_->setObjectName(QStringLiteral("MDIClient"));
    mdi_->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    mdi_->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setCentralWidget(mdi_);

    menuBar()->setObjectName(QStringLiteral("MainMenu"));
    toolbar_ = addToolBar(QStringLiteral("Toolbar1"));
    toolbar_->setObjectName(QStringLiteral("Toolbar1"));
    toolbar_->setMovable(false);

    resize(1024, 720);
}

QString MainForm::Caption() {
    // The original's caption: "VQ Tracelab - " followed by the build id.
    return QStringLiteral("VQ Tracelab - ") + QString::fromStdString(BuildIdString());
}

}  // namespace tl::shell
