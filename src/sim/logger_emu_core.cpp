#include "sim/logger_emu_core.h"

#include <cmath>
#include <cstdio>
#include <utility>

#include "sim/rng.h"

namespace tl::sim {

namespace {

int32_t GetI32(const std::vector<uint8_t>& b, size_t at) {
    return static_cast<int32_t>(b[at] | (b[at + 1] << 8) | (b[at + 2] << 16) |
                                (static_cast<uint32_t>(b[at + 3]) << 24));
}

std::string Show(uint8_t b) {
    if (b > 32 && b < 127) return std::string(1, static_cast<char>(b));
    return std::to_string(b);
}

void Put16(std::array<uint8_t, 256>& m, int address, int value) {
    m[address] = static_cast<uint8_t>(value >> 8);
    m[address + 1] = static_cast<uint8_t>(value);
}

// A meter as it leaves the factory: 0-100 km/h, 400 m, a 0.2 g trigger,
// kph, km and kW, and four vehicles.
std::array<uint8_t, 256> DefaultMemory() {
    std::array<uint8_t, 256> m{};
    for (int a = 0; a < 128; ++a) m[a] = static_cast<uint8_t>(0x20 + a % 64);  // unlisted: kept
    Put16(m, 14, 0);
    Put16(m, 16, 1000);
    Put16(m, 18, 400);
    Put16(m, 20, 20);
    m[26] = 1;
    m[27] = 0x62;  // bits 1, 5, 6
    m[28] = 0x31;  // bits 0, 4, 5
    m[30] = 0x0E;  // bits 1, 2, 3
    m[36] = 10;
    m[41] = 1;
    for (int v = 0; v < 4; ++v) {
        const int base = 128 + 28 * v;
        char name[17];
        std::snprintf(name, sizeof name, "Vehicle %-8d", v + 1);
        for (int i = 0; i < 16; ++i) m[base + i] = static_cast<uint8_t>(name[i]);
        Put16(m, base + 16, 1200 + 100 * v);
        m[base + 18] = 15;
        m[base + 19] = 20;
        Put16(m, base + 20, 65);
        m[base + 22] = 12;
        m[base + 23] = 50;
    }
    return m;
}

}  // namespace

bool EmuRunFromFile(const std::vector<uint8_t>& file, Family& family, EmuRun& run,
                    std::string& error) {
    if (file.size() < 12 || GetI32(file, 0) != 7576) {
        error = "not a run file";
        return false;
    }
    const int type = GetI32(file, 4);
    if (type != 1 && type != 202) {
        error = "a run of type " + std::to_string(type) + ": only HX40 (1) and SV63 (202) runs";
        return false;
    }
    const int n = GetI32(file, 8);
    if (n < 0 || file.size() != 12 + 8 * (static_cast<size_t>(n) + 1)) {
        error = "the run file's length does not match its frame count";
        return false;
    }
    family = type == 1 ? Family::HX40 : Family::SV63;
    run = EmuRun{};
    run.frames.resize(8 * (static_cast<size_t>(n) + 1));
    for (int v = 0; v < 8; ++v) {
        const size_t plane = 12 + static_cast<size_t>(v) * (n + 1);
        for (int k = 0; k <= n; ++k) run.frames[8 * static_cast<size_t>(k) + v] = file[plane + k];
    }
    return true;
}

EmuRun EmuRunFromRaw(const RawRun& raw) {
    EmuRun run;
    run.frames.resize(8 * (static_cast<size_t>(raw.frames) + 1));
    for (int v = 1; v <= 8; ++v) {
        run.frames[v - 1] = raw.header[v - 1];
        for (int k = 0; k < raw.frames; ++k)
            run.frames[8 * (static_cast<size_t>(k) + 1) + v - 1] = raw.Plane(v, k);
    }
    if (!raw.fixes.empty()) {
        const int s = static_cast<int>(std::floor(raw.fixes.front().utc)) % 86400;
        char buf[16];
        std::snprintf(buf, sizeof buf, "%02d%02d%02d", s / 3600 % 24, s / 60 % 60, s % 60);
        run.utc = buf;
    }
    return run;
}

EmuRun SummaryEmuRun(int type, uint64_t seed) {
    EmuRun run;
    run.type = type;
    run.frames.resize(8 * 128);
    Rng rng(SubSeed(seed, 77));
    run.frames[0] = 1;
    for (size_t i = 8; i < run.frames.size(); ++i)
        run.frames[i] = static_cast<uint8_t>(rng.UniformInt(0, 255));
    return run;
}

LoggerCore::LoggerCore(const LoggerSettings& settings, std::vector<EmuRun> runs)
    : settings_(settings), runs_(std::move(runs)), memory_(DefaultMemory()) {
    checksumOn_ = IsMeter() || settings.checksumOn;
}

void LoggerCore::Hangup() {
    pending_.clear();
    downloadRun_ = -1;
    wakeCount_ = 0;
}

std::vector<uint8_t> LoggerCore::Directory() const {
    std::vector<uint8_t> out;
    long end = 0;
    for (size_t k = 0; k < runs_.size(); ++k) {
        const EmuRun& r = runs_[k];
        const long length = r.type != 0 ? 128 : r.FrameCount();
        // The program takes the first record's end address as its length; after
        // that the logger counts on from the last end, the meter from the run's
        // own number.
        if (k == 0)
            end = length;
        else if (IsMeter())
            end = length + static_cast<long>(k) - 1;
        else
            end += length;
        uint8_t rec[13] = {};
        rec[0] = static_cast<uint8_t>(k);
        rec[1] = static_cast<uint8_t>(end >> 16);
        rec[2] = static_cast<uint8_t>(end >> 8);
        rec[3] = static_cast<uint8_t>(end);
        rec[4] = IsMeter() ? static_cast<uint8_t>(r.type) : 0;
        if (r.utc.size() == 6) {
            for (int i = 0; i < 6; ++i) rec[6 + i] = static_cast<uint8_t>(r.utc[i]);
        } else {
            rec[6] = '?';
            for (int i = 7; i < 12; ++i) rec[i] = ' ';
        }
        out.insert(out.end(), rec, rec + 13);
    }
    out.insert(out.end(), 5, 0);
    return out;
}

std::vector<uint8_t> LoggerCore::Transfer(int run, int address, int packets) const {
    const std::vector<uint8_t>& frames = runs_[run].frames;
    std::vector<uint8_t> out(static_cast<size_t>(packets) * 32 + 2, 0xFF);
    const size_t from = static_cast<size_t>(address) * 8;
    uint8_t x = 0;
    for (size_t i = 0; i < static_cast<size_t>(packets) * 32; ++i) {
        if (from + i < frames.size()) out[i] = frames[from + i];
        x ^= out[i];
    }
    out[out.size() - 2] = x;
    out[out.size() - 1] = 0;
    return out;
}

std::vector<uint8_t> LoggerCore::MemoryDump() const {
    std::vector<uint8_t> out;
    for (int line = 0; line < 16; ++line) {
        unsigned sum = 0;
        for (int i = 0; i < 16; ++i) {
            out.push_back(memory_[line * 16 + i]);
            sum += memory_[line * 16 + i];
        }
        out.push_back(static_cast<uint8_t>((256 - sum % 256) % 256));
    }
    return out;
}

void LoggerCore::Reply(EmuEvent& e, std::vector<uint8_t> bytes) const {
    e.segments.push_back({std::move(bytes), 0.0});
}

void LoggerCore::SendTransfer(EmuEvent& e) {
    std::vector<uint8_t> t = Transfer(downloadRun_, address_, lastPackets_);
    if (!checksumOn_) t.resize(t.size() - 2);
    Reply(e, std::move(t));
    e.transfer = true;
}

bool LoggerCore::Feed(uint8_t byte, EmuEvent& event) {
    event = EmuEvent{};
    if (downloadRun_ >= 0) return FeedDownload(byte, event);
    return FeedCommand(byte, event);
}

// In a transfer "O" asks for the next, "A" ends it, "R" asks for the same
// again, and any other byte for the same again at that many packets.
bool LoggerCore::FeedDownload(uint8_t byte, EmuEvent& e) {
    if (byte == 'O') {
        e.command = "O";
        address_ += lastPackets_ * 4;
        if (address_ >= runs_[downloadRun_].FrameCount()) {
            downloadRun_ = -1;  // nothing more to send
            return true;
        }
    } else if (byte == 'A') {
        e.command = "A";
        e.cancelsOutput = true;
        downloadRun_ = -1;
        return true;
    } else if (byte == 'R') {
        e.command = "R";
    } else if (byte == 0) {
        e.command = "count 0";
        return true;
    } else {
        e.command = "count " + std::to_string(byte);
        packetCount_ = byte;
        lastPackets_ = byte;
    }
    SendTransfer(e);
    return true;
}

bool LoggerCore::FeedCommand(uint8_t byte, EmuEvent& e) {
    if (pending_.empty()) {
        if (IsMeter()) {
            // 254 seven times and 253 wake the meter's serial mode; asleep it
            // hears nothing else.
            if (byte == 254) {
                ++wakeCount_;
                return false;
            }
            const bool woken = byte == 253 && wakeCount_ >= 7;
            wakeCount_ = 0;
            if (woken) {
                serialMode_ = true;
                e.command = "wake";
                return true;
            }
            if (!serialMode_) {
                e.command = "asleep " + Show(byte);
                return true;
            }
        }
        switch (byte) {
            case 's':
            case 'M':
            case 'l':
                pending_.push_back(byte);
                return false;
            case 'S':
                if (IsMeter()) {
                    e.command = "S";
                    Reply(e, MemoryDump());
                    return true;
                }
                pending_.push_back(byte);
                return false;
            case 'F':
                if (IsMeter()) {
                    pending_.push_back(byte);
                    return false;
                }
                break;
            case 'V':
                e.command = "V";
                Reply(e, {settings_.familyByte, settings_.firmwareByte,
                          static_cast<uint8_t>(settings_.serialNumber >> 8),
                          static_cast<uint8_t>(settings_.serialNumber)});
                return true;
            case 'e':
                e.command = "e";
                if (IsMeter() && !settings_.oldFirmware) Reply(e, {'Y'});
                return true;
            case 'X':
                e.command = "X";
                if (IsMeter()) serialMode_ = false;
                return true;
            case 'c':
                e.command = "c";
                checksumOn_ = !checksumOn_;
                Reply(e, {static_cast<uint8_t>(checksumOn_ ? 'Y' : 'N'), '\r'});
                return true;
            case 'N':
                e.command = "N";
                Reply(e, Directory());
                return true;
            case 'H':
                e.command = "H";
                autoStart_ = !autoStart_;
                Reply(e, {static_cast<uint8_t>(autoStart_ ? 'Y' : 'N'), '\r'});
                return true;
            case 'h':
                e.command = "h";
                if (settings_.oldFirmware) return true;
                Reply(e, {trigger_});
                pending_.push_back(byte);  // the new trigger follows
                return true;
            case 'E': {
                e.command = "E";
                double t = 0.0;
                for (; t < settings_.eraseSeconds; t += 0.25) e.segments.push_back({{'N'}, t});
                e.segments.push_back({{'Y'}, t});
                runs_.clear();
                return true;
            }
            case 'A':
            case 'O':
            case 'R':
                e.command = Show(byte);
                return true;
            default:
                break;
        }
        e.command = "unknown " + Show(byte);
        return true;
    }

    pending_.push_back(byte);
    const uint8_t cmd = pending_[0];
    const uint8_t arg = pending_[1];
    switch (cmd) {
        case 's':
            e.command = "s " + std::to_string(arg);
            packetCount_ = arg;
            Reply(e, {'Y'});
            break;
        case 'M':
            e.command = "M " + std::to_string(arg);
            if (arg < runs_.size() && packetCount_ > 0) {
                downloadRun_ = arg;
                address_ = 0;
                lastPackets_ = packetCount_;
                SendTransfer(e);
            }
            break;
        case 'h':
            e.command = "h " + std::to_string(arg);
            trigger_ = arg;
            break;
        case 'S':
            // "0" toggles channel 2, "2" channel 1; the answer is channel 2
            // then channel 1.
            e.command = "S " + Show(arg);
            if (arg == '0') span2_ = span2_ == '2' ? '5' : '2';
            if (arg == '2') span1_ = span1_ == '2' ? '5' : '2';
            Reply(e, {static_cast<uint8_t>(span2_), static_cast<uint8_t>(span1_)});
            break;
        case 'l':
            if (arg == '2') {
                e.command = "l 2";
                Reply(e, {upper_, lower_, reference_});
            } else if ((arg == '0' || arg == '1') && pending_.size() < 3) {
                return false;
            } else if (arg == '0' || arg == '1') {
                e.command = std::string("l ") + Show(arg) + " " + std::to_string(pending_[2]);
                (arg == '0' ? lower_ : upper_) = pending_[2];
            } else {
                e.command = "l " + Show(arg);
            }
            break;
        case 'F': {
            if (pending_.size() < 19) return false;
            // Address, 16 bytes, and the sum of the address and the bytes.
            const int address = pending_[1];
            unsigned sum = 0;
            for (int i = 1; i < 18; ++i) sum += pending_[i];
            e.command = "F " + std::to_string(address);
            const bool ok = sum % 256 == pending_[18] && address % 16 == 0;
            if (ok)
                for (int i = 0; i < 16; ++i) memory_[address + i] = pending_[2 + i];
            Reply(e, {static_cast<uint8_t>(ok ? 'Y' : 'N')});
            break;
        }
        default:
            break;
    }
    pending_.clear();
    return true;
}

}  // namespace tl::sim
