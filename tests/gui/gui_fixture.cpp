#include "gui_fixture.h"

#include <QMessageBox>
#include <QPlainTextEdit>

#include "core/platform.h"

namespace tl::test {

ModalWatcher::ModalWatcher(Inspector inspector) : inspector_(std::move(inspector)) {
    QObject::connect(&timer_, &QTimer::timeout, [this] { Poll(); });
    timer_.start(5);
}

ModalWatcher::~ModalWatcher() {
    timer_.stop();
}

void ModalWatcher::Poll() {
    QWidget* modal = QApplication::activeModalWidget();
    if (modal == nullptr || modal == handled_) return;
    // A form is answered on the poll after the one that first saw it, so that
    // the answer comes from inside the form's own event loop, as a click
    // would (a timer may fire while the form is still being shown).
    if (modal != pending_) {
        pending_ = modal;
        return;
    }
    handled_ = modal;
    SeenForm form{modal->objectName(), modal->windowTitle(), QString()};
    if (auto* box = qobject_cast<QMessageBox*>(modal)) {
        form.text = box->text();
    } else if (auto* edit = modal->findChild<QPlainTextEdit*>(QStringLiteral("MsgText"))) {
        form.text = edit->toPlainText();
    }
    seen.push_back(form);
    if (inspector_ && !inspector_(modal)) return;
    if (auto* dialog = qobject_cast<QDialog*>(modal)) {
        dialog->accept();
    } else {
        modal->close();
    }
}

bool ModalWatcher::Saw(const QString& objectName) const {
    return Find(objectName) != nullptr;
}

const SeenForm* ModalWatcher::Find(const QString& objectName) const {
    for (const SeenForm& form : seen) {
        if (form.objectName == objectName) return &form;
    }
    return nullptr;
}

void GuiTest::SetUp() {
    SetPlatform(platform.AsPlatform());
}

void GuiTest::TearDown() {
    for (QWidget* top : QApplication::topLevelWidgets()) {
        if (top->isVisible()) top->close();
    }
    Settle();
    // Back to the scripted stand-ins before this platform goes away.
    SetPlatform(Platform{});
}

void GuiTest::Settle() {
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCoreApplication::processEvents();
}

QWidget* FindTopLevel(const QString& objectName) {
    for (QWidget* top : QApplication::topLevelWidgets()) {
        if (top->objectName() == objectName) return top;
    }
    for (QWidget* top : QApplication::topLevelWidgets()) {
        if (auto* child = top->findChild<QWidget*>(objectName)) return child;
    }
    return nullptr;
}

}  // namespace tl::test
