#include "core/scripted_platform.h"

#include <algorithm>

namespace tl {

Platform ScriptedPlatform::AsPlatform() {
    Platform p;
    p.messages = this;
    p.wait = this;
    p.progress = this;
    p.files = this;
    p.clock = this;
    p.memory = this;
    p.shell = this;
    p.clipboard = this;
    return p;
}

void ScriptedPlatform::record(ScriptedEvent::Kind kind, const std::string& title,
                              const std::string& text) {
    events.push_back({kind, title, text});
    if (onEvent) onEvent(events.back());
}

std::vector<std::string> ScriptedPlatform::Texts(ScriptedEvent::Kind kind) const {
    std::vector<std::string> out;
    for (const auto& e : events)
        if (e.kind == kind) out.push_back(e.text);
    return out;
}

bool ScriptedPlatform::Saw(ScriptedEvent::Kind kind, const std::string& text) const {
    return std::any_of(events.begin(), events.end(),
                       [&](const ScriptedEvent& e) { return e.kind == kind && e.text == text; });
}

int ScriptedPlatform::Count(ScriptedEvent::Kind kind) const {
    return static_cast<int>(std::count_if(events.begin(), events.end(),
                                          [&](const ScriptedEvent& e) { return e.kind == kind; }));
}

void ScriptedPlatform::ClearRecords() {
    events.clear();
    progressLines.clear();
    progressCaption.clear();
    doEventsCalls = 0;
}

void ScriptedPlatform::Message(const std::string& text) {
    record(ScriptedEvent::Kind::Message, "Error Report", text);
}

void ScriptedPlatform::PlainMessage(const std::string& text, const std::string& title) {
    record(ScriptedEvent::Kind::PlainMessage, title, text);
}

bool ScriptedPlatform::YesNo(const std::string& title, const std::string& text) {
    record(ScriptedEvent::Kind::YesNo, title, text);
    if (yesNoAnswers.empty()) return defaultYesNo;
    bool answer = yesNoAnswers.front();
    yesNoAnswers.pop_front();
    return answer;
}

bool ScriptedPlatform::OkCancel(const std::string& title, const std::string& text) {
    record(ScriptedEvent::Kind::OkCancel, title, text);
    if (okCancelAnswers.empty()) return true;
    bool answer = okCancelAnswers.front();
    okCancelAnswers.pop_front();
    return answer;
}

std::optional<std::string> ScriptedPlatform::InputBox(const std::string& prompt,
                                                      const std::string& title,
                                                      const std::string&) {
    record(ScriptedEvent::Kind::InputBox, title, prompt);
    if (inputAnswers.empty()) return std::nullopt;
    auto answer = inputAnswers.front();
    inputAnswers.pop_front();
    return answer;
}

void ScriptedPlatform::ShowWait(const std::string& reason) {
    waitShown_ = true;
    record(ScriptedEvent::Kind::WaitShown, "", reason);
}

void ScriptedPlatform::HideWait() {
    waitShown_ = false;
    record(ScriptedEvent::Kind::WaitHidden, "", "");
}

void ScriptedPlatform::ShowProgress(const std::string& animationPath) {
    progressShown = true;
    record(ScriptedEvent::Kind::ProgressShown, "", animationPath);
}

void ScriptedPlatform::SetProgressCaption(const std::string& caption) {
    progressCaption = caption;
    record(ScriptedEvent::Kind::ProgressCaption, "", caption);
}

void ScriptedPlatform::AppendProgressLine(const std::string& line) {
    progressLines.push_back(line);
    record(ScriptedEvent::Kind::ProgressLine, "", line);
}

void ScriptedPlatform::HideProgress() {
    progressShown = false;
    record(ScriptedEvent::Kind::ProgressHidden, "", "");
}

std::vector<std::string> ScriptedPlatform::OpenFiles(const FileDialogRequest& request) {
    record(ScriptedEvent::Kind::OpenDialog, request.title, request.initialDir);
    if (openAnswers.empty()) return {};
    auto answer = openAnswers.front();
    openAnswers.pop_front();
    return answer;
}

std::optional<std::string> ScriptedPlatform::SaveFile(const FileDialogRequest& request) {
    record(ScriptedEvent::Kind::SaveDialog, request.title, request.initialDir);
    if (saveAnswers.empty()) return std::nullopt;
    auto answer = saveAnswers.front();
    saveAnswers.pop_front();
    return answer;
}

void ScriptedPlatform::DoEvents() {
    ++doEventsCalls;
    secondsSinceMidnight += secondsPerEvent;
    if (secondsSinceMidnight >= 86400.0) secondsSinceMidnight -= 86400.0;
}

void ScriptedPlatform::SetAllMousePointers(int shape) {
    record(ScriptedEvent::Kind::MousePointer, "", std::to_string(shape));
}

void ScriptedSerialPort::Deliver(const std::vector<uint8_t>& bytes) {
    incoming.insert(incoming.end(), bytes.begin(), bytes.end());
}

void ScriptedSerialPort::Deliver(const std::string& text) {
    incoming.insert(incoming.end(), text.begin(), text.end());
}

std::vector<uint8_t> ScriptedSerialPort::Written() const {
    std::vector<uint8_t> all;
    for (const auto& w : writes) all.insert(all.end(), w.begin(), w.end());
    return all;
}

bool ScriptedSerialPort::Open(const std::string& device, int& errorNumber) {
    ++openAttempts;
    errorNumber = 0;
    if (std::find(absentDevices.begin(), absentDevices.end(), device) != absentDevices.end())
        errorNumber = 2;
    if (!openErrors.empty()) {
        if (errorNumber == 0) errorNumber = openErrors.front();
        openErrors.pop_front();
    }
    if (errorNumber != 0) return false;
    open_ = true;
    openedDevices.push_back(device);
    return true;
}

void ScriptedSerialPort::Close() {
    if (open_) ++closes;
    open_ = false;
}

int ScriptedSerialPort::BytesWaiting() {
    if (onPoll) onPoll(*this);
    return static_cast<int>(incoming.size());
}

std::vector<uint8_t> ScriptedSerialPort::ReadAll() {
    std::vector<uint8_t> out(incoming.begin(), incoming.end());
    incoming.clear();
    return out;
}

void ScriptedSerialPort::Write(const std::vector<uint8_t>& bytes) {
    writes.push_back(bytes);
    if (onWrite) onWrite(*this, bytes);
}

}  // namespace tl
