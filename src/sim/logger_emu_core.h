// The logger's side of the serial link, without the line: the command
// letters, the run directory, the packet transfers, set-up, erase and the
// meter's memory image, as an HX40 logger or an SV63 meter answers them.
// Bytes go in one at a time; what the logger sends back comes out as events,
// which the line (logger_emu.h) paces and spoils.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "sim/encoders.h"

namespace tl::sim {

// A run as the logger holds it: eight-byte frames, the first of them the
// run's header frame. A summary run of the meter (type 3, 5 or 7) is 128
// frames.
struct EmuRun {
    int type = 0;
    std::vector<uint8_t> frames;  // 8 bytes a frame, frame 0 the header
    std::string utc;              // "hhmmss" of the first GPS time, empty when there is none
    int FrameCount() const { return static_cast<int>(frames.size() / 8); }
};

// The run of a plane-family .run file (type 1 HX40, 202 SV63).
bool EmuRunFromFile(const std::vector<uint8_t>& file, Family& family, EmuRun& run,
                    std::string& error);
// The run of a simulated raw run; its time is that of its first fix.
EmuRun EmuRunFromRaw(const RawRun& raw);
// A meter's summary run of the given type: 128 frames of made-up results.
EmuRun SummaryEmuRun(int type, uint64_t seed);

struct LoggerSettings {
    Family family = Family::HX40;
    uint16_t serialNumber = 4711;
    uint8_t familyByte = 2;     // the first byte of the answer to "V"
    uint8_t firmwareByte = 27;  // the second, which the program does not read
    bool oldFirmware = false;   // no answer to "h" or "e"
    double eraseSeconds = 1.0;  // how long an erase takes ("N" four times a second)
    bool checksumOn = false;    // HX40 at power-up; the meter always closes transfers
};

// What one byte from the program made the logger do.
struct EmuEvent {
    std::string command;  // for the transcript: "V", "s 40", "M 0", "O", "count 250" ...
    struct Segment {
        std::vector<uint8_t> bytes;
        double delay = 0.0;  // seconds after the command before this segment starts
    };
    std::vector<Segment> segments;
    bool transfer = false;       // a packet transfer of a run
    bool cancelsOutput = false;  // "A" in a transfer: what is not yet sent is not sent
    size_t ReplyLength() const {
        size_t n = 0;
        for (const Segment& s : segments) n += s.bytes.size();
        return n;
    }
};

class LoggerCore {
  public:
    LoggerCore(const LoggerSettings& settings, std::vector<EmuRun> runs);

    // One byte from the program; at most one event comes of it, when the
    // byte completes a command.
    bool Feed(uint8_t byte, EmuEvent& event);
    // The program closed the port: a command half received and a transfer
    // in progress are forgotten. The settings stay.
    void Hangup();

    // The answer to "N": 13-byte records closed by five zero bytes.
    std::vector<uint8_t> Directory() const;
    // PACKETS packets of 32 bytes from frame ADDRESS of the run (0xFF past
    // its end), the XOR of them, and one more byte.
    std::vector<uint8_t> Transfer(int run, int address, int packets) const;
    // The memory image as the meter sends it: 16 lines of 16 bytes, each
    // closed by a byte that brings the line's sum to 0.
    std::vector<uint8_t> MemoryDump() const;

    const LoggerSettings& Settings() const { return settings_; }
    const std::vector<EmuRun>& Runs() const { return runs_; }
    bool ChecksumOn() const { return checksumOn_; }
    bool AutoStart() const { return autoStart_; }
    uint8_t Trigger() const { return trigger_; }
    char Span1() const { return span1_; }  // '2' 12 V, '5' 5 V
    char Span2() const { return span2_; }
    uint8_t LowerThreshold() const { return lower_; }
    uint8_t UpperThreshold() const { return upper_; }
    uint8_t Reference() const { return reference_; }
    int PacketCount() const { return packetCount_; }
    bool SerialMode() const { return serialMode_; }
    bool Downloading() const { return downloadRun_ >= 0; }
    const std::array<uint8_t, 256>& Memory() const { return memory_; }

  private:
    bool IsMeter() const { return settings_.family == Family::SV63; }
    void Reply(EmuEvent& e, std::vector<uint8_t> bytes) const;
    bool FeedDownload(uint8_t byte, EmuEvent& event);
    bool FeedCommand(uint8_t byte, EmuEvent& event);
    void SendTransfer(EmuEvent& event);

    LoggerSettings settings_;
    std::vector<EmuRun> runs_;
    // Device state, kept across jobs.
    bool checksumOn_ = false;
    bool autoStart_ = false;
    uint8_t trigger_ = 51;  // 0.2 g
    char span1_ = '2', span2_ = '5';
    uint8_t lower_ = 35, upper_ = 62, reference_ = 212;  // 2.0 V and 3.5 V of 12
    int packetCount_ = 40;
    bool serialMode_ = false;
    int wakeCount_ = 0;
    std::array<uint8_t, 256> memory_{};
    // The command being received.
    std::vector<uint8_t> pending_;
    // The transfer in progress.
    int downloadRun_ = -1;
    int address_ = 0;      // frame of the last transfer's start
    int lastPackets_ = 0;  // packets in the last transfer
};

}  // namespace tl::sim
