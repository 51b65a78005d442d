#include "core/ui_services.h"

#include <cstdio>

#include "core/build_profile.h"
#include "core/config_store.h"
#include "core/log.h"
#include "core/platform.h"

namespace tl {
namespace {

// Start time of the progress form, seconds since midnight.
double& ProgressStart() {
    static double start = 0.0;
    return start;
}

}  // namespace

double Timer() {
    return CurrentPlatform().clock->SecondsSinceMidnight();
}

void DoEvents() {
    CurrentPlatform().clock->DoEvents();
}

void ShowPleaseWait(const std::string& text) {
    LogDebug("Waittext: " + text);
    CurrentPlatform().wait->ShowWait(text);
}

void HidePleaseWait() {
    CurrentPlatform().wait->HideWait();
    DoEvents();
}

void ShowNonModal() {
    ProgressStart() = Timer();
    std::string animation;
    if (!Profile().FastStartFlag && FileExists(Paths().ProcessAviPath))
        animation = Paths().ProcessAviPath;
    CurrentPlatform().progress->ShowProgress(animation);
}

void SetProcessCaption(const std::string& caption) {
    CurrentPlatform().progress->SetProgressCaption(caption);
}

std::string FormatProgressLine(double elapsedSeconds, const std::string& text) {
    char number[64];
    std::snprintf(number, sizeof number, "%.1f", elapsedSeconds);
    char field[80];
    std::snprintf(field, sizeof field, "%5s", number);
    return std::string(field) + "s  :  " + text;
}

void DispProg(const std::string& text) {
    if (text.empty()) return;
    double elapsed = Timer() - ProgressStart();
    if (elapsed < 0) elapsed += 86400.0;  // the work went on past midnight
    CurrentPlatform().progress->AppendProgressLine(FormatProgressLine(elapsed, text));
    LogDebug("Process Progress string updated");
}

void HideNonModal() {
    CurrentPlatform().progress->HideProgress();
}

void Message(const std::string& text) {
    LogDebug("User Message : " + text);
    // A message is never hidden behind the wait form.
    if (CurrentPlatform().wait->IsWaitShown()) HidePleaseWait();
    CurrentPlatform().messages->Message(text);
}

void PlainMessage(const std::string& text, const std::string& title) {
    if (CurrentPlatform().wait->IsWaitShown()) HidePleaseWait();
    CurrentPlatform().messages->PlainMessage(text, title);
}

bool YesNoBox(const std::string& title, const std::string& text) {
    if (CurrentPlatform().wait->IsWaitShown()) HidePleaseWait();
    return CurrentPlatform().messages->YesNo(title, text);
}

bool OkCancelBox(const std::string& title, const std::string& text) {
    if (CurrentPlatform().wait->IsWaitShown()) HidePleaseWait();
    return CurrentPlatform().messages->OkCancel(title, text);
}

bool ReprocessQuestion() {
    return YesNoBox("Question", "Do you want to process data now ?");
}

void Pause(double seconds) {
    double end = Timer() + seconds;
    // An end past midnight wraps to the small hours: the loop below then ends
    // at once, as the original timer did.
    if (end >= 86400.0) end -= 86400.0;
    while (Timer() < end) DoEvents();
}

void SetClipboardText(const std::string& text) {
    CurrentPlatform().clipboard->SetClipboardText(text);
}
std::string ClipboardText() {
    return CurrentPlatform().clipboard->ClipboardText();
}

void SetAllMousePointers(int shape) {
    CurrentPlatform().shell->SetAllMousePointers(shape);
}
void DisableAllForms() {
    CurrentPlatform().shell->DisableAllForms();
}
void EnableAllForms() {
    CurrentPlatform().shell->EnableAllForms();
}

}  // namespace tl
