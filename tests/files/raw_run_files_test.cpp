// Raw run files: load and save byte for byte in both RawData shapes, the load
// dialog's dispatch and messages, the capacity rule, and damaged files.
#include <signal.h>
#include <sys/resource.h>

#include <filesystem>
#include <fstream>
#include <random>

#include "core/build_profile.h"
#include "core/config_store.h"
#include "files/raw_run_files.h"
#include "files/run_file_builder.h"
#include "files/summary_run_list.h"
#include "road/run_road.h"
#include "store/run_procedures.h"
#include "store/run_store.h"
#include "support/engine_fixture.h"

namespace fs = std::filesystem;
using tl::ScriptedEvent;

namespace tl::test {
namespace {

using Kind = ScriptedEvent::Kind;

class RawFilesTest : public EngineTest {
  protected:
    void SetUp() override {
        EngineTest::SetUp();
        SummaryRuns().Clear();
        SummaryRuns().onChanged = nullptr;
    }
    void TearDown() override {
        SummaryRuns().Clear();
        EngineTest::TearDown();
    }
    std::string Write(const std::string& name, const std::string& bytes) {
        std::string path = root.file(name);
        WriteAll(path, bytes);
        return path;
    }
    // Loads by path as the command line does; the process question is
    // answered No unless told otherwise.
    void Load(const std::string& path) { LoadDataFromFile(path); }
    // The raw file of a run as the saver writes it.
    std::string SaveAndRead(int32_t run, const std::string& name) {
        std::string path = root.file(name);
        EXPECT_TRUE(SaveRawDataToFile(run, path));
        return ReadAll(path);
    }
    std::vector<std::string> Messages() const { return ui.Texts(Kind::Message); }
    // The store as a user could see it, to show that a refusal changed nothing.
    std::string StoreSnapshot() const {
        const RunStore& s = Store();
        std::string out = std::to_string(s.RunCount) + "/" +
                          std::to_string(s.RawData.UpperIndex()) + "/" +
                          std::to_string(s.RunData.UpperRow());
        for (int n = 1; n <= 11; ++n)
            out += "|" + s.RunInfo[n].Name + ":" + std::to_string(s.RunInfo[n].RawStart) + "-" +
                   std::to_string(s.RunInfo[n].RawEnd);
        return out;
    }
};

// --- byte for byte -----------------------------------------------------

TEST_F(RawFilesTest, SimulatedHX40RunsLoadWithTheirTrueRowsAndSaveUnchanged) {
    SimulatedHX40Run lap1 = SimulateHX40(30.0);
    SimulatedHX40Run lap2 = SimulateHX40(12.5, 50000.0);
    ASSERT_GT(lap1.gpsBlocks, 20);
    const std::string file1 = PlaneFile(1, lap1.header, lap1.frames);
    const std::string file2 = PlaneFile(1, lap2.header, lap2.frames);
    Load(Write("silverstone.run", file1));
    Load(Write("2-3-2026_Run#2.run", file2));
    EXPECT_TRUE(Messages().empty());
    EXPECT_EQ(ui.Texts(Kind::YesNo),
              std::vector<std::string>(
                  2, "Do you want to process the raw file automatically once it is loaded?"));

    const RunStore& s = Store();
    ASSERT_EQ(s.RunCount, 2);
    const RunRecord& r1 = s.RunInfo[1];
    const RunRecord& r2 = s.RunInfo[2];
    EXPECT_EQ(r1.Name, "silverstone");
    EXPECT_EQ(r2.Name, "2-3-2026_Run#2");
    const int32_t n1 = static_cast<int32_t>(lap1.frames.size());
    const int32_t n2 = static_cast<int32_t>(lap2.frames.size());
    EXPECT_EQ(r1.RawStart, 0);
    EXPECT_EQ(r1.RawEnd, n1 - 1);
    EXPECT_EQ(r2.RawStart, n1);
    EXPECT_EQ(r2.RawEnd, n1 + n2 - 1);
    EXPECT_EQ(r1.HeaderBytes, lap1.header);
    // The frame rule folds each seven-frame GPS block into one row.
    EXPECT_EQ(r1.RunStart, 1);
    EXPECT_EQ(r1.RunLength, lap1.trueRows);
    EXPECT_EQ(r1.RunEnd, lap1.trueRows);
    EXPECT_EQ(r2.RunStart, r1.RunEnd + 1);
    EXPECT_EQ(r2.RunLength, lap2.trueRows);
    for (int32_t i = 0; i < n2; ++i)
        for (int v = 1; v <= 8; ++v)
            ASSERT_EQ(s.RawData(r2.RawStart + i, v), lap2.frames[i][v - 1]) << i << "," << v;

    EXPECT_TRUE(SameBytes(SaveAndRead(2, "copy2.run"), file2));
    // The last run loaded and saved again, and over a longer file: nothing of
    // the old file stays behind.
    const std::string longer = root.file("longer.run");
    WriteAll(longer, file1 + std::string(5000, '\x55'));
    ASSERT_TRUE(SaveRawDataToFile(2, longer));
    EXPECT_TRUE(SameBytes(ReadAll(longer), file2));
}

TEST_F(RawFilesTest, OneRunSavesExactlyAsLoaded) {
    SimulatedHX40Run run = SimulateHX40(5.0);
    const std::string file = PlaneFile(1, run.header, run.frames);
    Load(Write("one.run", file));
    ASSERT_EQ(Store().RunCount, 1);
    EXPECT_TRUE(SameBytes(SaveAndRead(1, "one-copy.run"), file));
}

TEST_F(RawFilesTest, SV63PlaneFileRoundTripAndTheOldType1FileWithItsWarning) {
    UseProfile(Family::SV63, Vehicle::Car);
    const Frame header{2, 9, 8, 7, 6, 5, 4, 3};
    const std::string file202 = PlaneFile(202, header, PatternFrames(400, 1));
    const std::string file1 = PlaneFile(1, header, PatternFrames(300, 2));
    Load(Write("meter.run", file202));
    EXPECT_TRUE(Messages().empty());
    EXPECT_TRUE(SameBytes(SaveAndRead(1, "meter-copy.run"), file202));
    Load(Write("beta.run", file1));
    EXPECT_EQ(Messages(),
              std::vector<std::string>{
                  "This file is from an old version of the software and is supported for "
                  "backward compatibility with the beta test version of the SV63 "
                  "software, to ensure future compatibility please save the run from "
                  "this version of the software"});
    ASSERT_EQ(Store().RunCount, 2);
    EXPECT_EQ(Store().RunInfo[2].HeaderBytes, header);
    // Growing the planes for a second run loses index 0 of the store (the
    // first sample of run 1), as it always did; the header bytes stay.
    for (int v = 1; v <= 8; ++v) EXPECT_EQ(Store().RawData(0, v), 0) << v;
    EXPECT_EQ(Store().RunInfo[1].HeaderBytes, header);
    // This build writes its own type: the beta file comes back as type 202.
    std::string expected = file1;
    expected[4] = static_cast<char>(202);
    EXPECT_TRUE(SameBytes(SaveAndRead(2, "beta-copy.run"), expected));
}

TEST_F(RawFilesTest, StreamFilesKeepAZeroByteInMemoryAndDropItOnSave) {
    for (Family family : {Family::MQ7, Family::SW63}) {
        UseProfile(family, Vehicle::Kart);
        const int32_t type = family == Family::MQ7 ? 200 : 201;
        std::string stream;
        for (int i = 0; i < 3000; ++i) stream.push_back(static_cast<char>((i * 37 + 11) & 0xFF));
        const std::string file = StreamFile(type, stream);
        const std::string empty = StreamFile(type, "");
        Load(Write("kart.stream.run", file));
        Load(Write("empty.run", empty));
        ASSERT_EQ(Store().RunCount, 2) << FamilyWord(family);
        const RunStore& s = Store();
        const RunRecord& r1 = s.RunInfo[1];
        EXPECT_EQ(r1.Name, "kart");
        EXPECT_EQ(r1.RawStart, 0);
        EXPECT_EQ(r1.RawEnd, 3000);
        EXPECT_EQ(s.RawData(2999), static_cast<uint8_t>(stream[2999]));
        EXPECT_EQ(s.RawData(3000), 0);
        EXPECT_EQ(r1.HeaderBytes, Frame{});
        // The empty stream: RawEnd = RawStart, one zero byte.
        const RunRecord& r2 = s.RunInfo[2];
        EXPECT_EQ(r2.RawStart, 3001);
        EXPECT_EQ(r2.RawEnd, 3001);
        EXPECT_EQ(s.RawData(3001), 0);
        EXPECT_TRUE(SameBytes(SaveAndRead(1, "kart-copy.run"), file));
        EXPECT_TRUE(SameBytes(SaveAndRead(2, "empty-copy.run"), empty));
        EXPECT_TRUE(Messages().empty());
    }
}

TEST_F(RawFilesTest, AStreamRunLoadedAfterADeletionEndsInAZeroByte) {
    UseProfile(Family::MQ7, Vehicle::Car);
    Load(Write("long.run", StreamFile(200, std::string(500, '\xEE'))));
    DeleteRun(1);
    ASSERT_EQ(Store().RunCount, 0);
    // The stream never shrinks: the deleted run's bytes still lie there.
    ASSERT_GE(Store().RawData.UpperIndex(), 500);
    const std::string file = StreamFile(200, std::string(100, '\x11'));
    Load(Write("short.run", file));
    ASSERT_EQ(Store().RunCount, 1);
    EXPECT_EQ(Store().RawData(99), 0x11);
    EXPECT_EQ(Store().RawData(100), 0);
    EXPECT_TRUE(SameBytes(SaveAndRead(1, "short-copy.run"), file));
}

// --- saving ------------------------------------------------------------

TEST_F(RawFilesTest, AFailedSaveLeavesTheOldFileAndNoTemporary) {
    Load(Write("big.run", PlaneFile(1, Frame{}, PatternFrames(4000, 3))));
    const std::string target = root.file("keep.run");
    const std::string good = PlaneFile(1, Frame{}, PatternFrames(50, 4));
    WriteAll(target, good);

    // A file-size limit below the run's size makes the write fail halfway,
    // even for root.
    struct rlimit old {};
    getrlimit(RLIMIT_FSIZE, &old);
    auto oldHandler = signal(SIGXFSZ, SIG_IGN);
    struct rlimit small = old;
    small.rlim_cur = 10000;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    const bool saved = SaveRawDataToFile(1, target);
    setrlimit(RLIMIT_FSIZE, &old);
    signal(SIGXFSZ, oldHandler);

    EXPECT_FALSE(saved);
    EXPECT_EQ(ReadAll(target), good);
    ASSERT_EQ(Messages().size(), 1u);
    EXPECT_NE(Messages()[0].find("The run could not be saved to " + target), std::string::npos);
    for (const auto& entry : fs::directory_iterator(root.path()))
        EXPECT_EQ(entry.path().filename().string().find(".saving-"), std::string::npos)
            << entry.path();
}

TEST_F(RawFilesTest, SaveDialogRetriesALockedFileAndRefusesSessionsAndBadRuns) {
    Load(Write("run.run", PlaneFile(1, Frame{}, PatternFrames(200, 5))));
    const std::string locked = root.file("locked.run");
    WriteAll(locked, "old");
    fs::permissions(locked,
                    fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                    fs::perm_options::remove);
    const std::string fresh = root.file("fresh.run");
    ui.ClearRecords();
    ui.saveAnswers = {locked, fresh};
    SaveDataToFile(1);
    EXPECT_EQ(ui.Count(Kind::SaveDialog), 2);
    EXPECT_EQ(ui.events.front().title, "Save Run Data");
    EXPECT_EQ(Messages(),
              std::vector<std::string>{
                  "File has been locked by another program or is otherwise inaccessible"});
    EXPECT_EQ(ReadAll(locked), "old");
    EXPECT_TRUE(SameBytes(ReadAll(fresh), ReadAll(root.file("run.run"))));

    // Cancel, a run that is not there, and the session file.
    ui.ClearRecords();
    SaveDataToFile(1);
    EXPECT_EQ(ui.Count(Kind::SaveDialog), 1);
    SaveDataToFile(2);
    EXPECT_EQ(ui.Count(Kind::SaveDialog), 1);
    SaveDataToFile(0);
    SaveDataToFile(-1);
    EXPECT_EQ(ui.Count(Kind::SaveDialog), 1);
    EXPECT_EQ(Messages().size(), 2u);
    EXPECT_NE(Messages()[0].find("Session files are not yet supported"), std::string::npos);
}

// --- the load dialog ---------------------------------------------------

TEST_F(RawFilesTest, RefusedFilesBringTheDialogBackAndChangeNothing) {
    Load(Write("good.run", PlaneFile(1, Frame{}, PatternFrames(100, 6))));
    const std::string before = StoreSnapshot();
    const std::string badMagic = Write("photo.2.run", Head(1234, 1) + std::string(40, '\0'));
    const std::string oldType = Write("old.run", Head(7576, 11) + std::string(40, '\0'));
    const std::string raw = Write("raw.run", PlaneFile(1, Frame{}, PatternFrames(10, 7)));
    const std::string session = Write("session.run", Head(7576, 10) + std::string(40, '\0'));
    const std::string tiny = Write("tiny.run", "\x98");
    ui.ClearRecords();
    ui.openAnswers = {{badMagic}, {oldType}, {raw, session}, {tiny}, {root.file("missing.run")}};
    LoadDataFromFile("");
    EXPECT_EQ(ui.Count(Kind::OpenDialog), 6);  // five refusals, then cancel
    EXPECT_EQ(ui.events.front().title, "Load A Run From Disk");
    EXPECT_EQ(Messages(),
              (std::vector<std::string>{
                  "photo is not a recognised run file",
                  oldType + " cannot be loaded, possibly because it is from an old version of the "
                            "software. To load a run from a different version of the software, "
                            "ensure it is saved as a raw data file without any analysis.",
                  "Not all the runs are of the same type", "tiny is not a recognised run file",
                  "missing is not a recognised run file"}));
    EXPECT_EQ(ui.Count(Kind::YesNo), 0);
    EXPECT_EQ(StoreSnapshot(), before);
}

TEST_F(RawFilesTest, AFileOfAnotherFamilyIsSkippedWithTheIncompatibilityMessage) {
    const std::string mq7a = Write("a.run", StreamFile(200, "abc"));
    const std::string mq7b = Write("b.run", StreamFile(200, "def"));
    ui.openAnswers = {{mq7a, mq7b}};
    LoadDataFromFile("");
    const std::string incompatible =
        "This version of the Tracelab software and the Run file are incompatible. This version of "
        "Tracelab if for the HX40, but the run is from a MQ7. Loading will be terminated.";
    EXPECT_EQ(Messages(), (std::vector<std::string>{incompatible, incompatible}));
    EXPECT_EQ(ui.Texts(Kind::YesNo),
              std::vector<std::string>{"Do you want to process raw files as they are loaded?"});
    EXPECT_EQ(Store().RunCount, 0);
    EXPECT_EQ(ui.Count(Kind::OpenDialog), 1);  // a skipped file is no refusal

    EXPECT_TRUE(CheckFileHarwardwareCompatibility(1));
    EXPECT_TRUE(CheckFileHarwardwareCompatibility(10));
    EXPECT_FALSE(CheckFileHarwardwareCompatibility(202));
    EXPECT_FALSE(CheckFileHarwardwareCompatibility(101));
    UseProfile(Family::SW63, Vehicle::Boat);
    EXPECT_TRUE(CheckFileHarwardwareCompatibility(8));
    EXPECT_TRUE(CheckFileHarwardwareCompatibility(201));
    EXPECT_FALSE(CheckFileHarwardwareCompatibility(200));
}

TEST_F(RawFilesTest, SessionFileOnMQ7WithRunsAsksContinueLoadAndChangesNothing) {
    UseProfile(Family::MQ7, Vehicle::Bike);
    Load(Write("first.run", StreamFile(200, std::string(64, 'x'))));
    const std::string before = StoreSnapshot();
    const std::string session = Write("whole day.run", Head(7576, 7) + std::string(100, '\0'));
    ui.ClearRecords();
    ui.openAnswers = {{session}, {session}};
    ui.yesNoAnswers = {false, true};
    LoadDataFromFile("");
    // No brings the dialog back; Yes goes on to a session load, which this
    // version does not do yet.
    EXPECT_EQ(ui.Texts(Kind::YesNo),
              std::vector<std::string>(2, "Loading " + session +
                                              " will overwrite all the existing data and analysis "
                                              "do you wish to continue?"));
    for (const ScriptedEvent& e : ui.events)
        if (e.kind == Kind::YesNo) {
            EXPECT_EQ(e.title, "Continue Load");
        }
    EXPECT_EQ(ui.Count(Kind::OpenDialog), 2);
    ASSERT_EQ(Messages().size(), 1u);
    EXPECT_NE(Messages()[0].find("Session files are not yet supported"), std::string::npos);
    EXPECT_EQ(StoreSnapshot(), before);
}

TEST_F(RawFilesTest, ThreeFilesCountAsTwoAgainstTheLimitOfTenRuns) {
    std::vector<std::string> three;
    for (int i = 0; i < 3; ++i)
        three.push_back(
            Write("m" + std::to_string(i) + ".run", PlaneFile(1, Frame{}, PatternFrames(20, i))));
    for (int i = 0; i < 8; ++i)
        Load(Write("r" + std::to_string(i) + ".run", PlaneFile(1, Frame{}, PatternFrames(20, i))));
    ASSERT_EQ(Store().RunCount, 8);
    ui.ClearRecords();
    ui.openAnswers = {three};
    LoadDataFromFile("");
    EXPECT_EQ(Messages(),
              std::vector<std::string>{"You cannot load all these runs, it would exceed "
                                       "the maximum number of runs allowed"});
    EXPECT_EQ(Store().RunCount, 8);

    DeleteRun(8);
    ASSERT_EQ(Store().RunCount, 7);
    ui.ClearRecords();
    ui.openAnswers = {three};
    LoadDataFromFile("");
    EXPECT_TRUE(Messages().empty());
    ASSERT_EQ(Store().RunCount, 10);
    EXPECT_EQ(Store().RunInfo[10].Name, "m2");
    EXPECT_EQ(Store().RunInfo[10].RawEnd, Store().RunInfo[9].RawEnd + 20);

    // The eleventh run is refused, by the dialog and by a loader called alone.
    const std::string before = StoreSnapshot();
    Load(three[0]);
    EXPECT_FALSE(LoadRawDataFromFileHX40(three[0]));
    EXPECT_EQ(Messages().size(), 2u);
    EXPECT_EQ(StoreSnapshot(), before);
}

TEST_F(RawFilesTest, OneYesProcessesEveryRunOfTheSelectionAsItLoads) {
    SimulatedHX40Run lap = SimulateHX40(4.0);
    const std::string a = Write("first.run", PlaneFile(1, lap.header, lap.frames));
    const std::string b = Write("second.run", PlaneFile(1, lap.header, lap.frames));
    ui.openAnswers = {{a, b}};
    ui.yesNoAnswers = {true};
    LoadDataFromFile("");
    ASSERT_EQ(Store().RunCount, 2);
    EXPECT_EQ(ui.Texts(Kind::YesNo),
              std::vector<std::string>{"Do you want to process raw files as they are loaded?"});
    // Each run is allocated before it is converted, in the order loaded.
    EXPECT_EQ(ui.Texts(Kind::ProgressCaption),
              (std::vector<std::string>{"Processing: first", "Processing: second"}));
    EXPECT_EQ(Store().RunInfo[2].RunLength, lap.trueRows);
    // The forms are back on, the wait form gone.
    EXPECT_FALSE(ui.IsWaitShown());
}

TEST_F(RawFilesTest, ANulSeparatedSelectionNamesTheDirectoryFirst) {
    Write("x.run", PlaneFile(1, Frame{}, PatternFrames(30, 1)));
    Write("y.run", PlaneFile(1, Frame{}, PatternFrames(40, 2)));
    LoadDataFromFile(root.path().string() + std::string("\0x.run\0y.run", 12));
    ASSERT_EQ(Store().RunCount, 2);
    EXPECT_EQ(Store().RunInfo[1].Name, "x");
    EXPECT_EQ(Store().RunInfo[2].RawEnd, 69);
    EXPECT_EQ(ui.events.front().title, "Process Files");
}

TEST_F(RawFilesTest, LoadLogsItsStepsWhenDebugging) {
    Profile().DebugFlag = true;
    Load(Write("a.b.run", PlaneFile(1, Frame{}, PatternFrames(25, 1))));
    Profile().DebugFlag = false;
    ASSERT_EQ(Store().RunInfo[1].Name, "a");
    const std::string log = ReadAll(Paths().LogPath);
    size_t at = 0;
    for (const char* line : {"Load a data file from disk\r\n", "Checking suitability of file : ",
                             "Returned: 7576   1\r\n", "now loading the files....\r\n",
                             "Check the hardware cmpatibility", "File type match\r\n",
                             "Loading a raw data file from disk\r\n", "file Length: 25\r\n",
                             "allocate sufficient space in the raw data array\r\n",
                             "load the new data into the raw data array\r\n",
                             "dont preprocess, but allocate memory in the run data array\r\n"}) {
        size_t found = log.find(line, at);
        ASSERT_NE(found, std::string::npos) << line << "\n" << log;
        at = found;
    }
}

// --- damaged files -----------------------------------------------------

TEST_F(RawFilesTest, DamagedPlaneFilesAreRefusedBeforeAnythingIsAllocated) {
    Load(Write("good.run", PlaneFile(1, Frame{}, PatternFrames(100, 6))));
    const std::string before = StoreSnapshot();
    auto withCount = [](int32_t n, size_t body) {
        std::string f = Head(7576, 1);
        PutInt32(f, n);
        return f + std::string(body, '\x01');
    };
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"negative.run", withCount(-5, 100)},
        {"huge.run", withCount(2000000000, 100)},
        {"claims.run", withCount(1000000, 800)},
        {"headonly.run", Head(7576, 1)},
    };
    for (const auto& [name, bytes] : cases) {
        ui.ClearRecords();
        Load(Write(name, bytes));
        ASSERT_EQ(Messages().size(), 1u) << name;
        EXPECT_NE(Messages()[0].find("is damaged and cannot be loaded"), std::string::npos)
            << Messages()[0];
        EXPECT_EQ(StoreSnapshot(), before) << name;
    }
}

TEST_F(RawFilesTest, APlaneFileAFewBytesShortLoadsWithZeros) {
    const std::vector<Frame> frames = PatternFrames(1000, 9);
    std::string file = PlaneFile(1, Frame{1, 2, 3, 4, 5, 6, 7, 8}, frames);
    file.resize(file.size() - 10);
    Load(Write("short.run", file));
    ASSERT_EQ(Store().RunCount, 1);
    const RunStore& s = Store();
    EXPECT_EQ(s.RunInfo[1].RawEnd, 999);
    EXPECT_EQ(s.RawData(989, 8), frames[989][7]);
    for (int i = 990; i < 1000; ++i) EXPECT_EQ(s.RawData(i, 8), 0) << i;
    EXPECT_EQ(s.RawData(999, 7), frames[999][6]);
}

TEST_F(RawFilesTest, AStreamFileShorterThanItsHeadIsRefused) {
    UseProfile(Family::MQ7, Vehicle::Car);
    const std::string before = StoreSnapshot();
    // Magic and the first byte of type 200: the missing bytes read as zero.
    Load(Write("cut.run", std::string("\x98\x1d\x00\x00\xc8", 5)));
    ASSERT_EQ(Messages().size(), 1u);
    EXPECT_NE(Messages()[0].find("cut is damaged"), std::string::npos) << Messages()[0];
    EXPECT_EQ(StoreSnapshot(), before);
}

TEST_F(RawFilesTest, MangledFilesNeverBreakTheStore) {
    // Valid files of every family, cut short, lengthened and with bytes of
    // the head and counts overwritten at random: each either loads within
    // the store's arrays or is refused.
    std::mt19937 random(20261122);
    const SimulatedHX40Run lap = SimulateHX40(3.0);
    const std::vector<std::pair<Family, std::string>> originals = {
        {Family::HX40, PlaneFile(1, lap.header, lap.frames)},
        {Family::SV63, PlaneFile(202, Frame{3, 0, 0, 0, 0, 0, 0, 0}, PatternFrames(500, 1))},
        {Family::MQ7, StreamFile(200, std::string(700, '\x42'))},
        {Family::SW63, StreamFile(201, std::string(90, '\x17'))},
    };
    for (const auto& [family, original] : originals) {
        UseProfile(family, Vehicle::Car);
        for (int round = 0; round < 60; ++round) {
            std::string bytes = original;
            switch (round % 4) {
                case 0:
                    bytes.resize(random() % (bytes.size() + 1));
                    break;
                case 1:
                    bytes += std::string(random() % 3000, '\x7f');
                    break;
                default:
                    for (int k = 0; k < 3; ++k)
                        bytes[random() % std::min<size_t>(bytes.size(), 16)] =
                            static_cast<char>(random());
            }
            if (Store().RunCount >= 8) UseProfile(family, Vehicle::Car);
            Load(Write("mangled.run", bytes));
            const RunStore& s = Store();
            ASSERT_LE(s.RunCount, kMaxRunsLoaded);
            for (int n = 1; n <= s.RunCount; ++n) {
                ASSERT_LE(s.RunInfo[n].RawEnd, s.RawData.UpperIndex())
                    << FamilyWord(family) << round;
                ASSERT_GE(s.RunInfo[n].RawStart, 0);
            }
        }
    }
}

TEST_F(RawFilesTest, SummaryRunsJoinTheListAndTellTheWindow) {
    UseProfile(Family::SV63, Vehicle::Car);
    int rebuilt = 0;
    SummaryRuns().onChanged = [&] { ++rebuilt; };
    std::vector<uint8_t> block(kSummaryRunBytes);
    for (size_t i = 0; i < block.size(); ++i) block[i] = static_cast<uint8_t>(i * 3);
    block[0] = 3;  // a quarter mile
    const std::string path = root.file("quarter.run");
    std::string error;
    ASSERT_TRUE(WriteSummaryRunFile(path, block, error)) << error;
    EXPECT_EQ(ReadAll(path).size(), 12u + kSummaryRunBytes);
    Load(path);
    ASSERT_EQ(SummaryRuns().Runs.size(), 1u);
    EXPECT_EQ(SummaryRuns().Runs[0].Name, "quarter");
    EXPECT_EQ(SummaryRuns().Runs[0].Bytes, block);
    EXPECT_EQ(rebuilt, 1);
    EXPECT_EQ(Store().RunCount, 0);

    std::string bad = Head(7576, 101);
    PutInt32(bad, -2);
    Load(Write("bad.run", bad));
    EXPECT_EQ(SummaryRuns().Runs.size(), 1u);
    ASSERT_EQ(Messages().size(), 1u);
    EXPECT_NE(Messages()[0].find("bad is damaged"), std::string::npos);
}

}  // namespace
}  // namespace tl::test
