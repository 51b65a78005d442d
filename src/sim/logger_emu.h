// An emulated logger on a pseudo-terminal: the program (or a test) opens the
// slave device as it would a serial port, and the logger core answers at the
// chosen line rate, with the line's faults on request.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <deque>
#include <string>
#include <vector>

#include "sim/logger_emu_core.h"
#include "sim/rng.h"

namespace tl::sim {

struct LineFaults {
    double bitErrors = 0.0;     // chance of each bit being flipped
    double drop = 0.0;          // chance of each byte being lost
    double dup = 0.0;           // chance of each byte coming twice
    double stallSeconds = 0.0;  // the line stands still this long ...
    uint64_t stallAtByte = 0;   // ... once this many bytes have gone out
    int dieAfter = -1;          // silent after this many transfers (-1 never)
    int quitAfter = -1;         // the device is unplugged after this many transfers
    bool everywhere = false;    // faults on every reply, not only on transfers
};

struct EmuOptions {
    LoggerSettings logger;
    int baud = 115200;  // a byte every 10 bits; 0 sends as fast as the line takes
    // 0: each byte when it is due. Otherwise the bytes due come out together
    // every this many milliseconds, as behind a USB adapter's latency timer.
    double latencyMs = 0.0;
    uint64_t seed = 1;
    LineFaults faults;
    std::string logPath;  // the transcript; empty for none
};

class LoggerEmu {
  public:
    LoggerEmu(const EmuOptions& options, std::vector<EmuRun> runs);
    ~LoggerEmu();
    LoggerEmu(const LoggerEmu&) = delete;
    LoggerEmu& operator=(const LoggerEmu&) = delete;

    // Opens the pseudo-terminal pair in raw mode; DevicePath() is then the
    // device for the program.
    bool Open(std::string& error);
    const std::string& DevicePath() const { return devicePath_; }
    // Serves until Stop(), or until the device is unplugged (quit-after).
    void Run();
    // From any thread.
    void Stop();

    // For tests, read after Run() has returned (or while it runs, roughly).
    int TransfersSent() const { return transfers_.load(); }
    uint64_t BytesSent() const { return bytesSent_.load(); }
    const LoggerCore& Core() const { return core_; }

  private:
    using Clock = std::chrono::steady_clock;
    struct Pending {
        std::vector<uint8_t> bytes;
        size_t pos = 0;
        Clock::time_point notBefore;
        bool transfer = false;
        bool noisy = false;
    };

    void Handle(uint8_t byte);
    void Log(const std::string& text);
    // Writes what is due; returns the time the next byte is due.
    Clock::time_point SendDue(Clock::time_point now);
    void Spoil(uint8_t byte, std::vector<uint8_t>& out);
    void Unplug();

    EmuOptions options_;
    LoggerCore core_;
    Rng rng_;
    int master_ = -1;
    int wake_[2] = {-1, -1};
    std::string devicePath_;
    std::FILE* log_ = nullptr;
    Clock::time_point start_;
    Clock::duration byteTime_{};
    Clock::duration latency_{};
    Clock::time_point nextDue_;
    std::deque<Pending> queue_;
    std::vector<uint8_t> carry_;  // written bytes the line did not take yet
    Clock::time_point stallEnd_;
    bool dead_ = false;
    bool unplugged_ = false;
    bool stalled_ = false;
    std::atomic<bool> stop_{false};
    std::atomic<int> transfers_{0};
    std::atomic<uint64_t> bytesSent_{0};
};

// The command line of tracelab-logger-emu; returns the exit status.
int LoggerEmuMain(int argc, char** argv);

}  // namespace tl::sim
