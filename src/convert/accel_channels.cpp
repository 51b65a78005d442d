#include "convert/accel_channels.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "convert/gps.h"
#include "core/build_profile.h"
#include "core/config_store.h"
#include "core/errors.h"
#include "core/log.h"
#include "core/support.h"
#include "core/ui_services.h"
#include "store/slot_columns.h"

namespace tl {

PulseTimerState& PulseTimers() {
    static PulseTimerState state;
    return state;
}

namespace {

bool InRaw(int32_t position) {
    const RawArray& raw = Store().RawData;
    return raw.planes() && position >= 0 && position <= raw.UpperIndex();
}

}  // namespace

float ExtractLongAccel(int32_t position) {
    if (!InRaw(position)) return 0;
    const RawArray& raw = Store().RawData;
    return LongAccelOf(raw(position, 4), raw(position, 8));
}

float ExtractLatAccel(int32_t position) {
    if (!InRaw(position)) return 0;
    const RawArray& raw = Store().RawData;
    return LatAccelOf(raw(position, 5), raw(position, 8));
}

float CalcWheelSpeed(int32_t position) {
    if (!InRaw(position)) return 0;
    const RawArray& raw = Store().RawData;
    return WheelSpeedOfFrame(PulseTimers(), position, raw(position, 3), raw(position, 6),
                             raw(position, 8));
}

float CalcRpm(int32_t position, int useWheel, float pulsesPerRev) {
    if (!InRaw(position)) return 0;
    const RawArray& raw = Store().RawData;
    return RpmOfFrame(PulseTimers(), position, raw(position, 3), raw(position, 6), raw(position, 7),
                      raw(position, 8), useWheel, pulsesPerRev);
}

// --- the run-wide correction ---

namespace {

// The run's rows as they stand in RunData, cut to the table.
bool RunRowRange(int32_t run, int32_t& first, int32_t& last) {
    if (run < 1 || run > 11) return false;
    const RunRecord& r = Store().RunInfo[run];
    first = std::max(r.RunStart, 0);
    last = std::min(r.RunEnd, Store().RunData.UpperRow());
    return last >= first;
}

double Degrees(double radians) {
    return radians * 360.0 / 2.0 / kGpsPi;
}

}  // namespace

namespace {

// What CorrectAccels needs besides the row, worked out once for a run's
// worth of rows: the columns, the geometry of the vehicle and the sines and
// cosines of the two offsets.
struct AccelCorrection {
    float* lat = nullptr;
    float* lon = nullptr;
    bool sv63 = false;
    double rollScale = 0.95, longScale = 0.975, cross = -0.1;
    double cLat = 1, sLat = 0, cLong = 1, sLong = 0;
    int reverse = 0;
    float rollFactor = 0, tiltFactor = 0;
};

AccelCorrection MakeAccelCorrection(double latOffset, double longOffset, int reverse,
                                    float rollFactor, float tiltFactor) {
    AccelCorrection k;
    k.lat = SlotColumn(slot::AccelLat);
    k.lon = SlotColumn(slot::AccelLong);
    const BuildProfile& p = Profile();
    k.sv63 = p.HardwareSV63;
    // Vehicle geometry: 1 - 0.5 * 0.1, 1 - 0.5 * 0.05, -0.2 + 0.5 * 0.2 and
    // their mirror images; a kart reads the sensor as it stands.
    if (reverse != 0) k.rollScale = 1.05, k.longScale = 1.025, k.cross = -0.3;
    if (p.VehicleKart) k.rollScale = 1, k.longScale = 1, k.cross = 0;
    k.cLat = std::cos(latOffset);
    k.sLat = std::sin(latOffset);
    k.cLong = std::cos(longOffset);
    k.sLong = std::sin(longOffset);
    k.reverse = reverse;
    k.rollFactor = rollFactor;
    k.tiltFactor = tiltFactor;
    return k;
}

// The row's correction; the caller has checked the columns and the row.
inline void CorrectRow(const AccelCorrection& k, int32_t row) {
    float* lat = k.lat;
    float* lon = k.lon;
    double a = double(lat[row]) * kGravity;
    a = (k.cLat != 0) ? a / k.cLat - kGravity * k.sLat : 0;
    if (a != 0) a = k.sv63 ? (1.0 - k.rollFactor) * a : k.rollScale * a;
    const auto newLat = static_cast<float>(a / kGravity);
    lat[row] = newLat;

    a = double(lon[row]) * kGravity;
    a = (k.cLong != 0) ? a / k.cLong - kGravity * k.sLong : 0;
    // The longitudinal reading loses a share of itself under lateral load:
    // roll or lean falsifies what the sensor sees.
    if (a != 0)
        a = k.sv63 ? (1.0 - k.tiltFactor) * a : k.longScale * a + std::fabs(newLat) * k.cross * a;
    lon[row] = static_cast<float>(a / kGravity);

    if (k.reverse == 1) {
        lat[row] = -lat[row];
        lon[row] = -lon[row];
    }
}

}  // namespace

void CorrectAccels(int32_t row, double latOffset, double longOffset, int reverse, float rollFactor,
                   float tiltFactor) {
    const AccelCorrection k =
        MakeAccelCorrection(latOffset, longOffset, reverse, rollFactor, tiltFactor);
    if (!k.lat || !k.lon || row < 0 || row > Store().RunData.UpperRow()) return;
    CorrectRow(k, row);
}

void AutoZeroAccelerometers(int32_t run) {
    Procedure("AutoZeroAccelerometers", [&] {
        LogDebug("Routine to autozero accelerometers");
        if (run < 1 || run > 11) return;
        const RunRecord& r = Store().RunInfo[run];
        int32_t first, last;
        if (!(r.RunStart + 100 < r.RunEnd) || !RunRowRange(run, first, last) ||
            r.RunStart + 100 > last) {
            LogDebug("Run is too short to zero accelerometers");
            return;
        }
        float* lat = SlotColumn(slot::AccelLat);
        float* lon = SlotColumn(slot::AccelLong);
        if (!lat || !lon) return;
        // 101 rows under a divisor of 100, as the program has always done.
        float sumLat = 0, sumLong = 0;
        for (int32_t i = r.RunStart; i <= r.RunStart + 100; ++i) {
            sumLat += lat[i] / 100.0f;
            sumLong += lon[i] / 100.0f;
        }
        const double latAngle = InvSin(sumLat);
        LogDebug("Lateral Mount Angle = " + NumberText(Degrees(latAngle)));
        const double longAngle = InvSin(sumLong);
        LogDebug("Longitudinal Mount Angle = " + NumberText(Degrees(longAngle)));
        if (std::fabs(Degrees(latAngle)) > 10 || std::fabs(Degrees(longAngle)) > 10)
            Message(
                "The logger is mounted at an angle greater than 10 degrees to the horizontal, "
                "measurements maybe inaccurate");
        LogDebug("Correct all the accelerations for mounting angle");
        const double cLat = std::cos(latAngle), sLat = std::sin(latAngle);
        const double cLong = std::cos(longAngle), sLong = std::sin(longAngle);
        for (int32_t i = first; i <= last; ++i) {
            lat[i] = static_cast<float>(lat[i] / cLat - sLat);
            lon[i] = static_cast<float>(lon[i] / cLong - sLong);
        }
    });
}

namespace {

// One step of the bias estimate at a row with a speed fix. sumOffset is
// taken off each value before the sum (the learning sweep) or 0 (the
// applying sweep, which sums the column as it now stands).
void BiasStep(const float* speed, const float* time, const float* lon, int32_t i, int32_t& p,
              double& b, bool learning) {
    if (p > -1) {
        const double dt = double(time[i]) - double(time[p]);
        double sum = 0;
        for (int32_t k = p; k <= i; ++k) sum += learning ? double(lon[k]) - b : double(lon[k]);
        const double m = sum / double(i - p);
        // Two rows with the same time would divide by zero; such a pair
        // teaches nothing.
        if (dt != 0) {
            const double gpsAccel =
                (double(speed[i]) - double(speed[p])) * 1000.0 / 3600.0 / dt / kGravity;
            if (std::fabs(gpsAccel) < 0.25 && std::fabs(m) < 0.25)
                b = (1.0 - 0.015) * b + (m - gpsAccel) * 0.015;
        }
    }
    b = FindClip(-0.2f, static_cast<float>(b), 0.2f);
    p = i;
}

}  // namespace

void ProcessAccels(int32_t run) {
    Procedure("ProcessAccels", [&] {
        int32_t first, last;
        if (!RunRowRange(run, first, last)) return;
        RunRecord& r = Store().RunInfo[run];
        const BuildProfile& p = Profile();
        const std::string& car = Paths().CarCfgPath;
        float rollFactor = 0, tiltFactor = 0;
        if (p.HardwareSV63) {
            // The meter's vehicle number stands in the run's CarFile.
            rollFactor = GetConfig(car, "Car" + r.CarFile + "RollFactor");
            tiltFactor = GetConfig(car, "Car" + r.CarFile + "TiltFactor");
        }
        const int reverse = GetConfigInt(car, "ReverseAccels");
        const float autoZero = GetConfig(car, "AutoZeroAccelerometers");
        double latOffset = 0, longOffset = 0;
        if (autoZero == 0) {
            latOffset = GetConfig(car, "LatAccelOffset") / 360.0 * 2.0 * kGpsPi;
            longOffset = GetConfig(car, "LongAccelOffset") / 360.0 * 2.0 * kGpsPi;
        }
        if (SlotEnabled(slot::AccelLat)) {
            if (autoZero == 1) {
                r.Details += " Accelerometers were auto-zeroed at the beginning of the run.";
                AutoZeroAccelerometers(run);
            }
            // CorrectAccels row after row, its set-up taken once.
            const AccelCorrection k =
                MakeAccelCorrection(latOffset, longOffset, reverse, rollFactor, tiltFactor);
            if (k.lat && k.lon)
                for (int32_t i = first; i <= last; ++i) CorrectRow(k, i);
        }
        float* lat = SlotColumn(slot::AccelLat);
        float* lon = SlotColumn(slot::AccelLong);
        float* speed = SlotColumn(slot::SpeedKph);
        float* time = SlotColumn(slot::Time);
        if (!lat || !lon || !speed || !time) return;
        if (SlotEnabled(slot::AccelTotal)) {
            if (float* total = SlotColumn(slot::AccelTotal))
                for (int32_t i = first; i <= last; ++i)
                    total[i] = std::sqrt(lon[i] * lon[i] + lat[i] * lat[i]);
        }
        // The bias pass: the longitudinal channel drifts; the rate of change
        // of GPS speed over gentle stretches shows by how much. -1 (no value
        // yet) and 0 are no fix, so a standing vehicle teaches nothing.
        double b = 0;
        int32_t prev = -1;
        const int32_t learnEnd = std::min(r.RunStart + 30000, last);
        for (int32_t i = r.RunStart + 1; i <= learnEnd; ++i)
            if (speed[i] > 0) BiasStep(speed, time, lon, i, prev, b, true);
        prev = -1;
        for (int32_t i = r.RunStart + 1; i <= last; ++i) {
            lon[i] = static_cast<float>(double(lon[i]) - b);
            if (speed[i] > 0) BiasStep(speed, time, lon, i, prev, b, false);
        }
    });
}

bool CalculateAccelAngles(float& latAngle, float& longAngle) {
    return ProcedureValue("CalculateAccelAngles", false, [&] {
        const RunRecord& r = Store().RunInfo[1];
        if (r.RunLength < 100 || Store().RunData.UpperRow() < 100) {
            Message("To calculate offset, the first run must contain at least 100 data samples");
            return false;
        }
        const std::string& car = Paths().CarCfgPath;
        if (GetConfig(car, "LongAccelOffset") != 0 || GetConfig(car, "LatAccelOffset") != 0) {
            Message(
                "To calculate offset, the first run must have been processed with no manual "
                "offsets");
            return false;
        }
        const float* lat = SlotColumn(slot::AccelLat);
        const float* lon = SlotColumn(slot::AccelLong);
        if (!lat || !lon) return false;
        double sumLong = 0, sumLat = 0, sumSize = 0;
        for (int32_t i = 1; i <= 100; ++i) {
            sumLong += lon[i];
            sumLat += lat[i];
            sumSize += std::fabs(lon[i]) + std::fabs(lat[i]);
        }
        if (sumSize == 0) {
            Message("To calculate offset, the first run must contain a valid processed data");
            return false;
        }
        longAngle =
            static_cast<float>(InvSin(static_cast<float>(sumLong / 100)) * 360.0 / 2.0 / kGpsPi);
        latAngle =
            static_cast<float>(InvSin(static_cast<float>(sumLat / 100)) * 360.0 / 2.0 / kGpsPi);
        if (longAngle > 10) Message("Warning! The device is mounted at an angle greater than 10°");
        return true;
    });
}

}  // namespace tl
