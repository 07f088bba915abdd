#include "analysis/modPolarityVerdict.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <complex>
#include <cstdlib>
#include <span>
#include <string>
#include <vector>

#include "analysis/modFft.h"
#include "analysis/modSpectrum.h"
#include "base/RuntimeError.h"
#include "base/Trap.h"

namespace {

constexpr const char* kModule = "modPolarityVerdict";
// How far |c| must stand above the correlation's rms away from the burst
// (an amplitude ratio: 20 dB).
constexpr double kPeakMargin = 10;

// The correlation at every lag t = -(burst size - 1) .. recording size - 1,
// at index t + burst size - 1, through one zero-padded transform each way (a
// power of two long enough that no lag wraps onto another).
std::vector<float> correlationAtEveryLag(std::span<const std::int16_t> recording,
                                         std::span<const std::int16_t> burst)
{
    const std::size_t lags = recording.size() + burst.size() - 1;
    const auto n = static_cast<std::int32_t>(std::bit_ceil(lags));
    std::vector<float> padded(static_cast<std::size_t>(n), 0.0f);
    std::copy(recording.begin(), recording.end(), padded.begin());
    std::vector<std::complex<float>> product = gacFftForward(padded);
    std::fill(padded.begin(), padded.end(), 0.0f);
    std::copy(burst.begin(), burst.end(), padded.begin());
    const std::vector<std::complex<float>> burstBins = gacFftForward(padded);
    for (std::size_t k = 0; k < product.size(); ++k) product[k] *= std::conj(burstBins[k]);
    const std::vector<float> circular = gafFftInverse(product, n);

    // Negative lags sit at the end of the circular result.
    std::vector<float> correlation(lags);
    const std::size_t negative = burst.size() - 1;
    std::copy(circular.end() - static_cast<std::ptrdiff_t>(negative), circular.end(),
              correlation.begin());
    std::copy(circular.begin(), circular.begin() + static_cast<std::ptrdiff_t>(recording.size()),
              correlation.begin() + static_cast<std::ptrdiff_t>(negative));
    return correlation;
}

// The rms of the correlation at the lags more than `reach` from `peak`; 0
// when there are none.
double rmsAwayFrom(const std::vector<float>& correlation, std::size_t peak, std::size_t reach)
{
    double sum = 0;
    std::size_t count = 0;
    for (std::size_t i = 0; i < correlation.size(); ++i) {
        if ((i > peak ? i - peak : peak - i) <= reach) continue;
        sum += static_cast<double>(correlation[i]) * correlation[i];
        ++count;
    }
    return count == 0 ? 0 : std::sqrt(sum / count);
}

struct Alignment {
    double correlation = 0;  // sum of r[t + j] p[j]
    double burstEnergy = 0;  // sum of p[j]^2 over the same j
};

// The correlation at one lag and the burst's energy where it overlaps the
// recording, exactly.
Alignment alignmentAt(std::span<const std::int16_t> recording,
                      std::span<const std::int16_t> burst, std::int64_t lag)
{
    Alignment at;
    const auto recorded = static_cast<std::int64_t>(recording.size());
    const std::int64_t first = std::max<std::int64_t>(0, -lag);
    const std::int64_t last =
        std::min<std::int64_t>(static_cast<std::int64_t>(burst.size()), recorded - lag) - 1;
    for (std::int64_t j = first; j <= last; ++j) {
        const double p = burst[j];
        at.correlation += static_cast<double>(recording[lag + j]) * p;
        at.burstEnergy += p * p;
    }
    return at;
}

PolarityVerdict verdictOf(std::span<const std::int16_t> played,
                          std::span<const std::int16_t> recording, std::int32_t sampleRate)
{
    PolarityVerdict verdict;
    const auto audible = [](std::int16_t s) { return s != 0; };
    const auto burstStart = std::find_if(played.begin(), played.end(), audible);
    if (burstStart == played.end() || recording.empty()) return verdict;
    const auto burstEnd = std::find_if(played.rbegin(), played.rend(), audible).base();
    const std::span<const std::int16_t> burst(burstStart, burstEnd);

    const std::vector<float> correlation = correlationAtEveryLag(recording, burst);
    const auto peak = static_cast<std::size_t>(
        std::max_element(correlation.begin(), correlation.end(),
                         [](float a, float b) { return std::abs(a) < std::abs(b); }) -
        correlation.begin());
    const double noise = rmsAwayFrom(correlation, peak, burst.size());
    const double peakSize = std::abs(static_cast<double>(correlation[peak]));
    verdict.peakToNoiseDb = gdPowerRatioDb(peakSize * peakSize, noise * noise);
    if (!(peakSize > 0) || peakSize < kPeakMargin * noise) return verdict;

    const std::int64_t lag =
        static_cast<std::int64_t>(peak) - static_cast<std::int64_t>(burst.size() - 1);
    const Alignment at = alignmentAt(recording, burst, lag);
    if (at.correlation == 0 || at.burstEnergy == 0) return verdict;
    const double gain = at.correlation / at.burstEnergy;

    verdict.signal = kTrue;
    verdict.inverted = toBool16(gain < 0);
    verdict.delaySamples = static_cast<std::int32_t>(lag - (burstStart - played.begin()));
    verdict.delayMs = verdict.delaySamples * 1000.0 / sampleRate;
    verdict.gainDb = gdPowerRatioDb(gain * gain, 1);
    return verdict;
}

}  // namespace

PolarityVerdict gPolarityVerdict(const rt::SampleArray& anPlayed,
                                 const rt::SampleArray& anRecorded, std::int32_t lSampleRate,
                                 ErrorFlag& bError)
{
    PolarityVerdict verdict;
    rt::Trap trap(kModule, "gPolarityVerdict", bError);
    trap.step([&] {
        if (lSampleRate <= 0)
            rt::raise(rt::kErrInvalidCall, "lSampleRate(" + std::to_string(lSampleRate) + ") <= 0");
        verdict = verdictOf(anPlayed.items(), anRecorded.items(), lSampleRate);
    });
    return verdict;
}

std::string gsPolarityText(const PolarityVerdict& tVerdict)
{
    if (!tVerdict.signal) return "No signal";
    return tVerdict.inverted ? "Polarity: INVERTED" : "Polarity: normal";
}
