#include "link/logger_setup.h"

#include <algorithm>

#include "core/log.h"
#include "core/ui_services.h"
#include "link/serial_link.h"

namespace tl {

bool LoadLoggerSettings(LoggerSettings& settings) {
    // A new job: an abort pressed during an earlier one is spent.
    Link().AbortFlag = false;
    if (ConnectToLogger() < 1) {
        DisconnectFromLogger();
        return false;
    }
    settings.channel1Span = GetAnalSpan(1) == 5 ? 5 : 12;
    settings.channel2Span = GetAnalSpan(2) == 5 ? 5 : 12;
    float reference = 0;
    GetDigitalThresholds(settings.lower, settings.upper, reference);
    settings.autoStartEnabled = CheckForAutoStart();
    if (settings.autoStartEnabled) {
        settings.trigger = GetAutoStartTrigger();
        settings.autoStart = GetAutoStartMode();
    }
    DisconnectFromLogger();
    return true;
}

std::string CheckLoggerSettings(const LoggerSettings& s) {
    if (s.lower <= 0) return "The digital lower threshold must be greater than 0v";
    if (s.upper >= 12) return "The digital lower threshold must be greater than 12v";
    if (s.upper <= s.lower)
        return "The digital upper threshold must be greater than the lower threshold";
    if (s.autoStartEnabled) {
        if (s.trigger < 0.1f) return "The trigger acceleration must be greater than 0.1g";
        if (s.trigger > 0.5f) return "The trigger acceleration must be less than 0.5g";
    }
    return "";
}

bool ApplyLoggerSettings(const LoggerSettings& s) {
    // A new job: an abort pressed during an earlier one is spent.
    Link().AbortFlag = false;
    if (ConnectToLogger() < 1) return false;
    if (!SetAnalSpan(1, s.channel1Span)) Message("Device communications error");
    if (!SetAnalSpan(2, s.channel2Span)) Message("Device communications error");
    const std::string refusal = CheckLoggerSettings(s);
    if (!refusal.empty()) {
        Message(refusal);
        return false;
    }
    SetDigitalThresholds(s.lower, s.upper);
    if (s.autoStartEnabled) {
        SetAutoStartTrigger(s.trigger);
        SetAutoStartMode(s.autoStart);
    }
    DisconnectFromLogger();
    return true;
}

EraseResult EraseLogger() {
    // A new job: an abort pressed during an earlier one is spent.
    Link().AbortFlag = false;
    if (ConnectToLogger() < 1) return EraseResult::NotConnected;
    Link().InputMode = 1;
    SendText("E");
    LogDebug("Serial: E");
    Pause(0.04);
    int nope = 0;
    bool yes = false;
    while (!yes) {
        // Each "N" restarts the wait's limit: a logger that keeps saying "N"
        // may erase for as long as it needs.
        if (!WaitForSerialInput(1)) {
            Message(kEraseFailed);
            DisconnectFromLogger();
            return EraseResult::Failed;
        }
        const std::string reply = InputText();
        nope += static_cast<int>(std::count(reply.begin(), reply.end(), 'N'));
        yes = reply.find('Y') != std::string::npos;
        LogDebug("nopecounter = " + std::to_string(nope));
    }
    Message(kErased);
    DisconnectFromLogger();
    return EraseResult::Erased;
}

}  // namespace tl
