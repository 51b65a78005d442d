#include "link/serial_link.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <sstream>

#include "core/build_profile.h"
#include "core/config_store.h"
#include "core/log.h"
#include "core/scripted_platform.h"
#include "core/support.h"
#include "core/ui_services.h"

namespace tl {
namespace {

namespace fs = std::filesystem;

struct LinkSlot {
    ScriptedSerialPort silent;
    LoggerLink link;
    LinkSlot() { link.port = &silent; }
};

LinkSlot& Slot() {
    static LinkSlot slot;
    return slot;
}

SerialPort& Port() {
    return *Link().port;
}

bool Sv63() {
    return Profile().HardwareSV63;
}

std::string Num(double v) {
    std::ostringstream s;
    s << v;
    return s.str();
}

// The system's serial devices in the order the ports are numbered.
std::vector<std::string> SystemSerialDevices() {
    std::vector<std::pair<std::pair<int, int>, std::string>> found;
    std::error_code ec;
    const char* kinds[] = {"ttyS", "ttyUSB", "ttyACM"};
    for (const auto& entry : fs::directory_iterator("/sys/class/tty", ec)) {
        const std::string name = entry.path().filename().string();
        for (int k = 0; k < 3; ++k) {
            const std::string prefix = kinds[k];
            if (name.rfind(prefix, 0) != 0 || name.size() == prefix.size()) continue;
            const std::string digits = name.substr(prefix.size());
            if (!std::all_of(digits.begin(), digits.end(), ::isdigit)) continue;
            // A ttyS without a device behind it is a placeholder of the
            // kernel, not a port.
            if (!fs::exists(entry.path() / "device", ec)) continue;
            found.push_back({{k, std::stoi(digits)}, "/dev/" + name});
        }
    }
    std::sort(found.begin(), found.end());
    std::vector<std::string> out;
    for (auto& f : found) out.push_back(f.second);
    return out;
}

bool WaitForSerialInputLimit(int count, double limit) {
    if (LogOn()) {
        LogDebug("Wait for " + std::to_string(count) + " characters from the serial port");
        LogDebug("Serial Wait routine: " + std::to_string(InBufferCount()) + " " + Num(Timer()));
    }
    double entry = Timer();
    int noted = 0;
    for (;;) {
        const int waiting = InBufferCount();
        if (waiting >= count) break;
        if (Link().AbortFlag) return false;
        if (waiting > noted) {
            entry = Timer();
            noted = waiting;
        }
        const double now = Timer();
        if (now + 0.01 < entry) {
            LogDebug("Entry time reset, this should never happen " + Num(now) + " " + Num(entry));
            entry = now;
        }
        if (now - entry > limit) {
            LogDebug("Error, only " + std::to_string(waiting) +
                     " byte recieved in the last second");
            return false;
        }
        DoEvents();
    }
    LogDebug(std::to_string(count) + " bytes successfully recieved over the serial port");
    return true;
}

}  // namespace

LoggerLink& Link() {
    return Slot().link;
}

void SetSerialPort(SerialPort* port) {
    Slot().link.port = port ? port : &Slot().silent;
}

std::string SerialPortDevice(int number) {
    const std::vector<std::string> devices = SystemSerialDevices();
    if (number >= 1 && number <= static_cast<int>(devices.size())) return devices[number - 1];
    return "/dev/ttyS" + std::to_string(number - 1);
}

std::vector<CommPortEntry> DetectSerialPorts() {
    ShowPleaseWait("Detecting Ports");
    std::vector<CommPortEntry> ports;
    if (Port().IsOpen()) Port().Close();
    for (int n = 1; n <= kSerialPortCount; ++n) {
        const std::string device = SerialPortDevice(n);
        int error = 0;
        if (Port().Open(device, error)) {
            Port().Close();
            ports.push_back({n, device, "Serial Port " + std::to_string(n)});
        }
    }
    HidePleaseWait();
    return ports;
}

int StoredCommPort() {
    return GetConfigInt(Paths().TracelabCfgPath, "CommPort");
}

void SelectCommPort(int number, const std::string& device) {
    LogDebug("comm port " + std::to_string(number) + " selected");
    LogDebug("set the serial port to the cfg file");
    SetConfig(Paths().TracelabCfgPath, "CommPort", static_cast<float>(number));
    SetConfigString(Paths().TracelabCfgPath, "CommPortDevice",
                    device.empty() ? SerialPortDevice(number) : device);
}

std::string CommPortDevicePath() {
    if (!Link().deviceOverride.empty()) return Link().deviceOverride;
    std::string stored = GetConfigString(Paths().TracelabCfgPath, "CommPortDevice");
    if (!stored.empty()) return stored;
    return SerialPortDevice(StoredCommPort());
}

void Flush() {
    (void)Port().ReadAll();
}

void SendText(const std::string& text) {
    Port().Write(std::vector<uint8_t>(text.begin(), text.end()));
}

void SendByte(uint8_t byte) {
    Port().Write({byte});
}

int InBufferCount() {
    return Port().IsOpen() ? Port().BytesWaiting() : 0;
}

std::vector<uint8_t> InputBytes() {
    return Port().ReadAll();
}

std::string InputText() {
    std::vector<uint8_t> bytes = Port().ReadAll();
    return std::string(bytes.begin(), bytes.end());
}

int32_t ConnectToLogger() {
    LoggerLink& link = Link();
    LogDebug("try to open the serial port");
    if (Port().IsOpen()) DisconnectFromLogger();
    LogDebug("setup the serial port");
    const std::string device = CommPortDevicePath();
    LogDebug(std::string("current port status: ") + (Port().IsOpen() ? "True" : "False"));
    int error = 0;
    bool open = Port().Open(device, error);
    Pause(0.05);
    for (int attempt = 1; !open && attempt < 4;) {
        Pause(0.1);
        ++attempt;
        open = Port().Open(device, error);
        LogDebug("there was a problem opening the port on attempt " + std::to_string(attempt) +
                 " error: " + std::to_string(error));
        error = 0;
    }
    if (!open) {
        Message(kPortNotAvailable);
        return 0;
    }
    link.InputMode = 1;
    Flush();
    if (Sv63()) {
        LogDebug("if required set the meter into serial mode");
        for (int i = 0; i < 8; ++i) {
            const uint8_t b = i < 7 ? 254 : 253;
            LogDebug("Serial : " + std::to_string(b));
            SendByte(b);
        }
        LogDebug("enable multi vehicle support device Serial : e");
        Flush();
        SendText("e");
        // Older meters do not answer: the wait's result is not looked at.
        (void)WaitForSerialInput(1);
        Flush();
    }
    LogDebug("request the version number from the device Serial : V");
    Flush();
    SendText("V");
    (void)WaitForSerialInput(4);
    const std::vector<uint8_t> reply = InputBytes();
    if (reply.empty()) {
        Message(kNoResponse);
        DisconnectFromLogger();
        return 0;
    }
    if (reply.size() != 4) {
        Message(kWrongResponse);
        LogDebug("response: ");
        for (size_t i = 0; i < reply.size(); ++i) {
            char hex[8];
            std::snprintf(hex, sizeof hex, "%X", reply[i]);
            LogDebug(std::to_string(i) + " " + hex);
        }
        DisconnectFromLogger();
        return 0;
    }
    LogDebug("device responded with " + std::to_string(reply[0]) + ":" + std::to_string(reply[1]) +
             ":" + std::to_string(reply[2]) + ":" + std::to_string(reply[3]));
    LogDebug("check device version ");
    link.familyByte = reply[0];
    if (reply[0] != 2) {
        Message(kWrongFirmware);
        return -1;
    }
    link.LoggerSerialNumber =
        static_cast<int16_t>(static_cast<uint16_t>(reply[2] * 256 + reply[3]));
    LogDebug("device serial # " + std::to_string(link.LoggerSerialNumber));
    return link.LoggerSerialNumber;
}

void DisconnectFromLogger() {
    LogDebug("Disconnect from logger");
    if (Port().IsOpen()) {
        if (Sv63()) SendText("X");
        Port().Close();
        Pause(0.1);
        DoEvents();
    }
}

bool WaitForSerialInput(int count) {
    return WaitForSerialInputLimit(count, 3.0);
}

bool WaitForSerialInputLong(int count) {
    return WaitForSerialInputLimit(count, 10.0);
}

void SetChecksumMode(char mode) {
    if (Sv63()) return;
    char reply = 0;
    while (reply != mode && !Link().AbortFlag) {
        Flush();
        SendText("c");
        LogDebug("Serial: c");
        Pause(0.04);
        if (!WaitForSerialInput(2)) return;
        const std::string text = InputText();
        reply = text.empty() ? 0 : text[0];
    }
}

namespace {

// The reply's character for a channel: the first is channel 2, the second
// channel 1.
char SpanChar(const std::string& reply, int channel) {
    const size_t i = channel == 1 ? 1 : 0;
    return reply.size() > i ? reply[i] : 0;
}

void SendPair(const char* pair) {
    SendText(std::string(1, pair[0]));
    Pause(0.04);
    SendText(std::string(1, pair[1]));
    Pause(0.04);
}

}  // namespace

int GetAnalSpan(int channel) {
    // "S" "0" acts on the logger's state at each use: sending it twice
    // leaves the state as it began, and the second reply is the one read.
    Flush();
    SendPair("S0");
    (void)WaitForSerialInput(2);
    Flush();
    SendPair("S0");
    (void)WaitForSerialInput(2);
    const std::string reply = InputText();
    return SpanChar(reply, channel) == '5' ? 5 : 12;
}

bool SetAnalSpan(int channel, int span) {
    if (GetAnalSpan(channel) == span) return true;
    Flush();
    SendPair(channel == 1 ? "S2" : "S0");
    (void)WaitForSerialInput(2);
    const char c = SpanChar(InputText(), channel);
    if ((span == 12 && c != '2') || (span == 5 && c != '5')) {
        Message(kCommsError);
        return false;
    }
    return true;
}

bool CheckForAutoStart() {
    Link().InputMode = 1;
    Flush();
    SendText("h");
    Pause(0.1);
    const std::vector<uint8_t> reply = InputBytes();
    if (reply.empty()) return false;
    // The logger waits for its trigger byte back.
    SendByte(reply[0]);
    return true;
}

bool GetAutoStartMode() {
    Link().InputMode = 0;
    Flush();
    SendText("H");
    (void)WaitForSerialInput(2);
    const std::string reply = InputText();
    const bool mode = reply.empty() || reply[0] != 'Y';
    // "H" flips the mode: flip it back.
    SendText("H");
    (void)WaitForSerialInput(2);
    (void)InputText();
    return mode;
}

void SetAutoStartMode(bool mode) {
    if (GetAutoStartMode() == mode) return;
    SendText("H");
    (void)WaitForSerialInput(2);
    (void)InputText();
}

float GetAutoStartTrigger() {
    Link().InputMode = 1;
    Flush();
    SendText("h");
    if (!WaitForSerialInput(1)) return 0.0f;
    const std::vector<uint8_t> reply = InputBytes();
    if (reply.empty()) return 0.0f;
    const float g = reply[0] / 255.0f;
    Pause(0.04);
    SendByte(reply[0]);
    return g;
}

void SetAutoStartTrigger(float g) {
    if (Sv63()) return;
    g = FindClip(0.1f, g, 0.5f);
    Link().InputMode = 1;
    Flush();
    SendText("h");
    if (!WaitForSerialInput(1)) return;
    (void)InputBytes();
    Pause(0.04);
    SendByte(static_cast<uint8_t>(static_cast<int>(g * 255.0f)));
}

void GetDigitalThresholds(float& lower, float& upper, float& reference) {
    Link().InputMode = 1;
    Flush();
    SendText("l");
    Pause(0.04);
    SendText("2");
    (void)WaitForSerialInput(3);
    const std::vector<uint8_t> reply = InputBytes();
    lower = upper = 0.0f;
    reference = 0.0f;
    if (reply.size() != 3) return;
    reference = reply[2];
    if (reference == 0.0f) return;
    lower = reply[1] / reference * 12.0f;
    upper = reply[0] / reference * 12.0f;
}

void SetDigitalThresholds(float lower, float upper) {
    float oldLower = 0, oldUpper = 0, reference = 0;
    GetDigitalThresholds(oldLower, oldUpper, reference);
    auto level = [&](float volts) {
        const double v = std::round(volts / 12.0 * reference);
        return static_cast<uint8_t>(std::clamp(v, 0.0, 255.0));
    };
    const std::pair<const char*, float> sets[] = {{"0", lower}, {"1", upper}};
    for (const auto& [which, volts] : sets) {
        SendText("l");
        Pause(0.04);
        SendText(which);
        Pause(0.04);
        SendByte(level(volts));
        Pause(0.04);
    }
}

}  // namespace tl
