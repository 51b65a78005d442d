// The dead-reckoned path of the GPS track map's fit, as a power series in the
// lateral-acceleration offset.
//
// A fit runs the path of a window (CalcCourse row after row from the fix at
// its start) with an offset o on the lateral acceleration and a multiplier m
// on the distance, round after round, and wants only the chord to the
// path's end. Run row by row, that is tens of millions of rows for an hour's
// run: every fix has a fit, and every round runs the path and a probe over
// the whole window.
//
// But the path's heading at row k of the window is the heading of the path
// with no offset plus o * W(k), W(k) being the sum of g / v / 100 over the
// window's rows up to k (CalcCourse turns by a / v / 100 with a = (lat + o) *
// g), and its steps are m times those of m = 1. So the ends of the chord are
//
//   dx = m * sum over p of o^p / p! * d^p/dh^p of sum_k step_k sin(h_k) W_k^p
//
// (and dy with cos): a series whose coefficients are sums over the window of
// the plain path's step times the sine and cosine of its heading and powers
// of W. They are worked out once per window (mostly by carrying over the
// last window's, which the next fit's window largely shares), and then every
// round's chords cost a few terms. The plain path's heading at every row of
// the run is worked out once per run.
//
// This holds while no row's acceleration reaches the turn limit v^2 / 3 of
// CalcCourse (there the turn stops following o), every row moves, and o * W
// stays small enough for the terms kept; End says when it doesn't, and the
// caller then runs the path row by row. The series agrees with CalcCourse's
// single-precision walk within a millimetre over a window of a few hundred
// metres, which is the walk's own rounding; a fit stops at half a metre.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tl::derived {

class PathSeries {
  public:
    // Terms kept: six, while |o| * W stays within kMaxTurn at the window's
    // end, leave out less than 2e-8 of the chord.
    static constexpr int kTerms = 6;
    static constexpr float kMaxTurn = 0.15f;
    // How close to the turn limit (m/s^2) a row's acceleration may come;
    // offsets are taken up to this less a margin for rounding, so that none
    // reaches the limit.
    static constexpr float kTightRoom = 0.6f * 9.80665f;

    // The run-wide tables of n rows of lateral acceleration (g) and speed
    // (kph). Afterwards Speed() and Limit() give each row's speed in m/s and
    // turn limit v^2 / 3, as CalcCourse forms them.
    void PrepareRun(const float* lat, const float* kph, size_t rows);
    const float* Speed() const { return v_.data(); }
    const float* Limit() const { return limit_.data(); }

    // The sums of the window of n rows from row first (counted from the
    // run's first row), for paths that start at heading. False, and End
    // refuses, when a row of the window can't be taken: at rest, not a
    // number, or within kTightRoom of the turn limit.
    bool PrepareWindow(size_t first, size_t n, float heading);

    // The end of the path with offset o and multiplier m, from its start,
    // and the heading it ends on. False when the series doesn't hold for o.
    bool End(float o, float m, float& dx, float& dy, float& endHeading) const;

  private:
    // Per row: speed and turn limit; the plain path's heading summed from
    // the run's first row, its sine and cosine, and the sum of g / v / 100;
    // the count of rows before each that the series can't take. Then room
    // for per-row terms, used while the tables are made.
    std::vector<float> v_, limit_, sinPhi_, cosPhi_, scratch_;
    std::vector<double> phi_, omega_;
    std::vector<int32_t> irregularBefore_;
    // Adds sign times the rows from..to-1 to the run's sums, W counted from
    // omegaBase; moves the sums' origin of W on by delta.
    void AddRows(size_t from, size_t to, double omegaBase, double sign);
    void MoveOrigin(double delta);
    // The sums over the rows runFirst_..runEnd_-1 of step times the cosine
    // and sine of the run's own heading, times W^p from runFirst_, and how
    // many windows they have followed since they were made afresh.
    bool runOk_ = false;
    size_t runFirst_ = 0, runEnd_ = 0;
    int moves_ = 0;
    double cosRun_[kTerms] = {};
    double sinRun_[kTerms] = {};
    // The current window: the sums for p = 0 to kTerms - 1, W at its last
    // row, the plain path's turn over it and the heading it starts on.
    bool windowOk_ = false;
    double sinSum_[kTerms] = {};
    double cosSum_[kTerms] = {};
    float wEnd_ = 0;
    double turn_ = 0;
    float heading_ = 0;
};

}  // namespace tl::derived
