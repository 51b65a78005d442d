#include "results/performance.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>

#include "core/build_profile.h"
#include "core/config_store.h"
#include "core/errors.h"
#include "core/support.h"
#include "core/ui_services.h"
#include "store/catalogue.h"
#include "store/run_store.h"
#include "store/slot_columns.h"

namespace tl {

namespace {

constexpr const char* kNa = "na";

std::string Format2(double value) {
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.2f", value);
    return buf;
}

// A sum written back unformatted: up to 15 significant digits, as a number
// turns into text.
std::string Unformatted(double value) {
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.15g", value);
    return buf;
}

bool Stored(const std::string& file, const char* key) {
    return GetConfig(file, key) != 0.0f;
}

// FpI4: to the nearest whole number, halves to even.
int32_t FpI4(double value) {
    return static_cast<int32_t>(std::nearbyint(value));
}

}  // namespace

PerformanceOptions LoadPerformanceOptions() {
    const std::string& file = Paths().TracelabCfgPath;
    PerformanceOptions o;
    o.mph = Stored(file, "MphPerformance") && !Stored(file, "KphPerformance");
    o.feet = Stored(file, "FeetPerformance") && !Stored(file, "MetersPerformance");
    o.assembled = Stored(file, "AssembledPerformance") && !Stored(file, "NoAssembledPerformance");
    return o;
}

void SavePerformanceOptions(const PerformanceOptions& o) {
    const std::string& file = Paths().TracelabCfgPath;
    auto flag = [](bool on) { return on ? -1.0f : 0.0f; };
    SetConfig(file, "MphPerformance", flag(o.mph));
    SetConfig(file, "KphPerformance", flag(!o.mph));
    SetConfig(file, "MetersPerformance", flag(!o.feet));
    SetConfig(file, "FeetPerformance", flag(o.feet));
    SetConfig(file, "AssembledPerformance", flag(o.assembled));
    SetConfig(file, "NoAssembledPerformance", flag(!o.assembled));
}

bool CheckPerformanceVariables() {
    bool ok = true;
    if (!SlotEnabled(slot::SpeedMph) && !SlotEnabled(slot::SpeedKph)) {
        Message("Neither speed in Kph or Mph is available for this analysis");
        ok = false;
    }
    if (!SlotEnabled(13) && !SlotEnabled(14)) {
        Message("Distance is not available in meters or feet for this analysis");
        ok = false;
    }
    return ok;
}

PerformanceWindow PerformanceRows(int32_t run, const std::string& startTime,
                                  const std::string& endTime) {
    PerformanceWindow w;
    if (run < 1 || run >= static_cast<int32_t>(Store().RunInfo.size())) return w;
    const RunRecord& r = Store().RunInfo[run];
    w.first = FpI4(r.RunStart + GetVal(startTime) * 100);
    w.last = FpI4(r.RunStart + GetVal(endTime) * 100);
    if (w.first >= w.last)
        Message("The end time must be greater than the start time");
    else if (w.last > r.RunEnd || w.first < r.RunStart)
        Message("The times you have entered are out of range for this run");
    else
        w.ok = true;
    return w;
}

PerformanceGrid GenPerfGrid(int32_t column, int32_t first, int32_t last,
                            const PerformanceOptions& options) {
    PerformanceGrid grid;
    Procedure("GenPerfGrid", [&] {
        const RunArray& rd = Store().RunData;
        const float* speed = SlotColumn(options.mph ? slot::SpeedMph : slot::SpeedKph);
        const float* accel = SlotColumn(slot::AccelLong);
        if (!speed || !accel || column < 0 || column >= rd.Columns()) return;
        const float* measured = rd.Column(column).data();
        first = std::max(first, 1);
        last = std::min(last, rd.UpperRow());
        if (first >= last) return;

        float top = speed[first];
        for (int32_t i = first; i <= last; ++i) top = std::max(top, speed[i]);
        const int size = static_cast<int>(std::floor(top / 10.0f)) + 2;
        grid.rows = grid.cols = std::max(size, 2);
        grid.text.assign(static_cast<size_t>(grid.rows) * grid.cols, std::string{});
        grid.fore.assign(grid.text.size(), 0);
        const std::string unit = options.mph ? " mph" : " kph";
        for (int i = 1; i < grid.rows; ++i) {
            grid.Text(i, 0) = std::to_string((i - 1) * 10) + unit;
            grid.Text(0, i) = grid.Text(i, 0);
        }
        const float trigger = static_cast<float>(GetVal(options.trigger));

        for (int row = 1; row < grid.rows; ++row) {
            for (int col = 1; col < grid.cols; ++col) {
                const float e = static_cast<float>((row - 1) * 10);
                const float s = static_cast<float>((col - 1) * 10);
                std::string& cell = grid.Text(row, col);
                if (s == e) {
                    cell = "==";
                    continue;
                }
                const bool braking = s >= e;
                auto start = [&](int32_t i) {
                    if (braking) return speed[i - 1] >= s && speed[i] <= s;
                    if (s != 0) return speed[i - 1] <= s && speed[i] >= s;
                    // A launch: the first moment the acceleration reaches the
                    // trigger while standing.
                    return speed[i] <= 5.0f && std::fabs(accel[i - 1]) <= trigger &&
                           std::fabs(accel[i]) >= trigger;
                };
                auto end = [&](int32_t i) {
                    if (!braking) return speed[i - 1] <= e && speed[i] >= e;
                    if (e != 0) return speed[i - 1] >= e && speed[i] <= e;
                    return speed[i] <= 5.0f && std::fabs(accel[i - 1]) >= trigger &&
                           std::fabs(accel[i]) <= trigger;
                };
                // Every start event is tried in turn, the search restarting
                // one row after it, so the best of overlapping passes counts.
                double best = 1.0E+20;
                int32_t next = first + 1;
                int32_t i = first;
                while (i < last) {
                    i = next;
                    while (i < last && !start(i)) ++i;
                    next = i + 1;
                    if (i >= last) continue;
                    const float t0 = measured[i];
                    while (i < last && !end(i)) ++i;
                    if (i >= last) continue;
                    const double d = static_cast<double>(measured[i] - t0);
                    if (d < best) best = d;
                }
                cell = best == 1.0E+20 ? kNa : Format2(best);
                if (!braking)
                    grid.fore[static_cast<size_t>(row) * grid.cols + col] = kAcceleratingCellColour;
            }
        }
        if (options.assembled) AssemblePerformanceGrid(grid);
    });
    return grid;
}

void AssemblePerformanceGrid(PerformanceGrid& grid) {
    auto sum = [&](int r1, int c1, int r2, int c2) -> std::string {
        const std::string& a = grid.Text(r1, c1);
        const std::string& b = grid.Text(r2, c2);
        if (a == kNa || b == kNa) return kNa;
        return Unformatted(GetVal(a) + GetVal(b));
    };
    // Accelerating: from start c to end r is from c to r - 1 and then the
    // step from r - 1 to r, rows going up so that the first part is already
    // assembled.
    for (int r = 3; r <= grid.rows - 1; ++r)
        for (int c = 1; c <= r - 2; ++c) grid.Text(r, c) = sum(r - 1, c, r, r - 1);
    // Braking: from start c down to r is from c down to r + 1 and then the
    // step from r + 1 down to r, rows going down.
    for (int r = grid.rows - 1; r >= 1; --r)
        for (int c = r + 2; c <= grid.cols - 1; ++c) grid.Text(r, c) = sum(r + 1, c, r, r + 1);
}

std::string SummaryFromTemplate(const std::vector<std::string>& lines, const PerformanceGrid& accel,
                                const PerformanceGrid& distance) {
    std::string out;
    for (const std::string& line : lines) {
        bool inTag = false;
        std::string tag;
        for (char ch : line) {
            if (ch == '<') {
                inTag = true;
                tag.clear();
            } else if (ch == '>' && inTag) {
                inTag = false;
                std::vector<std::string> fields(1);
                for (char t : tag) {
                    if (t == ',')
                        fields.emplace_back();
                    else
                        fields.back() += t;
                }
                const PerformanceGrid& grid =
                    (!fields[0].empty() && fields[0][0] == 'a') ? accel : distance;
                std::string cell = kNa;
                if (fields.size() >= 3) {
                    const double row = std::floor(GetVal(fields[1]));
                    const double col = std::floor(GetVal(fields[2]));
                    if (row >= 0 && col >= 0 && row <= grid.rows - 1 && col <= grid.cols - 1)
                        cell = grid.Text(static_cast<int>(row), static_cast<int>(col));
                }
                out += cell;
            } else if (inTag) {
                tag += ch;
            } else {
                out += ch;
            }
        }
        out += "\r\n";
    }
    return out;
}

std::string GenerateSummaryText(const std::string& templatePath, const PerformanceGrid& accel,
                                const PerformanceGrid& distance) {
    std::ifstream in(templatePath, std::ios::binary);
    if (!in) {
        Message("SummaryPerformance.cfg cannot be found");
        return {};
    }
    std::vector<std::string> lines;
    std::string line;
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        lines.push_back(line);
    }
    return SummaryFromTemplate(lines, accel, distance);
}

PerformanceTables CalculatePerformance(int32_t run, const std::string& startTime,
                                       const std::string& endTime,
                                       const PerformanceOptions& options) {
    PerformanceTables t;
    const PerformanceWindow w = PerformanceRows(run, startTime, endTime);
    if (!w.ok) return t;
    ShowPleaseWait("Calculating Performance tables");
    t.accel = GenPerfGrid(ColumnOf(slot::Time), w.first, w.last, options);
    t.distance = GenPerfGrid(ColumnOf(options.feet ? 14 : 13), w.first, w.last, options);
    HidePleaseWait();
    t.summary = GenerateSummaryText(Paths().SummaryPerformanceCfgPath, t.accel, t.distance);
    t.ok = true;
    return t;
}

std::string PerformanceGridText(const PerformanceGrid& grid) {
    std::string out;
    for (int r = 0; r < grid.rows; ++r) {
        for (int c = 0; c < grid.cols; ++c) {
            if (c > 0) out += '\t';
            out += grid.Text(r, c);
        }
        out += "\r\n";
    }
    return out;
}

}  // namespace tl
