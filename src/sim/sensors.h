// Sensors common to the families: accelerometers with noise, bias and
// mounting angle; GPS fixes with a slowly wandering position error, speed
// noise and a satellite count; pulse inputs that turn a rate into pulses and
// the time of the last pulse in each frame.
#pragma once

#include <cstdint>
#include <vector>

#include "sim/circuit.h"
#include "sim/rng.h"
#include "sim/vehicle.h"

namespace tl::sim {

struct SensorOptions {
    double gpsNoise = 0.3;         // m, standard deviation of each axis of the position error
    double gpsSpeedNoise = 0.05;   // m/s
    double accelNoise = 0.01;      // g
    double accelBiasLong = 0.015;  // g
    double accelBiasLat = -0.01;   // g
    double mountPitchDeg = 0.0;    // nose up: gravity shows on the longitudinal axis
    double mountRollDeg = 0.0;     // right side down: gravity shows on the lateral axis
    double startUtcSeconds = 13 * 3600.0 + 5 * 60.0;  // time of day of the first row, UTC
};

struct GpsFix {
    int row = 0;                  // truth row the fix describes
    double lat = 0.0, lon = 0.0;  // degrees, with the position error
    double speed = 0.0;           // m/s, with noise
    double heading = 0.0;         // rad clockwise from north
    int sats = 0;
    double posAccuracy = 0.0;    // m
    double speedAccuracy = 0.0;  // m/s
    double utc = 0.0;            // seconds since midnight UTC
};

// Fixes at rows firstRow, firstRow + interval, ... Each fix is dropped with
// probability dropRate (the receiver had nothing to say); dropped fixes are
// counted in dropped.
std::vector<GpsFix> MakeGpsFixes(const Trajectory& traj, const Circuit& circuit,
                                 const SensorOptions& options, int firstRow, int interval,
                                 double dropRate, uint64_t seed, int& dropped);

struct AccelReading {
    double longG = 0.0;  // positive when speeding up
    double latG = 0.0;   // positive in a right-hand bend
};

class AccelSensor {
  public:
    AccelSensor(const SensorOptions& options, uint64_t seed);
    AccelReading Read(const TruthRow& row);

  private:
    SensorOptions options_;
    Rng rng_;
    double sinPitch_, cosPitch_, sinRoll_, cosRoll_;
};

// A pulse input: phase counts pulses; each 0.01 s frame reports how many
// pulses fell in it and where in the frame the last one fell.
struct FramePulses {
    int count = 0;
    double lastFraction = 1.0;  // 0 at the frame's start, 1 at its end
};

class PulseInput {
  public:
    explicit PulseInput(double startPhase = 0.0) : phase_(startPhase) {}
    FramePulses Step(double ratePerSecond, double seconds = 0.01);

  private:
    double phase_;
};

}  // namespace tl::sim
