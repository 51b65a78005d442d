#include "sim/sensors.h"

#include <algorithm>
#include <cmath>

namespace tl::sim {

std::vector<GpsFix> MakeGpsFixes(const Trajectory& traj, const Circuit& circuit,
                                 const SensorOptions& options, int firstRow, int interval,
                                 double dropRate, uint64_t seed, int& dropped) {
    std::vector<GpsFix> fixes;
    dropped = 0;
    if (interval < 1) return fixes;
    Rng rng(seed);
    const double dt = interval * 0.01;
    const double tau = 30.0;  // s, correlation time of the position error
    const double rho = std::exp(-dt / tau);
    const double drive = std::sqrt(1.0 - rho * rho);
    double ex = options.gpsNoise * rng.Gauss(), ey = options.gpsNoise * rng.Gauss();
    int sats = 8;
    double satClock = 0.0;
    for (int row = std::max(firstRow, 0); row < static_cast<int>(traj.rows.size());
         row += interval) {
        ex = rho * ex + options.gpsNoise * drive * rng.Gauss();
        ey = rho * ey + options.gpsNoise * drive * rng.Gauss();
        satClock += dt;
        if (satClock >= 15.0) {  // the constellation changes slowly
            satClock = 0.0;
            sats = std::clamp(sats + rng.UniformInt(-1, 1), 5, 12);
        }
        const double speedNoise = options.gpsSpeedNoise * rng.Gauss();
        const bool drop = rng.Chance(dropRate);
        if (drop) {
            ++dropped;
            continue;
        }
        const TruthRow& t = traj.rows[row];
        GpsFix f;
        f.row = row;
        PlaneToLatLon(t.x + ex, t.y + ey, circuit.originLat, circuit.originLon, f.lat, f.lon);
        f.speed = std::max(0.0, t.speed + (t.speed > 0.0 ? speedNoise : 0.0));
        f.heading = t.heading;
        f.sats = sats;
        f.posAccuracy = std::max(0.5, 2.0 * options.gpsNoise) * 8.0 / sats + 0.3;
        f.speedAccuracy = 0.2 + 2.0 * options.gpsSpeedNoise * 8.0 / sats;
        f.utc = options.startUtcSeconds + t.time;
        fixes.push_back(f);
    }
    return fixes;
}

AccelSensor::AccelSensor(const SensorOptions& options, uint64_t seed)
    : options_(options), rng_(seed) {
    const double pitch = options.mountPitchDeg * 3.14159265358979323846 / 180.0;
    const double roll = options.mountRollDeg * 3.14159265358979323846 / 180.0;
    sinPitch_ = std::sin(pitch);
    cosPitch_ = std::cos(pitch);
    sinRoll_ = std::sin(roll);
    cosRoll_ = std::cos(roll);
}

AccelReading AccelSensor::Read(const TruthRow& row) {
    // A sensor axis tilted by an angle reads the motion scaled by the cosine
    // and gravity scaled by the sine.
    AccelReading r;
    r.longG = row.accelLong / kGravity * cosPitch_ + sinPitch_ + options_.accelBiasLong +
              options_.accelNoise * rng_.Gauss();
    r.latG = row.accelLat / kGravity * cosRoll_ + sinRoll_ + options_.accelBiasLat +
             options_.accelNoise * rng_.Gauss();
    return r;
}

FramePulses PulseInput::Step(double ratePerSecond, double seconds) {
    FramePulses p;
    const double rate = std::max(0.0, ratePerSecond);
    const double next = phase_ + rate * seconds;
    const double whole0 = std::floor(phase_), whole1 = std::floor(next);
    p.count = static_cast<int>(whole1 - whole0);
    if (p.count > 0) p.lastFraction = std::clamp((whole1 - phase_) / (rate * seconds), 0.0, 1.0);
    // Keep the phase small so that precision does not fade over an hour.
    phase_ = next - whole0;
    return p;
}

}  // namespace tl::sim
