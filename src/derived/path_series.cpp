#include "derived/path_series.h"

#include <cmath>

namespace tl::derived {

namespace {

constexpr int kTerms = PathSeries::kTerms;

// Per row of a run: speed in m/s and the turn limit as CalcCourse forms them,
// the turn with no offset, what an offset of one g adds to it, and 1 where
// the series can't take the row. The loops below carry nothing from row to
// row and have no branches, so that the compiler runs them several rows at a
// time (element-wise vector arithmetic rounds as the scalar code does).
void RunRowTerms(size_t rows, const float* __restrict lat, const float* __restrict kph,
                 float* __restrict v, float* __restrict limit, float* __restrict turn,
                 float* __restrict perG, float* __restrict irregularRow) {
    for (size_t k = 0; k < rows; ++k) {
        v[k] = kph[k] / 3600.0f * 1000.0f;
        limit[k] = v[k] * v[k] / 3.0f;
    }
    for (size_t k = 0; k < rows; ++k) {
        float a = lat[k] * 9.80665f;
        const bool roomy = limit[k] - a > PathSeries::kTightRoom;
        a = a > limit[k] ? limit[k] : a;
        turn[k] = a / v[k] / 100.0f;
        perG[k] = 9.80665f / v[k] / 100.0f;
        // x - x is 0 for a number and not a number for an infinity or NaN.
        const bool regular =
            (kph[k] > 0.0f) & roomy & (turn[k] - turn[k] == 0.0f) & (perG[k] - perG[k] == 0.0f);
        irregularRow[k] = regular ? 0.0f : 1.0f;
    }
}

// Binomial coefficients, for moving the sums' origin of W.
struct Binomials {
    double c[kTerms][kTerms] = {};
    constexpr Binomials() {
        for (int p = 0; p < kTerms; ++p) {
            c[p][0] = 1;
            for (int q = 1; q <= p; ++q) c[p][q] = c[p - 1][q - 1] + (q < p ? c[p - 1][q] : 0);
        }
    }
};
constexpr Binomials kBinomials;

}  // namespace

void PathSeries::PrepareRun(const float* lat, const float* kph, size_t rows) {
    v_.resize(rows);
    limit_.resize(rows);
    sinPhi_.resize(rows);
    cosPhi_.resize(rows);
    phi_.resize(rows);
    omega_.resize(rows);
    irregularBefore_.resize(rows + 1);
    if (scratch_.size() < 3 * rows) scratch_.resize(3 * rows);
    float* turn = scratch_.data();
    float* perG = turn + rows;
    float* irregularRow = perG + rows;
    RunRowTerms(rows, lat, kph, v_.data(), limit_.data(), turn, perG, irregularRow);
    // The sums, and the sine and cosine carried by rotation through each
    // row's turn, in double, taken afresh after a large turn and every 256
    // rows. A row the series can't take adds nothing.
    double phi = 0, omega = 0, sinPhi = 0, cosPhi = 1;
    int32_t irregular = 0;
    for (size_t k = 0; k < rows; ++k) {
        irregularBefore_[k] = irregular;
        if (irregularRow[k] == 0.0f) {
            const double d = turn[k];
            phi += d;
            omega += perG[k];
            if (std::fabs(d) < 0.05 && (k & 255) != 255) {
                const double d2 = d * d;
                const double sd = d * (1 - d2 / 6 * (1 - d2 / 20 * (1 - d2 / 42)));
                const double cd = 1 - d2 / 2 * (1 - d2 / 12 * (1 - d2 / 30 * (1 - d2 / 56)));
                const double ns = sinPhi * cd + cosPhi * sd;
                cosPhi = cosPhi * cd - sinPhi * sd;
                sinPhi = ns;
            } else {
                sinPhi = std::sin(phi);
                cosPhi = std::cos(phi);
            }
        } else {
            ++irregular;
        }
        phi_[k] = phi;
        omega_[k] = omega;
        sinPhi_[k] = static_cast<float>(sinPhi);
        cosPhi_[k] = static_cast<float>(cosPhi);
    }
    irregularBefore_[rows] = irregular;
    windowOk_ = false;
    runOk_ = false;
}

void PathSeries::AddRows(size_t from, size_t to, double omegaBase, double sign) {
    // Local sums: the compiler may keep them in registers, as it can't the
    // members (a double member might be a row of omega_ for all it knows).
    double cosSum[kTerms], sinSum[kTerms];
    for (int p = 0; p < kTerms; ++p) {
        cosSum[p] = cosRun_[p];
        sinSum[p] = sinRun_[p];
    }
    const double* omega = omega_.data();
    const float *v = v_.data(), *cosPhi = cosPhi_.data(), *sinPhi = sinPhi_.data();
    for (size_t k = from; k < to; ++k) {
        const double w = omega[k] - omegaBase;
        const double step = sign * static_cast<double>(v[k] / 100.0f);
        double c = step * cosPhi[k], s = step * sinPhi[k];
#pragma GCC unroll 8
        for (int p = 0; p < kTerms; ++p) {
            cosSum[p] += c;
            sinSum[p] += s;
            c *= w;
            s *= w;
        }
    }
    for (int p = 0; p < kTerms; ++p) {
        cosRun_[p] = cosSum[p];
        sinRun_[p] = sinSum[p];
    }
}

void PathSeries::MoveOrigin(double delta) {
    // With W' = W - delta: sum of x W'^p = sum over q of C(p, q) (-delta)^(p-q)
    // times sum of x W^q.
    double power[kTerms];
    power[0] = 1;
    for (int p = 1; p < kTerms; ++p) power[p] = power[p - 1] * -delta;
    double cosMoved[kTerms], sinMoved[kTerms];
    for (int p = 0; p < kTerms; ++p) {
        cosMoved[p] = sinMoved[p] = 0;
        for (int q = 0; q <= p; ++q) {
            cosMoved[p] += kBinomials.c[p][q] * power[p - q] * cosRun_[q];
            sinMoved[p] += kBinomials.c[p][q] * power[p - q] * sinRun_[q];
        }
    }
    for (int p = 0; p < kTerms; ++p) {
        cosRun_[p] = cosMoved[p];
        sinRun_[p] = sinMoved[p];
    }
}

bool PathSeries::PrepareWindow(size_t first, size_t n, float heading) {
    windowOk_ = false;
    if (n == 0 || first + n > v_.size()) return false;
    if (irregularBefore_[first + n] != irregularBefore_[first]) return false;
    auto before = [](const std::vector<double>& sums, size_t k) {
        return k > 0 ? sums[k - 1] : 0.0;
    };
    const double omegaBefore = before(omega_, first);
    const size_t end = first + n;
    // Sums of the run's own heading (sine and cosine of its sum from the
    // run's first row), W counted from the window's start. A fit's window
    // starts at the fix where the last one's written path ended and reaches
    // a little further: the sums follow it, taking off the rows left behind
    // and adding the new ones, so that each row is added and taken off once.
    // They are made afresh for a window elsewhere, and every 256 windows.
    if (runOk_ && first >= runFirst_ && first < runEnd_ && moves_ < 256) {
        const double oldBefore = before(omega_, runFirst_);
        AddRows(runFirst_, first, oldBefore, -1.0);
        MoveOrigin(omegaBefore - oldBefore);
        if (end < runEnd_)
            AddRows(end, runEnd_, omegaBefore, -1.0);
        else
            AddRows(runEnd_, end, omegaBefore, 1.0);
        ++moves_;
    } else {
        for (int p = 0; p < kTerms; ++p) cosRun_[p] = sinRun_[p] = 0;
        AddRows(first, end, omegaBefore, 1.0);
        moves_ = 0;
    }
    runFirst_ = first;
    runEnd_ = end;
    runOk_ = true;
    // The plain path's heading at row k of the window is the start heading
    // plus the run's sum up to k less its sum before the window: the sums
    // turn by that difference.
    const float sh = std::sin(heading), ch = std::cos(heading);
    const float sb = first > 0 ? sinPhi_[first - 1] : 0.0f;
    const float cb = first > 0 ? cosPhi_[first - 1] : 1.0f;
    const double sc = sh * cb - ch * sb, cc = ch * cb + sh * sb;
    for (int p = 0; p < kTerms; ++p) {
        sinSum_[p] = sc * cosRun_[p] + cc * sinRun_[p];
        cosSum_[p] = cc * cosRun_[p] - sc * sinRun_[p];
    }
    wEnd_ = static_cast<float>(omega_[end - 1] - omegaBefore);
    turn_ = phi_[end - 1] - before(phi_, first);
    heading_ = heading;
    windowOk_ = true;
    return true;
}

bool PathSeries::End(float o, float m, float& dx, float& dy, float& endHeading) const {
    // Asked so that an offset not a number fails too.
    if (!windowOk_ || !(std::fabs(o) * wEnd_ <= kMaxTurn) ||
        !(std::fabs(o) * 9.80665f < kTightRoom - 0.01f))
        return false;
    // The p-th derivative of sin(h + o W) in o is W^p times sin, cos, -sin,
    // -cos of h in turn; of cos(h + o W), cos, -sin, -cos, sin.
    double x = 0, y = 0, coef = 1;
    for (int p = 0; p < kTerms; ++p) {
        const double s = coef * sinSum_[p], c = coef * cosSum_[p];
        switch (p % 4) {
            case 0:
                x += s;
                y += c;
                break;
            case 1:
                x += c;
                y -= s;
                break;
            case 2:
                x -= s;
                y -= c;
                break;
            default:
                x -= c;
                y += s;
                break;
        }
        coef *= static_cast<double>(o) / (p + 1);
    }
    dx = static_cast<float>(x * m);
    dy = static_cast<float>(y * m);
    endHeading = static_cast<float>(heading_ + turn_ + static_cast<double>(o) * wEnd_);
    return true;
}

}  // namespace tl::derived
