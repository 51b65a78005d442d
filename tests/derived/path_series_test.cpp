// The GPS track map's power series of the dead-reckoned path against the
// path itself, run row by row with CalcCourse: chords and end headings over
// windows anywhere in a long run, and the windows and offsets it must refuse.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "derived/path_series.h"
#include "derived/pipeline.h"

namespace tl {
namespace {

using derived::PathSeries;

// A car on a twisty road: lateral acceleration swinging between about -1.4
// and 1.4 g, speed between 40 and 190 kph, with noise.
struct Drive {
    std::vector<float> lat, kph;
    explicit Drive(size_t rows) : lat(rows), kph(rows) {
        std::mt19937 gen(11);
        std::normal_distribution<float> noise(0.0f, 0.02f);
        for (size_t k = 0; k < rows; ++k) {
            const double t = static_cast<double>(k) / 100.0;
            lat[k] =
                static_cast<float>(1.2 * std::sin(t * 0.9) + 0.2 * std::sin(t * 3.1)) + noise(gen);
            kph[k] = static_cast<float>(115.0 + 75.0 * std::cos(t * 0.37));
        }
    }
};

struct Walked {
    float dx, dy, heading;
};

// The path run row by row, as the fit defines it.
Walked Walk(const Drive& d, size_t first, size_t n, float heading, float o, float m) {
    float x = 0, y = 0, h = heading;
    for (size_t k = first; k < first + n; ++k) CalcCourse(d.lat[k] + o, d.kph[k], x, y, h, m);
    return {x, y, h};
}

TEST(PathSeries, ChordsAndHeadingsMatchThePathRowByRow) {
    const Drive d(60000);
    PathSeries series;
    series.PrepareRun(d.lat.data(), d.kph.data(), d.lat.size());
    EXPECT_NEAR(series.Speed()[5], d.kph[5] / 3.6f, 1e-4);
    EXPECT_NEAR(series.Limit()[5], series.Speed()[5] * series.Speed()[5] / 3.0f, 1e-2);
    // Windows at the start, deep into the run after hundreds of radians of
    // turning, and of the two section lengths plus the way to a fix; start
    // headings all round the compass.
    const size_t firsts[] = {0, 1, 777, 23456, 59000};
    const size_t lengths[] = {151, 163, 307};
    const float headings[] = {0.0f, 1.3f, 3.1f, 4.9f, 6.2f};
    const float offsets[] = {0.0f, 0.0001f, 0.004f, -0.02f, 0.05f};
    const float mults[] = {1.0f, 1.05f, 0.93f};
    int compared = 0;
    for (size_t first : firsts) {
        for (size_t n : lengths) {
            const float heading = headings[(first + n) % 5];
            ASSERT_TRUE(series.PrepareWindow(first, n, heading)) << first << " " << n;
            for (float o : offsets) {
                for (float m : mults) {
                    float dx, dy, h;
                    if (!series.End(o, m, dx, dy, h)) continue;
                    const Walked w = Walk(d, first, n, heading, o, m);
                    // Over 100 to 500 m of path the two agree within a
                    // millimetre, the walk's own rounding; a wrong term
                    // would be metres off.
                    EXPECT_NEAR(dx, w.dx, 2e-3) << first << " " << n << " " << o << " " << m;
                    EXPECT_NEAR(dy, w.dy, 2e-3) << first << " " << n << " " << o << " " << m;
                    EXPECT_NEAR(h, w.heading, 2e-4) << first << " " << n << " " << o;
                    ++compared;
                }
            }
        }
    }
    // Every window takes the small offsets at least.
    EXPECT_GE(compared, 15 * 3 * 3);
}

TEST(PathSeries, WindowsMarchingFixByFixKeepTheirSums) {
    // As the fits go: each window starts at the next fix, ten rows on, and
    // reaches 150 rows past it to a fix; now and then a section goes back
    // 75 rows, as when doubtful GPS data is removed. The sums follow the
    // windows for thousands of them and must stay as good as fresh ones.
    const Drive d(40000);
    PathSeries series;
    series.PrepareRun(d.lat.data(), d.kph.data(), d.lat.size());
    size_t first = 3;
    int compared = 0;
    for (int j = 0; first + 170 < d.lat.size(); ++j) {
        const size_t n = 151 + static_cast<size_t>(j % 7) * 3;
        const float heading = static_cast<float>(j % 63) * 0.1f;
        ASSERT_TRUE(series.PrepareWindow(first, n, heading));
        if (j % 97 == 0) {
            float dx, dy, h;
            ASSERT_TRUE(series.End(0.003f, 1.02f, dx, dy, h));
            const Walked w = Walk(d, first, n, heading, 0.003f, 1.02f);
            EXPECT_NEAR(dx, w.dx, 2e-3) << j;
            EXPECT_NEAR(dy, w.dy, 2e-3) << j;
            ++compared;
        }
        first = j % 500 == 499 ? first - 75 : first + 10;
    }
    EXPECT_GT(compared, 30);
}

TEST(PathSeries, RefusesWindowsAndOffsetsItCannotTake) {
    Drive d(5000);
    // Row 1000 at rest, row 2000 not a number, row 3000 at 2.3 g and 31 kph,
    // just under its turn limit of 2.52 g.
    d.kph[1000] = 0.0f;
    d.lat[2000] = std::numeric_limits<float>::quiet_NaN();
    d.kph[3000] = 31.0f;
    d.lat[3000] = 2.3f;
    PathSeries series;
    series.PrepareRun(d.lat.data(), d.kph.data(), d.lat.size());
    float dx, dy, h;
    for (size_t bad : {size_t{1000}, size_t{2000}, size_t{3000}}) {
        EXPECT_FALSE(series.PrepareWindow(bad - 100, 151, 0.5f)) << bad;
        EXPECT_FALSE(series.End(0.0f, 1.0f, dx, dy, h)) << bad;
        // The rows just after it are taken, and the tables are sound there.
        ASSERT_TRUE(series.PrepareWindow(bad + 1, 151, 0.5f)) << bad;
        ASSERT_TRUE(series.End(0.001f, 1.0f, dx, dy, h));
        const Walked w = Walk(d, bad + 1, 151, 0.5f, 0.001f, 1.0f);
        EXPECT_NEAR(dx, w.dx, 2e-3) << bad;
        EXPECT_NEAR(dy, w.dy, 2e-3) << bad;
    }
    EXPECT_FALSE(series.PrepareWindow(4900, 151, 0.0f));  // past the run's end
    // Offsets whose turn over the window is too large for the terms kept, or
    // that come near the turn limit, or aren't numbers.
    ASSERT_TRUE(series.PrepareWindow(100, 307, 0.0f));
    EXPECT_TRUE(series.End(0.01f, 1.0f, dx, dy, h));
    EXPECT_FALSE(series.End(0.4f, 1.0f, dx, dy, h));
    EXPECT_FALSE(series.End(-0.4f, 1.0f, dx, dy, h));
    EXPECT_FALSE(series.End(std::numeric_limits<float>::quiet_NaN(), 1.0f, dx, dy, h));
    ASSERT_TRUE(series.PrepareWindow(100, 20, 0.0f));
    EXPECT_FALSE(series.End(0.7f, 1.0f, dx, dy, h));
}

}  // namespace
}  // namespace tl
