// The logger link against a logger played in the test over the scripted
// serial port: the commands, the directory, the adaptive download of the demo
// road run, its faults, abort, erase and set-up.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>

#include "core/config_store.h"
#include "files/raw_run_files.h"
#include "link/download.h"
#include "link/logger_setup.h"
#include "link/serial_link.h"
#include "store/run_store.h"
#include "support/engine_fixture.h"

namespace tl {
namespace {

using test::EngineTest;

// An HX40 logger: answers "V", "c", "N", "s", "M" with its packets, "O",
// "A" and a repeat at a new size; "E" with a few "N" and a "Y"; "h".
struct ModelLogger {
    std::vector<std::vector<uint8_t>> runs;  // frames of each run, header first
    uint8_t family = 2;
    int serial = 4321;
    bool answerH = true;
    int eraseNs = 3;
    bool silentAfterM = false;
    // Transfer number (from 0) -> flip a bit of it.
    std::function<bool(int)> corrupt = [](int) { return false; };
    int transfers = 0;
    std::vector<int> sizes;  // the packet count of each transfer sent

    int pending = 0;  // 's' or 'M' waiting for its byte, 'h' for the trigger
    bool sending = false;
    int run = 0;
    size_t frame = 0;
    int packetCount = 0;
    bool checksum = false;

    void Send(ScriptedSerialPort& port) {
        if (silentAfterM) return;
        std::vector<uint8_t> t;
        const auto& frames = runs[run];
        for (int i = 0; i < packetCount * 32; ++i) {
            const size_t f = frame * 8 + i;
            t.push_back(f < frames.size() ? frames[f] : 0);
        }
        uint8_t x = 0;
        for (uint8_t b : t) x ^= b;
        t.push_back(x);
        t.push_back(0);
        if (corrupt(transfers)) t[17] ^= 0x10;
        ++transfers;
        sizes.push_back(packetCount);
        port.Deliver(t);
    }

    void operator()(ScriptedSerialPort& port, const std::vector<uint8_t>& bytes) {
        for (uint8_t b : bytes) {
            if (pending == 's') {
                packetCount = b;
                port.Deliver(std::vector<uint8_t>{b});
                pending = 0;
            } else if (pending == 'M') {
                run = b;
                frame = 0;
                sending = true;
                pending = 0;
                Send(port);
            } else if (pending == 'h') {
                pending = 0;
            } else if (b == 'V') {
                port.Deliver(
                    std::vector<uint8_t>{family, 1, uint8_t(serial >> 8), uint8_t(serial)});
            } else if (b == 'c') {
                checksum = !checksum;
                port.Deliver(std::string(checksum ? "Y" : "N") + "\r");
            } else if (b == 'N') {
                std::vector<uint8_t> dir;
                uint32_t end = 0;
                for (size_t k = 0; k < runs.size(); ++k) {
                    end += runs[k].size() / 8;
                    const char* time = k == 0 ? "123456" : "?00000";
                    uint8_t rec[13] = {
                        uint8_t(k), uint8_t(end >> 16), uint8_t(end >> 8), uint8_t(end), 0, 0};
                    std::memcpy(rec + 6, time, 6);
                    dir.insert(dir.end(), rec, rec + 13);
                }
                dir.insert(dir.end(), 5, 0);
                port.Deliver(dir);
            } else if (b == 's' || b == 'M') {
                pending = b;
            } else if (b == 'E') {
                for (int i = 0; i < eraseNs; ++i) port.Deliver("N");
                port.Deliver("Y");
            } else if (b == 'h') {
                if (answerH) {
                    port.Deliver(std::vector<uint8_t>{51});
                    pending = 'h';
                }
            } else if (sending && b == 'O') {
                frame += packetCount * 4;
                Send(port);
            } else if (sending && b == 'A') {
                sending = false;
            } else if (sending) {
                packetCount = b;
                Send(port);
            }
        }
    }
};

// The demo road run's frames as the logger holds them: the header frame,
// then the samples.
std::vector<uint8_t> DemoFrames(std::vector<uint8_t>* planeFile = nullptr) {
    const std::string file =
        test::ReadAll(std::string(TRACELAB_SOURCE_DIR) + "/samples/demo_hx40_road.run");
    int32_t n = 0;
    std::memcpy(&n, file.data() + 8, 4);
    std::vector<uint8_t> frames;
    for (int32_t k = 0; k <= n; ++k)
        for (int v = 0; v < 8; ++v) frames.push_back(uint8_t(file[12 + v * (n + 1) + k]));
    if (planeFile) planeFile->assign(file.begin(), file.end());
    return frames;
}

class LinkTest : public EngineTest {
  protected:
    void SetUp() override {
        EngineTest::SetUp();
        ui.secondsPerEvent = 0.001;
        port.onWrite = std::ref(logger);
        SetSerialPort(&port);
        Link().AbortFlag = false;
        Link().deviceOverride = "/dev/pts/99";
    }
    void TearDown() override {
        SetSerialPort(nullptr);
        Link().deviceOverride.clear();
        EngineTest::TearDown();
    }
    DownloadControl Listed() {
        DownloadControl form;
        EXPECT_TRUE(LoadDownloadForm(form));
        return form;
    }
    ScriptedSerialPort port;
    ModelLogger logger;
};

TEST_F(LinkTest, ConnectReadsTheSerialNumberAndRefusesWrongReplies) {
    EXPECT_EQ(ConnectToLogger(), 4321);
    EXPECT_EQ(port.openedDevices.back(), "/dev/pts/99");
    DisconnectFromLogger();
    EXPECT_FALSE(port.IsOpen());

    logger.family = 3;
    EXPECT_EQ(ConnectToLogger(), -1);
    EXPECT_TRUE(ui.Saw(ScriptedEvent::Kind::Message, kWrongFirmware));

    // Five bytes, and three, are wrong replies; the link is closed again.
    for (size_t extra : {1, -1}) {
        port.onWrite = [&](ScriptedSerialPort& p, const std::vector<uint8_t>& b) {
            if (b == std::vector<uint8_t>{'V'}) p.Deliver(std::vector<uint8_t>(4 + extra, 2));
        };
        ui.ClearRecords();
        EXPECT_EQ(ConnectToLogger(), 0);
        EXPECT_TRUE(ui.Saw(ScriptedEvent::Kind::Message, kWrongResponse));
        EXPECT_FALSE(port.IsOpen());
    }
    // A silent device; then a port that never opens gets four tries.
    port.onWrite = nullptr;
    ui.ClearRecords();
    EXPECT_EQ(ConnectToLogger(), 0);
    EXPECT_TRUE(ui.Saw(ScriptedEvent::Kind::Message, kNoResponse));
    port.openAttempts = 0;
    port.openErrors = {5, 5, 5, 5};
    EXPECT_EQ(ConnectToLogger(), 0);
    EXPECT_EQ(port.openAttempts, 4);
    EXPECT_TRUE(ui.Saw(ScriptedEvent::Kind::Message, kPortNotAvailable));
}

TEST_F(LinkTest, TheWaitsLimitRunsFromTheLastByte) {
    ASSERT_GT(ConnectToLogger(), 0);
    const double start = ui.secondsSinceMidnight;
    bool sent = false;
    port.onPoll = [&](ScriptedSerialPort& p) {
        if (!sent && ui.secondsSinceMidnight - start >= 2.9) {
            p.Deliver(std::vector<uint8_t>{1});
            sent = true;
        }
    };
    EXPECT_FALSE(WaitForSerialInput(2));
    EXPECT_NEAR(ui.secondsSinceMidnight - start, 5.9, 0.01);
}

TEST_F(LinkTest, TheDirectoryListsTheRuns) {
    logger.runs = {std::vector<uint8_t>(8 * 500, 1), std::vector<uint8_t>(8 * 1234, 2)};
    DownloadControl form = Listed();
    ASSERT_EQ(form.ListedRunCount, 2);
    EXPECT_EQ(form.runs[0].RunByteLength, 500);
    EXPECT_EQ(form.runs[1].RunByteLength, 1234);
    EXPECT_EQ(form.runs[1].line, "Run: 2  Duration: 12.34 seconds.  ");
    EXPECT_EQ(form.caption, "Select runs to download");

    logger.runs.clear();
    DownloadControl empty;
    EXPECT_FALSE(LoadDownloadForm(empty));
    EXPECT_TRUE(ui.Saw(ScriptedEvent::Kind::Message, kNoData));
}

TEST_F(LinkTest, ACleanDownloadBringsTheDemoRunAndGrowsThePacket) {
    std::vector<uint8_t> file;
    logger.runs = {DemoFrames(&file)};
    SetConfig(Paths().TracelabCfgPath, "PacketCount", 3);  // below 4 starts at 255
    DownloadControl form = Listed();
    form.runs[0].ticked = true;
    test::TempDir out;
    form.runPathOverride = out.path().string();
    ASSERT_TRUE(DownloadEachRunToDisk(form));
    EXPECT_EQ(logger.sizes.front(), 255);
    EXPECT_EQ(Store().RunCount, 0);
    ASSERT_EQ(form.saved.size(), 1u);
    // The saved file: the run's header, an empty first sample (RawData's
    // index at RawStart), then the logger's samples.
    const std::string saved = test::ReadAll(form.saved[0].path);
    int32_t n = 0, savedN = 0;
    std::memcpy(&n, file.data() + 8, 4);
    std::memcpy(&savedN, saved.data() + 8, 4);
    ASSERT_EQ(savedN, n + 1);
    for (int v = 0; v < 8; ++v) {
        const size_t plane = 12 + size_t(v) * (savedN + 1);
        EXPECT_EQ(uint8_t(saved[plane]), file[12 + size_t(v) * (n + 1)]);
        EXPECT_EQ(saved[plane + 1], 0);
        EXPECT_EQ(0, std::memcmp(saved.data() + plane + 2,
                                 file.data() + 12 + size_t(v) * (n + 1) + 1, n - 1))
            << "vector " << v + 1;
    }
    EXPECT_EQ(port.Written().back(), 'A');
    EXPECT_EQ(StoredPacketCount(), 255);
}

TEST_F(LinkTest, GrowthSkipsCommandCodesAndErrorsShrinkAfterThree) {
    logger.runs = {std::vector<uint8_t>(8 * 20000, 7)};
    SetConfig(Paths().TracelabCfgPath, "PacketCount", 69);
    // Transfers 11 and 12..14: a clean eleventh grows to 79 -> 80; then three
    // errors in a row shrink by 4 (76), and so on down to 65 -> 64.
    logger.corrupt = [](int t) { return t >= 12 && t < 12 + 3 * 4; };
    DownloadControl form = Listed();
    form.runs[0].ticked = true;
    ASSERT_TRUE(AdaptiveDownloadRun(form, 1));
    std::vector<int> seen;
    for (int s : logger.sizes)
        if (seen.empty() || seen.back() != s) seen.push_back(s);
    ASSERT_GE(seen.size(), 6u);
    EXPECT_EQ(std::vector<int>(seen.begin(), seen.begin() + 6),
              (std::vector<int>{69, 80, 76, 72, 68, 64}));
    for (int32_t i = Store().RunInfo[1].RawStart + 1; i <= Store().RunInfo[1].RawEnd - 1; i += 997)
        ASSERT_EQ(Store().RawData(i, 3), 7) << i;
}

TEST_F(LinkTest, FailuresLeaveNoRunBehind) {
    logger.runs = {std::vector<uint8_t>(8 * 3000, 9)};
    DownloadControl form = Listed();
    form.runs[0].ticked = true;
    test::TempDir out;
    form.runPathOverride = out.path().string();

    // Five empty transfers in a row end the run.
    logger.silentAfterM = true;
    EXPECT_FALSE(DownloadEachRunToDisk(form));
    EXPECT_EQ(Store().RunCount, 0);
    EXPECT_TRUE(std::filesystem::is_empty(out.path()));

    // A line so bad that the packet falls below 4.
    logger.silentAfterM = false;
    logger.corrupt = [](int) { return true; };
    SetConfig(Paths().TracelabCfgPath, "PacketCount", 12);
    EXPECT_FALSE(DownloadEachRunToDisk(form));
    EXPECT_TRUE(ui.Saw(ScriptedEvent::Kind::Message, kDownloadIncomplete));
    EXPECT_EQ(Store().RunCount, 0);
    EXPECT_EQ(StoredPacketCount(), 12);
    EXPECT_TRUE(std::filesystem::is_empty(out.path()));

    // Abort: the loop leaves at the next poll, "A" ends the sending.
    logger.corrupt = [](int) { return false; };
    const int before = logger.transfers;
    port.onPoll = [&](ScriptedSerialPort&) {
        if (logger.transfers == before + 3) Link().AbortFlag = true;
    };
    EXPECT_FALSE(DownloadEachRunToDisk(form));
    EXPECT_TRUE(ui.Saw(ScriptedEvent::Kind::Message, kDownloadAborted));
    EXPECT_EQ(logger.transfers, before + 3);
    EXPECT_EQ(port.Written().back(), 'A');
    EXPECT_EQ(Store().RunCount, 0);
    EXPECT_TRUE(std::filesystem::is_empty(out.path()));
}

TEST_F(LinkTest, EraseWaitsThroughTheLoggersProgress) {
    logger.eraseNs = 40;
    EXPECT_EQ(EraseLogger(), EraseResult::Erased);
    EXPECT_TRUE(ui.Saw(ScriptedEvent::Kind::Message, kErased));
    port.onWrite = nullptr;
    EXPECT_EQ(EraseLogger(), EraseResult::NotConnected);
}

TEST_F(LinkTest, SetUpOfAnOldLoggerLeavesAutoStartAlone) {
    logger.answerH = false;
    port.onWrite = [&](ScriptedSerialPort& p, const std::vector<uint8_t>& b) {
        if (b == std::vector<uint8_t>{'S'} || b == std::vector<uint8_t>{'l'}) return;
        if (b == std::vector<uint8_t>{'0'}) return p.Deliver("25");
        if (b == std::vector<uint8_t>{'2'}) return p.Deliver(std::vector<uint8_t>{150, 50, 200});
        logger(p, b);
    };
    LoggerSettings s;
    ASSERT_TRUE(LoadLoggerSettings(s));
    EXPECT_EQ(s.channel1Span, 5);
    EXPECT_EQ(s.channel2Span, 12);
    EXPECT_NEAR(s.lower, 3.0f, 1e-5);
    EXPECT_NEAR(s.upper, 9.0f, 1e-5);
    EXPECT_FALSE(s.autoStartEnabled);

    s.upper = 12.0f;
    EXPECT_EQ(CheckLoggerSettings(s), "The digital lower threshold must be greater than 12v");
    s.upper = 11.99f;
    EXPECT_EQ(CheckLoggerSettings(s), "");
    s.upper = s.lower;
    EXPECT_NE(CheckLoggerSettings(s), "");
}

}  // namespace
}  // namespace tl
