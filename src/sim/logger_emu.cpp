#include "sim/logger_emu.h"

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace tl::sim {

LoggerEmu::LoggerEmu(const EmuOptions& options, std::vector<EmuRun> runs)
    : options_(options), core_(options.logger, std::move(runs)), rng_(SubSeed(options.seed, 901)) {
    if (options_.baud > 0)
        byteTime_ = std::chrono::duration_cast<Clock::duration>(
            std::chrono::duration<double>(10.0 / options_.baud));
    latency_ = std::chrono::duration_cast<Clock::duration>(
        std::chrono::duration<double>(options_.latencyMs / 1000.0));
}

LoggerEmu::~LoggerEmu() {
    if (master_ >= 0) close(master_);
    for (int fd : wake_)
        if (fd >= 0) close(fd);
    if (log_) std::fclose(log_);
}

bool LoggerEmu::Open(std::string& error) {
    master_ = posix_openpt(O_RDWR | O_NOCTTY);
    if (master_ < 0 || grantpt(master_) != 0 || unlockpt(master_) != 0) {
        error = std::string("cannot open a pseudo-terminal: ") + std::strerror(errno);
        return false;
    }
    char name[128];
    if (ptsname_r(master_, name, sizeof name) != 0) {
        error = std::string("no name for the pseudo-terminal: ") + std::strerror(errno);
        return false;
    }
    devicePath_ = name;
    // Raw mode on the device side: no echo, no line editing, no character
    // translation, eight bits. The settings stay with the terminal.
    const int slave = open(name, O_RDWR | O_NOCTTY);
    if (slave < 0) {
        error = "cannot open " + devicePath_ + ": " + std::strerror(errno);
        return false;
    }
    termios tio{};
    tcgetattr(slave, &tio);
    cfmakeraw(&tio);
    cfsetispeed(&tio, B115200);
    cfsetospeed(&tio, B115200);
    tio.c_cc[VMIN] = 1;
    tio.c_cc[VTIME] = 0;
    const bool rawOk = tcsetattr(slave, TCSANOW, &tio) == 0;
    close(slave);
    if (!rawOk) {
        error = "cannot set raw mode on " + devicePath_;
        return false;
    }
    fcntl(master_, F_SETFL, fcntl(master_, F_GETFL) | O_NONBLOCK);
    fcntl(master_, F_SETFD, FD_CLOEXEC);
    if (pipe(wake_) != 0) {
        error = "cannot make a pipe";
        return false;
    }
    for (int fd : wake_) {
        fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) | O_NONBLOCK);
        fcntl(fd, F_SETFD, FD_CLOEXEC);
    }
    if (!options_.logPath.empty()) {
        log_ = std::fopen(options_.logPath.c_str(), "w");
        if (!log_) {
            error = "cannot write " + options_.logPath;
            return false;
        }
    }
    start_ = Clock::now();
    nextDue_ = start_;
    return true;
}

void LoggerEmu::Stop() {
    stop_ = true;
    if (wake_[1] >= 0) {
        const char c = 1;
        [[maybe_unused]] const ssize_t n = write(wake_[1], &c, 1);
    }
}

void LoggerEmu::Log(const std::string& text) {
    if (!log_) return;
    const double t = std::chrono::duration<double>(Clock::now() - start_).count();
    std::fprintf(log_, "%.3f %s\n", t, text.c_str());
    std::fflush(log_);
}

void LoggerEmu::Unplug() {
    Log("-- unplugged");
    close(master_);
    master_ = -1;
    unplugged_ = true;
    queue_.clear();
}

void LoggerEmu::Handle(uint8_t byte) {
    EmuEvent e;
    if (!core_.Feed(byte, e)) return;
    const Clock::time_point now = Clock::now();
    if (e.cancelsOutput) {
        std::erase_if(queue_, [](const Pending& p) { return p.transfer && p.pos == 0; });
        for (Pending& p : queue_)
            if (p.transfer) p.bytes.resize(p.pos);
    }
    if (e.transfer && !dead_) {
        if (options_.faults.quitAfter >= 0 && transfers_ >= options_.faults.quitAfter) {
            Log(e.command + " 0 unplugged");
            Unplug();
            return;
        }
        if (options_.faults.dieAfter >= 0 && transfers_ >= options_.faults.dieAfter)
            dead_ = true;
        else
            ++transfers_;
    }
    if (dead_) {
        Log(e.command + " 0 silent");
        return;
    }
    Log(e.command + " " + std::to_string(e.ReplyLength()));
    if (queue_.empty() && nextDue_ < now) nextDue_ = now;
    for (EmuEvent::Segment& s : e.segments) {
        Pending p;
        p.bytes = std::move(s.bytes);
        p.notBefore = now + std::chrono::duration_cast<Clock::duration>(
                                std::chrono::duration<double>(s.delay));
        p.transfer = e.transfer;
        p.noisy = e.transfer || options_.faults.everywhere;
        queue_.push_back(std::move(p));
    }
}

void LoggerEmu::Spoil(uint8_t byte, std::vector<uint8_t>& out) {
    const LineFaults& f = options_.faults;
    if (rng_.Chance(f.drop)) return;
    if (f.bitErrors > 0.0)
        for (int bit = 0; bit < 8; ++bit)
            if (rng_.Chance(f.bitErrors)) byte ^= static_cast<uint8_t>(1 << bit);
    out.push_back(byte);
    if (rng_.Chance(f.dup)) out.push_back(byte);
}

LoggerEmu::Clock::time_point LoggerEmu::SendDue(Clock::time_point now) {
    // Bytes the line took in part last time go first.
    if (!carry_.empty()) {
        const ssize_t w = write(master_, carry_.data(), carry_.size());
        if (w > 0) carry_.erase(carry_.begin(), carry_.begin() + w);
        if (!carry_.empty()) return now + std::chrono::milliseconds(1);
    }
    while (!queue_.empty()) {
        Pending& p = queue_.front();
        if (p.pos >= p.bytes.size()) {
            queue_.pop_front();
            continue;
        }
        if (now < p.notBefore) return p.notBefore;
        if (nextDue_ < p.notBefore) nextDue_ = p.notBefore;
        size_t n = p.bytes.size() - p.pos;
        if (byteTime_.count() > 0) {
            // Behind an adapter's latency timer the bytes due come out together
            // at its ticks.
            Clock::time_point gate = now;
            if (latency_.count() > 0) gate = start_ + (now - start_) / latency_ * latency_;
            if (gate < nextDue_) {
                if (latency_.count() == 0) return nextDue_;
                return start_ + ((nextDue_ - start_) / latency_ + 1) * latency_;
            }
            const auto due = static_cast<size_t>((gate - nextDue_) / byteTime_) + 1;
            n = std::min(n, due);
        }
        n = std::min<size_t>(n, 4096);
        const LineFaults& f = options_.faults;
        if (!stalled_ && f.stallSeconds > 0.0) {
            const uint64_t sent = bytesSent_;
            if (sent >= f.stallAtByte) {
                stalled_ = true;
                Log("-- stall");
                stallEnd_ = now + std::chrono::duration_cast<Clock::duration>(
                                      std::chrono::duration<double>(f.stallSeconds));
                nextDue_ = stallEnd_;
                return stallEnd_;
            }
            n = std::min<uint64_t>(n, f.stallAtByte - sent);
        }
        if (now < stallEnd_) return stallEnd_;
        std::vector<uint8_t> out;
        out.reserve(n + 8);
        for (size_t i = 0; i < n; ++i) {
            const uint8_t b = p.bytes[p.pos + i];
            if (p.noisy)
                Spoil(b, out);
            else
                out.push_back(b);
        }
        const ssize_t w = write(master_, out.data(), out.size());
        if (w < 0) {
            if (errno == EAGAIN || errno == EINTR) return now + std::chrono::milliseconds(1);
            queue_.clear();  // the port is closed; the next open starts afresh
            return Clock::time_point::max();
        }
        if (static_cast<size_t>(w) < out.size()) carry_.assign(out.begin() + w, out.end());
        p.pos += n;
        bytesSent_ += n;
        nextDue_ += byteTime_ * static_cast<Clock::rep>(n);
        if (!carry_.empty()) return now + std::chrono::milliseconds(1);
    }
    return Clock::time_point::max();
}

void LoggerEmu::Run() {
    // With no one holding the device open the master reports a hang-up; the
    // line is then polled every few milliseconds until the program opens it.
    bool closed = true;
    uint8_t buf[4096];
    while (!stop_ && !unplugged_) {
        const Clock::time_point now = Clock::now();
        const Clock::time_point due = SendDue(now);
        pollfd fds[2] = {{master_, POLLIN, 0}, {wake_[0], POLLIN, 0}};
        int timeoutMs = -1;
        if (due != Clock::time_point::max()) {
            const auto wait = std::chrono::duration_cast<std::chrono::microseconds>(due - now);
            timeoutMs = static_cast<int>(std::max<int64_t>(0, (wait.count() + 999) / 1000));
        }
        if (closed) timeoutMs = timeoutMs < 0 ? 5 : std::min(timeoutMs, 5);
        const int r = poll(fds, 2, timeoutMs);
        if (r < 0 && errno != EINTR) break;
        if (r <= 0) {
            // A quiet poll of a closed line means someone has opened it.
            if (r == 0 && closed) {
                closed = false;
                Log("-- port opened");
            }
            continue;
        }
        if (fds[1].revents & POLLIN) {
            while (read(wake_[0], buf, sizeof buf) > 0) {
            }
            continue;
        }
        if (fds[0].revents & POLLIN) {
            const ssize_t n = read(master_, buf, sizeof buf);
            if (n > 0) {
                if (closed) {
                    closed = false;
                    Log("-- port opened");
                }
                for (ssize_t i = 0; i < n && !unplugged_; ++i) Handle(buf[i]);
                continue;
            }
        }
        if (fds[0].revents & (POLLHUP | POLLERR)) {
            if (!closed) {
                Log("-- port closed");
                core_.Hangup();
                queue_.clear();
                carry_.clear();
                closed = true;
            }
            // Wait a little, or for Stop().
            pollfd w{wake_[0], POLLIN, 0};
            poll(&w, 1, 5);
        }
    }
}

}  // namespace tl::sim
