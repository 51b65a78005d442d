// The logger emulator through a real pseudo-terminal: the test opens the
// device with plain POSIX calls, as the program opens a serial port, and
// checks each reply byte for byte against the link's rules.
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <thread>

#include "sim/logger_emu.h"
#include "sim/run_file.h"
#include "sim_readers.h"

namespace tl::sim {
namespace {

using Bytes = std::vector<uint8_t>;
using Clock = std::chrono::steady_clock;

double Since(Clock::time_point t) {
    return std::chrono::duration<double>(Clock::now() - t).count();
}

// A run of N data frames whose bytes tell where they stand: frame k holds
// k's low byte in its first byte and the byte's place in the rest.
EmuRun CountingRun(int frames, const std::string& utc = "") {
    EmuRun r;
    r.utc = utc;
    r.frames.resize(8 * (static_cast<size_t>(frames) + 1));
    for (size_t i = 0; i < r.frames.size(); ++i)
        r.frames[i] = static_cast<uint8_t>(i % 8 == 0 ? i / 8 : i * 7 + 3);
    return r;
}

// The emulator on a thread, and the device opened as a port.
class Line {
  public:
    explicit Line(const EmuOptions& options, std::vector<EmuRun> runs) : emu_(options, runs) {
        std::string error;
        if (!emu_.Open(error)) ADD_FAILURE() << error;
        thread_ = std::thread([this] { emu_.Run(); });
        Reopen();
    }
    ~Line() {
        if (fd_ >= 0) close(fd_);
        emu_.Stop();
        thread_.join();
    }
    void Reopen() {
        if (fd_ >= 0) close(fd_);
        fd_ = open(emu_.DevicePath().c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK);
        ASSERT_GE(fd_, 0) << emu_.DevicePath();
    }
    void Close() {
        close(fd_);
        fd_ = -1;
    }
    void Send(const Bytes& b) { ASSERT_EQ(write(fd_, b.data(), b.size()), ssize_t(b.size())); }
    void Send(const std::string& s) { Send(Bytes(s.begin(), s.end())); }
    // Reads until N bytes have come or nothing has come for QUIET seconds.
    Bytes Read(size_t n, double quiet = 1.0) {
        Bytes out;
        uint8_t buf[4096];
        while (out.size() < n) {
            pollfd p{fd_, POLLIN, 0};
            if (poll(&p, 1, static_cast<int>(quiet * 1000)) <= 0) break;
            const ssize_t k = read(fd_, buf, sizeof buf);
            if (k <= 0) {
                hungUp_ = true;
                break;
            }
            out.insert(out.end(), buf, buf + k);
        }
        return out;
    }
    Bytes Ask(const std::string& command, size_t n, double quiet = 1.0) {
        Send(command);
        return Read(n, quiet);
    }
    Bytes Ask(const Bytes& command, size_t n, double quiet = 1.0) {
        Send(command);
        return Read(n, quiet);
    }
    bool HungUp() const { return hungUp_; }
    LoggerEmu& Emu() { return emu_; }

  private:
    LoggerEmu emu_;
    std::thread thread_;
    int fd_ = -1;
    bool hungUp_ = false;
};

EmuOptions Unpaced(Family family = Family::HX40) {
    EmuOptions o;
    o.logger.family = family;
    o.baud = 0;
    return o;
}

uint8_t Xor(const Bytes& b, size_t n) {
    uint8_t x = 0;
    for (size_t i = 0; i < n; ++i) x ^= b[i];
    return x;
}

void WakeMeter(Line& line) {
    line.Send(Bytes{254, 254, 254, 254, 254, 254, 254, 253});
}

// Run lengths in frames as the program reads them from the directory.
std::vector<long> DirectoryLengths(const Bytes& d, bool meter) {
    std::vector<long> lengths;
    long lastEnd = 0;
    for (size_t k = 0; k + 13 <= d.size() - 5; k += 13) {
        const long end = (d[k + 1] << 16) | (d[k + 2] << 8) | d[k + 3];
        long length = k == 0 ? end : meter ? end - d[k] + 1 : end - lastEnd;
        if (d[k + 4] != 0) length = 128;
        lengths.push_back(length);
        lastEnd = end;
    }
    return lengths;
}

TEST(LoggerEmu, HX40AnswersVersionChecksumModeAndIgnoresTheMeterCommands) {
    EmuOptions o = Unpaced();
    o.logger.serialNumber = 0x1267;
    Line line(o, {});
    EXPECT_EQ(line.Ask("V", 4), (Bytes{2, 27, 0x12, 0x67}));
    // Raw mode: the carriage return comes through untranslated.
    EXPECT_EQ(line.Ask("c", 2), (Bytes{'Y', '\r'}));
    EXPECT_EQ(line.Ask("c", 2), (Bytes{'N', '\r'}));
    EXPECT_EQ(line.Ask("c", 2), (Bytes{'Y', '\r'}));
    EXPECT_TRUE(line.Ask("e", 1, 0.3).empty());
    EXPECT_TRUE(line.Ask("X", 1, 0.3).empty());
    EXPECT_TRUE(line.Ask("A", 1, 0.3).empty());
    EXPECT_EQ(line.Ask("V", 5, 0.3).size(), 4u);
}

TEST(LoggerEmu, DirectoryRecordsGiveEachRunsLengthTypeAndTime) {
    {
        Line line(Unpaced(), {CountingRun(99, "134502"), CountingRun(299), CountingRun(1000)});
        const Bytes d = line.Ask("N", 100, 0.3);
        ASSERT_EQ(d.size(), 13u * 3 + 5);
        EXPECT_EQ(Bytes(d.end() - 5, d.end()), Bytes(5, 0));
        // Header frame and data frames: 100, 300, 1001 frames.
        EXPECT_EQ(DirectoryLengths(d, false), (std::vector<long>{100, 300, 1001}));
        EXPECT_EQ(d[0], 0);
        EXPECT_EQ(d[13], 1);
        EXPECT_EQ(d[26 + 3], (100 + 300 + 1001) & 255);  // the low address byte
        EXPECT_EQ(std::string(d.begin() + 6, d.begin() + 12), "134502");
        EXPECT_EQ(d[13 + 6], '?');
        for (size_t k = 0; k < 3; ++k) EXPECT_EQ(d[13 * k + 4], 0);
    }
    {
        EmuOptions o = Unpaced(Family::SV63);
        EmuRun summary = SummaryEmuRun(5, 3);
        Line line(o, {CountingRun(500), CountingRun(70000), summary, CountingRun(9)});
        WakeMeter(line);
        const Bytes d = line.Ask("N", 100, 0.3);
        ASSERT_EQ(d.size(), 13u * 4 + 5);
        EXPECT_EQ(DirectoryLengths(d, true), (std::vector<long>{501, 70001, 128, 10}));
        EXPECT_EQ(d[26 + 4], 5);
        EXPECT_EQ(d[13 + 1], 70001 >> 16);  // three address bytes, high first
    }
    {
        Line line(Unpaced(), {});
        EXPECT_EQ(line.Ask("N", 100, 0.3), Bytes(5, 0));
    }
}

// The program's download as the link's rules describe it: "s" and the
// packet count, "M" and the run's index, then a transfer after each "O",
// the run's first frame the header.
Bytes Download(Line& line, int index, int frames, int packets) {
    Bytes got;
    line.Send(Bytes{'s', static_cast<uint8_t>(packets)});
    EXPECT_EQ(line.Read(1).size(), 1u);
    line.Send(Bytes{'M', static_cast<uint8_t>(index)});
    const size_t size = static_cast<size_t>(packets) * 32;
    while (true) {
        const Bytes t = line.Read(size + 2);
        if (t.size() != size + 2) {
            ADD_FAILURE() << "a transfer of " << t.size() << " bytes";
            return got;
        }
        EXPECT_EQ(Xor(t, size), t[size]);
        got.insert(got.end(), t.begin(), t.begin() + size);
        if (got.size() >= static_cast<size_t>(frames) * 8) break;
        line.Send("O");
    }
    line.Send("A");
    got.resize(static_cast<size_t>(frames) * 8);
    return got;
}

TEST(LoggerEmu, DownloadedSimulatedRunsAreTheRunFilesBytes) {
    for (Family family : {Family::HX40, Family::SV63}) {
        SCOPED_TRACE(FamilyName(family));
        std::vector<EmuRun> runs;
        std::vector<test::Planes> planes(2);
        for (int k = 0; k < 2; ++k) {
            SimOutput out;
            std::string error;
            ASSERT_TRUE(RunSimulation(test::QuietConfig(family, "kart", 1, 40 + k), out, error));
            ASSERT_TRUE(test::ReadPlanes(RunFileBytes(out.raw), planes[k]));
            runs.push_back(EmuRunFromRaw(out.raw));
        }
        EmuOptions o = Unpaced(family);
        o.logger.checksumOn = true;
        Line line(o, runs);
        if (family == Family::SV63) {
            WakeMeter(line);
            EXPECT_EQ(line.Ask("e", 1).size(), 1u);
        }
        const Bytes d = line.Ask("N", 13 * 2 + 5);
        const std::vector<long> lengths = DirectoryLengths(d, family == Family::SV63);
        ASSERT_EQ(lengths.size(), 2u);
        for (int k : {1, 0}) {
            const test::Planes& p = planes[k];
            ASSERT_GT(p.n, 1000);
            ASSERT_EQ(lengths[k], p.n + 1);
            const Bytes got = Download(line, k, static_cast<int>(lengths[k]), k == 0 ? 255 : 7);
            ASSERT_EQ(got.size(), 8u * (p.n + 1));
            for (int v = 1; v <= 8; ++v) ASSERT_EQ(got[v - 1], p.header[v]) << v;
            for (int f = 0; f < p.n; ++f)
                for (int v = 1; v <= 8; ++v)
                    ASSERT_EQ(got[8 * (f + 1) + v - 1], p.At(f, v)) << f << " " << v;
        }
    }
}

TEST(LoggerEmu, APacketCountRepeatsTheTransferAtThatSizeAndTheRunEndsInPadding) {
    EmuOptions o = Unpaced();
    o.logger.checksumOn = true;
    Line line(o, {CountingRun(20)});  // 21 frames
    ASSERT_EQ(line.Ask("s\x04", 1).size(), 1u);
    const Bytes first = line.Ask(Bytes{'M', 0}, 4 * 32 + 2);  // frames 0 to 15
    ASSERT_EQ(first.size(), 130u);
    EXPECT_EQ(first[8 * 15], 15);
    EXPECT_EQ(first[129], 0);  // the byte after the checksum
    // The same again, and again at 2 packets.
    EXPECT_EQ(line.Ask("\x04", 130), first);
    const Bytes small = line.Ask("\x02", 66);
    ASSERT_EQ(small.size(), 66u);
    EXPECT_EQ(Bytes(small.begin(), small.begin() + 64), Bytes(first.begin(), first.begin() + 64));
    EXPECT_EQ(small[64], Xor(small, 64));
    // "R" repeats at the last size; "O" moves on by its 8 frames.
    EXPECT_EQ(line.Ask("R", 66), small);
    const Bytes next = line.Ask("O", 66);
    ASSERT_EQ(next.size(), 66u);
    EXPECT_EQ(next[0], 8);
    // Frames 16 to 20, then 0xFF to the transfer's end.
    const Bytes last = line.Ask("O", 66);
    ASSERT_EQ(last.size(), 66u);
    EXPECT_EQ(last[8 * 4], 20);
    EXPECT_EQ(last[8 * 5], 0xFF);
    EXPECT_EQ(last[63], 0xFF);
    EXPECT_EQ(last[64], Xor(last, 64));
    // Past the run's end there is nothing more; the logger hears commands again.
    EXPECT_TRUE(line.Ask("O", 1, 0.3).empty());
    EXPECT_EQ(line.Ask("V", 4).size(), 4u);
    // A run that is not there sends nothing.
    EXPECT_TRUE(line.Ask("M\x01", 1, 0.3).empty());
}

TEST(LoggerEmu, WithoutChecksumModeTheHX40SendsTheBareData) {
    Line line(Unpaced(), {CountingRun(20)});
    ASSERT_EQ(line.Ask("s\x04", 1).size(), 1u);
    EXPECT_EQ(line.Ask(Bytes{'M', 0}, 200, 0.3).size(), 128u);
}

TEST(LoggerEmu, AClosedPortForgetsTheTransferInProgress) {
    Line line(Unpaced(), {CountingRun(2000)});
    ASSERT_EQ(line.Ask("s\x04", 1).size(), 1u);
    ASSERT_EQ(line.Ask(Bytes{'M', 0}, 128).size(), 128u);
    line.Close();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    line.Reopen();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    // "V" is a command again, not a packet count of 86.
    EXPECT_EQ(line.Ask("V", 200, 0.3), (Bytes{2, 27, 0x12, 0x67}));
}

TEST(LoggerEmu, SpansAutoStartTriggerAndThresholdsReadAndWrite) {
    Line line(Unpaced(), {});
    // "S" "0" flips channel 2 and answers channel 2, channel 1.
    EXPECT_EQ(line.Ask("S0", 2), (Bytes{'2', '2'}));
    EXPECT_EQ(line.Ask("S0", 2), (Bytes{'5', '2'}));
    EXPECT_EQ(line.Ask("S2", 2), (Bytes{'5', '5'}));
    EXPECT_EQ(line.Ask("S2", 2), (Bytes{'5', '2'}));
    // "H" flips auto-start and reports the new state.
    EXPECT_EQ(line.Ask("H", 2), (Bytes{'Y', '\r'}));
    EXPECT_EQ(line.Ask("H", 2), (Bytes{'N', '\r'}));
    // "h": the trigger byte, then the logger takes the next byte as the new one.
    EXPECT_EQ(line.Ask("h", 1), (Bytes{51}));
    line.Send(Bytes{102});
    EXPECT_EQ(line.Ask("h", 1), (Bytes{102}));
    line.Send(Bytes{102});
    // Thresholds: upper, lower, reference; lower = byte / reference * 12 V.
    const Bytes t = line.Ask("l2", 3);
    ASSERT_EQ(t.size(), 3u);
    EXPECT_NEAR(t[1] / double(t[2]) * 12, 2.0, 0.05);
    EXPECT_NEAR(t[0] / double(t[2]) * 12, 3.5, 0.05);
    EXPECT_TRUE(line.Ask(std::string("l0\x11", 3), 1, 0.3).empty());
    EXPECT_TRUE(line.Ask(std::string("l1\xC8", 3), 1, 0.3).empty());
    EXPECT_EQ(line.Ask("l2", 3), (Bytes{200, 17, t[2]}));
}

TEST(LoggerEmu, EraseSaysNUntilDoneThenYAndEmptiesTheDirectory) {
    EmuOptions o = Unpaced();
    o.logger.eraseSeconds = 0.6;
    Line line(o, {CountingRun(50), CountingRun(60)});
    EXPECT_EQ(line.Ask("N", 100, 0.3).size(), 31u);
    const Clock::time_point t0 = Clock::now();
    line.Send("E");
    Bytes got;
    while (got.empty() || got.back() != 'Y') {
        const Bytes b = line.Read(1, 1.0);  // each "N" is within a second of the last
        ASSERT_FALSE(b.empty());
        got.insert(got.end(), b.begin(), b.end());
    }
    EXPECT_GE(Since(t0), 0.55);
    EXPECT_EQ(got, (Bytes{'N', 'N', 'N', 'Y'}));
    EXPECT_EQ(line.Ask("N", 100, 0.3), Bytes(5, 0));
}

TEST(LoggerEmu, MeterWakesLeavesSerialModeAndKeepsItsMemoryImage) {
    Line line(Unpaced(Family::SV63), {});
    EXPECT_TRUE(line.Ask("V", 4, 0.3).empty());  // asleep
    WakeMeter(line);
    EXPECT_EQ(line.Ask("e", 1), (Bytes{'Y'}));
    EXPECT_EQ(line.Ask("V", 4), (Bytes{2, 27, 4711 >> 8, 4711 & 255}));
    // The dump: 16 lines of 16 bytes, each line with its checksum summing to 0.
    const Bytes dump = line.Ask("S", 272);
    ASSERT_EQ(dump.size(), 272u);
    for (int l = 0; l < 16; ++l) {
        unsigned sum = 0;
        for (int i = 0; i < 17; ++i) sum += dump[17 * l + i];
        EXPECT_EQ(sum % 256, 0u) << l;
    }
    auto at = [&](const Bytes& d, int a) { return d[a + a / 16]; };
    EXPECT_EQ(at(dump, 30) & 2, 2);  // kph
    EXPECT_EQ(std::string(dump.begin() + 136, dump.begin() + 152), "Vehicle 1       ");
    // Flashing line 8: address, 16 bytes, the sum of the address and the bytes.
    Bytes flash = {'F', 128};
    unsigned sum = 128;
    for (int i = 0; i < 16; ++i) {
        flash.push_back(static_cast<uint8_t>("Kart 12         "[i]));
        sum += flash.back();
    }
    Bytes wrong = flash;
    wrong.push_back(static_cast<uint8_t>(sum + 1));
    EXPECT_EQ(line.Ask(std::string(wrong.begin(), wrong.end()), 1), (Bytes{'N'}));
    EXPECT_EQ(line.Ask("S", 272), dump);
    flash.push_back(static_cast<uint8_t>(sum));
    EXPECT_EQ(line.Ask(std::string(flash.begin(), flash.end()), 1), (Bytes{'Y'}));
    const Bytes after = line.Ask("S", 272);
    ASSERT_EQ(after.size(), 272u);
    EXPECT_EQ(std::string(after.begin() + 136, after.begin() + 152), "Kart 12         ");
    EXPECT_EQ(Bytes(after.begin(), after.begin() + 136), Bytes(dump.begin(), dump.begin() + 136));
    line.Send("X");
    EXPECT_TRUE(line.Ask("V", 4, 0.3).empty());
}

TEST(LoggerEmu, RepliesComeAtTheLineRate) {
    // 130 bytes at 9600 baud: 135 ms, spread out rather than at once.
    EmuOptions o;
    o.baud = 9600;
    o.logger.checksumOn = true;
    Line line(o, {CountingRun(100)});
    ASSERT_EQ(line.Ask("s\x04", 1).size(), 1u);
    line.Send(Bytes{'M', 0});
    const Clock::time_point t0 = Clock::now();
    Bytes got = line.Read(1);
    const double first = Since(t0);
    const Bytes rest = line.Read(129);
    const double all = Since(t0);
    EXPECT_EQ(got.size() + rest.size(), 130u);
    const double expected = 130 * 10 / 9600.0;
    EXPECT_GT(all, expected * 0.9);
    EXPECT_LT(all, expected * 1.6 + 0.1);
    EXPECT_LT(first, expected * 0.5);
}

// One transfer of 255 packets from a line with the given faults.
Bytes NoisyTransfer(const LineFaults& faults, uint64_t seed, Bytes* version = nullptr) {
    EmuOptions o = Unpaced();
    o.logger.checksumOn = true;
    o.faults = faults;
    o.seed = seed;
    Line line(o, {CountingRun(3000)});
    if (version) *version = line.Ask("V", 4, 0.3);
    EXPECT_EQ(line.Ask("s\xFF", 1).size(), 1u);
    return line.Ask(Bytes{'M', 0}, 1 << 20, 0.3);
}

bool IsSubsequence(const Bytes& part, const Bytes& whole) {
    size_t j = 0;
    for (size_t i = 0; i < whole.size() && j < part.size(); ++i)
        if (whole[i] == part[j]) ++j;
    return j == part.size();
}

TEST(LoggerEmuFaults, BitErrorsDropsAndDuplicatesSpoilTransfersRepeatablyBySeed) {
    const Bytes clean = NoisyTransfer(LineFaults{}, 1);
    ASSERT_EQ(clean.size(), 255u * 32 + 2);
    EXPECT_EQ(clean[255 * 32], Xor(clean, 255 * 32));

    LineFaults bits;
    bits.bitErrors = 1e-3;
    Bytes version;
    const Bytes noisy = NoisyTransfer(bits, 7, &version);
    EXPECT_EQ(version, (Bytes{2, 27, 0x12, 0x67}));  // only the transfers are spoilt
    ASSERT_EQ(noisy.size(), clean.size());
    int flipped = 0;
    for (size_t i = 0; i < clean.size(); ++i) flipped += __builtin_popcount(clean[i] ^ noisy[i]);
    EXPECT_GT(flipped, 30);  // about 65 of 65,296 bits
    EXPECT_LT(flipped, 110);
    EXPECT_EQ(NoisyTransfer(bits, 7), noisy);
    EXPECT_NE(NoisyTransfer(bits, 8), noisy);
    bits.everywhere = true;
    bits.bitErrors = 0.3;
    NoisyTransfer(bits, 7, &version);
    EXPECT_NE(version, (Bytes{2, 27, 0x12, 0x67}));

    LineFaults drop;
    drop.drop = 0.01;
    const Bytes dropped = NoisyTransfer(drop, 3);
    EXPECT_GT(dropped.size(), clean.size() - 140);
    EXPECT_LT(dropped.size(), clean.size() - 40);
    EXPECT_TRUE(IsSubsequence(dropped, clean));

    LineFaults dup;
    dup.dup = 0.01;
    const Bytes doubled = NoisyTransfer(dup, 3);
    EXPECT_GT(doubled.size(), clean.size() + 40);
    EXPECT_LT(doubled.size(), clean.size() + 140);
    EXPECT_TRUE(IsSubsequence(clean, doubled));
}

TEST(LoggerEmuFaults, AStallHoldsTheLineAfterTheGivenByteCount) {
    EmuOptions o = Unpaced();
    o.faults.stallSeconds = 0.5;
    o.faults.stallAtByte = 100;
    Line line(o, {CountingRun(100)});
    ASSERT_EQ(line.Ask("s\x04", 1).size(), 1u);  // byte 1
    line.Send(Bytes{'M', 0});
    const Clock::time_point t0 = Clock::now();
    EXPECT_EQ(line.Read(99, 0.3).size(), 99u);
    EXPECT_LT(Since(t0), 0.2);
    EXPECT_EQ(line.Read(29, 1.0).size(), 29u);
    EXPECT_GT(Since(t0), 0.45);
    EXPECT_EQ(line.Ask("O", 128).size(), 128u);  // once only
    EXPECT_LT(Since(t0), 0.9);
}

TEST(LoggerEmuFaults, ADeadDeviceIsSilentAndAnUnpluggedOneHangsUp) {
    {
        EmuOptions o = Unpaced();
        o.faults.dieAfter = 2;
        Line line(o, {CountingRun(1000)});
        ASSERT_EQ(line.Ask("s\x04", 1).size(), 1u);
        EXPECT_EQ(line.Ask(Bytes{'M', 0}, 128).size(), 128u);
        EXPECT_EQ(line.Ask("\x04", 128).size(), 128u);
        EXPECT_TRUE(line.Ask("O", 1, 0.3).empty());
        EXPECT_TRUE(line.Ask("A", 1, 0.1).empty());
        EXPECT_TRUE(line.Ask("V", 1, 0.3).empty());
        EXPECT_FALSE(line.HungUp());
    }
    {
        EmuOptions o = Unpaced();
        o.faults.quitAfter = 1;
        Line line(o, {CountingRun(1000)});
        ASSERT_EQ(line.Ask("s\x04", 1).size(), 1u);
        EXPECT_EQ(line.Ask(Bytes{'M', 0}, 128).size(), 128u);
        EXPECT_TRUE(line.Ask("O", 1, 1.0).empty());
        EXPECT_TRUE(line.HungUp());
        EXPECT_EQ(line.Emu().TransfersSent(), 1);
    }
}

TEST(LoggerEmuFaults, WrongFamilyByteAndOldFirmware) {
    {
        EmuOptions o = Unpaced();
        o.logger.familyByte = 7;
        o.logger.oldFirmware = true;
        Line line(o, {});
        EXPECT_EQ(line.Ask("V", 4), (Bytes{7, 27, 0x12, 0x67}));
        EXPECT_TRUE(line.Ask("h", 1, 0.3).empty());
        // Nothing is waiting for a trigger byte: the next command is heard.
        EXPECT_EQ(line.Ask("H", 2), (Bytes{'Y', '\r'}));
    }
    {
        EmuOptions o = Unpaced(Family::SV63);
        o.logger.oldFirmware = true;
        Line line(o, {});
        WakeMeter(line);
        EXPECT_TRUE(line.Ask("e", 1, 0.3).empty());
        EXPECT_EQ(line.Ask("V", 4).size(), 4u);
    }
}

TEST(LoggerEmu, TranscriptListsEachCommandWithItsReplyLength) {
    const std::string path = ::testing::TempDir() + "logger_emu_transcript.txt";
    {
        EmuOptions o = Unpaced();
        o.logPath = path;
        o.logger.checksumOn = true;
        Line line(o, {CountingRun(100)});
        line.Ask("V", 4);
        line.Ask("N", 18);
        line.Ask("s\x04", 1);
        line.Ask(Bytes{'M', 0}, 130);
        line.Ask("\x02", 66);
        line.Ask("A", 1, 0.1);
        line.Close();
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    std::ifstream f(path);
    std::stringstream text;
    text << f.rdbuf();
    std::vector<std::string> lines;
    std::string l;
    while (std::getline(text, l)) lines.push_back(l.substr(l.find(' ') + 1));
    EXPECT_EQ(lines, (std::vector<std::string>{"-- port opened", "V 4", "N 18", "s 4 1", "M 0 130",
                                               "count 2 66", "A 0", "-- port closed"}));
    std::remove(path.c_str());
}

TEST(LoggerEmu, BehindALatencyTimerTheBytesComeInGroupsAtTheSameRate) {
    EmuOptions o;
    o.baud = 9600;
    o.latencyMs = 50;
    o.logger.checksumOn = true;
    Line line(o, {CountingRun(100)});
    ASSERT_EQ(line.Ask("s\x04", 1).size(), 1u);
    line.Send(Bytes{'M', 0});
    const Clock::time_point t0 = Clock::now();
    size_t got = 0;
    int groups = 0;
    while (got < 130) {
        const Bytes b = line.Read(1, 1.0);
        if (b.empty()) break;
        got += b.size();
        ++groups;
    }
    const double all = Since(t0);
    EXPECT_EQ(got, 130u);
    EXPECT_LE(groups, 8);  // 135 ms of bytes at 50 ms ticks; unpaced by a tick they are 130 reads
    EXPECT_GT(all, 0.135 * 0.9);
    EXPECT_LT(all, 0.135 * 1.6 + 0.15);
}

}  // namespace
}  // namespace tl::sim
