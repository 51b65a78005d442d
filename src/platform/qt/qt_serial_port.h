// The program's serial port over QSerialPort: "115200,N,8,1", no
// handshaking, polled. Nothing here listens for Qt's readyRead: each look at
// the port lets Qt process its pending events (which is how QSerialPort moves
// received bytes off the device) and then takes what bytesAvailable holds
// into the port's own 16384-byte input buffer. The buffer is the port's,
// not the device's, because a terminal queues only a few kilobytes, less
// than one transfer of the logger.
#pragma once

#include <QSerialPort>

#include <cstdint>
#include <string>
#include <vector>

#include "core/platform.h"

namespace tl::qt {

class QtSerialPort final : public SerialPort {
  public:
    QtSerialPort();
    ~QtSerialPort() override;
    QtSerialPort(const QtSerialPort&) = delete;
    QtSerialPort& operator=(const QtSerialPort&) = delete;

    bool Open(const std::string& device, int& errorNumber) override;
    void Close() override;
    bool IsOpen() const override;
    int BytesWaiting() override;
    std::vector<uint8_t> ReadAll() override;
    void Write(const std::vector<uint8_t>& bytes) override;

  private:
    // Lets Qt read the device, then moves what it holds into in_, up to the
    // buffer's size.
    void Drain();
    QSerialPort port_;
    std::vector<uint8_t> in_;
};

// The devices QSerialPortInfo knows (system location, as /dev/ttyUSB0),
// merged with the engine's numbered ports 1 to 16 and without repeats: the
// numbered ones first, in their order, then the others by name.
std::vector<std::string> KnownSerialDevices();

// Creates (once) the program's Qt serial port and installs it with
// SetSerialPort.
QtSerialPort& InstallQtSerialPort();

}  // namespace tl::qt
