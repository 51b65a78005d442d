// The derived-variable pipeline: a fixed chain of stages after the family
// conversion, and the two filter passes that run at its two fixed places (the
// smart filter on raw signals before anything is derived, the time filter on
// finished variables after everything is).
#include "derived/pipeline.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "convert/accel_channels.h"
#include "convert/conversion_state.h"
#include "convert/gps.h"
#include "core/build_profile.h"
#include "core/config_store.h"
#include "core/errors.h"
#include "core/log.h"
#include "core/support.h"
#include "core/ui_services.h"
#include "derived/derived_common.h"
#include "derived/lap_stages.h"
#include "derived/reference_lap.h"
#include "derived/user_channels.h"
#include "store/run_procedures.h"

namespace tl {

using derived::Col;
using derived::RowsOf;

namespace {

// Mode 0, after the map: the offset between this run's own GPS origin and the
// session's (the first run's, kept as the previous origin by every
// conversion). Within 20 km the run moves onto the session's plane.
void OffsetToSessionOrigin(int32_t run) {
    const auto rows = RowsOf(run);
    if (!rows.ok) return;
    ConversionState& cs = Conversion();
    double dx = 0, dy = 0;
    if (Profile().HardwareHX40)
        CalcDistBetweenCoords(cs.GpsOriginLat, cs.GpsOriginLong, cs.PrevGpsOriginLat,
                              cs.PrevGpsOriginLong, dx, dy);
    else
        CalcDistBetweenCoords_FractDegree(cs.GpsOriginLat, cs.GpsOriginLong, cs.PrevGpsOriginLat,
                                          cs.PrevGpsOriginLong, dx, dy);
    if (std::sqrt(dx * dx + dy * dy) >= 20000.0) return;
    DispProg("Offset GPS information to correct origin");
    float* x = Col(slot::PositionX);
    float* y = Col(slot::PositionY);
    if (!x || !y) return;
    const float fx = static_cast<float>(dx), fy = static_cast<float>(dy);
    for (int32_t i = rows.first; i <= rows.last; ++i) {
        x[i] += fx;
        y[i] += fy;
    }
    cs.GpsOriginLat = cs.PrevGpsOriginLat;
    cs.GpsOriginLong = cs.PrevGpsOriginLong;
}

// Modes 1 and 2: the wheel-speed mapper of the laps work. In mode 1 it works
// on GPS speed, put into slot 10 for the time of the mapping.
void WheelSpeedMapping(int32_t run, bool gpsSpeedForWheel) {
    const auto rows = RowsOf(run);
    if (!rows.ok) return;
    DeleteVariableData(rows.first, rows.last, slot::PositionX);
    DeleteVariableData(rows.first, rows.last, slot::PositionY);
    const bool exchange = gpsSpeedForWheel && SlotEnabled(slot::WheelSpeedKph);
    std::vector<float> saved;
    float* wheel = Col(slot::WheelSpeedKph);
    if (exchange && wheel) {
        saved.assign(wheel + rows.first, wheel + rows.last + 1);
        CopyVariableData(rows.first, rows.last, slot::SpeedKph, slot::WheelSpeedKph);
    }
    // The mapper measures laps and beacons by slot 11, which the conversion
    // leaves at 0 and CalcDistances fills only later: fill it here as the
    // distance from wheel speed does (slot 10, over the measured time step;
    // in mode 1 that is the GPS speed just copied in). CalcDistances writes
    // the user's distance over it afterwards.
    float* dist = Col(slot::DistanceKm);
    const float* time = Col(slot::Time);
    if (SlotEnabled(slot::DistanceKm) && dist && time && wheel) {
        double metres = 0.0;
        dist[rows.first] = 0.0f;
        for (int32_t i = rows.first + 1; i <= rows.last; ++i) {
            metres += (time[i] - time[i - 1]) * (wheel[i] * 1000.0f / 3600.0f);
            dist[i] = static_cast<float>(metres / 1000.0);
        }
    }
    const bool reference = run == RefLap().RefRun;
    if (reference) {
        DispProg("Calculate reference lap");
        GenerateWSBReferenceLap(run);
    }
    DispProg("Overlay laps");
    OverlayWSBTrackMap(run);
    if (reference && RefLap().RefLapPoints >= 11) AddBeaconTrackMarkers();
    if (exchange && wheel) std::copy(saved.begin(), saved.end(), wheel + rows.first);
}

}  // namespace

void ProcessDerivedVariables(int32_t run) {
    Procedure("ProcessDerivedVariables", [&] {
        const auto rows = RowsOf(run);
        if (!rows.ok) return;
        RunRecord& rec = Store().RunInfo[run];
        // An unset reading cannot be told from a true 0: both take the default.
        if (rec.AmbientTemperature == 0.0f) rec.AmbientTemperature = 30.0f;
        if (rec.AmbientPressure == 0.0f) rec.AmbientPressure = 101.0f;

        const BuildProfile& p = Profile();
        const std::string& cfg = Paths().TracelabCfgPath;

        DispProg("Process the accelerometer data");
        ProcessAccels(run);
        DispProg("Filter variables (min/max/ROC)");
        SmartFilterVariables(run);
        if (p.HardwareSV63 || p.HardwareHX40 || p.HardwareMQ7) {
            DispProg("Process GPS speeds");
            CalcSpeedGPS(run);
        }
        const float mode = GetConfig(cfg, "MappingMode");
        if (mode == 0.0f) {
            if (SlotEnabled(slot::PositionX) && SlotEnabled(slot::PositionY)) {
                DispProg("Map Track From GPS Data");
                TrackMapGps(run);
                OffsetToSessionOrigin(run);
            }
        } else if (mode == 1.0f) {
            WheelSpeedMapping(run, true);
        } else if (mode == 2.0f) {
            WheelSpeedMapping(run, false);
        }
        DispProg("Calculate Wheel Speeds");
        CalculateWheelSpeedMph(run);
        DispProg("Calculate distances");
        CalcDistances(run);
        DispProg("Calculate power and torque");
        CalcPower(run);
        DispProg("Calculate gear ratios");
        CalcGearRatios(run);
        DispProg("Calculate headings");
        CalculateHeadingVariables(run);
        DispProg("Calculate user channels");
        CalculateUserChannels(run);
        DispProg("Linear filter variables (time)");
        LinearFilterVariables(run);
        if (GetConfig(cfg, "AutoPlaceLaps") == 1.0f && SlotEnabled(slot::PositionX) && run == 1 &&
            CheckForLapMarker() == -1) {
            DispProg("Auto place lap marker");
            float length = GetConfig(cfg, "MarkerLengthTxt");
            length = FindMin(FindMax(length, 2.0f), 200.0f);
            AutoPlaceLapMarker(1, length / 2.0f);
        }
        DispProg("Clear the no data vector");
        // Slot 201 is wiped whether or not it is enabled (it is the shared
        // "*No Data*" column and the curve search's scratch).
        if (float* scratch = Col(slot::Scratch))
            std::fill(scratch + rows.first, scratch + rows.last + 1, 0.0f);
    });
}

void SmartFilterVariables(int32_t run) {
    Procedure("SmartFilterVariables", [&] {
        const ConfigSnapshot cfg(Paths().TracelabCfgPath);
        const auto& vars = Catalogue().RunVars;
        for (int s = 2; s <= kNoDataSlot; ++s) {
            if (!vars[s].Enabled) continue;
            const float rate = cfg.Get("RateFilt_" + vars[s].Name);
            const float minimum = cfg.Get("MinPos_" + vars[s].Name);
            const float maximum = cfg.Get("MaxPos_" + vars[s].Name);
            if (rate > 0.0f && maximum > minimum)
                IntelligentRocFilter(run, vars[s].Column, rate, minimum, maximum);
        }
    });
}

int IntelligentRocFilter(int32_t run, int32_t column, float rate, float minimum, float maximum) {
    return ProcedureValue("IntelligentRocFilter", 0, [&] {
        const auto rows = RowsOf(run);
        RunArray& rd = Store().RunData;
        if (!rows.ok || column < 0 || column >= rd.Columns()) return 0;
        float* v = rd.Column(column).data();
        const float* t = Col(slot::Time);
        if (!t || v == t) return 0;
        const int32_t end = rows.last;
        int32_t i = rows.length > 100 ? rows.first + 20 : end;
        while (i < end - 2 && v[i] < minimum) ++i;
        int32_t j = i + 1;
        int repaired = 0;
        while (j < end - 1) {
            int32_t k = j + 1;
            auto acceptable = [&](int32_t row) {
                return (t[row] - t[j]) * rate >= std::fabs(v[row] - v[j]) && v[row] <= maximum &&
                       v[row] >= minimum;
            };
            while (k < end - 1 && !acceptable(k)) ++k;
            if (k > j + 1) {
                // The line starts from the row before j, which the slope was not
                // taken from: rows j and k are rebuilt too.
                const float slope = (v[k] - v[j]) / static_cast<float>(k - j);
                const float base = v[j - 1];
                for (int32_t m = j; m <= k; ++m)
                    v[m] = base + static_cast<float>(m - j + 1) * slope;
                ++repaired;
            }
            j = k;
        }
        return repaired;
    });
}

void LinearFilterVariables(int32_t run) {
    Procedure("LinearFilterVariables", [&] {
        const ConfigSnapshot cfg(Paths().TracelabCfgPath);
        const auto& vars = Catalogue().RunVars;
        for (int s = 2; s <= kNoDataSlot; ++s) {
            if (!vars[s].Enabled) continue;
            const float tc = cfg.Get("TimeFilt_" + vars[s].Name);
            if (tc > 0.0f) {
                DispProg("Linear Filter: " + vars[s].Name);
                LinearFilterVar(run, vars[s].Column, tc);
            }
        }
    });
}

void CalculateWheelSpeedMph(int32_t run) {
    Procedure("CalculateWheelSpeedMph", [&] {
        const auto rows = RowsOf(run);
        if (!rows.ok || !SlotEnabled(slot::WheelSpeedMph)) return;
        float* mph = Col(slot::WheelSpeedMph);
        const float* kph = Col(slot::WheelSpeedKph);
        if (!mph || !kph) return;
        for (int32_t i = rows.first; i <= rows.last; ++i) mph[i] = kph[i] * 0.621371192f;
    });
}

void CalculateFormulaWheelSpeed(int32_t run) {
    Procedure("CalculateFormulaWheelSpeed", [&] {
        LogDebug("calculate the formula wheel speed for run " + std::to_string(run));
        const auto rows = RowsOf(run);
        if (!rows.ok) return;
        const std::string formula = GetConfigString(Paths().CarCfgPath, "WheelSpeedFormula");
        std::vector<int> slots;
        std::vector<bool> consts;
        if (CheckInputsRequired(formula, slots, consts)) {
            CalculateUserVar(formula, slots, consts, ColumnOf(slot::WheelSpeedKph), run);
        } else {
            LogDebug("error in user variable");
            Message("There is an error in the definition of user defined wheel speed ");
            DeleteVariableData(rows.first, rows.last, slot::WheelSpeedKph);
        }
    });
}

}  // namespace tl
