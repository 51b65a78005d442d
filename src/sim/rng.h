// A portable random source for the simulator. The engine (std::mt19937_64) is
// fully specified by the standard; the distributions of <random> are not, so
// the uniform and normal draws are made here, and a seed gives the same bytes
// with any standard library.
#pragma once

#include <cmath>
#include <cstdint>
#include <random>

namespace tl::sim {

class Rng {
  public:
    explicit Rng(uint64_t seed) : engine_(seed) {}

    uint64_t Next() { return engine_(); }
    // Uniform in [0, 1), 53 bits.
    double Uniform() { return static_cast<double>(engine_() >> 11) * (1.0 / 9007199254740992.0); }
    // Uniform whole number in [lo, hi].
    int UniformInt(int lo, int hi) {
        const uint64_t span = static_cast<uint64_t>(hi - lo) + 1;
        return lo + static_cast<int>(engine_() % span);
    }
    // Standard normal by Box-Muller; the second value of each pair is kept.
    double Gauss() {
        if (haveSpare_) {
            haveSpare_ = false;
            return spare_;
        }
        double u1 = Uniform();
        while (u1 <= 1e-300) u1 = Uniform();
        const double u2 = Uniform();
        const double r = std::sqrt(-2.0 * std::log(u1));
        const double a = 2.0 * 3.14159265358979323846 * u2;
        spare_ = r * std::sin(a);
        haveSpare_ = true;
        return r * std::cos(a);
    }
    bool Chance(double p) { return p > 0.0 && Uniform() < p; }

  private:
    std::mt19937_64 engine_;
    double spare_ = 0.0;
    bool haveSpare_ = false;
};

// Independent streams for the parts of one simulation, so that switching a
// fault on does not move the noise of every other sensor.
inline uint64_t SubSeed(uint64_t seed, uint64_t stream) {
    uint64_t z = seed + 0x9E3779B97F4A7C15ull * (stream + 1);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
}

}  // namespace tl::sim
