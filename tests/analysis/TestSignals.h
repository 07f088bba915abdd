#pragma once
// Signals built for the analysis tests, in double precision and then
// rounded to 16-bit samples the way a recording or the engine delivers them.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <random>
#include <vector>

#include "base/Array.h"

namespace analysis_test {

inline constexpr double kFullScale = 32767;

// Adds amplitude * sin(2 pi f i / rate + phase) from sample `from` on.
inline void addSine(std::vector<double>& signal, double rate, double frequency, double amplitude,
                    double phase = 0.3, std::size_t from = 0)
{
    for (std::size_t i = from; i < signal.size(); ++i)
        signal[i] += amplitude * std::sin(2 * std::numbers::pi * frequency * (i - from) / rate + phase);
}

// Adds Gaussian white noise of the given rms (the same for the same seed).
inline void addNoise(std::vector<double>& signal, double rms, unsigned seed)
{
    std::mt19937 generator(seed);
    std::normal_distribution<double> normal(0, rms);
    for (double& value : signal) value += normal(generator);
}

// Rounded to 16 bits, clipped at +-32767, as a 1-based array.
inline rt::SampleArray toSamples(const std::vector<double>& signal)
{
    rt::SampleArray samples(1, static_cast<std::int32_t>(signal.size()));
    for (std::size_t i = 0; i < signal.size(); ++i) {
        const double clipped = std::clamp(std::round(signal[i]), -kFullScale, kFullScale);
        samples.data()[i] = static_cast<std::int16_t>(clipped);
    }
    return samples;
}

inline double rmsOf(const std::vector<double>& signal)
{
    double sum = 0;
    for (double value : signal) sum += value * value;
    return signal.empty() ? 0 : std::sqrt(sum / signal.size());
}

// A level in dBFS for an rms (0 dBFS: the rms of a full-scale sine).
inline double dbfsOfRms(double rms) { return 20 * std::log10(rms * std::numbers::sqrt2 / kFullScale); }

inline double amplitudeOfDbfs(double dbfs) { return kFullScale * std::pow(10, dbfs / 20); }

}  // namespace analysis_test
