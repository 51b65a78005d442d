// Beacon matching: the search for the best alignment of the gaps between the
// beacons with the expected sections, with an error measure (1 for a false or
// missed beacon that a merge or a skip explains, 10 for a stretch nothing
// explains, 5 for each section skipped to get back in step), and the table of
// beacons by lap built from the best alignment.
#include "derived/beacons.h"

#include <algorithm>
#include <sstream>
#include <string>

#include "core/errors.h"
#include "core/log.h"
#include "derived/derived_common.h"
#include "derived/reference_lap.h"

namespace tl {

using derived::Col;
using derived::RowsOf;

namespace {

constexpr int kBeaconSlot = 42;
// Beacons kept per run, for each beacon of the lap.
constexpr int32_t kBeaconsPerLapLimit = 500;
// Sections summed at most when a long gap is laid over missing beacons.
constexpr int kMaxSectionsSummed = 100000;
// Design note: a beacon count beyond this (a mistyped option) is taken as no
// beacons at all, and a table never grows beyond kMaxTableEntries, so that a
// hostile count or distance can't exhaust memory.
constexpr int kMaxBeaconsPerLap = 1000;
constexpr int64_t kMaxTableEntries = 10000000;

int BeaconsPerLap() {
    const int n = RefLap().NumOfBeacons;
    return n >= 1 && n <= kMaxBeaconsPerLap ? n : 0;
}

// Metres between two rows by slot 11 (km).
float Metres(const float* dist, int32_t from, int32_t to) {
    return (dist[to] - dist[from]) * 1000.0f;
}

int PosMod(int a, int n) {
    const int m = a % n;
    return m < 0 ? m + n : m;
}

std::vector<int32_t> BeaconRows(int32_t run, bool log) {
    std::vector<int32_t> rows;
    const auto rr = RowsOf(run);
    const float* b = Col(kBeaconSlot);
    const int32_t limit = BeaconsPerLap() * kBeaconsPerLapLimit;
    if (!rr.ok || !b || limit <= 0) return rows;
    for (int32_t i = rr.first + 1; i <= rr.last; ++i) {
        if (b[i] != 1.0f || b[i - 1] == 1.0f) continue;
        if (static_cast<int32_t>(rows.size()) >= limit) break;
        if (log) derived::LogParts("Marker Found at ", i);
        rows.push_back(i);
    }
    return rows;
}

// One candidate start of the search: the gaps Gap(1) to Gap(n) (Gap(k) ends
// at beacon k) walked forwards and backwards against the expected sections
// Exp(1) to Exp(N), adding up the error.
class AlignmentSearch {
  public:
    AlignmentSearch(const std::vector<float>& gap, const std::vector<float>& exp, int n,
                    int beacons)
        : gap_(gap), exp_(exp), n_(n), N_(beacons) {}

    // fromWindow: the forward walk starts at gap p itself rather than after
    // the lap of gaps the expected sections were taken from.
    int Error(int p, bool fromWindow) {
        err_ = 0;
        Forwards(fromWindow ? p : p + N_);
        Backwards(p);
        return err_;
    }

  private:
    float Gap(int k) const { return k >= 1 && k <= n_ ? gap_[k] : 0.0f; }
    // Sections wrap round the lap; Exp(0) is the last one.
    float Exp(int m) const { return exp_[PosMod(m - 1, N_) + 1]; }

    void Forwards(int from) {
        int g = from, m = 1;
        derived::LogParts("Search forwards from ", g);
        while (g <= n_) {
            derived::LogParts("Check Beacon ", g);
            if (TestLapDistance(Exp(m), Gap(g))) {
                derived::LogParts("Section Match ", g);
            } else if (1.03f * Exp(m) + 20.0f > Gap(g)) {
                // Shorter than expected: a false beacon may lie in it.
                derived::LogParts("Section too long ", g);
                const float sum = g + 1 >= n_ ? Gap(g) : Gap(g) + Gap(g + 1);
                if (TestLapDistance(Exp(m), sum)) {
                    derived::LogParts("skipping a beacon solves the problem");
                    ++g;
                    err_ += 1;
                } else {
                    derived::LogParts("skipping a beacon doesn't help");
                    err_ += 10;
                    ++g;
                    ResyncForwards(g, m);
                }
            } else {
                // Longer than expected: a beacon may have been missed.
                derived::LogParts("Section too short ", g);
                const float next = Exp(m % N_ + 1);
                if (TestLapDistance(Exp(m) + next, Gap(g))) {
                    derived::LogParts("skipping a section solves the problem");
                    ++m;
                    err_ += 1;
                } else {
                    derived::LogParts("skipping a section doesn't help");
                    err_ += 10;
                    if (g < n_) ++g;
                    ResyncForwards(g, m);
                }
            }
            m = m % N_ + 1;
            ++g;
        }
    }

    void ResyncForwards(int& g, int& m) {
        while (!TestLapDistance(Exp(m), Gap(g)) && g < n_) {
            ++m;
            derived::LogParts("skip forward a section");
            err_ += 5;
            if (m == N_ + 1) {
                derived::LogParts("skip forward a beacon");
                ++g;
                m = 1;
            }
        }
        if (g < N_) derived::LogParts("Match Finally Found!");
    }

    // The same walk towards the start of the run. The section before
    // section 1 is section N: the modulus stays positive.
    void Backwards(int p) {
        int g = p - 1, m = N_;
        derived::LogParts("Search backwards from ", g);
        while (g > 1) {
            derived::LogParts("Check Beacon ", g);
            if (TestLapDistance(Exp(m), Gap(g))) {
                derived::LogParts("Section Match");
            } else if (1.03f * Exp(m) + 20.0f > Gap(g)) {
                derived::LogParts("Section too long");
                const float sum = g < 2 ? Gap(g) : Gap(g) + Gap(g - 1);
                if (TestLapDistance(Exp(m), sum)) {
                    derived::LogParts("skipping a beacon solves the problem");
                    --g;
                    err_ += 1;
                } else {
                    derived::LogParts("skipping a beacon doesn't help");
                    err_ += 10;
                    --g;
                    ResyncBackwards(g, m);
                }
            } else {
                derived::LogParts("Section too long");
                const float previous = Exp(PosMod(m - 2, N_) + 1);
                if (TestLapDistance(Exp(m) + previous, Gap(g))) {
                    derived::LogParts("skipping a section solves the problem");
                    --m;
                    err_ += 1;
                } else {
                    derived::LogParts("skipping a section doesn't help");
                    err_ += 10;
                    if (g > 1) --g;
                    ResyncBackwards(g, m);
                }
            }
            m = PosMod(m - 2, N_) + 1;
            --g;
        }
    }

    void ResyncBackwards(int& g, int& m) {
        while (!TestLapDistance(Exp(m), Gap(g)) && g >= 2) {
            --m;
            derived::LogParts("skip forward a section");
            err_ += 5;
            if (m == 0) {
                derived::LogParts("skip forward a beacon");
                --g;
                m = N_;
            }
        }
    }

    const std::vector<float>& gap_;
    const std::vector<float>& exp_;
    const int n_;
    const int N_;
    int err_ = 0;
};

}  // namespace

void BeaconTable::Size(int32_t lapCount, int32_t beaconCount) {
    laps = std::max(lapCount, 0);
    beacons = std::max(beaconCount, 0);
    rows.assign(static_cast<size_t>(laps) * beacons, 0);
}

int32_t BeaconTable::At(int32_t lap, int32_t beacon) const {
    if (lap < 0 || lap >= laps || beacon < 0 || beacon >= beacons) return 0;
    return rows[static_cast<size_t>(lap) * beacons + beacon];
}

void BeaconTable::Set(int32_t lap, int32_t beacon, int32_t row) {
    if (lap < 0 || beacon < 0 || beacon >= beacons) return;
    if (static_cast<int64_t>(lap) * beacons >= kMaxTableEntries) return;
    if (lap >= laps) {
        laps = lap + 1;
        rows.resize(static_cast<size_t>(laps) * beacons, 0);
    }
    rows[static_cast<size_t>(lap) * beacons + beacon] = row;
}

bool TestLapDistance(float a, float b) {
    return b > 0.97f * a - 20.0f && b < 1.03f * a + 20.0f;
}

std::vector<int32_t> FindBeaconRows(int32_t run) {
    return BeaconRows(run, false);
}

int ExtractValidMarkers(int32_t run, BeaconTable& table, std::vector<float>& sections,
                        bool useGiven) {
    return ProcedureValue("ExtractValidMarkers", -1, [&] {
        derived::LogParts("search for valid markers");
        table.Clear();
        const int N = BeaconsPerLap();
        const std::vector<int32_t> beacon = BeaconRows(run, true);
        const int n = static_cast<int>(beacon.size()) - 1;
        const float* dist = Col(slot::DistanceKm);
        if (n < 2 || N < 1 || !dist) {
            if (!useGiven) sections.clear();
            return -1;
        }
        derived::LogParts("Beacons Found = ", n + 1);
        std::vector<float> gap(n + 1, 0.0f);
        for (int k = 1; k <= n; ++k) {
            gap[k] = Metres(dist, beacon[k - 1], beacon[k]);
            derived::LogParts("   distance of ", gap[k]);
        }
        auto given = [&](int k) {
            return k < static_cast<int>(sections.size()) ? sections[k] : 0.0f;
        };

        std::vector<float> exp(N + 1, 0.0f);
        AlignmentSearch search(gap, exp, n, N);
        int best = 0, bestErr = -1;
        for (int p = 1; p <= n - N - 1; ++p) {
            for (int m = 1; m <= N; ++m) {
                exp[m] = useGiven ? given(m - 1) : gap[p + m - 1];
                derived::LogParts("Distance of section ", m, " = ", exp[m]);
            }
            const int err = search.Error(p, useGiven);
            if (p == 1 || bestErr > err) {
                bestErr = err;
                best = p;
            }
            derived::LogParts("start ", p, ", total error = ", err);
        }

        // Design note: with given sections the gaps of the best start are not
        // taken as the lap: the search with given sections compares those gaps
        // too (they are not where the expected lengths came from), and a
        // missed or false beacon among them would otherwise become a section
        // of the table. The given sections serve the table instead.
        std::vector<float> found(N, 0.0f);
        if (best > 0) derived::LogParts("lowest error ", bestErr, ", at ", best);
        const int from = best > 0 ? best : 1;
        for (int k = 0; k < N; ++k)
            found[k] = useGiven ? given(k) : (from + k <= n ? gap[from + k] : 0.0f);
        if (!useGiven) sections = found;
        BuildBeaconTable(table, best, found, run);
        return bestErr;
    });
}

void BuildBeaconTable(BeaconTable& table, int32_t /*start*/, const std::vector<float>& sections,
                      int32_t run) {
    Procedure("BuildBeaconTable", [&] {
        table.Clear();
        const int N = BeaconsPerLap();
        const float* dist = Col(slot::DistanceKm);
        if (N < 1 || !dist) return;
        const std::vector<int32_t> beacon = BeaconRows(run, false);
        const int count = static_cast<int>(beacon.size());
        table.Size(count + 1, N);
        if (count < 2) return;
        auto S = [&](int k) {
            return k >= 0 && k < static_cast<int>(sections.size()) ? sections[k] : 0.0f;
        };
        auto gapOf = [&](int from, int to) { return Metres(dist, beacon[from], beacon[to]); };

        // Synchronise on the first beacon whose gap is section 0. Design note:
        // where the next gap exists it must be section 1 as well, so that a
        // lap with two sections of about the same length doesn't start on the
        // wrong one; failing that, the first gap like section 0 serves.
        int q = -1;
        for (int k = 0; k + 1 < count && q < 0; ++k)
            if (TestLapDistance(gapOf(k, k + 1), S(0)) &&
                (k + 2 >= count || TestLapDistance(gapOf(k + 1, k + 2), S(1 % N))))
                q = k;
        for (int k = 0; k + 1 < count && q < 0; ++k)
            if (TestLapDistance(gapOf(k, k + 1), S(0))) q = k;
        if (q < 0) return;

        // s: the beacon taken as beacon `col` of lap `lap`; e: the beacon that
        // ends its gap (further on than s + 1 once false beacons are merged).
        // Design note: merging keeps the row of the beacon the gap starts at,
        // so a false pulse never takes a real beacon's place in the table.
        int s = q, e = q + 1, lap = q, col = 0;
        int lastLap = -1, lastCol = -1;
        auto store = [&] {
            table.Set(lap, col, beacon[s]);
            lastLap = lap;
            lastCol = col;
        };
        auto advanceTo = [&](int nextLap, int nextCol) {
            lap = nextLap;
            col = nextCol;
            if (col >= N) {
                col = 0;
                ++lap;
            }
            s = e;
            e = s + 1;
        };
        while (s < count) {
            // The last beacon has no gap after it: the gap before it placed it.
            if (s == count - 1) {
                store();
                break;
            }
            const float g = gapOf(s, e);
            if (TestLapDistance(g, S(col))) {
                store();
                advanceTo(lap, col + 1);
                continue;
            }
            if (g < 0.97f * S(col) - 20.0f) {
                // A false beacon ends the gap: merge it with the next gap.
                if (e == count - 1) {
                    store();
                    break;
                }
                ++e;
                continue;
            }
            // Beacons missing: lay further sections over the gap.
            float sum = S(col);
            int c2 = col, l2 = lap;
            for (int steps = 0;
                 !TestLapDistance(sum, g) && 0.97f * sum - 20.0f < g && steps < kMaxSectionsSummed;
                 ++steps) {
                if (++c2 == N) {
                    c2 = 0;
                    ++l2;
                }
                sum += S(c2);
            }
            if (TestLapDistance(sum, g)) {
                store();
                advanceTo(l2, c2 + 1);
                continue;
            }
            // Nothing fits: try the gap as other sections, then the next gaps,
            // until one fits. The lap follows the last beacon stored.
            bool found = false;
            while (!found) {
                if (++col == N) {
                    col = 0;
                    s = e;
                    e = s + 1;
                    if (s >= count - 1) break;
                }
                found = TestLapDistance(gapOf(s, e), S(col));
            }
            if (!found) break;
            if (lastLap >= 0) lap = col > lastCol ? lastLap : lastLap + 1;
        }
    });
}

}  // namespace tl
