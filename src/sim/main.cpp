// tracelab-sim: a simulated vehicle lapping a circuit, recorded as a raw run
// of one of the four logger families, with its ground truth beside it.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "sim/simulation.h"

namespace {

const char* kUsage =
    "usage: tracelab-sim --family hx40|mq7|sw63|sv63 --circuit kart|road|oval --laps N --seed S\n"
    "                    [--vehicle car|kart|bike|boat] [--faults LIST] [--pit LAP]\n"
    "                    [--beacons N] [--gps-interval ROWS] [--period P] [--gps-noise M]\n"
    "                    [--mount-pitch DEG] [--mount-roll DEG] [--quiet] -o OUT.run\n"
    "\n"
    "Writes OUT.run (the raw run: type 1 HX40, 200 MQ7, 201 SW63, 202 SV63) and beside it\n"
    "OUT.truth.csv (ground truth per 0.01 s row), OUT.laps.csv (true crossings of the\n"
    "start/finish line and the beacons) and OUT.car (the vehicle's options).\n"
    "\n"
    "  --laps N           timed laps after the out lap (default 3)\n"
    "  --seed S           seed of every random draw; the same seed gives the same bytes\n"
    "  --pit LAP          stop in the pits at the end of lap LAP\n"
    "  --beacons N        extra trackside beacons spread round the lap (default 0)\n"
    "  --gps-interval R   rows between GPS fixes (HX40 100, at least 10; MQ7/SW63 10, at\n"
    "                     least 2; SV63 20, rounded up to whole frames)\n"
    "  --period P         SV63 sample period in 0.01 s, 1 to 20 (default 1)\n"
    "  --gps-noise M      standard deviation of the GPS position error in metres (0.3)\n"
    "  --faults LIST      comma-separated: corrupt=RATE, dropgps=RATE, badnmea=RATE,\n"
    "                     timejumps=N, jumpticks=T (default 5; 10 or more cannot be\n"
    "                     repaired by a reader), cut=SHARE (share of the run kept),\n"
    "                     missbeacon=K (the K-th beacon pulse is not logged),\n"
    "                     falsebeacon=T (a false beacon pulse at T seconds)\n";

bool NumberArg(const char* text, double& value) {
    char* end = nullptr;
    value = std::strtod(text, &end);
    return end != text && *end == '\0';
}

}  // namespace

int main(int argc, char** argv) {
    using namespace tl::sim;
    SimConfig config;
    std::string output;
    bool familyGiven = false, quiet = false;
    for (int i = 1; i < argc; ++i) {
        const std::string a = argv[i];
        if (a == "--help" || a == "-h") {
            std::fputs(kUsage, stdout);
            return 0;
        }
        if (a == "--quiet") {
            quiet = true;
            continue;
        }
        if (i + 1 >= argc) {
            std::fprintf(stderr, "tracelab-sim: %s needs a value\n%s", a.c_str(), kUsage);
            return 2;
        }
        const char* v = argv[++i];
        double num = 0.0;
        bool ok = true;
        if (a == "--family") {
            ok = FamilyFromName(v, config.family);
            familyGiven = ok;
        } else if (a == "--circuit") {
            config.circuit = v;
        } else if (a == "--vehicle") {
            config.vehicle = v;
        } else if (a == "-o" || a == "--output") {
            output = v;
        } else if (a == "--faults") {
            std::string error;
            if (!ParseFaults(v, config.encode.faults, error)) {
                std::fprintf(stderr, "tracelab-sim: %s\n", error.c_str());
                return 2;
            }
        } else if (NumberArg(v, num)) {
            if (a == "--laps" && num >= 1 && num <= 1000)
                config.drive.laps = static_cast<int>(num);
            else if (a == "--seed" && num >= 0)
                config.seed = static_cast<uint64_t>(std::strtoull(v, nullptr, 10));
            else if (a == "--pit" && num >= 0)
                config.drive.pitStopLap = static_cast<int>(num);
            else if (a == "--beacons" && num >= 0 && num <= 20)
                config.drive.extraBeacons = static_cast<int>(num);
            else if (a == "--gps-interval" && num >= 1 && num <= 10000)
                config.encode.gpsIntervalRows = static_cast<int>(num);
            else if (a == "--period" && num >= 1 && num <= 20)
                config.encode.sv63Period = static_cast<int>(num);
            else if (a == "--gps-noise" && num >= 0 && num <= 100)
                config.encode.sensors.gpsNoise = num;
            else if (a == "--mount-pitch" && num > -45 && num < 45)
                config.encode.sensors.mountPitchDeg = num;
            else if (a == "--mount-roll" && num > -45 && num < 45)
                config.encode.sensors.mountRollDeg = num;
            else
                ok = false;
        } else {
            ok = false;
        }
        if (!ok) {
            std::fprintf(stderr, "tracelab-sim: bad option %s %s\n%s", a.c_str(), v, kUsage);
            return 2;
        }
    }
    if (!familyGiven || output.empty()) {
        std::fprintf(stderr, "tracelab-sim: --family and -o are required\n%s", kUsage);
        return 2;
    }
    SimOutput out;
    std::string error;
    if (!RunSimulation(config, out, error) || !WriteSimulation(out, output, error)) {
        std::fprintf(stderr, "tracelab-sim: %s\n", error.c_str());
        return 1;
    }
    if (!quiet) std::fputs(SummaryText(out).c_str(), stdout);
    return 0;
}
