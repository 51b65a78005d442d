// One hour of a car lapping the road circuit: the simulation alone, and the
// simulation with the HX40 encoding (360,000 frames and 3,600 sentences).
#include <benchmark/benchmark.h>

#include "sim/run_file.h"
#include "sim/simulation.h"

namespace {

tl::sim::SimConfig HourOfRoad(tl::sim::Family family) {
    tl::sim::SimConfig c;
    c.family = family;
    c.circuit = "road";
    c.vehicle = "car";
    c.seed = 42;
    c.drive.laps = 31;  // about 116 s a lap, with the stops: an hour
    return c;
}

void BM_SimulateHour(benchmark::State& state) {
    tl::sim::Circuit circuit;
    tl::sim::VehicleParams vehicle;
    std::string error;
    tl::sim::BuiltinCircuit("road", circuit, error);
    tl::sim::VehicleFor("car", vehicle);
    tl::sim::DriveOptions drive = HourOfRoad(tl::sim::Family::HX40).drive;
    drive.seed = 42;
    size_t rows = 0;
    for (auto _ : state) {
        tl::sim::Trajectory t;
        tl::sim::Simulate(circuit, vehicle, drive, t, error);
        rows = t.rows.size();
        benchmark::DoNotOptimize(t.rows.data());
    }
    state.counters["rows"] = static_cast<double>(rows);
}
BENCHMARK(BM_SimulateHour)->Unit(benchmark::kMillisecond);

void BM_SimulateAndEncodeHourHX40(benchmark::State& state) {
    const tl::sim::SimConfig config = HourOfRoad(tl::sim::Family::HX40);
    size_t rows = 0, bytes = 0;
    for (auto _ : state) {
        tl::sim::SimOutput out;
        std::string error;
        tl::sim::RunSimulation(config, out, error);
        const std::vector<uint8_t> file = tl::sim::RunFileBytes(out.raw);
        rows = static_cast<size_t>(out.raw.rows);
        bytes = file.size();
        benchmark::DoNotOptimize(file.data());
    }
    state.counters["rows"] = static_cast<double>(rows);
    state.counters["file_bytes"] = static_cast<double>(bytes);
}
BENCHMARK(BM_SimulateAndEncodeHourHX40)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
