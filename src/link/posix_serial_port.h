// The serial port over a POSIX terminal device (termios), and a clock of the
// real time of day: what tracelab-cli and the tests install in place of the
// program's Qt port and event loop. Raw mode at 115200 baud, 8 data bits, no
// parity, 1 stop bit, no flow control; polled. A pseudo-terminal refuses the
// modem-line calls, which is not an error.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/platform.h"

namespace tl {

class PosixSerialPort final : public SerialPort {
  public:
    ~PosixSerialPort() override;
    bool Open(const std::string& device, int& errorNumber) override;
    void Close() override;
    bool IsOpen() const override { return fd_ >= 0; }
    int BytesWaiting() override;
    std::vector<uint8_t> ReadAll() override;
    void Write(const std::vector<uint8_t>& bytes) override;

  private:
    // Moves what the device holds into the input buffer, up to its size.
    void Drain();
    int fd_ = -1;
    // The input buffer (16384 bytes): a terminal's own queue holds only a
    // few kilobytes, less than one transfer.
    std::vector<uint8_t> in_;
};

// Seconds since local midnight from the system clock; DoEvents sleeps a
// millisecond (there are no events without a window system).
class SystemClock final : public Clock {
  public:
    double SecondsSinceMidnight() override;
    void DoEvents() override;
};

}  // namespace tl
