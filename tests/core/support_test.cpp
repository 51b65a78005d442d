#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "core/support.h"

namespace tl {
namespace {

TEST(GetValNI, ReadsNumbersWithoutTheLocale) {
    EXPECT_DOUBLE_EQ(GetVal_NI("12.5"), 12.5);
    EXPECT_DOUBLE_EQ(GetVal_NI("  -3.05 "), -3.05);
    EXPECT_DOUBLE_EQ(GetVal_NI(".5"), 0.5);
    EXPECT_DOUBLE_EQ(GetVal_NI("1.001"), 1.001);
    EXPECT_DOUBLE_EQ(GetVal_NI("1.10"), 1.1);
    EXPECT_DOUBLE_EQ(GetVal_NI("7."), 7.0);
    EXPECT_DOUBLE_EQ(GetVal_NI(""), 0.0);
    EXPECT_DOUBLE_EQ(GetVal_NI("   "), 0.0);
}

TEST(GetValNI, KeepsItsOddRules) {
    // A second point starts a part that is ignored.
    EXPECT_DOUBLE_EQ(GetVal_NI("1.2.3"), 1.2);
    // Letters are dropped, so an exponent is not one.
    EXPECT_DOUBLE_EQ(GetVal_NI("1e5"), 15.0);
    // A comma is dropped: a hand-edited 12,5 reads as 125.
    EXPECT_DOUBLE_EQ(GetVal_NI("12,5"), 125.0);
    // A minus anywhere makes the number negative.
    EXPECT_DOUBLE_EQ(GetVal_NI("1-2"), -12.0);
    // Only the first 20 characters count.
    EXPECT_DOUBLE_EQ(GetVal_NI("1234567890123456789012345"), 12345678901234567890.0);
    EXPECT_DOUBLE_EQ(GetVal_NI("abc"), 0.0);
}

TEST(GetVal, TurnsCommasIntoPointsInTheCallersText) {
    std::string text = "12,5";
    EXPECT_DOUBLE_EQ(GetVal(text), 12.5);
    EXPECT_EQ(text, "12.5");
    EXPECT_TRUE(ValidNumber("-1,5.0"));
    EXPECT_FALSE(ValidNumber("1e5"));
}

TEST(FormToSD, FormatsSignificantDigits) {
    EXPECT_EQ(FormToSD(0.0, 3), "0.0");
    EXPECT_EQ(FormToSD(12.345, 3), "12.3");
    EXPECT_EQ(FormToSD(1.5, 3), "1.50");
    // Four whole digits asked for three keep all four and end in a bare point.
    EXPECT_EQ(FormToSD(1234.4, 3), "1234.");
    // Below 0.1 there is no digit before the point.
    EXPECT_EQ(FormToSD(0.05, 3), ".050");
    EXPECT_EQ(FormToSD(-2.5, 3), "-2.50");
}

// The moving average as the filter defines it, computed the slow way.
std::vector<float> SlowFilter(std::vector<float> v, float seconds) {
    const long w = std::lrint(seconds * 100.0);
    const long upper = static_cast<long>(v.size()) - 1;
    if (w < 2 || w > upper - 10) return v;
    const long h = (w - 1) / 2, t = w - h;
    std::vector<float> out = v;
    for (long i = h + 1; i <= upper - t - 1; ++i) {
        double sum = 0;
        for (long k = i - h + 1; k <= i + t; ++k) sum += v[k];
        out[i] = static_cast<float>(sum / w);
    }
    return out;
}

TEST(LinearFilterVar, AveragesWithItsWindowPhaseAndLeavesTheEnds) {
    std::vector<float> impulse(100, 0.0f);
    impulse[50] = 4.0f;
    std::vector<float> v = impulse;
    LinearFilterVar(v, 0.04f);  // w = 4, h = 1, t = 3: rows i..i+3
    for (int i = 0; i < 100; ++i) EXPECT_FLOAT_EQ(v[i], (i >= 47 && i <= 50) ? 1.0f : 0.0f) << i;

    std::mt19937 rng(7);
    std::uniform_real_distribution<float> d(-5, 5);
    std::vector<float> noise(500);
    for (float& x : noise) x = d(rng);
    for (float seconds : {0.02f, 0.05f, 0.1f, 0.25f}) {
        std::vector<float> got = noise;
        LinearFilterVar(got, seconds);
        std::vector<float> want = SlowFilter(noise, seconds);
        for (size_t i = 0; i < got.size(); ++i)
            ASSERT_NEAR(got[i], want[i], 1e-5) << seconds << " " << i;
        // The first h + 1 and the last t + 1 samples are untouched.
        EXPECT_EQ(got.front(), noise.front());
        EXPECT_EQ(got.back(), noise.back());
    }
}

TEST(LinearFilterVar, DoesNothingOutsideItsWindowLimits) {
    std::vector<float> v = {1, 9, 2, 8, 3, 7, 4, 6, 5, 5, 1, 9, 2, 8, 3, 7};
    std::vector<float> before = v;
    LinearFilterVar(v, 0.01f);  // w = 1
    EXPECT_EQ(v, before);
    LinearFilterVar(v, 0.06f);  // w = 6 > upper - 10 = 5
    EXPECT_EQ(v, before);
}

TEST(QSort, SortsAscendingWithinTheBounds) {
    std::mt19937 rng(3);
    std::uniform_int_distribution<int> d(-50, 50);
    for (int n : {2, 3, 10, 257, 5000}) {
        std::vector<float> v(n);
        for (float& x : v) x = static_cast<float>(d(rng));
        std::vector<float> want = v;
        const int first = n > 4 ? 1 : 0, last = n > 4 ? n - 2 : n - 1;
        std::sort(want.begin() + first, want.begin() + last + 1);
        QSort(v, first, last);
        EXPECT_EQ(v, want) << n;
    }
    std::vector<float> sorted(1000);
    for (int i = 0; i < 1000; ++i) sorted[i] = static_cast<float>(i % 7);
    std::vector<float> want = sorted;
    std::sort(want.begin(), want.end());
    QSort(sorted, 0, 999);
    EXPECT_EQ(sorted, want);
}

TEST(Numbers, ClipWrapAndCompare) {
    EXPECT_FLOAT_EQ(FindClip(0, -1, 10), 0);
    EXPECT_FLOAT_EQ(FindClip(0, 10, 10), 10);
    EXPECT_FLOAT_EQ(FindClip(0, 5, 10), 5);
    EXPECT_FLOAT_EQ(Constrain(5, 2, 2), 2);
    EXPECT_FLOAT_EQ(Constrain(-1, 0, 360), 359);
    EXPECT_FLOAT_EQ(Constrain(725, 0, 360), 5);
    EXPECT_NEAR(Constrain(3 * kPi, 0, 2 * kPi), kPi, 1e-5);
    EXPECT_TRUE(std::isfinite(Constrain(1e30f, 0, 360)));
    // The tolerance lies on the second limit's side.
    EXPECT_TRUE(IsBetween(1, 1.00005, 1));
    EXPECT_TRUE(IsBetween(0, 10.00005, 10));
    EXPECT_FALSE(IsBetween(0, -0.00005, 10));
    EXPECT_TRUE(IsBetween(10, 5, 0));
    EXPECT_FALSE(IsBetween(10, 10.001, 0));
}

TEST(Numbers, AnglesAndEquations) {
    EXPECT_NEAR(Atan2(1, 0), kPi / 2, 1e-6);
    EXPECT_NEAR(Atan2(-1, 0), 3 * kPi / 2, 1e-6);
    EXPECT_NEAR(Atan2(0, 1), 0, 1e-6);
    EXPECT_NEAR(Atan2(0, -1), kPi, 1e-6);
    EXPECT_NEAR(Atan2(-1, -1), 5 * kPi / 4, 1e-5);
    EXPECT_NEAR(Atan2(-1, 1), 7 * kPi / 4, 1e-5);
    EXPECT_NEAR(InvSin(0.5f), kPi / 6, 1e-6);
    EXPECT_NEAR(InvSin(1.0f), kPi / 2, 1e-6);
    EXPECT_NEAR(InvSin(-1.0f), -kPi / 2, 1e-6);
    float x, y;
    SimEquat(1, 1, 3, 1, -1, 1, x, y);
    EXPECT_NEAR(x, 2, 1e-6);
    EXPECT_NEAR(y, 1, 1e-6);
    SimEquat(1, 0, 3, 1, -1, 1, x, y);
    EXPECT_EQ(x, -1);
    EXPECT_EQ(y, -1);
    SimEquat(1, 1, 3, 2, 2, 1, x, y);  // parallel lines
    EXPECT_EQ(x, -1);
    EXPECT_EQ(y, -1);
}

TEST(Colours, PaletteAndHeatScale) {
    EXPECT_EQ(VqColorIndex(0, false), 0u);
    EXPECT_EQ(VqColorIndex(1, false), 255u);
    EXPECT_EQ(VqColorIndex(3, false), 0xFF0000u);
    EXPECT_EQ(VqColorIndex(4, false), 32640u);
    EXPECT_EQ(VqColorIndex(8, false), 8355840u);
    EXPECT_EQ(VqColorIndex(9, false), 128u);
    EXPECT_EQ(VqColorIndex(10, false), Rgb(128, 128, 128));
    EXPECT_EQ(VqColorIndex(0, true), 0xFFFFFFu);
    EXPECT_EQ(VqColorIndex(1, true), 0xFFFF00u);
    int v = -5;
    EXPECT_EQ(GraphColorGen2(v), 0u);
    EXPECT_EQ(v, 0);
    v = 300;
    EXPECT_EQ(GraphColorGen2(v), Rgb(255, 45, 0));
    v = 511;  // 256 in green counts as 255
    EXPECT_EQ(GraphColorGen2(v), Rgb(255, 255, 0));
    v = 900;
    EXPECT_EQ(GraphColorGen2(v), Rgb(255, 255, 255));
    EXPECT_EQ(v, 767);
}

}  // namespace
}  // namespace tl
