// Removing a run from the store, and cutting a run down to a time window (the
// engine side of frmTrimRun).
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "core/build_profile.h"
#include "core/errors.h"
#include "core/log.h"
#include "core/support.h"
#include "core/ui_services.h"
#include "formats/plane_frames.h"
#include "store/run_procedures.h"
#include "store/run_store.h"
#include "store/stream_scan.h"

namespace tl {
namespace {

// Moves raw indices [from, to] so that `from` lands on `dest`, every vector of
// the shape. The ranges are clamped to the array.
void MoveRaw(int32_t from, int32_t to, int32_t dest) {
    RawArray& raw = Store().RawData;
    if (from < 0 || dest < 0) return;
    to = std::min(to, raw.UpperIndex());
    if (to < from) return;
    const size_t n = static_cast<size_t>(to - from) + 1;
    if (dest + n - 1 > static_cast<size_t>(raw.UpperIndex())) return;
    for (int v = 1; v <= raw.VectorCount(); ++v) {
        auto vec = raw.Vector(v);
        std::memmove(vec.data() + dest, vec.data() + from, n);
    }
}

// Moves rows [from, to] so that `from` lands on `dest`, every column.
void MoveRows(int32_t from, int32_t to, int32_t dest) {
    RunArray& data = Store().RunData;
    if (from < 0 || dest < 0) return;
    to = std::min(to, data.UpperRow());
    if (to < from) return;
    const size_t n = static_cast<size_t>(to - from) + 1;
    if (dest + n - 1 > static_cast<size_t>(data.UpperRow())) return;
    for (int32_t c = 0; c < data.Columns(); ++c) {
        auto col = data.Column(c);
        std::memmove(col.data() + dest, col.data() + from, n * sizeof(float));
    }
}

void LogRunInfo() {
    const RunStore& s = Store();
    for (int32_t n = 0; n <= 11; ++n) {
        const RunRecord& r = s.RunInfo[n];
        LogDebug(std::to_string(n) + " " + r.Name + " run " + std::to_string(r.RunStart) + " to " +
                 std::to_string(r.RunEnd) + " raw " + std::to_string(r.RawStart) + " to " +
                 std::to_string(r.RawEnd) + " length " + std::to_string(r.RunLength));
    }
}

// Both shapes of RawData share one procedure; only the raw resize differs.
void DeleteRunShaped(const char* name, int32_t run, void (*preserveRaw)(int32_t)) {
    Procedure(name, [&] {
        RunStore& s = Store();
        if (run < 1 || run > std::min(s.RunCount, 11)) {
            LogDebug("illegal run number for deletion: " + std::to_string(run));
            return;
        }
        LogDebug("Preparing to delete run " + std::to_string(run));
        LogRunInfo();
        ShowPleaseWait("Delete Run");
        const int32_t last = s.RunCount;
        const RunRecord& r = s.RunInfo[run];
        const int32_t D = r.RawEnd - r.RawStart + 1;
        const int32_t R = r.RunEnd - r.RunStart + 1;
        if (run < last) {
            const RunRecord& next = s.RunInfo[run + 1];
            LogDebug("Moving Raw Samples from " + std::to_string(next.RawStart) + " by " +
                     std::to_string(D));
            MoveRaw(next.RawStart, s.RunInfo[last].RawEnd, next.RawStart - D);
            LogDebug("Moving Run Samples from " + std::to_string(next.RunStart) + " by " +
                     std::to_string(R));
            MoveRows(next.RunStart, s.RunInfo[last].RunEnd, next.RunStart - R);
        }
        LogDebug("shuffle runinfo array up");
        for (int32_t n = run; n < last; ++n) {
            RunRecord& to = s.RunInfo[n];
            to = s.RunInfo[n + 1];
            to.RawStart -= D;
            to.RawEnd -= D;
            to.RunStart -= R;
            to.RunEnd -= R;
            if (to.RunEnd - to.RunStart + 1 != to.RunLength) LogDebug("length mismatch");
        }
        preserveRaw(s.RawData.UpperIndex() - D);
        PreserveRunData(s.RunData.UpperRow() - R);
        LogDebug("delete empty runinfo bits");
        for (int32_t n = last; n <= 11; ++n) {
            RunRecord& cleared = s.RunInfo[n];
            cleared = RunRecord{};
            cleared.AmbientPressure = cleared.AmbientTemperature = cleared.AmbientHumidity = 0;
        }
        s.RunCount = last - 1;
        LogDebug("The Run Count Has Been Reduced To " + std::to_string(s.RunCount));
    });
}

// Hundredths of a second of a time typed in seconds. The product is nudged
// by a millionth before the truncation so that a two-decimal text such as
// "12.33" gives 1233 and not 1232 from the binary fraction: the default end
// time RunLength / 100 - 0.01 must map to exactly RunLength - 1.
int64_t Hundredths(double seconds) {
    const double h = std::floor(seconds * 100.0 + 1e-6);
    return static_cast<int64_t>(std::clamp(h, -2e9, 2e9));
}

std::string TimeText(double seconds) {
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.15g", seconds);
    return buf;
}

struct RawWindow {
    int32_t first;
    int32_t last;
    int32_t endRow;    // the run's new last row before the shift to RunStart
    int32_t startRow;  // the row of frame `first`
};

// HX40: the count of a run's rows sees a GPS block only away from the edges
// of the raw data (frames 10 on, and more than eight frames before its end).
// A window cut out of a run can bring a block to those edges, where the
// count of the next reprocess would read the block's eight frames as eight
// rows and the run would grow. So the window gives up the rows up to and
// including a block that would begin within its first ten frames, and a last
// row that follows a block beginning eight frames before it (the window then
// ends on the block's first frame, which counts as one row either way). The
// window loses at most a tenth of a second at each end, and its length comes
// through any later reprocess unchanged.
void KeepHx40BlocksWhole(const RunRecord& r, RawWindow& w) {
    const RawArray& raw = Store().RawData;
    const std::span<const uint8_t> v3 = raw.Vector(3);
    const int32_t rawEnd = std::min(r.RawEnd, raw.UpperIndex());
    for (bool moved = true; moved && w.first < w.last;) {
        moved = false;
        for (int32_t b = w.first; b <= std::min(w.first + 9, w.last); ++b) {
            if (!Hx40BlockStarts(v3, b, rawEnd)) continue;
            if (b + 8 > w.last) break;  // the block is the window's last row
            w.startRow += (b - w.first) + 1;
            w.first = b + 8;
            moved = true;
            break;
        }
    }
    if (w.last - 8 >= w.first && Hx40BlockStarts(v3, w.last - 8, rawEnd)) {
        w.last -= 8;
        w.endRow -= 1;
    }
}

// HX40: the raw index of a row is the frame at which "counter - 1" of the
// allocation walk equals the row.
RawWindow MapHx40(const RunRecord& r, int64_t startRow, int64_t endRow) {
    const RawArray& raw = Store().RawData;
    const int32_t rawEnd = std::min(r.RawEnd, raw.UpperIndex());
    RawWindow w{r.RawStart, r.RawEnd, static_cast<int32_t>(endRow), static_cast<int32_t>(startRow)};
    int64_t counter = r.RunStart;
    bool haveFirst = false;
    for (int64_t i = std::max(r.RawStart, 0); i <= rawEnd; ++i) {
        counter += 1;
        if (counter - 1 == startRow && !haveFirst) {
            w.first = static_cast<int32_t>(i);
            haveFirst = true;
        }
        if (counter - 1 == endRow) {
            w.last = static_cast<int32_t>(i);
            break;
        }
        if (Hx40BlockStarts(raw.Vector(3), i, rawEnd)) i += 7;
    }
    KeepHx40BlocksWhole(r, w);
    return w;
}

// SV63: a frame gives `step` rows. After the frame's step is counted, the
// frame is taken for a row when counter + step - 1 is above it and
// counter - 1 - step below it (with a step of 1 this is the HX40 rule,
// counter - 1 equal to the row); the first such frame wins. A second walk from
// the first raw index gives the true end row, since the steps need not meet
// the wanted row exactly.
RawWindow MapSv63(const RunRecord& r, int64_t startRow, int64_t endRow) {
    const RawArray& raw = Store().RawData;
    const int32_t rawStart = std::max(r.RawStart, 0);
    const int32_t rawEnd = std::min(r.RawEnd, raw.UpperIndex());
    const int step = Sv63Step(r.HeaderBytes[0]);
    RawWindow w{r.RawStart, r.RawEnd, static_cast<int32_t>(endRow), static_cast<int32_t>(startRow)};
    int64_t counter = r.RunStart;
    bool haveFirst = false;
    for (int64_t i = rawStart; i <= rawEnd; ++i) {
        if (!Sv63InMargin(i, rawStart, rawEnd)) continue;
        counter += step;
        const auto hits = [&](int64_t row) {
            return counter + step - 1 > row && counter - 1 - step < row;
        };
        if (!haveFirst && hits(startRow)) {
            w.first = static_cast<int32_t>(i);
            haveFirst = true;
        }
        if (hits(endRow)) {
            w.last = static_cast<int32_t>(i);
            break;
        }
        if (Sv63GpsFollows(raw.Vector(1), i)) i += 3;
    }
    counter = startRow;
    for (int64_t i = w.first; i <= std::min(w.last, rawEnd); ++i) {
        if (!Sv63InMargin(i, rawStart, rawEnd)) continue;
        counter += step;
        if (Sv63GpsFollows(raw.Vector(1), i)) i += 3;
    }
    w.endRow = static_cast<int32_t>(counter - 1);
    // The count of a run's rows passes over the first two and the last four
    // frames of its raw data. The window keeps the two frames before its
    // first and the four after its last where the run has them, so that the
    // count of the next reprocess meets exactly the frames counted here and
    // the trimmed run keeps its length.
    w.first = std::max(w.first - 2, rawStart);
    w.last = std::min(w.last + 4, rawEnd);
    return w;
}

}  // namespace

void DeleteRun(int32_t run) {
    const BuildProfile& p = Profile();
    if (p.HardwareHX40 || p.HardwareSV63)
        DeleteRunHX40(run);
    else if (p.HardwareMQ7 || p.HardwareSW63)
        DeleteRunMQ7(run);
    else
        Message("No hardware defined");
}

void DeleteRunHX40(int32_t run) {
    DeleteRunShaped("DeleteRunHX40", run, PreserveRawDataHX40);
}

void DeleteRunMQ7(int32_t run) {
    DeleteRunShaped("DeleteRunMQ7", run, PreserveRawDataMQ7);
}

TrimDefaults TrimRunDefaults(int32_t run) {
    TrimDefaults d;
    d.title = "Trim Run Number: " + std::to_string(run);
    d.startTime = "0.00";
    const int32_t length = (run >= 1 && run <= 11) ? Store().RunInfo[run].RunLength : 0;
    d.endTime = TimeText(length / 100.0 - 0.01);
    return d;
}

TrimResult TrimRun(int32_t run, const std::string& startTime, const std::string& endTime) {
    return ProcedureValue("TrimRun", TrimResult::Done, [&]() -> TrimResult {
        RunStore& s = Store();
        if (run < 1 || run > std::min(s.RunCount, 11)) return TrimResult::Done;
        RunRecord& r = s.RunInfo[run];
        // A record whose raw stretch is empty or lies outside the array has
        // nothing to trim (only a damaged file can make one).
        if (r.RawEnd < r.RawStart || r.RawStart < 0 || r.RawEnd > s.RawData.UpperIndex())
            return TrimResult::Done;
        const double st = GetVal(startTime);
        const double et = GetVal(endTime);
        const int64_t startRow = Hundredths(st) + r.RunStart;
        const int64_t endRow = Hundredths(et) + r.RunStart;
        if (endRow <= startRow) {
            Message("The end time must be after start time");
            return TrimResult::EndNotAfterStart;
        }
        if (st < 0 || et < 0) {
            Message("Times must be positive");
            return TrimResult::NegativeTime;
        }
        if (Hundredths(et) > r.RunLength) {
            Message("End time is after the end of the run");
            return TrimResult::EndAfterRunEnd;
        }
        const BuildProfile& p = Profile();
        const bool stream = p.HardwareMQ7 || p.HardwareSW63;
        if (!p.HardwareSV63 && !p.HardwareHX40 && !stream) {
            Message("No hardware specified!!");
            return TrimResult::NoHardware;
        }
        // The stream families map times to raw indices through the record
        // scan, which arrives with the MQ7 conversion work.
        if (stream && !StreamScanAvailable()) {
            Message("Runs of this hardware cannot be trimmed yet, the run has not been changed");
            return TrimResult::NotAvailable;
        }
        LogDebug("trim requested from " + TimeText(st) + " to " + TimeText(et));
        LogDebug("from run sample " + std::to_string(startRow) + " to " + std::to_string(endRow));
        ShowPleaseWait("Trimming Data");

        RawWindow w{};
        if (p.HardwareSV63) {
            w = MapSv63(r, startRow, endRow);
        } else if (p.HardwareHX40) {
            w = MapHx40(r, startRow, endRow);
        } else {
            const int32_t a = StreamRawIndexOfTime(run, static_cast<int32_t>(Hundredths(st)));
            const int32_t b = StreamRawIndexOfTime(run, static_cast<int32_t>(Hundredths(et)) + 1);
            w = {a < 0 ? r.RawStart : a, b < 0 ? r.RawEnd : b - 1, static_cast<int32_t>(endRow),
                 static_cast<int32_t>(startRow)};
        }
        w.first = std::clamp(w.first, r.RawStart, r.RawEnd);
        if (w.last > r.RawEnd) w.last = r.RawEnd;
        if (w.last < w.first) w.last = w.first;
        // An end time of exactly RunLength hundredths is accepted by the test
        // above though it names the row after the run: the window stops at the
        // run's last row.
        const int32_t first = w.startRow;
        const int32_t endRowCut = std::min(w.endRow, r.RunEnd);
        const int32_t oldRawEnd = r.RawEnd;
        const int32_t oldRunEnd = r.RunEnd;
        const int32_t newRawEnd = r.RawStart + (w.last - w.first);
        const int32_t newRunEnd = r.RunStart + (endRowCut - first);
        LogDebug(std::to_string((oldRawEnd - r.RawStart + 1) - (w.last - w.first + 1)) +
                 " raw samples to be removed");

        LogDebug("move the raw data");
        MoveRaw(w.first, w.last, r.RawStart);
        const bool later = run < s.RunCount;
        const int32_t lastRun = s.RunCount;
        if (later) {
            LogDebug("shuffle up raw data after trimmed run");
            MoveRaw(oldRawEnd + 1, s.RunInfo[lastRun].RawEnd, newRawEnd + 1);
        }
        LogDebug("move the run data");
        MoveRows(first, endRowCut, r.RunStart);
        if (later) {
            LogDebug("shuffle up run data after trimmed run");
            MoveRows(oldRunEnd + 1, s.RunInfo[lastRun].RunEnd, newRunEnd + 1);
        }

        LogDebug("correct runinfo for trimmed section");
        const int32_t rawShift = oldRawEnd - newRawEnd;
        const int32_t rowShift = oldRunEnd - newRunEnd;
        r.RawEnd = newRawEnd;
        r.RunEnd = newRunEnd;
        r.RunLength = r.RunEnd - r.RunStart + 1;
        for (int32_t n = run + 1; n <= lastRun; ++n) {
            RunRecord& k = s.RunInfo[n];
            k.RawStart -= rawShift;
            k.RawEnd -= rawShift;
            k.RunStart -= rowShift;
            k.RunEnd -= rowShift;
        }
        LogDebug("redimension the arrays");
        PreserveRawData(s.RunInfo[lastRun].RawEnd);
        PreserveRunData(s.RunInfo[lastRun].RunEnd);
        HidePleaseWait();
        return TrimResult::Done;
    });
}

}  // namespace tl
