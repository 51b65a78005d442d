// The bar chart's counts: bins of a ramp whose spread is known, the strict
// bounds of a condition, the walk that runs on over a run's end, the range
// taken over every run, the bin count's limits, percentages, five charts at
// once, the form's small rules, the legend and the copy text; and the demo
// road run's speed against the simulation's own speeds.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <numeric>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "core/config_store.h"
#include "core/support.h"
#include "road/run_road.h"
#include "store/catalogue.h"
#include "store/run_procedures.h"
#include "store/run_store.h"
#include "store/slot_columns.h"
#include "support/engine_fixture.h"
#include "views/bar_chart.h"

namespace tl {
namespace {

class BarChartTest : public test::EngineTest {
  protected:
    void SetUp() override {
        test::EngineTest::SetUp();
        test::EnableEveryVariable();
        time = Catalogue().RunVars[slot::Time].Name;
        speed = Catalogue().RunVars[slot::SpeedKph].Name;
    }
    // Runs of `rows` rows, time in seconds from 0 in each, speed 0.
    void Runs(int runs, int32_t rows) {
        test::LayOutRuns(runs, rows, "run");
        float* t = SlotColumn(slot::Time);
        for (int n = 1; n <= runs; ++n) {
            RunRecord& r = Store().RunInfo[n];
            r.Name = "run" + std::to_string(n);
            for (int32_t i = r.RunStart; i <= r.RunEnd; ++i)
                t[i] = static_cast<float>(i - r.RunStart) / 100.0f;
        }
    }
    float* Speed() { return SlotColumn(slot::SpeedKph); }
    // A chart of speed in counts, typed range lo to hi.
    BarChart Chart(const std::string& lo, const std::string& hi, const std::string& bins) {
        BarChart c;
        c.Load(1);
        c.settings.DisplayVar = speed;
        c.settings.PercentFreq = 0;
        c.settings.DispVarMin = lo;
        c.DispVarMin_Change();
        c.settings.DispVarMax = hi;
        c.DispVarMax_Change();
        c.settings.BinCount = bins;
        return c;
    }
    static float Total(const BarChart& c, int axis) {
        return std::accumulate(c.BinCounts[axis].begin() + 1, c.BinCounts[axis].end(), 0.0f);
    }
    std::string time, speed;
};

TEST_F(BarChartTest, RampSpreadsEvenlyWithEdgesInTheLowerBin) {
    Runs(1, 1000);
    float* v = Speed();
    // 0.0, 0.1, ... 99.9 kph: ten samples a kph; the multiples of 10 lie on
    // the edges and belong to the bin below them.
    for (int32_t k = 0; k < 1000; ++k) v[1 + k] = static_cast<float>(k) / 10.0f;
    v[1001] = -5;  // the table's row past the run
    BarChart c = Chart("0", "100", "10");
    c.CalcFrequency();
    ASSERT_EQ(c.Bins, 10);
    EXPECT_FLOAT_EQ(c.BinEdges[1], 0);
    EXPECT_FLOAT_EQ(c.BinEdges[11], 100);
    EXPECT_EQ(c.BinCounts[0][1], 101);  // 0.0 to 10.0
    for (int b = 2; b <= 9; ++b) EXPECT_EQ(c.BinCounts[0][b], 100) << b;
    EXPECT_EQ(c.BinCounts[0][10], 99);  // 90.1 to 99.9
    EXPECT_EQ(c.PeakCount, 101);
    EXPECT_EQ(c.DispName, speed);
    // In percent, the same spread over the 1000 samples.
    c.settings.PercentFreq = 1;
    c.CalcFrequency();
    EXPECT_FLOAT_EQ(c.BinCounts[0][1], 10.1f);
    EXPECT_FLOAT_EQ(c.BinCounts[0][10], 9.9f);
    EXPECT_NEAR(Total(c, 0), 100.0f, 1e-4);
    // The range from the data: every row of every run, the row past the
    // last run too (-5), not row 0.
    c.settings.AutoMin = c.settings.AutoMax = 0;
    c.CalcFrequency();
    EXPECT_FLOAT_EQ(c.DispMin, -5);
    EXPECT_FLOAT_EQ(c.DispMax, 99.9f);
}

TEST_F(BarChartTest, ValuesAtTheEndsOfTheRange) {
    Runs(1, 10);
    float* v = Speed();
    // Alternating, so that every sample is searched afresh.
    const float values[10] = {50, -0.001f, 100, 0, 100.001f, 50, 99.99f, 0, 100, 40};
    for (int k = 0; k < 10; ++k) v[1 + k] = values[k];
    BarChart c = Chart("0", "100", "4");
    c.CalcFrequency();
    // 100 (DispMax) falls in the last bin, three times; 0 in the first,
    // twice; below the minimum and above the maximum nowhere. 50 is the edge
    // between bins 2 and 3 and goes below.
    EXPECT_EQ(c.BinCounts[0][1], 2);
    EXPECT_EQ(c.BinCounts[0][2], 3);  // 50, 50, 40
    EXPECT_EQ(c.BinCounts[0][3], 0);
    EXPECT_EQ(c.BinCounts[0][4], 3);  // 100, 99.99, 100
    EXPECT_EQ(Total(c, 0), 8);
}

TEST_F(BarChartTest, BinCountIsHeldBetweenOneAndHundred) {
    Runs(1, 100);
    for (auto [text, bins] : std::vector<std::pair<std::string, int>>{
             {"0", 1}, {"150", 100}, {"100", 100}, {"99.9", 99}, {"-3", 1}, {"abc", 1}, {"7", 7}}) {
        BarChart c = Chart("0", "1", text);
        c.CalcFrequency();
        EXPECT_EQ(c.Bins, bins) << text;
        EXPECT_EQ(c.BinEdges.size(), size_t(bins) + 2) << text;
        EXPECT_FLOAT_EQ(c.BinEdges[bins + 1], 1.0f) << text;
    }
}

TEST_F(BarChartTest, NothingCountedGivesAnEmptyChartOfPeakOne) {
    Runs(1, 100);
    for (int32_t i = 1; i <= 100; ++i) Speed()[i] = 500;
    BarChart c = Chart("0", "100", "10");
    c.settings.PercentFreq = 1;
    c.CalcFrequency();
    EXPECT_EQ(c.PeakCount, 1);
    EXPECT_EQ(Total(c, 0), 0);
    // A constant variable from the data: its value +- 1, every sample in
    // one bin.
    c.settings.AutoMin = c.settings.AutoMax = 0;
    c.settings.PercentFreq = 0;
    for (int32_t i = 0; i <= Store().RunData.UpperRow(); ++i) Speed()[i] = 7;
    c.CalcFrequency();
    EXPECT_FLOAT_EQ(c.DispMin, 6);
    EXPECT_FLOAT_EQ(c.DispMax, 8);
    // The walk of the run's last stretch takes the table's row past it too.
    EXPECT_EQ(Total(c, 0), 100 + 1);
    // A variable never chosen reads the *No Data* column (all zero).
    c.settings.DisplayVar = kSelectVariable;
    c.CalcFrequency();
    EXPECT_EQ(c.DispMin, -1);
    EXPECT_EQ(c.DispMax, 1);
}

TEST_F(BarChartTest, ConditionBoundsAreStrictAndPercentagesOfCountedSamples) {
    Runs(1, 1000);
    float* v = Speed();
    for (int32_t k = 0; k < 1000; ++k) v[1 + k] = static_cast<float>(k % 10) * 10 + 5;
    BarChart c = Chart("0", "100", "10");
    c.settings.ConstrainVar = time;
    c.settings.Axes[0].ConstrainMin = "1";
    c.ConstrainMin_Change();
    c.settings.Axes[0].ConstrainMax = "2";
    EXPECT_EQ(c.settings.Constrain, 1);
    c.CalcFrequency();
    // Time 1.00 and 2.00 fail: rows 101 to 199 of the run, 99 samples.
    EXPECT_EQ(Total(c, 0), 99);
    EXPECT_EQ(c.BinCounts[0][1], 9);  // k = 110, 120, ... 190
    EXPECT_EQ(c.BinCounts[0][2], 10);
    // Percentages refer to the 99 counted samples alone.
    c.settings.PercentFreq = 1;
    c.CalcFrequency();
    EXPECT_NEAR(Total(c, 0), 100.0f, 1e-4);
    EXPECT_NEAR(c.BinCounts[0][1], 900.0f / 99, 1e-4);
    // The condition off counts everything again.
    c.settings.Constrain = 0;
    c.CalcFrequency();
    EXPECT_NEAR(c.BinCounts[0][1], 10.0f, 1e-4);
}

TEST_F(BarChartTest, StretchInOneBinCountsOnPastTheRunsEnd) {
    Runs(2, 100);
    float* v = Speed();
    // Run 1 ends at 5 kph and run 2 starts there for 30 rows, then 55.
    for (int32_t i = 1; i <= 100; ++i) v[i] = i <= 50 ? 55 : 5;
    for (int32_t i = 101; i <= 200; ++i) v[i] = i <= 130 ? 5 : 55;
    v[201] = 55;
    BarChart c = Chart("0", "100", "10");
    c.CalcFrequency();
    EXPECT_EQ(c.BinCounts[0][1], 50 + 30);
    EXPECT_EQ(c.BinCounts[0][6], 50);
    // Run 2's own count is not touched by run 1's rows.
    c.settings.Axes[0].AxisRun = "2";
    c.CalcFrequency();
    EXPECT_EQ(c.BinCounts[0][1], 30);
    EXPECT_EQ(c.BinCounts[0][6], 70 + 1);  // and runs on into the table's last row
    // A value on an edge that follows a stretch in the upper bin stays in
    // that bin; searched afresh it would fall in the lower one.
    c.settings.Axes[0].AxisRun = "2";
    v[132] = 50;  // after 55 at row 131
    c.CalcFrequency();
    EXPECT_EQ(c.BinCounts[0][5], 0);
    EXPECT_EQ(c.BinCounts[0][6], 71);
    v[132] = 55;
    // A condition that fails at the run's end stops the walk there.
    c.settings.Axes[0].AxisRun = "1";
    c.settings.ConstrainVar = time;
    c.settings.Axes[0].ConstrainMin = "-1";
    c.settings.Axes[0].ConstrainMax = "0.5";  // run 1's time is 0.99 at its end
    c.settings.Constrain = 1;
    for (int32_t i = 1; i <= 100; ++i) v[i] = 5;
    c.CalcFrequency();
    // Run 1's first 50 rows (time 0.00 to 0.49), and run 2's first 30 (time
    // 0.00 to 0.29) are not reached: row 51 fails and ends the stretch.
    EXPECT_EQ(c.BinCounts[0][1], 50);
}

TEST_F(BarChartTest, FiveChartsEachWithItsRunAndCondition) {
    Runs(3, 1000);
    float* v = Speed();
    for (int n = 1; n <= 3; ++n)
        for (int32_t k = 0; k < 1000; ++k) v[(n - 1) * 1000 + 1 + k] = 10.0f * n + 2 + 5 * (k % 2);
    v[3001] = -1;
    BarChart c = Chart("0", "40", "4");
    c.settings.MultiBar = 1;
    EXPECT_FALSE(c.HideMultipleAxisVisible());
    c.settings.ConstrainVar = time;
    c.settings.Constrain = 1;
    const char* runs[5] = {"1", "2", "3", "9", "0"};
    const char* lo[5] = {"-1", "-1", "5", "-1", "-1"};
    for (int k = 0; k < 5; ++k) {
        c.settings.Axes[k].AxisEnabled = 1;
        c.settings.Axes[k].AxisRun = runs[k];
        c.settings.Axes[k].ConstrainMin = lo[k];
        c.settings.Axes[k].ConstrainMax = "100";
    }
    c.settings.Axes[4].AxisEnabled = 0;
    c.CalcFrequency();
    // Run n lies at 10 n + 2 and 10 n + 7: bin n + 1 of four 10 kph bins.
    EXPECT_EQ(c.BinCounts[0][2], 1000);
    EXPECT_EQ(c.BinCounts[1][3], 1000);
    EXPECT_EQ(Total(c, 1), 1000);
    EXPECT_EQ(c.BinCounts[2][4], 499);  // time above 5 s: rows 501 to 999 of run 3
    EXPECT_EQ(Total(c, 2), 499);
    // A run past the count is held to the last run, and written back.
    EXPECT_EQ(c.settings.Axes[3].AxisRun, "3");
    EXPECT_EQ(Total(c, 3), 1000);
    EXPECT_EQ(Total(c, 4), 0);  // disabled
    EXPECT_EQ(c.settings.Axes[4].AxisRun, "0");
    EXPECT_EQ(c.PeakCount, 1000);
    // MultiBar off counts axis 0 alone.
    c.settings.MultiBar = 0;
    EXPECT_TRUE(c.HideMultipleAxisVisible());
    c.CalcFrequency();
    EXPECT_EQ(Total(c, 0), 1000);
    for (int k = 1; k < 5; ++k) EXPECT_EQ(Total(c, k), 0) << k;
}

TEST_F(BarChartTest, BinSearchMatchesThePlainSearch) {
    Runs(1, 10);
    std::mt19937 gen(7);
    for (auto [lo, hi, bins] : std::vector<std::tuple<float, float, int>>{{0, 100, 10},
                                                                          {-3.3f, 7.7f, 37},
                                                                          {1e6f, 1e6f + 1, 99},
                                                                          {-1, 1, 100},
                                                                          {5, 5.0001f, 3}}) {
        BarChart c = Chart(ConfigNumberText(lo), ConfigNumberText(hi), std::to_string(bins));
        c.CalcFrequency();
        ASSERT_EQ(c.Bins, bins);
        std::uniform_real_distribution<float> any(c.DispMin - 1, c.DispMax + 1);
        std::vector<float> probes(c.BinEdges.begin() + 1, c.BinEdges.end());
        for (int i = 0; i < 2000; ++i) probes.push_back(any(gen));
        for (float e : std::vector<float>(c.BinEdges.begin() + 1, c.BinEdges.end())) {
            probes.push_back(std::nextafter(e, -1e30f));
            probes.push_back(std::nextafter(e, 1e30f));
        }
        probes.push_back(std::nanf(""));
        for (float p : probes) {
            int32_t plain = 0;
            for (int32_t b = 1; b <= c.Bins && !plain; ++b)
                if (c.BinEdges[b] <= p && p <= c.BinEdges[b + 1]) plain = b;
            ASSERT_EQ(c.FindBin(p), plain) << p << " in " << lo << ".." << hi << " / " << bins;
        }
    }
}

TEST_F(BarChartTest, FormRulesDefaultsLegendAndCopy) {
    Runs(2, 100);
    BarChart c;
    c.Load(3);
    EXPECT_EQ(c.Caption(), "Bar Chart 3");
    c.settings.MainTitle = "Corner speeds";
    EXPECT_EQ(c.Caption(), "Corner speeds");
    // Bars and lines: clearing the last one ticks the other.
    c.settings.ShowBars = 0;
    c.ShowBars_Click();
    EXPECT_EQ(c.settings.ShowLines, 1);
    c.settings.ShowLines = 0;
    c.ShowLines_Click();
    EXPECT_EQ(c.settings.ShowBars, 1);
    c.settings.ShowLines = 1;
    c.settings.ShowBars = 0;
    c.ShowBars_Click();
    EXPECT_EQ(c.settings.ShowBars, 0);
    // The run number wraps and names its run.
    c.settings.Axes[2].AxisRun = "3";
    c.AxisRun_Change(2);
    EXPECT_EQ(c.settings.Axes[2].AxisRun, "1");
    EXPECT_EQ(c.AxisRunName[2], "run1");
    c.settings.Axes[2].AxisRun = "0";
    c.AxisRun_Change(2);
    EXPECT_EQ(c.settings.Axes[2].AxisRun, "2");
    EXPECT_EQ(c.AxisRunName[2], "run2");
    // Only the chart tab counts.
    c.settings.DisplayVar = speed;
    EXPECT_FALSE(c.ChartTab_Click(ChartTabs::Setup));
    EXPECT_TRUE(c.DispName.empty());
    EXPECT_TRUE(c.ChartTab_Click(ChartTabs::BarChart));
    EXPECT_EQ(c.DispName, speed);
    EXPECT_TRUE(ui.Saw(ScriptedEvent::Kind::WaitShown, "Calculating Bar Chart Frequencies"));
    // The legend: the title as typed, else the run and the condition.
    c.settings.ConstrainVar = time;
    c.settings.Axes[1].AxisRun = "2";
    c.settings.Axes[1].ConstrainMin = "1";
    c.settings.Axes[1].ConstrainMax = "2.5";
    EXPECT_EQ(c.LegendText(1), "run2");
    c.settings.Constrain = 1;
    EXPECT_EQ(c.LegendText(1), "run2, " + time + " 1 to 2.5");
    c.settings.Axes[1].AxisTitle = "Wet";
    EXPECT_EQ(c.LegendText(1), "Wet");
    // The copy: edges and the counted axes' values, tab-separated, CR LF.
    // Run 1: 25 samples in the first bin, 75 in the second; run 2 all in
    // the first (so that run 1's last stretch stops at its end).
    for (int32_t i = 1; i <= 200; ++i) Speed()[i] = i <= 25 || i > 100 ? 1.5f : 3.5f;
    Speed()[201] = -1;
    c.settings.Constrain = 0;
    c.settings.PercentFreq = 0;
    c.settings.BinCount = "2";
    c.settings.DispVarMin = "0";
    c.DispVarMin_Change();
    c.settings.DispVarMax = "4";
    c.DispVarMax_Change();
    c.CalcFrequency();
    EXPECT_EQ(c.ClipboardText(), "From\tTo\t" + speed + "\r\n0\t2\t25\r\n2\t4\t75\r\n");
    c.settings.MultiBar = 1;
    c.settings.Axes[1].AxisEnabled = 1;
    c.settings.Axes[0].AxisEnabled = 1;
    c.CalcFrequency();
    EXPECT_EQ(c.ClipboardText(), "From\tTo\trun1\tWet\r\n0\t2\t25\t100\r\n2\t4\t75\t0\r\n");
}

// The simulation's speed, row for row, of a demo run.
std::vector<float> TrueSpeeds(const std::string& truthCsv) {
    std::ifstream in(truthCsv);
    std::string line;
    std::getline(in, line);
    std::vector<float> speeds;
    while (std::getline(in, line)) {
        std::stringstream row(line);
        std::string cell;
        for (int k = 0; k <= 7; ++k) std::getline(row, cell, ',');
        speeds.push_back(std::stof(cell));
    }
    return speeds;
}

TEST_F(BarChartTest, DemoRoadRunSpeedSpreadFollowsTheSimulation) {
    const std::string demo = test::DemoPath("demo_hx40_road");
    ASSERT_EQ(LoadDemoRun(), 1);
    const std::vector<float> truth = TrueSpeeds(demo + ".truth.csv");
    ASSERT_GT(truth.size(), 1000u);
    BarChart c;
    c.Load(1);
    c.settings.DisplayVar = "GPS Speed [kph]";
    c.settings.BinCount = "10";
    c.settings.DispVarMin = "0";
    c.DispVarMin_Change();
    c.settings.DispVarMax = "250";
    c.DispVarMax_Change();
    c.CalcFrequency();
    // The same bins over the true speeds, in percent.
    std::vector<double> want(11, 0.0);
    int counted = 0;
    for (float s : truth) {
        const int b = c.FindBin(s);
        if (b) ++want[b], ++counted;
    }
    for (int b = 1; b <= 10; ++b) {
        want[b] *= 100.0 / counted;
        // The logged speed lags and is noisy; 25 kph bins are coarse enough
        // that the spread agrees within two points.
        EXPECT_NEAR(c.BinCounts[0][b], want[b], 2.0) << "bin " << b;
    }
    EXPECT_NEAR(Total(c, 0), 100.0, 1e-3);
}

}  // namespace
}  // namespace tl
