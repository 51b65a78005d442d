// Helpers of the GUI tests: a fixture with the Qt platform installed, and a
// watcher that answers the modal forms a call brings up (as a user would,
// from inside the form's own event loop) and records what they showed.
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QPointer>
#include <QString>
#include <QTimer>
#include <QWidget>

#include <functional>
#include <vector>

#include "platform/qt/qt_platform.h"

namespace tl::test {

struct SeenForm {
    QString objectName;
    QString title;
    QString text;  // MsgText, a message box's text, or empty
};

// Polls for the active modal widget every few milliseconds; each one found is
// recorded, handed to the optional inspector, then accepted (its default
// button). An inspector that returns false leaves the form to close itself.
class ModalWatcher {
  public:
    using Inspector = std::function<bool(QWidget*)>;
    explicit ModalWatcher(Inspector inspector = nullptr);
    ~ModalWatcher();
    std::vector<SeenForm> seen;
    bool Saw(const QString& objectName) const;
    const SeenForm* Find(const QString& objectName) const;

  private:
    void Poll();
    QTimer timer_;
    Inspector inspector_;
    // Guarded: a new form may be built where a destroyed one stood.
    QPointer<QWidget> pending_;
    QPointer<QWidget> handled_;
};

// The Qt platform installed over the engine, and every window closed again
// afterwards.
class GuiTest : public ::testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;
    // Runs the deferred deletions and other posted events.
    static void Settle();
    qt::QtPlatform platform;
};

// The visible top-level widget (or any widget) with this object name.
QWidget* FindTopLevel(const QString& objectName);

}  // namespace tl::test
