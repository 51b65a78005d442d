// The system's own behaviour around the platform's windows: the wait form,
// the progress form, the message form, Pause, and the questions used by many
// callers. These add the log lines and the ordering rules (a message always
// hides the wait form first) to whatever platform is installed.
#pragma once

#include <string>

namespace tl {

// frmPleaseWait. Nesting is not counted: one HidePleaseWait ends any number
// of shows.
void ShowPleaseWait(const std::string& text);
void HidePleaseWait();

// frmProcess.
void ShowNonModal();
void SetProcessCaption(const std::string& caption);
// Appends "<seconds since ShowNonModal, format 0.0, right-aligned in five>s  :  <text>".
void DispProg(const std::string& text);
void HideNonModal();
// The line DispProg appends for a given elapsed time (exposed for tests).
std::string FormatProgressLine(double elapsedSeconds, const std::string& text);

// frmVQMsgBox: logs "User Message : " text, hides the wait form, shows.
void Message(const std::string& text);
// A plain message box with an OK button.
void PlainMessage(const std::string& text, const std::string& title = "Tracelab");
bool YesNoBox(const std::string& title, const std::string& text);
bool OkCancelBox(const std::string& title, const std::string& text);
// "Do you want to process data now ?"
bool ReprocessQuestion();

// Loops with the timer, letting events run, until the time has passed; an
// end time past midnight wraps and ends the pause at once.
void Pause(double seconds);
void DoEvents();
double Timer();

// The clipboard: cleared, then the text put there.
void SetClipboardText(const std::string& text);
std::string ClipboardText();

void SetAllMousePointers(int shape);
void DisableAllForms();
void EnableAllForms();

}  // namespace tl
