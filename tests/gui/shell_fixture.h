// The shell's tests: the program started on a fresh configuration root
// through Main, as a user would start it, and a scripted user who answers the
// forms the commands bring up.
#pragma once

#include <QAbstractButton>
#include <QFileDialog>
#include <QFileInfo>
#include <QLineEdit>
#include <QMessageBox>

#include <deque>
#include <functional>
#include <map>
#include <memory>

#include "core/build_profile.h"
#include "gui_fixture.h"
#include "road/startup.h"
#include "shell/main_form.h"
#include "shell/qt_startup_ui.h"
#include "store/run_store.h"
#include "support/engine_fixture.h"

namespace tl::test {

inline const std::string kSamples = TRACELAB_SAMPLES_DIR;

// Answers the forms the commands bring up: the file dialog with the next
// queued file, the questions with the next queued button, and any form with
// a queued action of its own name.
struct User {
    std::deque<QString> files;
    std::deque<QMessageBox::StandardButton> answers;  // default: Yes
    std::map<QString, std::function<void(QWidget*)>> forms;
    QStringList questions;
    QStringList messages;
    ModalWatcher watcher{[this](QWidget* form) { return Answer(form); }};

    bool Answer(QWidget* form) {
        if (auto* dialog = qobject_cast<QFileDialog*>(form)) {
            if (files.empty()) {
                dialog->reject();
            } else {
                // Typed as a user would: the folder, then the name.
                const QFileInfo file(files.front());
                files.pop_front();
                dialog->setDirectory(file.absolutePath());
                auto* name = dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
                if (name == nullptr) {
                    dialog->reject();
                    return false;
                }
                name->setText(QLatin1Char('"') + file.fileName() + QLatin1Char('"'));
                return true;
            }
            return false;
        }
        if (auto* box = qobject_cast<QMessageBox*>(form)) {
            questions << box->text();
            QMessageBox::StandardButton answer = QMessageBox::Yes;
            if (!answers.empty()) {
                answer = answers.front();
                answers.pop_front();
            }
            QAbstractButton* button = box->button(answer);
            if (button == nullptr) button = box->button(QMessageBox::Ok);
            if (button == nullptr) return true;
            button->click();
            return false;
        }
        if (form->objectName() == QLatin1String("frmVQMsgBox")) {
            messages << watcher.seen.back().text;
            return true;
        }
        auto it = forms.find(form->objectName());
        if (it == forms.end()) return true;
        const auto action = it->second;
        forms.erase(it);
        // Run from the form's own loop, not inside this poll, so that the
        // messages the action brings up are answered in their turn.
        QTimer::singleShot(0, form, [action, form] { action(form); });
        return false;
    }
};

template <class T>
inline T* Child(QWidget* form, const char* name, int index = 0) {
    const QList<T*> all = form->findChildren<T*>(QString::fromUtf8(name));
    return index < all.size() ? all[index] : nullptr;
}

inline void Click(QWidget* form, const char* name, int index = 0) {
    auto* button = Child<QAbstractButton>(form, name, index);
    ASSERT_NE(button, nullptr) << name;
    button->click();
}

class ShellTest : public GuiTest {
  protected:
    void Start(const std::string& tokens) {
        StartupOptions options;
        options.appDir = TRACELAB_BIN_DIR;
        options.configDir = root.path().string();
        options.commandLine = tokens;
        ASSERT_EQ(PrepareInstallation(options), "");
        ui = std::make_unique<shell::QtStartupUi>(platform);
        {
            ModalWatcher firstRun;  // the welcome form of a fresh root
            ASSERT_TRUE(Main(options, *ui));
        }
        main = ui->MainWindow();
        ASSERT_NE(main, nullptr);
    }
    void TearDown() override {
        ClearCurrentRunQuietly();
        ui.reset();
        GuiTest::TearDown();
    }
    static void ClearCurrentRunQuietly();
    QAction* Entry(const char* name) { return main->Entry(QString::fromUtf8(name)); }
    // Loads the demo run through mnuFileLoadRun, processing it or not.
    void LoadDemo(bool process, const std::string& file = "demo_hx40_road.run") {
        user.files.push_back(QString::fromStdString(kSamples + "/" + file));
        user.answers.push_back(process ? QMessageBox::Yes : QMessageBox::No);
        Entry("mnuFileLoadRun")->trigger();
        ASSERT_EQ(Store().RunCount, 1);
    }
    shell::RunManagerForm* Manager() {
        Entry("RunManager")->trigger();
        return main->RunManager();
    }
    TempDir root;
    std::unique_ptr<shell::QtStartupUi> ui;
    shell::MainForm* main = nullptr;
    User user;
};

inline void ShellTest::ClearCurrentRunQuietly() {
    Store().RawData.Reset(Profile().PlaneFamily());
    Store().RunCount = 0;
}

}  // namespace tl::test
