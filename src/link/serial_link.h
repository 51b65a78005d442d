// The logger link: the one serial port of the program, opened for the length
// of one job (ConnectToLogger, commands, DisconnectFromLogger), and the
// logger's single-letter commands with their fixed replies.
//
// Timing is protocol: the pause after a command (0.04 s after each byte of a
// two-byte command, 0.1 s for the SV63 meter during a download) is what the
// logger's firmware needs and is never shortened. Every wait polls the port
// and lets events run between polls, so that a click (the download's abort)
// gets through; the abort flag also ends a wait at once.
//
// The program installs its serial port with SetSerialPort (the Qt one, or the
// POSIX one of posix_serial_port.h in tracelab-cli); until then a scripted
// port that never answers stands in.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/platform.h"

namespace tl {

// The system's serial ports are numbered 1 to 16.
inline constexpr int kSerialPortCount = 16;

struct LoggerLink {
    SerialPort* port = nullptr;
    // 1 binary, 0 text. Reads go through Input(), which honours it.
    int InputMode = 1;
    int32_t LoggerSerialNumber = 0;
    // Set by the download form's AbortBtn (or a signal in the CLI); read by
    // every loop of the link.
    bool AbortFlag = false;
    // A device path that overrides the stored port for this process
    // (tracelab-cli --port); empty when the options file decides.
    std::string deviceOverride;
    // The family byte of the last reply to "V" (0 before any).
    int familyByte = 0;
};

LoggerLink& Link();
// Installs the program's serial port; null restores the silent default.
void SetSerialPort(SerialPort* port);

// --- port selection (frmCommSetup) ---
// The device of port number 1 to 16: the system's serial devices in order
// (ttyS*, then USB adapters ttyUSB* and ttyACM*), /dev/ttyS<n-1> when the
// system lists fewer.
std::string SerialPortDevice(int number);
struct CommPortEntry {
    int number = 0;
    std::string device;
    std::string text;  // "Serial Port " number, as SelectPort lists it
};
// Tries ports 1 to 16 one at a time (with "Detecting Ports" on the wait
// form); a port that opens, and closes again, is listed.
std::vector<CommPortEntry> DetectSerialPorts();
// The options file's "CommPort" (number) and "CommPortDevice" (the path; a
// device typed by hand is stored with the number 0).
int StoredCommPort();
// OpenPort of frmCommSetup: stores the number and its path.
void SelectCommPort(int number, const std::string& device);
// The device ConnectToLogger opens: the override, else the stored path, else
// the stored number's device.
std::string CommPortDevicePath();

// --- the port's operations ---
void Flush();
void SendText(const std::string& text);
void SendByte(uint8_t byte);
int InBufferCount();
// Input in binary mode.
std::vector<uint8_t> InputBytes();
// Input in text mode: one character per byte.
std::string InputText();

// --- the commands ---
// The serial number on success; -1 for a wrong family byte; 0 or less in the
// other failures (each told to the user). Callers treat below 1 as failure.
int32_t ConnectToLogger();
void DisconnectFromLogger();
// Wait until count bytes wait to be read; the limit (3 s, 10 s for the Long
// form) runs from the last byte that came. False on time-out or abort.
bool WaitForSerialInput(int count);
bool WaitForSerialInputLong(int count);
void SetChecksumMode(char mode);
// 12 or 5.
int GetAnalSpan(int channel);
bool SetAnalSpan(int channel, int span);
bool CheckForAutoStart();
bool GetAutoStartMode();
void SetAutoStartMode(bool mode);
float GetAutoStartTrigger();
void SetAutoStartTrigger(float g);
void GetDigitalThresholds(float& lower, float& upper, float& reference);
void SetDigitalThresholds(float lower, float upper);

// The messages of the link.
inline constexpr const char* kPortNotAvailable =
    "The serial port is not available, or has been locked by another application";
inline constexpr const char* kNoResponse =
    "The device has not responded, please make sure it is connected correctly and turned on";
inline constexpr const char* kWrongResponse =
    "The device has not responded or responded incorrectly, please make sure it is connected "
    "correctly then turn it off and on to reset it";
inline constexpr const char* kWrongFirmware =
    "The device may contain the incorrect version of firmware for this application or the "
    "serial port is being used by another application (possibly a PDA)";
inline constexpr const char* kCommsError = "There has been a communications error with the logger";

}  // namespace tl
