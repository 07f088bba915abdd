// Times the analysis the window runs on its own thread: the spectrum of
// 65,536 samples (windowing, transform, bin levels), its figures, the first
// spectrum of a size (which plans the transform), and the polarity verdict
// on a second's recording.
#include <benchmark/benchmark.h>

#include <cmath>
#include <numbers>
#include <random>

#include "analysis/modPolarityVerdict.h"
#include "analysis/modSpectrum.h"

namespace {

// A -6 dBFS tone in a little noise, as a recording would be.
rt::SampleArray recording(std::int32_t count, double rate)
{
    std::mt19937 generator(1);
    std::normal_distribution<double> noise(0, 30);
    rt::SampleArray samples(1, count);
    for (std::int32_t i = 0; i < count; ++i) {
        const double tone = 16384 * std::sin(2 * std::numbers::pi * 997 * i / rate);
        samples.data()[i] = static_cast<std::int16_t>(std::lround(tone + noise(generator)));
    }
    return samples;
}

void spectrum65536(benchmark::State& state)
{
    const rt::SampleArray samples = recording(65536, 48000);
    ErrorFlag error = kFalse;
    for (auto _ : state) benchmark::DoNotOptimize(gSpectrum(samples, 48000, error));
}
BENCHMARK(spectrum65536)->Unit(benchmark::kMillisecond);

void spectrumAndFigures65536(benchmark::State& state)
{
    const rt::SampleArray samples = recording(65536, 48000);
    ErrorFlag error = kFalse;
    for (auto _ : state) {
        const Spectrum spectrum = gSpectrum(samples, 48000, error);
        benchmark::DoNotOptimize(gSpectrumFigures(spectrum, error));
    }
}
BENCHMARK(spectrumAndFigures65536)->Unit(benchmark::kMillisecond);

// A new size each time: planning included. Sizes beyond the kept plans, so
// none is reused.
void spectrumOfANewSize(benchmark::State& state)
{
    std::int32_t size = 65536;
    for (auto _ : state) {
        state.PauseTiming();
        const rt::SampleArray samples = recording(++size, 48000);
        state.ResumeTiming();
        ErrorFlag error = kFalse;
        benchmark::DoNotOptimize(gSpectrum(samples, 48000, error));
    }
}
BENCHMARK(spectrumOfANewSize)->Unit(benchmark::kMillisecond)->Iterations(20);

void polarityVerdictOneSecond(benchmark::State& state)
{
    // A 10 ms burst in its 1 s pass, and the pass recorded 37 samples late.
    rt::SampleArray played(1, 48000);
    for (std::int32_t i = 1; i <= 480; ++i)
        played(i) = static_cast<std::int16_t>(std::lround(
            30000 * std::sin(2 * std::numbers::pi * 1000 * (i - 1) / 48000.0)));
    rt::SampleArray recorded(1, 48000);
    for (std::int32_t i = 1; i <= 48000 - 37; ++i) recorded(i + 37) = played(i) / 2;
    ErrorFlag error = kFalse;
    for (auto _ : state)
        benchmark::DoNotOptimize(gPolarityVerdict(played, recorded, 48000, error));
}
BENCHMARK(polarityVerdictOneSecond)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
