// SV63 frame conversion. The performance meter writes eight-byte frames at a
// selectable interval (the run's first header byte, in hundredths), and its
// GPS arrives in binary across three frames announced by the frame before.
// Rows stay at 0.01 s: each frame fills SamplePeriod rows with its values.
#include <algorithm>
#include <cstdint>
#include <string>

#include "convert/accel_channels.h"
#include "convert/conversion_state.h"
#include "convert/family_converters.h"
#include "convert/gps.h"
#include "core/errors.h"
#include "core/log.h"
#include "core/ui_services.h"
#include "formats/plane_frames.h"
#include "store/slot_columns.h"

namespace tl {
namespace {

class Sv63Conversion {
  public:
    explicit Sv63Conversion(int32_t run) : r_(Store().RunInfo[run]) {}
    void Run();

  private:
    void ProcessNorm(int32_t times);
    void ProcessGps();
    uint8_t Byte(int32_t frame, int v) const { return v_[v][frame]; }
    uint8_t Nibbles(int32_t frame) const {
        return static_cast<uint8_t>((Byte(frame, 1) & 15) * 16 + (Byte(frame, 2) & 15));
    }

    RunRecord& r_;
    ConversionState& cs_ = Conversion();
    const uint8_t* v_[9] = {};
    float* time_ = nullptr;
    float* lat_ = nullptr;
    float* long_ = nullptr;
    float* kph_ = nullptr;
    float* mph_ = nullptr;
    float* posX_ = nullptr;
    float* posY_ = nullptr;
    bool timeOn_ = false, accelOn_ = false, kphOn_ = false, mphOn_ = false;
    bool posXOn_ = false, posYOn_ = false;
    int32_t framePosition_ = 0;
    int32_t sampleIndex_ = 0;
    int32_t pulseFrame_ = -1;
    int32_t rowLimit_ = -1;
};

void Sv63Conversion::ProcessNorm(int32_t times) {
    const int32_t fp = framePosition_;
    const float lat = LatAccelOf(Byte(fp, 5), Byte(fp, 8));
    const float lon = LongAccelOf(Byte(fp, 4), Byte(fp, 8));
    for (int32_t k = 0; k < times; ++k, ++sampleIndex_) {
        const int32_t si = sampleIndex_;
        if (si < 0 || si > rowLimit_) continue;
        if (timeOn_) time_[si] = SecondsOfTicks(si - r_.RunStart);
        if (accelOn_) {
            lat_[si] = lat;
            long_[si] = lon;
        }
    }
}

void Sv63Conversion::ProcessGps() {
    const int32_t p = framePosition_;
    auto i32 = [](uint8_t b3, uint8_t b2, uint8_t b1, uint8_t b0) {
        const uint32_t u = (uint32_t(b3) << 24) | (uint32_t(b2) << 16) | (uint32_t(b1) << 8) | b0;
        return static_cast<int32_t>(u);
    };
    // Units of 1e-7 degree, two's complement.
    const double lat = i32(Byte(p, 5), Byte(p, 4), Byte(p + 1, 5), Byte(p + 1, 4)) * 1e-7;
    const double lon = i32(Nibbles(p + 1), Byte(p + 2, 5), Byte(p + 2, 4), Nibbles(p + 2)) * 1e-7;
    // The speed byte counts 0.8 mph steps.
    const auto speed = static_cast<float>(Nibbles(p) * 0.8 * 1.609344);
    if (!cs_.OriginSet) {
        cs_.SetOrigin(lat, lon);
        LogDebug("First Sample Found, Origin set");
    }
    int32_t offset = 0;
    if (pulseFrame_ > -1 && p - pulseFrame_ < 10) offset = p - pulseFrame_;
    const int32_t si = sampleIndex_;
    const bool writable = si >= 0 && si <= rowLimit_;
    // No delay on this family: a fix belongs to the row in hand.
    if (writable && kphOn_) kph_[si] = speed;
    if (writable && mphOn_) mph_[si] = speed;  // the pipeline settles the miles slot
    double x = 0, y = 0;
    GpsCoord_FractDegree(lat, lon, cs_.GpsOriginLat, cs_.GpsOriginLong, x, y);
    if (writable && posXOn_) posX_[si] = static_cast<float>(x);
    if (writable && posYOn_) posY_[si] = static_cast<float>(y);
    if (LogOn())
        LogDebug(std::to_string(offset) + "  Offset:" + NumberText(speed) + "   Speed: " +
                 "Calculated X: " + NumberText(x) + "   Calculated Y: " + NumberText(y));
}

void Sv63Conversion::Run() {
    RunStore& s = Store();
    r_.Details.clear();
    cs_.KeepPreviousOrigin();
    const RawArray& raw = s.RawData;
    if (!raw.planes()) {
        LogDebug("SV63 conversion of a run without frame data");
        return;
    }
    for (int v = 1; v <= 8; ++v) v_[v] = raw.Vector(v).data();
    const int32_t rawEnd = std::min(r_.RawEnd, raw.UpperIndex());
    const int32_t rawStart = std::max(r_.RawStart, 0);
    rowLimit_ = std::min(r_.RunEnd, s.RunData.UpperRow());
    float* sink = SlotColumn(kNoDataSlot);
    if (!sink || rowLimit_ < 0) return;
    auto col = [&](int slotNumber) {
        float* c = SlotColumn(slotNumber);
        return c ? c : sink;
    };
    time_ = col(slot::Time);
    lat_ = col(slot::AccelLat);
    long_ = col(slot::AccelLong);
    kph_ = col(slot::SpeedKph);
    mph_ = col(slot::SpeedMph);
    posX_ = col(slot::PositionX);
    posY_ = col(slot::PositionY);
    timeOn_ = SlotEnabled(slot::Time);
    accelOn_ = SlotEnabled(slot::AccelLat);
    kphOn_ = SlotEnabled(slot::SpeedKph);
    mphOn_ = SlotEnabled(slot::SpeedMph);
    posXOn_ = SlotEnabled(slot::PositionX);
    posYOn_ = SlotEnabled(slot::PositionY);

    const int32_t period = Sv63Step(r_.HeaderBytes[0]);
    framePosition_ = rawStart;
    sampleIndex_ = r_.RunStart;
    pulseFrame_ = -1;
    cs_.OriginSet = false;
    const int32_t n = r_.RunLength;
    const int32_t tenth = std::max(n / 10, 1);  // a run under 10 rows still converts
    while (framePosition_ <= rawEnd) {
        const int32_t i = framePosition_ - r_.RawStart;
        if (i == n / 100)
            DispProg("1%");
        else if (i == n / 20)
            DispProg("5%");
        else if (i % tenth == 0)
            DispProg(std::to_string(i / tenth * 10) + "%");
        const int32_t p = framePosition_;
        if (p > rawStart + 1 && p < rawEnd - 3) {
            if (!(Byte(p - 1, 2) & 4) && (Byte(p, 2) & 4)) pulseFrame_ = p;
            if (!(Byte(p - 1, 1) & 4)) {
                ProcessNorm(period);
            } else {
                ProcessGps();
                framePosition_ += 3;
                ProcessNorm(period);
            }
        }
        // The frames at the two ends of a run give no rows.
        ++framePosition_;
    }
    r_.Details = "Data Downloaded from Velquor's Performance Meter";
}

}  // namespace

void ConvertRawToRunData_SV63(int32_t run) {
    Procedure("ConvertRawToRunData_SV63", [&] {
        if (run < 1 || run > 11) return;
        Sv63Conversion(run).Run();
    });
}

}  // namespace tl
