// Accelerometer, wheel and engine channels: the per-frame decoders of the
// plane families (accelerations, and the HX40 pulse timers), and the pass
// that corrects a converted run's accelerations for mounting angle, vehicle
// geometry and long-term bias.
#pragma once

#include <cstdint>

#include "store/run_store.h"

namespace tl {

// The HX40 pulse timers share one scale: a frame runs from timer value 19487
// to 65535 (46048 ticks of 2.1701389e-7 s, 4.608 MHz).
inline constexpr int32_t kTimerFrameStart = 19487;
inline constexpr int32_t kTimerFrameEnd = 65535;
inline constexpr int32_t kTimerFrameTicks = 46048;

// Timing state that survives from frame to frame; cleared only when a frame
// at raw position 1 passes, so a later run starts from the last one's end.
struct PulseTimerState {
    float WheelFreq = 0;
    bool WheelValid = false;
    float WheelElapsed = 0;
    float WheelPrevCount = 0;
    float WheelLeftover = 0;
    float WheelMeasured = 0;
    float EngineRpm = 0;
    bool EngineValid = false;
    double EnginePrevCount = 0;
    double EngineLeftover = 0;
    double EngineElapsed = 0;
    void ClearWheel() {
        WheelFreq = WheelElapsed = WheelPrevCount = WheelLeftover = WheelMeasured = 0;
        WheelValid = false;
    }
    void ClearEngine() {
        EngineRpm = 0;
        EngineValid = false;
        EnginePrevCount = EngineLeftover = EngineElapsed = 0;
    }
};

PulseTimerState& PulseTimers();

// One frame's eight vectors, as the decoders read them (index 1 to 8).
struct FrameBytes {
    uint8_t v[9] = {};
};

// Acceleration in g from vectors 4 (long), 5 (lat) and the top four bits of 8.
// The two axes have opposite sign senses; this is how the sensor reports.
inline float LongAccelOf(uint8_t v4, uint8_t v8) {
    float g = static_cast<float>(v4) / 256.0f + ((v8 & 16) ? 1.0f : 0.0f);
    return (v8 & 32) ? -g : g;
}
inline float LatAccelOf(uint8_t v5, uint8_t v8) {
    float g = static_cast<float>(v5) / 256.0f + ((v8 & 64) ? 1.0f : 0.0f);
    return (v8 >= 128) ? g : -g;
}

inline constexpr double kTickSeconds = 2.1701389e-7;
inline constexpr double kTickSecondsEngine = 2.1701389130157622e-7;

// The pulse routines on one frame's bytes; position is the frame's raw index
// (position 1 clears the state). Inline: they run once a frame.
inline float WheelSpeedOfFrame(PulseTimerState& st, int32_t position, uint8_t v3, uint8_t v6,
                               uint8_t v8) {
    if (position == 1) st.ClearWheel();
    const int32_t t = (int32_t(v6) * 8 + ((v3 >> 4) & 7)) * 32;
    const int c = v8 & 3;
    float partial = 0, rest = 0;
    // A timer value outside the frame leaves the count standing, with
    // partial and rest at 0.
    if (t >= kTimerFrameStart && t <= kTimerFrameEnd) {
        partial = static_cast<float>(t - kTimerFrameStart);
        rest = static_cast<float>(kTimerFrameEnd - t);
    }
    if (st.WheelPrevCount > 0)
        st.WheelElapsed = st.WheelLeftover;  // the count restarts at the last pulse
    else
        st.WheelElapsed += static_cast<float>(kTimerFrameTicks);
    const float span = partial + st.WheelElapsed;
    if (c > 0 && span > 0) {
        st.WheelValid = true;
        // 1 / (span / c * tick), with one division.
        const auto rate = static_cast<float>(c / (double(span) * kTickSeconds));
        st.WheelFreq = rate;
        st.WheelMeasured = rate;
    } else if (span > 0) {
        // The time since the last pulse bounds the rate: a slowing wheel
        // decays toward zero instead of dropping to zero between pulses.
        const auto bound = static_cast<float>(1.0 / (double(span) * kTickSeconds));
        if (bound < st.WheelMeasured && st.WheelValid) st.WheelFreq = bound;
    }
    st.WheelLeftover = rest;
    st.WheelPrevCount = static_cast<float>(c);
    return st.WheelFreq;
}

inline float RpmOfFrame(PulseTimerState& st, int32_t position, uint8_t v3, uint8_t v6, uint8_t v7,
                        uint8_t v8, int useWheel, float pulsesPerRev) {
    if (position == 1) st.ClearEngine();
    int32_t t;
    int c;
    if (useWheel == 1) {
        t = (int32_t(v6) * 8 + ((v3 >> 4) & 7)) * 32;
        c = v8 & 3;
    } else {
        t = (int32_t(v7) * 8 + (v3 & 14) / 2) * 32;
        c = (v8 & 12) / 4;
    }
    double partial = 0, rest = 0;
    if (t >= kTimerFrameStart && t <= kTimerFrameEnd) {
        partial = t - kTimerFrameStart;
        rest = kTimerFrameEnd - t;
    } else {
        c = 0;  // no pulse for the engine routine
    }
    if (st.EnginePrevCount > 0)
        st.EngineElapsed = st.EngineLeftover;
    else
        st.EngineElapsed += kTimerFrameTicks;
    if (c > 0) {
        st.EngineValid = true;
        const double span = partial + st.EngineElapsed;
        // 1 / (span / c * tick) * 60, with one division.
        st.EngineRpm =
            span > 0 ? static_cast<float>(60.0 * c / (span * kTickSecondsEngine)) : 20000.0f;
    }
    // No decay here: without pulses the last rate holds.
    st.EngineLeftover = rest;
    st.EnginePrevCount = c;
    if (pulsesPerRev <= 0) return 0;
    return st.EngineRpm / pulsesPerRev;
}

// The routines on RawData at a frame position (0 beyond the array).
float ExtractLongAccel(int32_t position);
float ExtractLatAccel(int32_t position);
// Hz at the wheel pulse input.
float CalcWheelSpeed(int32_t position);
float CalcRpm(int32_t position, int useWheel, float pulsesPerRev);

// The run-wide correction; the first stage of the derived pipeline.
void ProcessAccels(int32_t run);
void AutoZeroAccelerometers(int32_t run);
// Offsets in radians.
void CorrectAccels(int32_t row, double latOffset, double longOffset, int reverse, float rollFactor,
                   float tiltFactor);
// Mounting angles in degrees from the first 100 rows of run 1; false when a
// message stopped the calculation.
bool CalculateAccelAngles(float& latAngle, float& longAngle);

}  // namespace tl
