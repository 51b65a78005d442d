// Time slip: where on a lap time was lost against the best passage. Each
// sector (rows 90 to 100 of the measurement rows) takes the fastest passage of
// any run as its reference; every other passage of about the same length is
// compared with it point by point along the distance, giving the rate of loss
// (slot 24, 100 = one second lost per second) and its running total (slot 23),
// which restarts at each crossing of the lap marker.
#include "derived/time_slip.h"

#include <algorithm>
#include <memory>
#include <string>

#include "core/errors.h"
#include "core/log.h"
#include "core/support.h"
#include "derived/derived_common.h"
#include "results/laps.h"
#include "results/track_markers.h"
#include "store/run_procedures.h"
#include "store/run_store.h"
#include "store/slot_columns.h"

namespace tl {

namespace {

using Crossings = std::vector<int32_t>;

// The reference passage of a sector: the run and the 1-based ordinals of the
// start and end crossings.
struct BestPassage {
    int32_t run = 0;
    int32_t start = 0;
    int32_t end = 0;
    bool operator==(const BestPassage&) const = default;
};

class TimeSlip {
  public:
    TimeSlip()
        : time_(derived::Col(slot::Time)),
          speed_(derived::Col(slot::SpeedKph)),
          dist_(derived::Col(slot::DistanceKm)),
          rate_(derived::Col(slot::RateOfTimeSlip)),
          total_(derived::Col(slot::TimeSlip)),
          runs_(std::clamp(Store().RunCount, 0, 11)),
          upper_(Store().RunData.UpperRow()) {}

    bool Usable() const { return time_ && speed_ && dist_ && rate_ && total_; }
    void Sector(int row);
    void Totals();

  private:
    // Every stored crossing lies inside its run, so inside the table; rows
    // come from the marker lists and are checked all the same.
    bool RowOk(int32_t row) const { return row >= 1 && row <= upper_; }
    template <class Fn>
    void ForEachPair(int a, int b, Fn fn) const;
    void Compare(int32_t run, int32_t rowC, int32_t rowE, const BestPassage& best,
                 int32_t bestStartRow, int32_t bestEndRow);

    DistanceFinder& FinderOf(int32_t run) {
        if (!finder_ || finderRun_ != run) {
            finder_ = std::make_unique<DistanceFinder>(run);
            finderRun_ = run;
        }
        return *finder_;
    }

    std::unique_ptr<DistanceFinder> finder_;
    int32_t finderRun_ = 0;
    const float* time_;
    const float* speed_;
    const float* dist_;
    float* rate_;
    float* total_;
    int32_t runs_;
    int32_t upper_;
};

// Every pair of a start crossing and an end crossing in the same run, in
// the order of run, start and end; the ordinals are 1-based.
template <class Fn>
void TimeSlip::ForEachPair(int a, int b, Fn fn) const {
    for (int32_t run = 1; run <= runs_; ++run) {
        const Crossings& starts = MarkerCrossings(a, run);
        const Crossings& ends = MarkerCrossings(b, run);
        for (size_t c = 0; c < starts.size(); ++c) {
            if (!RowOk(starts[c])) continue;
            for (size_t e = 0; e < ends.size(); ++e)
                if (RowOk(ends[e]))
                    fn(BestPassage{run, static_cast<int32_t>(c) + 1, static_cast<int32_t>(e) + 1},
                       starts[c], ends[e]);
        }
    }
}

void TimeSlip::Sector(int row) {
    const MeasurementRow& sector = Measurements().Rows[row];
    const int a = FindTrackMarkerIndex(sector.StartMarker);
    const int b = FindTrackMarkerIndex(sector.EndMarker);

    float bestTime = 1.0E+20f;
    BestPassage best;
    int32_t bestStartRow = 0, bestEndRow = 0;
    ForEachPair(a, b, [&](const BestPassage& pair, int32_t rowC, int32_t rowE) {
        const float t = time_[rowE] - time_[rowC];
        if (t > 0.0f && t < bestTime) {
            bestTime = t;
            best = pair;
            bestStartRow = rowC;
            bestEndRow = rowE;
        }
    });
    if (best.run == 0) return;

    ForEachPair(a, b, [&](const BestPassage& pair, int32_t rowC, int32_t rowE) {
        if (pair == best || !(time_[rowE] - time_[rowC] > 0.0f)) return;
        Compare(pair.run, rowC, rowE, best, bestStartRow, bestEndRow);
    });
}

void TimeSlip::Compare(int32_t run, int32_t rowC, int32_t rowE, const BestPassage& best,
                       int32_t bestStartRow, int32_t bestEndRow) {
    const float d = dist_[rowE] - dist_[rowC];
    const float dRef = dist_[bestEndRow] - dist_[bestStartRow];
    const float scale = d > 0.0f ? dRef / d : 99.0f;
    // Only a true passage of the same sector, within a tenth of the
    // reference's length, is compared; a pair spanning laps fails here.
    if (!IsBetween(0.9, scale, 1.1)) return;
    const float refStart = dist_[bestStartRow];
    DistanceFinder& finder = FinderOf(best.run);
    const int32_t from = std::max(Store().RunInfo[run].RunStart + 1, rowC);
    for (int32_t i = std::max(from, 1); i <= rowE; ++i) {
        const float target = (dist_[i] - dist_[rowC]) * scale + refStart;
        // The reference crossing's ordinal is the start hint, not its row:
        // the search falls back to the start of the run when the hint lies
        // beyond the distance. This is how the search has always been seeded.
        const int32_t k = finder.Find(target, best.start);
        if (!RowOk(k)) continue;
        const float vRef = speed_[k] / 3600.0f * 1000.0f;
        const float step = (dist_[i] - dist_[i - 1]) * 1000.0f;
        if (vRef > 0.0f) {
            const float r = (step / vRef - (time_[i] - time_[i - 1])) * 10000.0f;
            rate_[i] = FindClip(-100.0f, r, 100.0f);
        }
    }
}

void TimeSlip::Totals() {
    const int lap = CheckForLapMarker();
    for (int32_t run = 1; run <= runs_; ++run) {
        const RunRecord& rec = Store().RunInfo[run];
        if (rec.RunStart < 1 || rec.RunEnd > upper_ || rec.RunEnd < rec.RunStart) continue;
        const Crossings& laps = MarkerCrossings(lap, run);
        size_t next = 0;
        total_[rec.RunStart] = 0.0f;
        for (int32_t i = rec.RunStart + 1; i <= rec.RunEnd; ++i) {
            total_[i] = rate_[i] / 10000.0f + total_[i - 1];
            // The crossings are ascending, so one pointer walks them.
            while (next < laps.size() && laps[next] < i) ++next;
            if (lap > 0 && next < laps.size() && laps[next] == i) total_[i] = 0.0f;
        }
    }
}

}  // namespace

void RecalcTimeSlip() {
    Procedure("RecalcTimeSlip", [&] {
        LogDebug("Recalculate the rate of time slip");
        if (!SlotEnabled(slot::RateOfTimeSlip) && !SlotEnabled(slot::TimeSlip)) return;
        const RunStore& s = Store();
        if (s.RunCount < 1) return;
        const int32_t last = s.RunInfo[std::min(s.RunCount, 11)].RunEnd;
        if (last < 1 || last > s.RunData.UpperRow()) return;
        DeleteVariableData(1, last, slot::RateOfTimeSlip);
        DeleteVariableData(1, last, slot::TimeSlip);
        DeleteVariableData(1, last, slot::Scratch);
        TimeSlip slip;
        if (!slip.Usable()) return;
        for (int row = kFirstSectorRow; row <= kLastSectorRow; ++row) {
            LogDebug("calculate the rate of time slip for sector index " + std::to_string(row));
            slip.Sector(row);
        }
        LogDebug("add up the rate of time slip to get the total time slip");
        slip.Totals();
        // With one of the two slots disabled its values went to the shared
        // "*No Data*" column; that column is left empty again.
        if (!SlotEnabled(slot::RateOfTimeSlip) || !SlotEnabled(slot::TimeSlip))
            DeleteVariableData(1, last, slot::Scratch);
        LogDebug("time slip completed");
    });
}

}  // namespace tl
