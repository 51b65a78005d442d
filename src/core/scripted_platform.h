// Scripted implementations of the platform interfaces.
//
// Used by the tests and by tracelab-cli. Answers to questions and dialogs are
// queued in advance; when a queue runs dry the default answer is given. Every
// message, question, wait text and progress line is recorded in one event list
// so that a test can assert on what a user would have seen, in order.
#pragma once

#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "core/platform.h"

namespace tl {

struct ScriptedEvent {
    enum class Kind {
        Message,       // frmVQMsgBox
        PlainMessage,  // plain OK box
        YesNo,
        OkCancel,
        InputBox,
        WaitShown,
        WaitHidden,
        ProgressShown,
        ProgressCaption,
        ProgressLine,
        ProgressHidden,
        OpenDialog,
        SaveDialog,
        MousePointer,
    };
    Kind kind;
    std::string title;
    std::string text;
};

class ScriptedPlatform final : public MessageBoxes,
                               public WaitForm,
                               public ProgressForm,
                               public FileDialogs,
                               public Clock,
                               public MemoryStatus,
                               public ShellHooks,
                               public Clipboard {
  public:
    // The Platform structure pointing at this object, ready for SetPlatform.
    Platform AsPlatform();

    // --- scripting ---
    std::deque<bool> yesNoAnswers;  // when empty: defaultYesNo
    bool defaultYesNo = false;
    std::deque<bool> okCancelAnswers;                     // when empty: OK
    std::deque<std::optional<std::string>> inputAnswers;  // when empty: cancel
    std::deque<std::vector<std::string>> openAnswers;     // when empty: cancel
    std::deque<std::optional<std::string>> saveAnswers;   // when empty: cancel
    MemoryFigures memoryFigures{8e9, 4e9, 16e9, 12e9};
    // Virtual clock: each DoEvents advances it by secondsPerEvent.
    double secondsSinceMidnight = 36000.0;
    double secondsPerEvent = 0.01;
    // Called on every recorded event, e.g. to echo messages to stderr.
    std::function<void(const ScriptedEvent&)> onEvent;

    // --- records ---
    std::vector<ScriptedEvent> events;
    std::vector<std::string> progressLines;
    std::string progressCaption;
    bool progressShown = false;
    int doEventsCalls = 0;
    std::vector<std::string> Texts(ScriptedEvent::Kind kind) const;
    bool Saw(ScriptedEvent::Kind kind, const std::string& text) const;
    int Count(ScriptedEvent::Kind kind) const;
    void ClearRecords();

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
    bool IsWaitShown() const override { return waitShown_; }
    // --- ProgressForm ---
    void ShowProgress(const std::string& animationPath) override;
    void SetProgressCaption(const std::string& caption) override;
    void AppendProgressLine(const std::string& line) override;
    void HideProgress() override;
    // --- FileDialogs ---
    std::vector<std::string> OpenFiles(const FileDialogRequest& request) override;
    std::optional<std::string> SaveFile(const FileDialogRequest& request) override;
    // --- Clock ---
    double SecondsSinceMidnight() override { return secondsSinceMidnight; }
    void DoEvents() override;
    // --- MemoryStatus ---
    MemoryFigures Read() override { return memoryFigures; }
    // --- ShellHooks ---
    void SetAllMousePointers(int shape) override;
    // --- Clipboard ---
    std::string clipboard;
    void SetClipboardText(const std::string& text) override { clipboard = text; }
    std::string ClipboardText() override { return clipboard; }

  private:
    void record(ScriptedEvent::Kind kind, const std::string& title, const std::string& text);
    bool waitShown_ = false;
};

}  // namespace tl
