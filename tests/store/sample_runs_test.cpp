// The demo runs of the simulator, loaded as raw files: the rows the store
// allocates must be the rows of the simulation's ground truth, and a trim to
// one lap must keep exactly that lap's rows.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <sstream>

#include "core/build_profile.h"
#include "core/support.h"
#include "files/raw_run_files.h"
#include "road/run_road.h"
#include "store/catalogue.h"
#include "store/run_procedures.h"
#include "store/run_store.h"
#include "support/engine_fixture.h"

namespace tl::test {
namespace {

std::string SamplePath(const std::string& name) {
    return std::string(TRACELAB_SOURCE_DIR) + "/samples/" + name;
}

int32_t TruthRows(const std::string& name) {
    std::ifstream in(SamplePath(name + ".truth.csv"));
    int32_t lines = 0;
    for (std::string line; std::getline(in, line);)
        if (!line.empty()) ++lines;
    return lines - 1;  // the header
}

// The rows of the start/finish line crossings, in order.
std::vector<int32_t> LineRows(const std::string& name) {
    std::ifstream in(SamplePath(name + ".laps.csv"));
    std::vector<int32_t> rows;
    std::string line;
    std::getline(in, line);
    while (std::getline(in, line)) {
        std::stringstream s(line);
        std::string event, beacon, time, row;
        std::getline(s, event, ',');
        std::getline(s, beacon, ',');
        std::getline(s, time, ',');
        std::getline(s, row, ',');
        if (event == "line") rows.push_back(static_cast<int32_t>(GetVal_NI(row)));
    }
    return rows;
}

// One column of the truth, by its header name.
std::vector<double> TruthColumn(const std::string& name, const std::string& column) {
    std::ifstream in(SamplePath(name + ".truth.csv"));
    std::string line;
    std::getline(in, line);
    int index = -1, i = 0;
    std::stringstream head(line);
    for (std::string field; std::getline(head, field, ','); ++i)
        if (field == column) index = i;
    std::vector<double> values;
    while (std::getline(in, line)) {
        std::stringstream s(line);
        std::string field;
        for (int k = 0; k <= index; ++k) std::getline(s, field, ',');
        values.push_back(GetVal_NI(field));
    }
    return values;
}

struct Sample {
    const char* name;
    Family family;
    Vehicle vehicle;
};

class SampleRunsTest : public EngineTest, public ::testing::WithParamInterface<Sample> {
  protected:
    int32_t Load() {
        const Sample& s = GetParam();
        UseProfile(s.family, s.vehicle);
        const std::string path = SamplePath(std::string(s.name) + ".run");
        const bool plane = s.family == Family::HX40 || s.family == Family::SV63;
        EXPECT_TRUE(plane ? LoadRawDataFromFileHX40(path) : LoadRawDataFromFileMQ7(path));
        EXPECT_EQ(Store().RunCount, 1);
        AllocateRunArray(1);
        return 1;
    }
};

TEST_P(SampleRunsTest, AllocatedRowsMatchTheSimulation) {
    Load();
    const RunRecord& r = Store().RunInfo[1];
    EXPECT_EQ(r.RunStart, 1);
    EXPECT_EQ(r.RunLength, TruthRows(GetParam().name));
    EXPECT_EQ(Store().RunData.UpperRow(), r.RunEnd);
    EXPECT_EQ(Store().RunData.Columns(), Catalogue().NumVars);
}

TEST_P(SampleRunsTest, TrimToTheFirstTimedLapKeepsItsRows) {
    const Sample& sample = GetParam();
    Load();
    const std::vector<int32_t> lines = LineRows(sample.name);
    ASSERT_GE(lines.size(), 3u);
    // Rows are 0.01 s apart from row 0 of the truth = the run's first row.
    const double start = lines[1] / 100.0, end = (lines[2] - 1) / 100.0;
    char startText[32], endText[32];
    std::snprintf(startText, sizeof startText, "%.2f", start);
    std::snprintf(endText, sizeof endText, "%.2f", end);
    ASSERT_EQ(TrimRun(1, startText, endText), TrimResult::Done);
    const RunRecord& r = Store().RunInfo[1];
    const int32_t lapRows = lines[2] - lines[1];
    const bool stream = sample.family == Family::MQ7 || sample.family == Family::SW63;
    if (sample.family == Family::SV63) {
        // The meter's frames hold several rows: the window is rounded out to
        // whole frames.
        const int step = r.HeaderBytes[0] == 0 || r.HeaderBytes[0] >= 21 ? 1 : r.HeaderBytes[0];
        EXPECT_GE(r.RunLength, lapRows);
        EXPECT_LE(r.RunLength, lapRows + 2 * step);
        EXPECT_EQ(r.RunLength % step, 0);
    } else {
        EXPECT_EQ(r.RunLength, lapRows);
    }
    // The byte stream never shrinks; the planes end with the last run.
    if (stream)
        EXPECT_GT(Store().RawData.UpperIndex(), r.RawEnd);
    else
        EXPECT_EQ(Store().RawData.UpperIndex(), r.RawEnd);
    EXPECT_EQ(Store().RunData.UpperRow(), r.RunEnd);
    if (stream) {
        // Counted again from the trimmed bytes, the stream gives the lap's
        // rows: the scan's raw marks cut the stream at the right records.
        ReprocessAllRuns();
        EXPECT_NEAR(r.RunLength, lapRows, 2);
    }
    if (sample.family != Family::HX40) return;

    // Converted again, the trimmed run's lateral acceleration lines up with
    // the truth from the lap's first row: the trim kept the right frames.
    ReprocessAllRuns();
    const std::vector<double> truth = TruthColumn(sample.name, "accel_lat_g");
    const int32_t column = ColumnOf(slot::AccelLat);
    auto meanError = [&](int32_t offset) {
        double sum = 0;
        int32_t n = 0;
        for (int32_t k = 200; k < r.RunLength - 200; ++k) {
            sum += std::abs(Store().RunData(r.RunStart + k, column) - truth[lines[1] + k + offset]);
            ++n;
        }
        return sum / n;
    };
    const double aligned = meanError(0);
    EXPECT_LT(aligned, 0.05);
    EXPECT_LT(aligned * 3, meanError(40));
    EXPECT_LT(aligned * 3, meanError(-40));
}

INSTANTIATE_TEST_SUITE_P(Demo, SampleRunsTest,
                         ::testing::Values(Sample{"demo_hx40_road", Family::HX40, Vehicle::Car},
                                           Sample{"demo_sv63_kart", Family::SV63, Vehicle::Kart},
                                           Sample{"demo_mq7_kart", Family::MQ7, Vehicle::Kart},
                                           Sample{"demo_sw63_oval", Family::SW63, Vehicle::Bike}),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace tl::test
