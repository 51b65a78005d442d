// The CSV exports: the number form, the sample step, the time-of-day stamps,
// the dialogs around the file, and whole exports of converted runs read back
// against the rows in memory and the simulation's truth.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "files/csv_export.h"
#include "files/raw_run_files.h"
#include "road/convert_driver.h"
#include "road/run_road.h"
#include "run_file_builder.h"
#include "store/catalogue.h"
#include "store/run_procedures.h"
#include "store/run_store.h"
#include "support/engine_fixture.h"

namespace tl::test {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> out;
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find("\r\n", start);
        if (end == std::string::npos) {
            out.push_back(text.substr(start));
            break;
        }
        out.push_back(text.substr(start, end - start));
        start = end + 2;
    }
    return out;
}

std::vector<std::string> Fields(const std::string& line) {
    std::vector<std::string> out;
    std::stringstream in(line);
    std::string f;
    while (std::getline(in, f, ',')) out.push_back(f);
    return out;
}

int EnabledCount() {
    int n = 0;
    for (int s = 1; s <= kNoDataSlot; ++s) n += Catalogue().RunVars[s].Enabled ? 1 : 0;
    return n;
}

TEST(PlainNumberText, PrintsSingleAsTheOriginalRuntimeDid) {
    EXPECT_EQ(PlainNumberText(0.0f), " 0 ");
    EXPECT_EQ(PlainNumberText(-0.0f), " 0 ");
    EXPECT_EQ(PlainNumberText(1.5f), " 1.5 ");
    EXPECT_EQ(PlainNumberText(-0.25f), "-.25 ");
    EXPECT_EQ(PlainNumberText(100.0f), " 100 ");
    EXPECT_EQ(PlainNumberText(1234567.0f), " 1234567 ");
    EXPECT_EQ(PlainNumberText(12345678.0f), " 1.234568E+07 ");
    EXPECT_EQ(PlainNumberText(9999999.6f), " 1E+07 ");
    EXPECT_EQ(PlainNumberText(0.0001f), " .0001 ");
    EXPECT_EQ(PlainNumberText(0.00001f), " 1E-05 ");
    EXPECT_EQ(PlainNumberText(-2.5e-7f), "-2.5E-07 ");
    EXPECT_EQ(PlainNumberText(6352.9412f), " 6352.941 ");
    EXPECT_EQ(PlainNumberText(1.0f / 3.0f), " .3333333 ");
    // Every finite single reads back to within its seventh digit.
    for (float v : {3.14159265f, -1234.5678f, 1e-3f, 5.5e20f, -7.77e-12f, 0.1f}) {
        const float back = std::strtof(PlainNumberText(v).c_str(), nullptr);
        EXPECT_NEAR(back, v, std::fabs(v) * 6e-7f) << PlainNumberText(v);
    }
}

TEST(ExportStep, IsHundredthsOfTheSampleTimeRoundedDown) {
    EXPECT_EQ(ExportStepFromText("0.01"), 1);
    EXPECT_EQ(ExportStepFromText("0.014"), 1);
    EXPECT_EQ(ExportStepFromText("0.005"), 0);
    EXPECT_EQ(ExportStepFromText("0,02"), 2);  // a comma is read as the point
    EXPECT_EQ(ExportStepFromText("0.5"), 50);
    EXPECT_EQ(ExportStepFromText("-1"), 0);
    EXPECT_EQ(ExportStepFromText("fast"), 0);
    EXPECT_EQ(ExportStepFromText(""), 0);
}

TEST(TimeOfDay, ConvertsBothWaysAndWrapsAtMidnight) {
    EXPECT_DOUBLE_EQ(Time2Seconds(123456.78), 12 * 3600 + 34 * 60 + 56.78);
    EXPECT_DOUBLE_EQ(Time2Seconds(0), 0);
    EXPECT_DOUBLE_EQ(Time2Seconds(240010), 10);  // hour 24 is hour 0
    EXPECT_NEAR(Seconds2Time(12 * 3600 + 34 * 60 + 56.78), 123456.78, 1e-9);
    EXPECT_NEAR(Seconds2Time(86400 + 3600 + 61.5), 10101.5, 1e-9);
    EXPECT_NEAR(Seconds2Time(86399.99), 235959.99, 1e-6);
    for (double t : {0.0, 59.99, 3600.0, 45296.25, 86399.0})
        EXPECT_NEAR(Time2Seconds(Seconds2Time(t)), t, 1e-6);
}

class CsvExportTest : public EngineTest {
  protected:
    // Loads a run file (the process question answered No) and converts it.
    void LoadAndConvert(const std::string& path, bool derived) {
        const int32_t before = Store().RunCount;
        LoadDataFromFile(path);
        ASSERT_EQ(Store().RunCount, before + 1) << path;
        ConvertRawToRunData(Store().RunCount, derived);
    }
    std::string Sample(const std::string& name) {
        return std::string(TRACELAB_SOURCE_DIR) + "/samples/" + name;
    }
    // Runs the export dialog with the given file and sample time answers.
    void Export(const std::string& target, std::optional<std::string> sampleTime,
                bool stamp = false) {
        ui.saveAnswers.push_back(target);
        if (fs::exists(target)) ui.yesNoAnswers.push_back(true);  // over written, sure
        ui.inputAnswers.push_back(sampleTime);
        if (stamp)
            ExportDataToFileWithTimeStamp(1);
        else
            ExportDataToFile(1);
    }
    bool Shown(ScriptedEvent::Kind kind, const std::string& text) {
        for (const auto& e : ui.events)
            if (e.kind == kind && (e.text.find(text) != std::string::npos || e.title == text))
                return true;
        return false;
    }
};

TEST_F(CsvExportTest, ConvertedDemoRunExportsEveryRowAndAgreesWithTheTruth) {
    UseProfile(Family::HX40, Vehicle::Car);
    LoadAndConvert(Sample("demo_hx40_road.run"), false);
    const RunRecord& r = Store().RunInfo[1];
    const std::string out = root.file("demo.csv");
    Export(out, "0.014");  // step 1: every row

    ASSERT_TRUE(Shown(ScriptedEvent::Kind::SaveDialog, "Export Data To CSV Format File"));
    ASSERT_TRUE(Shown(ScriptedEvent::Kind::InputBox, "Sample Time"));
    EXPECT_TRUE(Shown(ScriptedEvent::Kind::WaitShown, "Exporting Data To .CSV File"));
    const std::vector<std::string> lines = Lines(ReadAll(out));
    ASSERT_EQ(lines.size(), static_cast<size_t>(r.RunEnd - r.RunStart + 1 + 2));
    EXPECT_EQ(lines[0].rfind("Data Output From Velquor Data Logging System ", 0), 0u);
    for (size_t i = 1; i < lines.size(); ++i) ASSERT_EQ(lines[i].back(), ',') << "line " << i;

    // The header names the enabled slots in slot order.
    std::vector<int> slots;
    for (int s = 1; s <= kNoDataSlot; ++s)
        if (Catalogue().RunVars[s].Enabled) slots.push_back(s);
    const auto header = Fields(lines[1]);
    ASSERT_EQ(header.size(), slots.size());
    for (size_t c = 0; c < slots.size(); ++c)
        EXPECT_EQ(header[c], Catalogue().RunVars[slots[c]].Name);

    // Each value reads back as the single in memory.
    size_t timeCol = 0, longCol = header.size();
    for (size_t c = 0; c < slots.size(); ++c)
        if (slots[c] == slot::AccelLong) longCol = c;
    ASSERT_LT(longCol, header.size());
    for (int32_t row = r.RunStart; row <= r.RunEnd; row += 997) {
        const auto f = Fields(lines[static_cast<size_t>(row - r.RunStart + 2)]);
        ASSERT_EQ(f.size(), slots.size());
        for (size_t c = 0; c < slots.size(); ++c) {
            const float v = RunData(row, ColumnOf(slots[c]));
            EXPECT_NEAR(std::strtof(f[c].c_str(), nullptr), v, std::fabs(v) * 6e-7f + 1e-30f)
                << "row " << row << " " << header[c];
        }
        EXPECT_NEAR(std::strtof(f[timeCol].c_str(), nullptr), (row - r.RunStart) * 0.01, 1e-4);
    }

    // The longitudinal acceleration of the export follows the simulation:
    // one line of the truth per row, same index.
    std::ifstream truth(Sample("demo_hx40_road.truth.csv"));
    std::string t;
    std::getline(truth, t);
    double sumErr = 0;
    int n = 0;
    for (int32_t row = r.RunStart; std::getline(truth, t) && row <= r.RunEnd; ++row) {
        const auto tf = Fields(t);
        const auto ef = Fields(lines[static_cast<size_t>(row - r.RunStart + 2)]);
        sumErr += std::fabs(std::strtod(tf[8].c_str(), nullptr) -
                            std::strtod(ef[longCol].c_str(), nullptr));
        ++n;
    }
    ASSERT_GT(n, 1000);
    // Noise 0.01 g, bias 0.015 g and the 1/256 g resolution of the logger.
    EXPECT_LT(sumErr / n, 0.05);
}

TEST_F(CsvExportTest, SampleTimeChoosesTheRowsAndARefusedOneLeavesTheFileEmpty) {
    UseProfile(Family::SV63, Vehicle::Kart);
    LoadAndConvert(Sample("demo_sv63_kart.run"), true);
    const RunRecord& r = Store().RunInfo[1];
    const std::string out = root.file("step.csv");
    Export(out, "0.5");
    auto lines = Lines(ReadAll(out));
    const size_t rows = static_cast<size_t>((r.RunEnd - r.RunStart) / 50 + 1);
    ASSERT_EQ(lines.size(), rows + 2);
    // The rows are RunStart, RunStart + 50, ...: the time column steps by 0.5 s.
    EXPECT_NEAR(std::strtof(Fields(lines[3])[0].c_str(), nullptr) -
                    std::strtof(Fields(lines[2])[0].c_str(), nullptr),
                0.5, 1e-4);
    EXPECT_EQ(static_cast<int>(Fields(lines[1]).size()), EnabledCount());

    // 0.005 and a cancelled box: the file exists and is empty, replacing the
    // export above as the original's open for output did.
    Export(out, "0.005");
    EXPECT_TRUE(fs::exists(out));
    EXPECT_EQ(fs::file_size(out), 0u);
    Export(root.file("cancelled.csv"), std::nullopt);
    EXPECT_TRUE(fs::exists(root.file("cancelled.csv")));
    EXPECT_EQ(fs::file_size(root.file("cancelled.csv")), 0u);
}

TEST_F(CsvExportTest, DialogAsksBeforeOverwritingAndRefusesALockedFile) {
    UseProfile(Family::MQ7, Vehicle::Kart);
    LoadAndConvert(Sample("demo_mq7_kart.run"), false);
    const std::string out = root.file("kept.csv");
    WriteAll(out, "precious");

    // No to the overwrite question brings the dialog back; cancel ends it.
    ui.saveAnswers.push_back(out);
    ui.yesNoAnswers.push_back(false);
    ExportDataToFile(1);
    EXPECT_TRUE(Shown(ScriptedEvent::Kind::YesNo,
                      "The specified file will be over written, are you sure?"));
    EXPECT_EQ(ReadAll(out), "precious");

    // A file that cannot be written: the message, and back to the dialog.
    fs::permissions(out, fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                    fs::perm_options::remove);
    ui.ClearRecords();
    ui.saveAnswers.push_back(out);
    ui.yesNoAnswers.push_back(true);
    ExportDataToFile(1);
    EXPECT_TRUE(Shown(ScriptedEvent::Kind::Message,
                      "The file appears to be locked by another application"));
    int dialogs = 0;
    for (const auto& e : ui.events) dialogs += e.kind == ScriptedEvent::Kind::SaveDialog;
    EXPECT_EQ(dialogs, 2);
    EXPECT_EQ(ReadAll(out), "precious");

    // Yes on a writable file replaces it.
    fs::permissions(out, fs::perms::owner_write, fs::perm_options::add);
    ui.saveAnswers.push_back(out);
    ui.yesNoAnswers.push_back(true);
    ui.inputAnswers.push_back("1");
    ExportDataToFile(1);
    const auto lines = Lines(ReadAll(out));
    const RunRecord& r = Store().RunInfo[1];
    EXPECT_EQ(lines.size(), static_cast<size_t>((r.RunEnd - r.RunStart) / 100 + 1 + 2));

    // A path the writer cannot reach: an error, no file.
    std::string error;
    EXPECT_FALSE(WriteProcessedCsv(1, root.file("missing/dir/x.csv"), 1, false, error));
    EXPECT_FALSE(error.empty());
    EXPECT_FALSE(WriteProcessedCsv(2, root.file("x.csv"), 1, false, error));
    EXPECT_FALSE(fs::exists(root.file("x.csv")));
}

TEST_F(CsvExportTest, TimeStampsCountFromTheFirstGoodFixAndWrapAtMidnight) {
    UseProfile(Family::HX40, Vehicle::Car);
    // Fixes once a second; the clock of the first is startClock + 1 s, in
    // whole seconds, taken at row 100 of the run.
    struct Case {
        double clock;
        const char* first;
        const char* later;  // the row 150 s after the first
    };
    for (const Case c :
         {Case{43200.5, "120000.00", "120230.00"}, Case{86399.5, "235959.00", "229.00"}}) {
        ClearCurrentRun(true);
        const SimulatedHX40Run sim = SimulateHX40(200.0, c.clock);
        const std::string file = root.file("stamp.run");
        WriteAll(file, PlaneFile(kFileTypeRawHX40, sim.header, sim.frames));
        LoadAndConvert(file, false);
        const std::string out = root.file("stamp.csv");
        Export(out, "0.01", true);
        const auto lines = Lines(ReadAll(out));
        ASSERT_GT(lines.size(), 15002u);
        EXPECT_EQ(lines[1].rfind(",Time [s],", 0), 0u) << lines[1];
        EXPECT_EQ(Fields(lines[2])[0], c.first);
        EXPECT_EQ(Fields(lines[2 + 15000])[0], c.later);
        EXPECT_EQ(Fields(lines[3])[0].substr(Fields(lines[3])[0].size() - 3), ".01");
        EXPECT_EQ(Fields(lines[2]).size(), static_cast<size_t>(EnabledCount() + 1));
    }
}

TEST_F(CsvExportTest, RunsWithoutAGoodFixStampFromTheFirstBlockOrZero) {
    UseProfile(Family::HX40, Vehicle::Car);
    // Frames with no GPS marker at all: no block, the stamps count from 0.
    const std::string file = root.file("nogps.run");
    WriteAll(file, PlaneFile(kFileTypeRawHX40, {1, 0, 0, 0, 0, 0, 0, 0}, PatternFrames(500, 3)));
    LoadAndConvert(file, false);
    EXPECT_EQ(CalculateRunStartTime(1), 0.0);
    EXPECT_EQ(CalculateRunStartTime(7), 0.0);
}

TEST_F(CsvExportTest, RawExportListsEveryByteOfEveryRun) {
    UseProfile(Family::HX40, Vehicle::Car);
    const std::string a = root.file("a.run"), b = root.file("b.run");
    WriteAll(a, PlaneFile(kFileTypeRawHX40, {1, 2, 3, 4, 5, 6, 7, 8}, PatternFrames(40, 1)));
    WriteAll(b, PlaneFile(kFileTypeRawHX40, {0, 0, 0, 0, 0, 0, 0, 0}, PatternFrames(25, 2)));
    LoadDataFromFile(a);
    LoadDataFromFile(b);
    ASSERT_EQ(Store().RunCount, 2);
    const std::string out = root.file("raw.csv");
    ui.saveAnswers.push_back(out);
    ExportRawDataToFile();
    EXPECT_TRUE(Shown(ScriptedEvent::Kind::SaveDialog, "Export Raw Data To CSV Format File"));
    EXPECT_TRUE(Shown(ScriptedEvent::Kind::WaitShown, "Exporting Raw Data To .CSV File"));
    const auto lines = Lines(ReadAll(out));
    const RunStore& s = Store();
    size_t expected = 1;
    for (int run = 1; run <= 2; ++run)
        expected += 1 + static_cast<size_t>(s.RunInfo[run].RawEnd - s.RunInfo[run].RawStart + 1);
    ASSERT_EQ(lines.size(), expected);
    EXPECT_EQ(lines[0].rfind("Raw Data Output From Velquor Data Logging System ", 0), 0u);
    EXPECT_EQ(lines[1], "Run Name: a");
    const int32_t i = s.RunInfo[1].RawStart + 5;
    std::string want;
    for (int v = 1; v <= 8; ++v) want += std::to_string(s.RawData(i, v)) + ",";
    EXPECT_EQ(lines[2 + 5], want);
    EXPECT_EQ(lines[2 + static_cast<size_t>(s.RunInfo[1].RawEnd - s.RunInfo[1].RawStart + 1)],
              "Run Name: b");
}

TEST_F(CsvExportTest, RawExportOfAStreamShowsIndexDecimalAndHex) {
    UseProfile(Family::MQ7, Vehicle::Kart);
    std::string bytes;
    for (int k = 0; k < 300; ++k) bytes.push_back(static_cast<char>(k * 37 + 11));
    const std::string file = root.file("s.run");
    WriteAll(file, StreamFile(kFileTypeRawMQ7, bytes));
    LoadDataFromFile(file);
    ASSERT_EQ(Store().RunCount, 1);
    std::string error;
    const std::string out = root.file("s.csv");
    ASSERT_TRUE(WriteRawCsv(out, error)) << error;
    const auto lines = Lines(ReadAll(out));
    const RunRecord& r = Store().RunInfo[1];
    ASSERT_EQ(lines.size(), static_cast<size_t>(r.RawEnd - r.RawStart + 1 + 2));
    EXPECT_EQ(lines[1], "Run Name: s");
    // Byte 0 is 11 (B), byte 1 is 48 (30), byte 7 is 270 & 255 = 14 (E).
    EXPECT_EQ(lines[2], std::to_string(r.RawStart) + " -> 11 : B");
    EXPECT_EQ(lines[3], std::to_string(r.RawStart + 1) + " -> 48 : 30");
    EXPECT_EQ(lines[9], std::to_string(r.RawStart + 7) + " -> 14 : E");
}

}  // namespace
}  // namespace tl::test
