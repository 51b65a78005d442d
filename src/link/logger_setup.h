// frmSetUpLogger and frmConfirmErase without their widgets: the logger's
// settings read into a LoggerSettings (the dialog's controls) and written
// back, and the erase after its question.
#pragma once

#include <string>

namespace tl {

// The controls of frmSetUpLogger.
struct LoggerSettings {
    // Anal112vFSD / Anal15vFSD, Anal212vFSD / Anal25vFSD: 12 or 5 volts.
    int channel1Span = 12;
    int channel2Span = 12;
    // DigitalLowerThres, DigitalUpperThres (volts, shown as "0.00").
    float lower = 0.0f;
    float upper = 0.0f;
    // AutoStartFrm with its check box, label and StartAccelTxtBox: disabled
    // for a logger that does not answer "h".
    bool autoStartEnabled = false;
    bool autoStart = false;
    float trigger = 0.0f;  // g
    // LogAll / LogAllButGps / LogGpsOnly: shown, never sent to the logger.
    int logChannels = 0;
};

// Form_load: false (nothing read) when the logger could not be reached.
bool LoadLoggerSettings(LoggerSettings& settings);
// OK_Click. Returns true when the dialog unloads; false when it stays open
// (a refused value, with its message, or a logger that could not be reached).
bool ApplyLoggerSettings(const LoggerSettings& settings);
// The check of the values as OK_Click makes it: the message, empty when all
// pass.
std::string CheckLoggerSettings(const LoggerSettings& settings);

// frmConfirmErase.
inline constexpr const char* kEraseQuestion =
    "This will permanently erase all information held on the logger. Are you sure you wish to "
    "continue?";
inline constexpr const char* kEraseFailed =
    "The device did not respond correctly to the erase command, please check the connection and "
    "try again. If problems continue then erase memory directly on the device";
inline constexpr const char* kErased = "The device has been successfully erased";
enum class EraseResult { NotConnected, Failed, Erased };
// OkButton_Click: connect, "E", wait through the logger's "N" replies for
// its "Y".
EraseResult EraseLogger();

}  // namespace tl
