// Scripted implementations of the platform interfaces.
//
// Used by the tests and by tracelab-cli. Answers to questions and dialogs are
// queued in advance; when a queue runs dry the default answer is given. Every
// message, question, wait text and progress line is recorded in one event list
// so that a test can assert on what a user would have seen, in order.
#pragma once

#include <cstdint>
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

// A serial port with a logger played by the test: onWrite sees every
// Output and queues the logger's reply with Deliver; onPoll runs at each
// InBufferCount, so that bytes can trickle in as time passes (the scripted
// clock moves with each DoEvents). Every write is recorded.
class ScriptedSerialPort final : public SerialPort {
  public:
    // --- scripting ---
    std::function<void(ScriptedSerialPort&, const std::vector<uint8_t>&)> onWrite;
    std::function<void(ScriptedSerialPort&)> onPoll;
    // Error numbers of the next opens, one per attempt; 0 or an empty queue
    // opens.
    std::deque<int> openErrors;
    // Devices that never open (error 2), e.g. ports absent from the system.
    std::vector<std::string> absentDevices;
    void Deliver(const std::vector<uint8_t>& bytes);
    void Deliver(const std::string& text);

    // --- records ---
    std::deque<uint8_t> incoming;
    std::vector<std::vector<uint8_t>> writes;
    std::vector<std::string> openedDevices;
    int openAttempts = 0;
    int closes = 0;
    // Every byte written, in order.
    std::vector<uint8_t> Written() const;

    // --- SerialPort ---
    bool Open(const std::string& device, int& errorNumber) override;
    void Close() override;
    bool IsOpen() const override { return open_; }
    int BytesWaiting() override;
    std::vector<uint8_t> ReadAll() override;
    void Write(const std::vector<uint8_t>& bytes) override;

  private:
    bool open_ = false;
};

}  // namespace tl
