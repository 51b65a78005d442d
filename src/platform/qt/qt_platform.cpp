#include "platform/qt/qt_platform.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QFileDialog>
#include <QGuiApplication>
#include <QInputDialog>
#include <QMainWindow>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QMessageBox>
#include <QStatusBar>
#include <QTime>
#include <QToolBar>

#include "platform/qt/message_form.h"
#include "platform/qt/progress_form.h"
#include "platform/qt/view_window.h"
#include "platform/qt/wait_form.h"

namespace tl::qt {

namespace {

QString Q(const std::string& text) {
    return QString::fromStdString(text);
}

// The system's texts end lines with CR LF; Qt's boxes want a bare LF.
QString Lines(const std::string& text) {
    QString result = Q(text);
    result.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    result.replace(QLatin1Char('\r'), QLatin1Char('\n'));
    return result;
}

// The ViewWindow a widget stands for: the widget itself, or the widget an MDI
// sub-window frames.
ViewWindow* AsView(QWidget* widget) {
    if (widget == nullptr) return nullptr;
    if (auto* view = dynamic_cast<ViewWindow*>(widget)) return view;
    if (auto* sub = qobject_cast<QMdiSubWindow*>(widget)) {
        return dynamic_cast<ViewWindow*>(sub->widget());
    }
    return nullptr;
}

}  // namespace

QString QtFileFilter(const std::string& filter) {
    const QStringList parts = Q(filter).split(QLatin1Char('|'));
    QStringList entries;
    for (qsizetype i = 0; i < parts.size(); i += 2) {
        QString description = parts[i].trimmed();
        // "Run Data Files (*.run )": the patterns in the description's own
        // brackets are dropped; Qt reads the ones we append.
        const qsizetype open = description.lastIndexOf(QLatin1Char('('));
        if (open >= 0 && description.endsWith(QLatin1Char(')'))) {
            description = description.left(open).trimmed();
        }
        QString patterns = i + 1 < parts.size() ? parts[i + 1].trimmed() : QString();
        if (description.isEmpty() && patterns.isEmpty()) continue;
        QStringList list;
        for (const QString& p : patterns.split(QLatin1Char(';'), Qt::SkipEmptyParts)) {
            if (!p.trimmed().isEmpty()) list << p.trimmed();
        }
        if (list.isEmpty()) list << QStringLiteral("*");
        const QString name = description.isEmpty() ? list.join(QLatin1Char(' ')) : description;
        entries << name + QStringLiteral(" (") + list.join(QLatin1Char(' ')) + QLatin1Char(')');
    }
    return entries.join(QStringLiteral(";;"));
}

double LocalSecondsSinceMidnight() {
    return QTime::currentTime().msecsSinceStartOfDay() / 1000.0;
}

QtPlatform::QtPlatform() = default;

QtPlatform::~QtPlatform() {
    if (busyCursorOverride_ && QApplication::instance() != nullptr) {
        QApplication::restoreOverrideCursor();
    }
    // Forms without a parent are ours to delete, but only while Qt still runs;
    // at the end of the process (a static instance) they are left to the OS.
    if (QApplication::instance() != nullptr) {
        delete waitForm_.data();
        delete processForm_.data();
    }
}

Platform QtPlatform::AsPlatform() {
    Platform platform;
    platform.messages = this;
    platform.wait = this;
    platform.progress = this;
    platform.files = this;
    platform.clock = this;
    platform.memory = nullptr;  // the core's /proc/meminfo reader stays in force
    platform.shell = this;
    platform.clipboard = this;
    return platform;
}

void QtPlatform::SetClipboardText(const std::string& text) {
    QClipboard* clipboard = QGuiApplication::clipboard();
    clipboard->clear();
    clipboard->setText(QString::fromStdString(text));
}

std::string QtPlatform::ClipboardText() {
    return QGuiApplication::clipboard()->text().toStdString();
}

void QtPlatform::SetMainWindow(QWidget* mainWindow) {
    mainWindow_ = mainWindow;
}

QMainWindow* QtPlatform::MainFrame() const {
    return qobject_cast<QMainWindow*>(mainWindow_.data());
}

std::vector<QWidget*> QtPlatform::OpenViews() const {
    std::vector<QWidget*> views;
    auto add = [&views](QWidget* widget) {
        if (AsView(widget) == nullptr) return;
        for (QWidget* seen : views) {
            if (seen == widget) return;
        }
        views.push_back(widget);
    };
    if (QMainWindow* frame = MainFrame()) {
        if (auto* mdi = qobject_cast<QMdiArea*>(frame->centralWidget())) {
            for (QMdiSubWindow* sub : mdi->subWindowList()) add(sub);
        }
    }
    for (QWidget* top : QApplication::topLevelWidgets()) add(top);
    return views;
}

// --- MessageBoxes ---------------------------------------------------------

void QtPlatform::Message(const std::string& text) {
    VQMsgBox box(mainWindow_.data());
    box.SetMessage(Lines(text));
    box.CentreOn(mainWindow_.data());
    box.exec();
}

void QtPlatform::PlainMessage(const std::string& text, const std::string& title) {
    QMessageBox box(QMessageBox::NoIcon, Q(title), Lines(text), QMessageBox::Ok,
                    mainWindow_.data());
    box.setObjectName(QStringLiteral("PlainMessageBox"));
    box.exec();
}

bool QtPlatform::YesNo(const std::string& title, const std::string& text) {
    QMessageBox box(QMessageBox::Question, Q(title), Lines(text),
                    QMessageBox::Yes | QMessageBox::No, mainWindow_.data());
    box.setObjectName(QStringLiteral("YesNoBox"));
    return box.exec() == QMessageBox::Yes;
}

bool QtPlatform::OkCancel(const std::string& title, const std::string& text) {
    QMessageBox box(QMessageBox::Question, Q(title), Lines(text),
                    QMessageBox::Ok | QMessageBox::Cancel, mainWindow_.data());
    box.setObjectName(QStringLiteral("OkCancelBox"));
    return box.exec() == QMessageBox::Ok;
}

std::optional<std::string> QtPlatform::InputBox(const std::string& prompt, const std::string& title,
                                                const std::string& defaultText) {
    QInputDialog dialog(mainWindow_.data());
    dialog.setObjectName(QStringLiteral("InputBox"));
    dialog.setWindowTitle(Q(title));
    dialog.setLabelText(Lines(prompt));
    dialog.setInputMode(QInputDialog::TextInput);
    dialog.setTextValue(Q(defaultText));
    if (dialog.exec() != QDialog::Accepted) return std::nullopt;
    return dialog.textValue().toStdString();
}

// --- WaitForm ---------------------------------------------------------------

void QtPlatform::ShowWait(const std::string& reason) {
    if (QWidget* main = mainWindow_.data()) main->setCursor(Qt::WaitCursor);
    // What the program is doing also stands in the frame's status bar.
    if (QMainWindow* frame = MainFrame()) frame->statusBar()->showMessage(Q(reason));
    if (!waitForm_.isNull() && waitForm_->isVisible()) {
        // Already up. Callers change the text once per column of a resize, a
        // few hundred times in a row: the new text is painted at once unless
        // the last paint is under a frame old (the eye sees no more).
        waitForm_->SetReason(Q(reason));
        if (!waitPainted_.isValid() || waitPainted_.elapsed() >= 20) {
            waitForm_->repaint();
            waitPainted_.start();
        }
        return;
    }
    if (waitForm_.isNull()) waitForm_ = new PleaseWaitForm(mainWindow_.data());
    waitForm_->SetReason(Q(reason));
    waitForm_->CentreOn(mainWindow_.data());
    waitForm_->show();
    waitForm_->raise();
    // The caller goes straight into a long loop: the window must be mapped
    // and painted now, not when the loop ends.
    waitForm_->repaint();
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    waitPainted_.start();
}

void QtPlatform::HideWait() {
    if (QWidget* main = mainWindow_.data()) main->unsetCursor();
    if (QMainWindow* frame = MainFrame()) {
        frame->statusBar()->clearMessage();
        // Whatever waited (a load, a conversion, a trim) may have changed
        // what is loaded.
        QMetaObject::invokeMethod(frame, "RefreshStatus", Qt::DirectConnection);
    }
    if (!waitForm_.isNull()) {
        waitForm_->hide();
        waitForm_->deleteLater();
        waitForm_.clear();
    }
}

bool QtPlatform::IsWaitShown() const {
    return !waitForm_.isNull() && waitForm_->isVisible();
}

// --- ProgressForm -------------------------------------------------------------

void QtPlatform::ShowProgress(const std::string& animationPath) {
    if (processForm_.isNull()) {
        processForm_ = new ProcessForm(mainWindow_.data());
    }
    processForm_->StartAnimation(Q(animationPath));
    processForm_->show();
    processForm_->raise();
    processForm_->repaint();
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

void QtPlatform::SetProgressCaption(const std::string& caption) {
    if (processForm_.isNull()) return;
    processForm_->setWindowTitle(Q(caption));
}

void QtPlatform::AppendProgressLine(const std::string& line) {
    if (processForm_.isNull()) return;
    processForm_->AppendLine(Q(line));
    processForm_->repaint();
}

void QtPlatform::HideProgress() {
    if (processForm_.isNull()) return;
    processForm_->StopAnimation();
    processForm_->hide();
    processForm_->deleteLater();
    processForm_.clear();
}

// --- FileDialogs ----------------------------------------------------------------

std::vector<std::string> QtPlatform::OpenFiles(const FileDialogRequest& request) {
    QFileDialog dialog(mainWindow_.data(), Q(request.title), Q(request.initialDir),
                       QtFileFilter(request.filter));
    dialog.setObjectName(QStringLiteral("CommDialog1"));
    dialog.setAcceptMode(QFileDialog::AcceptOpen);
    dialog.setFileMode(request.multiSelect ? QFileDialog::ExistingFiles
                                           : QFileDialog::ExistingFile);
    std::vector<std::string> chosen;
    if (dialog.exec() != QDialog::Accepted) return chosen;
    for (const QString& file : dialog.selectedFiles()) chosen.push_back(file.toStdString());
    return chosen;
}

std::optional<std::string> QtPlatform::SaveFile(const FileDialogRequest& request) {
    QFileDialog dialog(mainWindow_.data(), Q(request.title), Q(request.initialDir),
                       QtFileFilter(request.filter));
    dialog.setObjectName(QStringLiteral("CommDialog1"));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.setOption(QFileDialog::DontConfirmOverwrite, !request.overwritePrompt);
    if (dialog.exec() != QDialog::Accepted) return std::nullopt;
    const QStringList files = dialog.selectedFiles();
    if (files.isEmpty()) return std::nullopt;
    return files.front().toStdString();
}

// --- Clock --------------------------------------------------------------------------

double QtPlatform::SecondsSinceMidnight() {
    return LocalSecondsSinceMidnight();
}

void QtPlatform::DoEvents() {
    QCoreApplication::processEvents();
}

// --- ShellHooks ------------------------------------------------------------------------

void QtPlatform::SetAllMousePointers(int shape) {
    // 11 is the hourglass; 0 (and any other shape) the default. An override
    // cursor reaches every window of the program at once, as the original's
    // walk over all loaded forms did; it is set at most once so that one
    // reset always undoes it.
    if (shape == 11) {
        if (!busyCursorOverride_) {
            QApplication::setOverrideCursor(Qt::WaitCursor);
            busyCursorOverride_ = true;
        }
    } else if (busyCursorOverride_) {
        QApplication::restoreOverrideCursor();
        busyCursorOverride_ = false;
    }
}

void QtPlatform::DisableAllForms() {
    QMainWindow* frame = MainFrame();
    if (frame == nullptr || formsDisabled_) return;
    formsDisabled_ = true;
    // The menu, the toolbar, then the main form's drawing and input.
    if (QMenuBar* menu = frame->menuBar()) menu->setEnabled(false);
    for (QToolBar* bar : frame->findChildren<QToolBar*>()) bar->setEnabled(false);
    if (QWidget* central = frame->centralWidget()) {
        central->setUpdatesEnabled(false);
        central->setEnabled(false);
    }
}

void QtPlatform::EnableAllForms() {
    QMainWindow* frame = MainFrame();
    if (frame == nullptr || !formsDisabled_) return;
    formsDisabled_ = false;
    if (QMenuBar* menu = frame->menuBar()) menu->setEnabled(true);
    for (QToolBar* bar : frame->findChildren<QToolBar*>()) bar->setEnabled(true);
    if (QWidget* central = frame->centralWidget()) {
        central->setUpdatesEnabled(true);
        central->setEnabled(true);
        central->update();
    }
}

void QtPlatform::UnloadAllViews() {
    for (QWidget* view : OpenViews()) {
        view->close();
        view->deleteLater();
    }
}

void QtPlatform::RefreshOpenViews() {
    for (QWidget* widget : OpenViews()) {
        if (ViewWindow* view = AsView(widget)) view->Regenerate();
    }
    // The frame's status bar says what is loaded.
    if (QMainWindow* frame = MainFrame())
        QMetaObject::invokeMethod(frame, "RefreshStatus", Qt::DirectConnection);
}

void QtPlatform::WheelSpeedOptionsDisabled() {
    if (QWidget* main = mainWindow_.data()) {
        for (QAction* action : main->findChildren<QAction*>(QStringLiteral("mnuRefOptions"))) {
            action->setVisible(false);
        }
    }
}

void QtPlatform::UnloadMainForm() {
    QWidget* main = mainWindow_.data();
    if (main == nullptr) return;
    mainWindow_.clear();
    main->close();
    main->deleteLater();
}

QtPlatform& InstallQtPlatform(QWidget* mainWindow) {
    static QtPlatform platform;
    if (mainWindow != nullptr) platform.SetMainWindow(mainWindow);
    SetPlatform(platform.AsPlatform());
    return platform;
}

}  // namespace tl::qt
