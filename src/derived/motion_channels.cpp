// Distance, power and torque, gear, and the heading channels: the stages of
// the pipeline that turn speed, acceleration and position into what a driver
// reads. Each reads its options afresh for the run and writes only enabled
// slots.
#include <cmath>
#include <string>
#include <vector>

#include "core/build_profile.h"
#include "core/config_store.h"
#include "core/errors.h"
#include "core/support.h"
#include "core/ui_services.h"
#include "derived/derived_common.h"
#include "derived/pipeline.h"

namespace tl {

namespace {
constexpr int kDistMiles = 12;
constexpr int kDistMetres = 13;
constexpr int kDistFeet = 14;
constexpr int kPowerHp = 15;
constexpr int kPowerKw = 16;
constexpr int kTorqueLbft = 17;
constexpr int kTorqueNm = 18;
constexpr int kGear = 19;
constexpr int kHeading = 47;
constexpr int kHeadingRate = 48;
constexpr int kRadius = 49;
constexpr int kLean = 50;

// An option read as the user's text and back, as every number here is.
float CarValue(const std::string& key) {
    return static_cast<float>(GetVal(ConfigNumberText(GetConfig(Paths().CarCfgPath, key))));
}
}  // namespace

void CalcDistances(int32_t run) {
    Procedure("CalcDistances", [&] {
        const auto rows = derived::RowsOf(run);
        if (!rows.ok) return;
        const bool onKm = SlotEnabled(slot::DistanceKm), onMi = SlotEnabled(kDistMiles),
                   onM = SlotEnabled(kDistMetres), onFt = SlotEnabled(kDistFeet);
        float* km = derived::Col(slot::DistanceKm);
        float* mi = derived::Col(kDistMiles);
        float* m = derived::Col(kDistMetres);
        float* ft = derived::Col(kDistFeet);
        const float* t = derived::Col(slot::Time);
        const float* wheel = derived::Col(slot::WheelSpeedKph);
        const float* gps = derived::Col(slot::SpeedKph);
        const float* px = derived::Col(slot::PositionX);
        const float* py = derived::Col(slot::PositionY);
        if (!km || !mi || !m || !ft || !t || !wheel || !gps || !px || !py) return;
        const int32_t first = rows.first;
        if (onKm) km[first] = 0.0f;
        if (onMi) mi[first] = 0.0f;
        if (onFt) ft[first] = 0.0f;
        if (onM) m[first] = 0.0f;
        const float modeValue = GetConfig(Paths().TracelabCfgPath, "DistanceMode");
        if (modeValue != 0.0f && modeValue != 1.0f && modeValue != 2.0f) return;
        const int mode = static_cast<int>(modeValue);
        // The feet factor of modes 0 and 2 (3048.0 per km) is the established
        // one for them; mode 1 uses the exact 3280.839895.
        const double feetPerKm = mode == 1 ? 3280.839895 : 3048.0;
        double dist = 0.0, anchorDist = 0.0;
        int32_t anchor = first;
        for (int32_t i = first + 1; i <= rows.last; ++i) {
            if (mode == 0) {
                dist += static_cast<double>(t[i] - t[i - 1]) * (wheel[i] * 1000.0 / 3600.0);
            } else if (mode == 1) {
                dist += gps[i] * 1000.0 / 3600.0 * 0.01;
            } else {
                const double sx = px[i] - px[i - 1], sy = py[i] - py[i - 1];
                const double cx = px[i] - px[anchor], cy = py[i] - py[anchor];
                const double chord = std::sqrt(cx * cx + cy * cy);
                if (chord > 5.0) {
                    dist = anchorDist + chord;
                    anchorDist = dist;
                    anchor = i;
                } else {
                    dist += std::sqrt(sx * sx + sy * sy);
                }
            }
            if (onM) m[i] = static_cast<float>(dist);
            if (onKm) km[i] = static_cast<float>(dist / 1000.0);
            if (onMi) mi[i] = static_cast<float>(dist / 1000.0 * 0.621371192);
            if (onFt) ft[i] = static_cast<float>(dist / 1000.0 * feetPerKm);
        }
    });
}

void CalcPower(int32_t run) {
    Procedure("CalcPower", [&] {
        const auto rows = derived::RowsOf(run);
        if (!rows.ok || !SlotEnabled(slot::SpeedKph) || !SlotEnabled(slot::AccelLong)) return;
        const std::string& cfg = Paths().TracelabCfgPath;
        const int source =
            GetConfig(cfg, "PowerSpeedSource") == 0.0f ? slot::WheelSpeedKph : slot::SpeedKph;
        RunRecord& rec = Store().RunInfo[run];
        if (rec.AmbientTemperature == 0.0f) rec.AmbientTemperature = 30.0f;
        if (rec.AmbientPressure == 0.0f) rec.AmbientPressure = 101.0f;
        const float T = rec.AmbientTemperature + 273.15f;

        float R, CdA, M;
        if (Profile().HardwareSV63) {
            if (rec.CarFile.empty()) rec.CarFile = "0";
            R = CarValue("Car" + rec.CarFile + "RollRes");
            CdA = CarValue("Car" + rec.CarFile + "Cda");
            M = CarValue("Car" + rec.CarFile + "Mass");
        } else {
            R = CarValue("RollingVal");
            CdA = CarValue("CdaVal");
            M = CarValue("CarMass");
        }
        if (!(R >= 0.0f && R <= 0.3f)) {
            Message("The specified rolling resistance is outside the allowable range");
            return;
        }
        if (!(CdA >= 0.0f && CdA <= 7.0f)) {
            Message("The specified aerodynamic drag is outside the allowable range");
            return;
        }
        if (!(M >= 1.0f && M <= 65535.0f)) {
            Message("The specified vehicle mass is outside the allowable range");
            return;
        }
        // The exponent's denominator is the absolute temperature, as designed.
        const float Pv = 6.11f * std::pow(10.0f, rec.AmbientTemperature * 7.5f / T);
        const float Pd = rec.AmbientPressure * 1000.0f - Pv * rec.AmbientHumidity;
        const float rhoDry = Pd / (287.05f * T);
        float rhoStd, corr;
        // 1 SAE, 2 ECE, 3 DIN; any other value, a fraction too, is STP.
        const float hpKey = GetConfig(cfg, "HPCorrection");
        const int correction =
            (hpKey == 1.0f || hpKey == 2.0f || hpKey == 3.0f) ? static_cast<int>(hpKey) : 4;
        switch (correction) {
            case 1:
                rhoStd = 99000.0f / ((25.0f + 273.15f) * 287.05f);
                corr = rhoStd / rhoDry / 0.85f;
                break;
            case 2:
                rhoStd = 99000.0f / ((25.0f + 273.15f) * 287.05f);
                corr = rhoStd / rhoDry;
                break;
            case 3:
                rhoStd = 101300.0f / ((20.0f + 273.15f) * 287.05f);
                corr = rhoStd / rhoDry;
                break;
            default:
                rhoStd = 103300.0f / ((15.5f + 273.15f) * 287.05f);
                corr = rhoStd / rhoDry / 0.85f;
                break;
        }
        const float hpWatts = GetConfig(cfg, "PowerUnit") == 1.0f ? 735.499f : 745.7f;
        const float rho = rec.AmbientPressure * 1000.0f / (287.05f * T);
        const float dragK = rho * 0.5f * CdA;

        const float* spd = derived::Col(source);
        const float* acc = derived::Col(slot::AccelLong);
        const float* rpm = derived::Col(slot::EngineSpeed);
        float* hp = derived::Col(kPowerHp);
        float* kw = derived::Col(kPowerKw);
        float* lbft = derived::Col(kTorqueLbft);
        float* nm = derived::Col(kTorqueNm);
        if (!spd || !acc || !rpm || !hp || !kw || !lbft || !nm) return;
        const bool onHp = SlotEnabled(kPowerHp), onKw = SlotEnabled(kPowerKw),
                   onLb = SlotEnabled(kTorqueLbft), onNm = SlotEnabled(kTorqueNm);
        const float lbftFactor = 0.3048f * 9.80665f * 0.45359f;
        for (int32_t i = rows.first; i <= rows.last; ++i) {
            const float v = spd[i] * 1000.0f / 3600.0f;
            const float a = acc[i] * 9.80665f;
            const float w = rpm[i] / 60.0f * 2.0f * 3.141592654f;
            const float pRoll = R * M * v;  // R is per unit of mass: no gravity
            const float pDrag = v * v * v * dragK;
            const float pAcc = M * v * a;
            float P = (pRoll + pDrag + pAcc) * corr;
            if (P < 0.0f) P = 0.0f;
            const float tq = w > 30.0f ? P / w : 0.0f;
            if (onKw) kw[i] = P / 1000.0f;
            if (onNm) nm[i] = tq;
            if (onHp) hp[i] = P / hpWatts;
            if (onLb) lbft[i] = tq / lbftFactor;
        }
    });
}

void CalcGearRatios(int32_t run) {
    Procedure("CalcGearRatios", [&] {
        const auto rows = derived::RowsOf(run);
        if (!rows.ok) return;
        const int source = GetConfig(Paths().TracelabCfgPath, "OnlyGpsData") == -1.0f
                               ? slot::SpeedKph
                               : slot::WheelSpeedKph;
        const float circ = CarValue("DrivenRollingCircVal");
        const float finalDrive = CarValue("FinalDriveRat");
        float ratio[8] = {};
        bool any = false;
        for (int g = 1; g <= 7; ++g) {
            ratio[g] = CarValue("GearRatioVal" + std::to_string(g)) * finalDrive;
            if (ratio[g] != 0.0f) any = true;
        }
        if (!SlotEnabled(kGear)) return;
        float* gear = derived::Col(kGear);
        const float* spd = derived::Col(source);
        const float* rpm = derived::Col(slot::EngineSpeed);
        if (!gear || !spd || !rpm) return;
        for (int32_t i = rows.first; i <= rows.last; ++i) gear[i] = 0.0f;
        // A zero circumference or final drive stops here (the division error
        // of the common handler), leaving the remaining rows at 0.
        if (circ == 0.0f || (!any && finalDrive == 0.0f)) return;
        for (int32_t i = rows.first; i <= rows.last; ++i) {
            if (!(spd[i] > 0.1f)) continue;
            const float mps = spd[i] * 1000.0f / 3600.0f;
            const float wheelRpm = mps / circ * 60.0f;
            const float seen = rpm[i] / wheelRpm;
            if (any) {
                float best = 1.0e20f;
                int g = 0;
                for (int k = 1; k <= 7; ++k) {
                    const float err = std::fabs(ratio[k] - seen);
                    if (err < best) {
                        best = err;
                        g = k;
                    }
                }
                gear[i] = static_cast<float>(g);
            } else {
                gear[i] = seen / finalDrive;
            }
        }
    });
}

void CalculateHeadingVariables(int32_t run) {
    Procedure("CalculateHeadingVariables", [&] {
        const auto rows = derived::RowsOf(run);
        if (!rows.ok) return;
        const int32_t n = rows.last - rows.first;
        thread_local std::vector<float> H, dH;
        H.assign(static_cast<size_t>(n) + 1, 0.0f);
        dH.assign(static_cast<size_t>(n) + 1, 0.0f);
        const float* px = derived::Col(slot::PositionX);
        const float* py = derived::Col(slot::PositionY);
        const float* spd = derived::Col(slot::SpeedKph);
        if (!px || !py || !spd) return;
        // With no position there is no heading to take: it stays 0.
        const bool havePos = SlotEnabled(slot::PositionX);
        for (int32_t i = rows.first + 1; i <= rows.last; ++i) {
            const int32_t k = i - rows.first;
            float h = havePos ? Atan2(px[i] - px[i - 1], py[i] - py[i - 1]) : 0.0f;
            // Unwrapping against a heading many turns away goes by whole turns.
            const float prev = H[k - 1];
            if (h - prev < -kPi || h - prev > 3.1415927f)
                h += 2.0f * kPi * std::round((prev - h) / (2.0f * kPi));
            while (h - prev < -kPi) h += 2.0f * kPi;
            while (h - prev > 3.1415927f) h -= 2.0f * kPi;
            H[k] = h;
        }
        for (int pass = 0; pass < 3; ++pass) LinearFilterVar(std::span<float>(H), 1.0f);
        for (int32_t k = 1; k <= n; ++k) dH[k] = (H[k] - H[k - 1]) * 100.0f;
        float* head = derived::Col(kHeading);
        float* rate = derived::Col(kHeadingRate);
        float* rad = derived::Col(kRadius);
        float* lean = derived::Col(kLean);
        if (!head || !rate || !rad || !lean) return;
        const bool onH = SlotEnabled(kHeading), onR = SlotEnabled(kHeadingRate),
                   onRad = SlotEnabled(kRadius), onL = SlotEnabled(kLean);
        const int32_t first = rows.first;
        if (onH)
            for (int32_t k = 0; k <= n; ++k) head[first + k] = H[k] / 3.141592654f * 180.0f;
        if (onR)
            for (int32_t k = 0; k <= n; ++k) rate[first + k] = dH[k] / 3.141592654f * 180.0f;
        // Radius and lean only when shown: the lean's arc tangent was a good
        // part of the stage, and a car or kart has no lean slot at all.
        if (!onRad && !onL) return;
        for (int32_t k = 0; k <= n; ++k) {
            const float v = spd[first + k] / 3600.0f * 1000.0f;
            // FindMin and Atan2 written out: with x fixed at -9.80665 the
            // angle atan(y / x) + pi is always within 0 to 2 pi, so Atan2's
            // wrapping never applies and the result is the same float.
            float r = 2000.0f;
            if (dH[k] != 0.0f) {
                const float q = std::fabs(v / dH[k]);
                r = q < 2000.0f ? q : 2000.0f;
            }
            if (onRad) rad[first + k] = r;
            if (onL) {
                const float l =
                    r != 0.0f ? (std::atan(v * dH[k] / -9.80665f) + kPi) - 3.141592654f : 0.0f;
                lean[first + k] = l / 3.141592654f * 180.0f;
            }
        }
    });
}

}  // namespace tl
