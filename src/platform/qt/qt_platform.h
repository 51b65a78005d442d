// The Qt implementations of the platform interfaces (src/core/platform.h), one
// object owning them all. The program creates one QtPlatform after the
// QApplication, installs it with InstallQtPlatform(), and tells it the main
// window once frmMain exists (SetMainWindow), because the start-up messages
// come before there is a main window to centre them on.
//
// Memory figures are not here: the core reads /proc/meminfo itself, and the
// member stays null so the core's implementation remains in force.
#pragma once

#include <QElapsedTimer>
#include <QPointer>
#include <QString>
#include <QWidget>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/platform.h"
#include "platform/qt/progress_form.h"
#include "platform/qt/wait_form.h"

class QMainWindow;

namespace tl::qt {

class ViewWindow;

// "Run files|*.run|All files|*.*" -> "Run files (*.run);;All files (*.*)".
// Several patterns of one entry, separated by ";", become Qt's blank-separated
// list; a description left without a pattern gets "*". Patterns shown in the
// description's own brackets ("Run Data Files (*.run )") give way to the
// pattern field, which is what the dialog filters by.
QString QtFileFilter(const std::string& filter);

// Seconds since local midnight, with milliseconds.
double LocalSecondsSinceMidnight();

class QtPlatform final : public MessageBoxes,
                         public WaitForm,
                         public ProgressForm,
                         public FileDialogs,
                         public Clock,
                         public ShellHooks,
                         public Clipboard {
  public:
    QtPlatform();
    ~QtPlatform() override;
    QtPlatform(const QtPlatform&) = delete;
    QtPlatform& operator=(const QtPlatform&) = delete;

    // The Platform structure pointing at this object (memory left null).
    Platform AsPlatform();
    // frmMain, the owner of the forms and the target of the hooks. May be
    // null (before frmMain is loaded, or after it unloaded).
    void SetMainWindow(QWidget* mainWindow);
    QWidget* MainWindow() const { return mainWindow_.data(); }

    // The open views: ViewWindows among the MDI children of frmMain and the
    // top-level windows.
    std::vector<QWidget*> OpenViews() const;

    // The forms, for tests (null while not loaded).
    PleaseWaitForm* WaitFormWidget() const { return waitForm_.data(); }
    ProcessForm* ProcessFormWidget() const { return processForm_.data(); }

    // --- MessageBoxes ---
    void Message(const std::string& text) override;
    void PlainMessage(const std::string& text, const std::string& title) override;
    bool YesNo(const std::string& title, const std::string& text) override;
    bool OkCancel(const std::string& title, const std::string& text) override;
    std::optional<std::string> InputBox(const std::string& prompt, const std::string& title,
                                        const std::string& defaultText) override;
    // --- WaitForm ---
    void ShowWait(const std::string& reason) override;
    void HideWait() override;
    bool IsWaitShown() const override;
    // --- ProgressForm ---
    void ShowProgress(const std::string& animationPath) override;
    void SetProgressCaption(const std::string& caption) override;
    void AppendProgressLine(const std::string& line) override;
    void HideProgress() override;
    // --- FileDialogs ---
    std::vector<std::string> OpenFiles(const FileDialogRequest& request) override;
    std::optional<std::string> SaveFile(const FileDialogRequest& request) override;
    // --- Clock ---
    double SecondsSinceMidnight() override;
    void DoEvents() override;
    // --- ShellHooks ---
    void SetAllMousePointers(int shape) override;
    void DisableAllForms() override;
    void EnableAllForms() override;
    void UnloadAllViews() override;
    void RefreshOpenViews() override;
    void WheelSpeedOptionsDisabled() override;
    void UnloadMainForm() override;
    // --- Clipboard ---
    void SetClipboardText(const std::string& text) override;
    std::string ClipboardText() override;

  private:
    QMainWindow* MainFrame() const;

    QPointer<QWidget> mainWindow_;
    QPointer<PleaseWaitForm> waitForm_;
    QElapsedTimer waitPainted_;
    QPointer<ProcessForm> processForm_;
    bool busyCursorOverride_ = false;
    bool formsDisabled_ = false;
};

// Creates (once) the program's QtPlatform, tells it the main window and
// installs it with tl::SetPlatform. Returns the instance.
QtPlatform& InstallQtPlatform(QWidget* mainWindow = nullptr);

}  // namespace tl::qt
