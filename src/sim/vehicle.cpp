#include "sim/vehicle.h"

#include <algorithm>
#include <cmath>

#include "sim/rng.h"

namespace tl::sim {

bool VehicleFor(const std::string& kind, VehicleParams& out) {
    VehicleParams v;
    v.kind = kind;
    if (kind == "car") {
        out = v;
        return true;
    }
    if (kind == "kart") {
        // Direct drive through a chain: one ratio, the sprocket ratio as the
        // final drive. Lateral grip stays inside the logger's +-2 g.
        v.latGrip = 1.75 * kGravity;
        v.accelMax = 0.55 * kGravity;
        v.brakeMax = 1.0 * kGravity;
        v.powerPerMass = 90.0;
        v.topSpeed = 31.0;
        v.gears = 1;
        v.gearRatios = {1.0, 0, 0, 0, 0, 0, 0};
        v.finalDrive = 6.5;
        v.tyreCircumference = 0.88;
        v.idleRpm = 2500.0;
        v.shiftRpm = 16000.0;
        v.wheelPulsesRev = 1.0;
        v.ignitionPulsesRev = 1.0;
        v.mass = 160.0;
        v.cda = 0.45;
        v.rolling = 0.02;
        out = v;
        return true;
    }
    if (kind == "bike") {
        v.latGrip = 1.2 * kGravity;
        v.accelMax = 0.8 * kGravity;
        v.brakeMax = 1.1 * kGravity;
        v.powerPerMass = 350.0;
        v.topSpeed = 80.0;
        v.gears = 6;
        v.gearRatios = {2.6, 1.95, 1.6, 1.38, 1.22, 1.1, 0};
        v.finalDrive = 5.2;
        v.tyreCircumference = 1.98;
        v.idleRpm = 1300.0;
        v.shiftRpm = 12500.0;
        v.wheelPulsesRev = 2.0;
        v.ignitionPulsesRev = 1.0;
        v.mass = 260.0;
        v.cda = 0.35;
        out = v;
        return true;
    }
    if (kind == "boat") {
        // A paddle-wheel log stands in for the wheel; one reduction gear.
        v.latGrip = 0.45 * kGravity;
        v.accelMax = 0.3 * kGravity;
        v.brakeMax = 0.35 * kGravity;
        v.powerPerMass = 60.0;
        v.topSpeed = 28.0;
        v.gears = 1;
        v.gearRatios = {1.0, 0, 0, 0, 0, 0, 0};
        v.finalDrive = 1.8;
        v.tyreCircumference = 0.6;
        v.idleRpm = 800.0;
        v.shiftRpm = 6000.0;
        v.wheelPulsesRev = 1.0;
        v.ignitionPulsesRev = 2.0;
        v.mass = 900.0;
        out = v;
        return true;
    }
    return false;
}

namespace {

double EngineRpm(const VehicleParams& v, int gear, double speed) {
    if (gear < 1) return 0.0;
    return speed / v.tyreCircumference * 60.0 * v.gearRatios[gear - 1] * v.finalDrive;
}

}  // namespace

bool Simulate(const Circuit& circuit, const VehicleParams& vehicle, const DriveOptions& options,
              Trajectory& out, std::string& error) {
    out = Trajectory{};
    if (options.laps < 1 || circuit.points.size() < 2) {
        error = "a run needs a circuit and at least one lap";
        return false;
    }
    const double L = circuit.length;
    if (options.laps * L > 500000.0) {
        error = "a run of more than 500 km is not simulated (ask for fewer laps)";
        return false;
    }
    Rng rng(SubSeed(options.seed, 1));
    const double startBack = 10.0;  // the car waits this far behind the line
    const double stopDist = std::min(0.4 * L, 300.0);
    const double total = startBack + options.laps * L + stopDist;
    const double ds = 0.5;
    const size_t n = static_cast<size_t>(std::ceil(total / ds)) + 1;
    out.startDistance = L - startBack;
    for (int b = 0; b <= options.extraBeacons; ++b)
        out.beaconS.push_back(L * b / (options.extraBeacons + 1));

    // Grip factor of each lap: the driver is a little faster or slower.
    out.lapGrip.resize(options.laps + 2);
    for (double& f : out.lapGrip)
        f = std::clamp(1.0 + options.lapVariation * rng.Gauss(), 1.0 - 3.0 * options.lapVariation,
                       1.0 + 3.0 * options.lapVariation);
    out.lapGrip[0] = std::min(out.lapGrip[0], 1.0);
    auto lapAt = [&](double S) {
        return S < startBack
                   ? 0
                   : std::min(options.laps + 1, 1 + static_cast<int>((S - startBack) / L));
    };

    std::vector<double> S(n), v(n), dwell(n, 0.0);
    for (size_t i = 0; i < n; ++i) {
        S[i] = std::min(static_cast<double>(i) * ds, total);
        const double kmax = circuit.MaxCurvatureNear(out.startDistance + S[i], ds);
        const double grip = vehicle.latGrip * out.lapGrip[lapAt(S[i])];
        v[i] = kmax > 0.0 ? std::min(vehicle.topSpeed, std::sqrt(grip / kmax)) : vehicle.topSpeed;
    }
    v[0] = 0.0;
    v[n - 1] = 0.0;
    dwell[0] = options.startWait;
    dwell[n - 1] = options.endWait;
    if (options.pitStopLap > 0 && options.pitStopLap < options.laps) {
        const double stopAt = startBack + options.pitStopLap * L - 40.0;
        for (size_t i = 0; i < n; ++i)
            if (S[i] > stopAt - 300.0 && S[i] < stopAt + 200.0)
                v[i] = std::min(v[i], options.pitSpeedLimit);
        const size_t k = static_cast<size_t>(std::lround(stopAt / ds));
        v[k] = 0.0;
        dwell[k] = options.pitStopSeconds;
    }
    // Forward pass: traction, power and drag; backward pass: brakes.
    const double dragK = 0.5 * 1.2 * vehicle.cda / vehicle.mass;
    for (size_t i = 0; i + 1 < n; ++i) {
        const double step = S[i + 1] - S[i];
        const double a = std::min(vehicle.accelMax, vehicle.powerPerMass / std::max(v[i], 1.0)) -
                         dragK * v[i] * v[i] - vehicle.rolling * kGravity;
        const double reach = std::sqrt(std::max(0.0, v[i] * v[i] + 2.0 * std::max(a, 0.0) * step));
        v[i + 1] = std::min(v[i + 1], a > 0.0 ? reach : v[i]);
    }
    for (size_t i = n - 1; i > 0; --i) {
        const double step = S[i] - S[i - 1];
        v[i - 1] = std::min(v[i - 1], std::sqrt(v[i] * v[i] + 2.0 * vehicle.brakeMax * step));
    }

    // Times of arrival at and departure from each point.
    std::vector<double> arrive(n), depart(n);
    arrive[0] = 0.0;
    for (size_t i = 0; i < n; ++i) {
        depart[i] = arrive[i] + dwell[i];
        if (i + 1 < n) {
            const double sum = v[i] + v[i + 1];
            arrive[i + 1] = depart[i] + (sum > 1e-9 ? 2.0 * (S[i + 1] - S[i]) / sum : 1.0);
        }
    }
    const double endTime = depart[n - 1];
    const size_t rowCount = static_cast<size_t>(std::floor(endTime * 100.0 + 1e-9)) + 1;
    out.rows.resize(rowCount);

    // Crossings of the line and of the extra beacons, exact in time.
    for (size_t i = 0; i + 1 < n; ++i) {
        const double u0 = out.startDistance + S[i], u1 = out.startDistance + S[i + 1];
        const double step = S[i + 1] - S[i];
        const double acc = (v[i + 1] * v[i + 1] - v[i] * v[i]) / (2.0 * step);
        for (size_t b = 0; b < out.beaconS.size(); ++b) {
            const double m0 = std::floor((u0 - out.beaconS[b]) / L);
            const double m1 = std::floor((u1 - out.beaconS[b]) / L);
            if (m1 <= m0) continue;
            const double d = out.beaconS[b] + m1 * L - u0;
            double tau;
            if (std::fabs(acc) < 1e-9)
                tau = v[i] > 0.0 ? d / v[i] : 0.0;
            else
                tau = (-v[i] + std::sqrt(std::max(0.0, v[i] * v[i] + 2.0 * acc * d))) / acc;
            Crossing c;
            c.time = depart[i] + tau;
            c.row = static_cast<int>(std::ceil(c.time * 100.0 - 1e-9));
            c.beacon = static_cast<int>(b);
            c.distance = S[i] + d;
            out.crossings.push_back(c);
        }
    }
    std::stable_sort(out.crossings.begin(), out.crossings.end(),
                     [](const Crossing& a, const Crossing& b) { return a.time < b.time; });
    int linesSeen = 0;
    for (Crossing& c : out.crossings) {
        if (c.beacon == 0) {
            c.lap = linesSeen;  // laps completed before this crossing: 0 is the out lap
            ++linesSeen;
        } else {
            c.lap = linesSeen;  // lap in progress
        }
    }

    // The rows.
    size_t i = 0;
    size_t nextCrossing = 0;
    int lap = 0;
    int gear = 0;
    for (size_t k = 0; k < rowCount; ++k) {
        const double t = static_cast<double>(k) * 0.01;
        while (i + 1 < n && arrive[i + 1] <= t) ++i;
        double dist, speed, acc;
        if (t < depart[i] || i + 1 >= n) {
            dist = S[i];
            speed = 0.0;
            acc = 0.0;
        } else {
            const double step = S[i + 1] - S[i];
            acc = (v[i + 1] * v[i + 1] - v[i] * v[i]) / (2.0 * step);
            const double tau = t - depart[i];
            speed = std::max(0.0, v[i] + acc * tau);
            dist = S[i] + std::min(step, v[i] * tau + 0.5 * acc * tau * tau);
        }
        TruthRow& r = out.rows[k];
        r.time = t;
        r.distance = dist;
        r.speed = speed;
        r.accelLong = acc;
        const CircuitPoint p = circuit.At(out.startDistance + dist);
        r.x = p.x;
        r.y = p.y;
        r.heading = p.heading;
        r.accelLat = speed * speed * p.curvature;
        PlaneToLatLon(p.x, p.y, circuit.originLat, circuit.originLon, r.lat, r.lon);
        while (nextCrossing < out.crossings.size() &&
               out.crossings[nextCrossing].row <= static_cast<int>(k)) {
            if (out.crossings[nextCrossing].beacon == 0) ++lap;
            ++nextCrossing;
        }
        r.lap = lap;
        // Gears: up at the shift point, down when the engine would lug.
        if (speed < 0.3) {
            gear = speed > 0.0 ? std::max(gear, 1) : 0;
        } else {
            if (gear == 0) gear = 1;
            while (gear < vehicle.gears && EngineRpm(vehicle, gear, speed) > vehicle.shiftRpm)
                ++gear;
            while (gear > 1 && EngineRpm(vehicle, gear, speed) < 0.5 * vehicle.shiftRpm &&
                   EngineRpm(vehicle, gear - 1, speed) < 0.8 * vehicle.shiftRpm)
                --gear;
        }
        r.gear = gear;
        r.rpm = std::max(vehicle.idleRpm, EngineRpm(vehicle, gear, speed));
    }
    for (const Crossing& c : out.crossings)
        for (int k = c.row;
             k < c.row + static_cast<int>(options.beaconRows) && k < static_cast<int>(rowCount);
             ++k)
            out.rows[k].beacon = true;
    return true;
}

}  // namespace tl::sim
