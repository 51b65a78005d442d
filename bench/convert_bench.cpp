// The family conversions on one-hour runs (360,000 rows, every variable
// enabled), the converter stage alone: no I/O, no derived pipeline. Each run
// is built in memory as its logger would write it: HX40 frames with a GPS
// block once a second, an MQ7 record stream with fixes ten times a second,
// SV63 frames with a binary fix every 20 frames.
//
// The program's allocations are counted (the global operator new is replaced
// in this binary): the counter allocs/run is the number made by one whole
// conversion, set-up included. That it stays a few dozen on 360,000 rows
// shows that the byte loops themselves allocate nothing.
#include <benchmark/benchmark.h>

#include <atomic>
#include <cmath>
#include <cstdlib>
#include <new>
#include <random>
#include <string>
#include <vector>

#include "convert/family_converters.h"
#include "core/build_profile.h"
#include "core/config_store.h"
#include "core/platform.h"
#include "core/scripted_platform.h"
#include "store/catalogue.h"
#include "store/run_procedures.h"
#include "store/run_store.h"
#include "support/engine_fixture.h"

namespace {

std::atomic<long long> g_allocations{0};

}  // namespace

// Not inlined, so that the compiler never sees malloc'd memory reach a
// delete expression (it would take that for a mismatched pair).
[[gnu::noinline]] void* operator new(std::size_t n) {
    g_allocations.fetch_add(1, std::memory_order_relaxed);
    if (void* p = std::malloc(n ? n : 1)) return p;
    throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* p) noexcept {
    std::free(p);
}
[[gnu::noinline]] void operator delete(void* p, std::size_t) noexcept {
    std::free(p);
}

namespace {

using namespace tl;

constexpr int32_t kRows = 360000;

struct Environment {
    test::TempDir root;
    ScriptedPlatform ui;
    explicit Environment(Family family) {
        test::StartEngine(root, ui, family, Vehicle::Car);
        test::EnableEveryVariable();
        SetConfig(Paths().CarCfgPath, "WheelPulsesRev", 2);
        SetConfig(Paths().CarCfgPath, "DrivenRollingCircVal", 1.9f);
        SetConfig(Paths().CarCfgPath, "IgntionPulsesRev", 2);
    }
    ~Environment() { test::StopEngine(); }
};

void LoadPlanes(const std::vector<std::array<uint8_t, 8>>& frames, uint8_t period) {
    RunStore& s = Store();
    s.RawData.Reset(true);
    s.RawData.Resize(static_cast<int32_t>(frames.size()) - 1);
    for (int v = 1; v <= 8; ++v) {
        auto plane = s.RawData.Vector(v);
        for (size_t i = 0; i < frames.size(); ++i) plane[i] = frames[i][v - 1];
    }
    s.RunCount = 1;
    RunRecord& r = s.RunInfo[1];
    r.RawStart = 0;
    r.RawEnd = static_cast<int32_t>(frames.size()) - 1;
    r.HeaderBytes = {period, 0, 0, 0, 96, 0, 0, 0};
    AllocateRunArray(1);
}

// A frame of a vehicle lapping: accelerations that swing smoothly through
// both signs, a wheel pulse in most frames and an engine pulse in many, the
// analogue inputs with a little noise.
std::array<uint8_t, 8> Frame(std::mt19937& rng, int i) {
    std::array<uint8_t, 8> f{};
    f[0] = static_cast<uint8_t>(128 + 100 * std::sin(i / 700.0) + (rng() & 3));
    f[1] = static_cast<uint8_t>(60 + (rng() & 7));
    const double longG = 0.8 * std::sin(i / 450.0), latG = 1.3 * std::cos(i / 330.0);
    const int wheel = 609 + (i * 37) % 1400, engine = 609 + (i * 53) % 1400;
    const int wheelCount = (i % 4 != 0) ? 1 : 0, engineCount = (i % 5 < 3) ? 1 : 0;
    f[2] =
        static_cast<uint8_t>(((wheel & 7) << 4) | ((engine & 7) << 1) | (i % 500 == 0 ? 128 : 0));
    auto mag = [](double g) {
        return std::min(255L, std::lround(std::fabs(g - std::trunc(g)) * 256));
    };
    f[3] = static_cast<uint8_t>(mag(longG));
    f[4] = static_cast<uint8_t>(mag(latG));
    f[5] = static_cast<uint8_t>(wheel >> 3);
    f[6] = static_cast<uint8_t>(engine >> 3);
    f[7] = static_cast<uint8_t>((std::fabs(longG) >= 1 ? 16 : 0) | (longG < 0 ? 32 : 0) |
                                (std::fabs(latG) >= 1 ? 64 : 0) | (latG > 0 ? 128 : 0) |
                                wheelCount | (engineCount << 2));
    return f;
}

std::vector<std::array<uint8_t, 8>> Hx40Frames() {
    std::mt19937 rng(1);
    std::vector<std::array<uint8_t, 8>> frames;
    frames.reserve(kRows + kRows / 100 * 7);
    for (int i = 0; i < kRows; ++i) {
        frames.push_back(Frame(rng, i));
        if (i % 100 == 50 && i + 20 < kRows) {
            frames.back()[2] |= 1;
            char body[80];
            std::snprintf(body, sizeof body, ",1300%02d,8,5130.%04d,N,00010.%04d,W,%d.5,90.0",
                          i / 100 % 60, i / 100 % 10000, i / 70 % 10000, 20 + i / 100 % 50);
            std::string sentence = body;
            sentence.resize(56, ' ');
            for (int k = 0; k < 7; ++k) {
                std::array<uint8_t, 8> g{};
                for (int v = 0; v < 8; ++v) g[v] = static_cast<uint8_t>(sentence[(6 - k) * 8 + v]);
                frames.push_back(g);
            }
        }
    }
    return frames;
}

std::vector<std::array<uint8_t, 8>> Sv63Frames() {
    std::mt19937 rng(2);
    std::vector<std::array<uint8_t, 8>> frames;
    for (int i = 0; i < kRows; ++i) {
        auto f = Frame(rng, i);
        f[0] &= ~4;
        f[1] &= ~4;
        frames.push_back(f);
        if (i % 20 == 10 && i + 20 < kRows) {
            frames.back()[0] |= 4;
            frames.back()[1] |= 4;
            const uint32_t lat = static_cast<uint32_t>(515000000 + i),
                           lon = static_cast<uint32_t>(-1000000 - i);
            std::array<uint8_t, 8> a{}, b{}, c{};
            a[0] = 5;
            a[1] = 3;
            a[4] = uint8_t(lat >> 24), a[3] = uint8_t(lat >> 16);
            b[4] = uint8_t(lat >> 8), b[3] = uint8_t(lat);
            b[0] = uint8_t(lon >> 28), b[1] = uint8_t((lon >> 24) & 15);
            c[4] = uint8_t(lon >> 16), c[3] = uint8_t(lon >> 8);
            c[0] = uint8_t((lon >> 4) & 15), c[1] = uint8_t(lon & 15);
            frames.push_back(a);
            frames.push_back(b);
            frames.push_back(c);
        }
    }
    return frames;
}

struct Stream {
    std::vector<uint8_t> b;
    void Rec(std::initializer_list<uint8_t> bytes) {
        uint32_t sum = 0;
        for (uint8_t x : bytes) {
            b.push_back(x);
            sum += x;
        }
        b.push_back(static_cast<uint8_t>(sum));
    }
};

std::vector<uint8_t> Mq7Stream() {
    Stream s;
    s.b.reserve(static_cast<size_t>(kRows) * 40);
    s.Rec({6, 0x12, 0x67, 2, 7});
    for (int k = 0; k < kRows; ++k) {
        const uint32_t t = 1 + k;
        s.Rec({9, uint8_t(t >> 16), uint8_t(t >> 8), uint8_t(t)});
        s.Rec({8, uint8_t(128 | (k & 1)), uint8_t(k), uint8_t(k >> 3), uint8_t(k * 7)});
        s.Rec({18, 0, uint8_t(0xEA + (k & 7)), 0x60});
        s.Rec({uint8_t(20 + k % 8), uint8_t(k >> 8), uint8_t(k)});
        s.Rec({13, uint8_t(k % 10 == 0 ? 1 : 0)});
        if (k % 10 == 3) {
            const uint32_t lon = static_cast<uint32_t>(-467000000 + k),
                           lat = static_cast<uint32_t>(-237000000 - k);
            s.Rec({10, uint8_t(lon >> 24), uint8_t(lon >> 16), uint8_t(lon >> 8), uint8_t(lon),
                   uint8_t(lat >> 24), uint8_t(lat >> 16), uint8_t(lat >> 8), uint8_t(lat), 0, 0, 0,
                   120});
            s.Rec({11, 0, 0, uint8_t(k >> 8), uint8_t(k), 0, 0, 0, 40});
            s.Rec({7, 0, uint8_t(k >> 16), uint8_t(k >> 8), uint8_t(k)});
        }
    }
    return s.b;
}

void LoadStream(const std::vector<uint8_t>& bytes) {
    RunStore& s = Store();
    s.RawData.Reset(false);
    s.RawData.Resize(static_cast<int32_t>(bytes.size()) - 1);
    auto v = s.RawData.Vector(1);
    std::copy(bytes.begin(), bytes.end(), v.begin());
    s.RunCount = 1;
    s.RunInfo[1].RawStart = 0;
    s.RunInfo[1].RawEnd = static_cast<int32_t>(bytes.size()) - 1;
    AllocateRunArray(1);
}

template <class Convert>
void Run(benchmark::State& state, Convert convert) {
    const RunRecord& r = Store().RunInfo[1];
    long long allocations = 0;
    for (auto _ : state) {
        state.PauseTiming();
        WipeRunData(1);
        const long long before = g_allocations.load(std::memory_order_relaxed);
        state.ResumeTiming();
        convert(1);
        benchmark::DoNotOptimize(Store().RunData.Column(0).data());
        allocations = g_allocations.load(std::memory_order_relaxed) - before;
    }
    state.counters["allocs/run"] = static_cast<double>(allocations);
    state.counters["rows"] = r.RunLength;
    state.counters["rows/s"] =
        benchmark::Counter(double(r.RunLength) * state.iterations(), benchmark::Counter::kIsRate);
}

void BM_ConvertHx40Hour(benchmark::State& state) {
    Environment env(Family::HX40);
    LoadPlanes(Hx40Frames(), 0);
    Run(state, ConvertRawToRunData_HX40);
}

void BM_ConvertSv63Hour(benchmark::State& state) {
    Environment env(Family::SV63);
    LoadPlanes(Sv63Frames(), 1);
    Run(state, ConvertRawToRunData_SV63);
}

void BM_ConvertMq7Hour(benchmark::State& state) {
    Environment env(Family::MQ7);
    LoadStream(Mq7Stream());
    Run(state, ConvertRawToRunData_MQ7);
}

}  // namespace

BENCHMARK(BM_ConvertHx40Hour)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(BM_ConvertSv63Hour)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(BM_ConvertMq7Hour)->Unit(benchmark::kMillisecond)->MinTime(2.0);

BENCHMARK_MAIN();
