// Platform interfaces of the engine.
//
// The engine never talks to a window system directly. Everything it needs from
// the desktop -- message boxes, the wait form, the progress form, file dialogs,
// the clock and event pump, memory figures, and the hooks into the main window --
// is one small abstract class here. The program installs Qt implementations
// (src/platform/qt), the tests and tracelab-cli install the scripted ones
// (scripted_platform.h), which take answers queued in advance and record what
// was shown.
//
// Only the thin "widget" side lives behind these interfaces. The behaviour that
// belongs to the system itself (the log lines of ShowPleaseWait, the time
// stamps of DispProg, hiding the wait form before a message) is in ui_services.h
// and is the same for every platform.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tl {

// Message and question boxes. Message() is the program's own message form
// (frmVQMsgBox, title "Error Report"); PlainMessage() is the platform's plain
// box with an OK button; the questions return the button chosen.
class MessageBoxes {
  public:
    virtual ~MessageBoxes() = default;
    virtual void Message(const std::string& text) = 0;
    virtual void PlainMessage(const std::string& text, const std::string& title) = 0;
    virtual bool YesNo(const std::string& title, const std::string& text) = 0;
    virtual bool OkCancel(const std::string& title, const std::string& text) = 0;
    // Returns nullopt when the user cancels.
    virtual std::optional<std::string> InputBox(const std::string& prompt, const std::string& title,
                                                const std::string& defaultText) = 0;
};

// frmPleaseWait: a small topmost window with one line of text, and the busy
// cursor on the main window while it shows.
class WaitForm {
  public:
    virtual ~WaitForm() = default;
    virtual void ShowWait(const std::string& reason) = 0;
    virtual void HideWait() = 0;
    virtual bool IsWaitShown() const = 0;
};

// frmProcess: the non-modal progress window of conversions.
class ProgressForm {
  public:
    virtual ~ProgressForm() = default;
    // animationPath is empty when no animation is to run.
    virtual void ShowProgress(const std::string& animationPath) = 0;
    virtual void SetProgressCaption(const std::string& caption) = 0;
    virtual void AppendProgressLine(const std::string& line) = 0;
    virtual void HideProgress() = 0;
};

struct FileDialogRequest {
    std::string title;
    // Filter in the "Description|pattern|Description|pattern" form.
    std::string filter;
    std::string initialDir;
    bool multiSelect = false;
    bool overwritePrompt = false;
};

class FileDialogs {
  public:
    virtual ~FileDialogs() = default;
    // The chosen files as full paths; empty when the user cancels.
    virtual std::vector<std::string> OpenFiles(const FileDialogRequest& request) = 0;
    // The chosen path; nullopt when the user cancels.
    virtual std::optional<std::string> SaveFile(const FileDialogRequest& request) = 0;
};

// The timer of seconds since midnight and the event pump ("let events run").
class Clock {
  public:
    virtual ~Clock() = default;
    virtual double SecondsSinceMidnight() = 0;
    virtual void DoEvents() = 0;
};

struct MemoryFigures {
    double totalPhysical = 0;
    double availablePhysical = 0;
    double totalVirtual = 0;
    double availableVirtual = 0;
};

class MemoryStatus {
  public:
    virtual ~MemoryStatus() = default;
    virtual MemoryFigures Read() = 0;
};

// Clipboard text: the copies of graphs and tables (tab-separated columns,
// CR LF rows).
class Clipboard {
  public:
    virtual ~Clipboard() = default;
    // Clears the clipboard and puts the text there.
    virtual void SetClipboardText(const std::string& text) = 0;
    virtual std::string ClipboardText() = 0;
};

// The serial port of the logger link (objSerialComms): 115200 baud, no
// parity, 8 data bits, 1 stop bit, no handshaking, an input buffer of 16384
// bytes, polled only -- the link never needs an event from it. The device is
// a path: one of the system's ports 1 to 16 (SerialPortDevice) or any device
// typed by hand (a USB adapter, a pseudo-terminal). The link owns the
// InputMode: a port delivers bytes, and the link reads them as text or bytes.
class SerialPort {
  public:
    virtual ~SerialPort() = default;
    // Opens the device at the line settings above. Returns false with a
    // nonzero error number (the system's, or 1 when it has none) on failure.
    // A device that refuses the modem-line calls (a pseudo-terminal) still
    // opens.
    virtual bool Open(const std::string& device, int& errorNumber) = 0;
    virtual void Close() = 0;
    virtual bool IsOpen() const = 0;
    // InBufferCount: received bytes that wait to be read.
    virtual int BytesWaiting() = 0;
    // Input: returns and removes every waiting byte.
    virtual std::vector<uint8_t> ReadAll() = 0;
    // Output: sends the bytes, one 8-bit character each.
    virtual void Write(const std::vector<uint8_t>& bytes) = 0;
};

// What the engine asks of the main window and of the open views. The shell
// implements it; the default does nothing, which is right for a program with
// no windows.
class ShellHooks {
  public:
    virtual ~ShellHooks() = default;
    // SetAllMousePointers: 11 the hourglass, 0 the default.
    virtual void SetAllMousePointers(int /*shape*/) {}
    virtual void DisableAllForms() {}
    virtual void EnableAllForms() {}
    // ClearCurrentRun(True): every view and tool window holding run data goes.
    virtual void UnloadAllViews() {}
    // CheckInternalDataStillValid: each open view refreshes itself.
    virtual void RefreshOpenViews() {}
    // DisableWheelSpeedOptions: hide mnuRefOptions and grey the wheel-speed
    // option buttons of the option forms that are loaded.
    virtual void WheelSpeedOptionsDisabled() {}
    // EnableBuildVariables refused the build: frmMain unloads.
    virtual void UnloadMainForm() {}
};

// The installed implementations, one of each; see SetPlatform().
struct Platform {
    MessageBoxes* messages = nullptr;
    WaitForm* wait = nullptr;
    ProgressForm* progress = nullptr;
    FileDialogs* files = nullptr;
    Clock* clock = nullptr;
    MemoryStatus* memory = nullptr;
    ShellHooks* shell = nullptr;
    Clipboard* clipboard = nullptr;
};

// The platform in force. Until SetPlatform is called a scripted platform with
// default answers stands in, so the engine never meets a null pointer.
Platform& CurrentPlatform();
// Installs implementations; null members keep the scripted default.
void SetPlatform(const Platform& platform);

}  // namespace tl
