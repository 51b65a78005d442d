#include "platform/qt/qt_serial_port.h"

#include <QCoreApplication>
#include <QSerialPortInfo>

#include <algorithm>
#include <memory>

#include "link/serial_link.h"

namespace tl::qt {

namespace {
// The input buffer the link is promised.
constexpr int kInBufferSize = 16384;
}  // namespace

QtSerialPort::QtSerialPort() {
    // Qt's own buffer is bounded too: past it Qt leaves bytes in the device
    // until they are read.
    port_.setReadBufferSize(kInBufferSize);
}

QtSerialPort::~QtSerialPort() {
    Close();
}

bool QtSerialPort::Open(const std::string& device, int& errorNumber) {
    errorNumber = 0;
    if (port_.isOpen()) return true;
    port_.setPortName(QString::fromStdString(device));
    port_.setBaudRate(QSerialPort::Baud115200);
    port_.setDataBits(QSerialPort::Data8);
    port_.setParity(QSerialPort::NoParity);
    port_.setStopBits(QSerialPort::OneStop);
    port_.setFlowControl(QSerialPort::NoFlowControl);
    if (!port_.open(QIODevice::ReadWrite)) {
        errorNumber = static_cast<int>(port_.error());
        if (errorNumber == 0) errorNumber = 1;
        port_.clearError();
        return false;
    }
    // DTR and RTS raised; a pseudo-terminal has no modem lines and refuses,
    // which leaves the port open and usable.
    port_.setDataTerminalReady(true);
    port_.setRequestToSend(true);
    port_.clearError();
    in_.clear();
    return true;
}

void QtSerialPort::Close() {
    if (port_.isOpen()) port_.close();
    port_.clearError();
    in_.clear();
}

bool QtSerialPort::IsOpen() const {
    return port_.isOpen();
}

void QtSerialPort::Drain() {
    if (!port_.isOpen()) return;
    // Qt reads the device when its event loop sees the device readable. The
    // user's input waits for the engine's own DoEvents.
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    const qint64 room = kInBufferSize - static_cast<qint64>(in_.size());
    if (room <= 0) return;
    const QByteArray bytes = port_.read(std::min(room, port_.bytesAvailable()));
    in_.insert(in_.end(), bytes.begin(), bytes.end());
}

int QtSerialPort::BytesWaiting() {
    Drain();
    return static_cast<int>(in_.size());
}

std::vector<uint8_t> QtSerialPort::ReadAll() {
    Drain();
    std::vector<uint8_t> out;
    out.swap(in_);
    return out;
}

void QtSerialPort::Write(const std::vector<uint8_t>& bytes) {
    if (!port_.isOpen() || bytes.empty()) return;
    port_.write(reinterpret_cast<const char*>(bytes.data()), static_cast<qint64>(bytes.size()));
    // Sent now rather than at the next turn of the event loop: the logger's
    // timing runs from the command.
    port_.flush();
}

std::vector<std::string> KnownSerialDevices() {
    std::vector<std::string> devices;
    for (int n = 1; n <= kSerialPortCount; ++n) devices.push_back(SerialPortDevice(n));
    std::vector<std::string> more;
    for (const QSerialPortInfo& info : QSerialPortInfo::availablePorts())
        more.push_back(info.systemLocation().toStdString());
    std::sort(more.begin(), more.end());
    for (const std::string& d : more)
        if (std::find(devices.begin(), devices.end(), d) == devices.end()) devices.push_back(d);
    return devices;
}

QtSerialPort& InstallQtSerialPort() {
    static std::unique_ptr<QtSerialPort> port;
    if (!port) port = std::make_unique<QtSerialPort>();
    SetSerialPort(port.get());
    return *port;
}

}  // namespace tl::qt
