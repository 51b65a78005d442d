#include "link/posix_serial_port.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <ctime>
#include <thread>

namespace tl {

namespace {
// The input buffer the link is promised.
constexpr int kInBufferSize = 16384;
}  // namespace

PosixSerialPort::~PosixSerialPort() {
    Close();
}

bool PosixSerialPort::Open(const std::string& device, int& errorNumber) {
    errorNumber = 0;
    if (fd_ >= 0) return true;
    const int fd = ::open(device.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) {
        errorNumber = errno ? errno : 1;
        return false;
    }
    termios t{};
    if (::tcgetattr(fd, &t) != 0) {
        errorNumber = errno ? errno : 1;
        ::close(fd);
        return false;
    }
    ::cfmakeraw(&t);
    t.c_cflag &= ~(PARENB | CSTOPB | CSIZE | CRTSCTS);
    t.c_cflag |= CS8 | CLOCAL | CREAD;
    t.c_iflag &= ~(IXON | IXOFF | IXANY);
    t.c_cc[VMIN] = 0;
    t.c_cc[VTIME] = 0;
    ::cfsetispeed(&t, B115200);
    ::cfsetospeed(&t, B115200);
    if (::tcsetattr(fd, TCSANOW, &t) != 0) {
        errorNumber = errno ? errno : 1;
        ::close(fd);
        return false;
    }
    // Raise DTR and RTS; a pseudo-terminal has no modem lines and refuses.
    int lines = TIOCM_DTR | TIOCM_RTS;
    (void)::ioctl(fd, TIOCMBIS, &lines);
    fd_ = fd;
    return true;
}

void PosixSerialPort::Close() {
    if (fd_ >= 0) ::close(fd_);
    fd_ = -1;
    in_.clear();
}

void PosixSerialPort::Drain() {
    uint8_t buf[4096];
    while (fd_ >= 0 && in_.size() < size_t(kInBufferSize)) {
        const size_t room = std::min(sizeof buf, size_t(kInBufferSize) - in_.size());
        const ssize_t n = ::read(fd_, buf, room);
        if (n <= 0) break;
        in_.insert(in_.end(), buf, buf + n);
    }
}

int PosixSerialPort::BytesWaiting() {
    Drain();
    return static_cast<int>(in_.size());
}

std::vector<uint8_t> PosixSerialPort::ReadAll() {
    Drain();
    std::vector<uint8_t> out;
    out.swap(in_);
    return out;
}

void PosixSerialPort::Write(const std::vector<uint8_t>& bytes) {
    if (fd_ < 0) return;
    size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::write(fd_, bytes.data() + done, bytes.size() - done);
        if (n > 0) {
            done += static_cast<size_t>(n);
        } else if (n < 0 && (errno == EAGAIN || errno == EINTR)) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        } else {
            return;
        }
    }
}

double SystemClock::SecondsSinceMidnight() {
    const auto now = std::chrono::system_clock::now();
    const std::time_t t = std::chrono::system_clock::to_time_t(now);
    std::tm tm{};
    localtime_r(&t, &tm);
    const double fraction =
        std::chrono::duration<double>(now.time_since_epoch()).count() - static_cast<double>(t);
    return tm.tm_hour * 3600.0 + tm.tm_min * 60.0 + tm.tm_sec + fraction;
}

void SystemClock::DoEvents() {
    std::this_thread::sleep_for(std::chrono::microseconds(500));
}

}  // namespace tl
