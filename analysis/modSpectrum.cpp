#include "analysis/modSpectrum.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <string>

#include "analysis/modFft.h"
#include "base/RuntimeError.h"
#include "base/Trap.h"

namespace {

constexpr const char* kModule = "modSpectrum";

// 0 dBFS: the amplitude of a full-scale sine.
constexpr double kFullScale = 32767;
// Half the width of the window's main lobe, in bins.
constexpr std::int32_t kLobe = 4;
// How far a tone's lobe must stand above the residual's average over as many
// bins (a power ratio: 20 dB).
constexpr double kToneMargin = 100;

// The window of one size with the sums the scales need. The last size's is
// kept: the same length is usually analysed again and again.
struct Window {
    std::vector<double> weights;
    double sum = 0;
    double sumOfSquares = 0;
};

const Window& blackmanHarris(std::int32_t n)
{
    static Window window;
    if (static_cast<std::int32_t>(window.weights.size()) == n) return window;
    window = Window{};
    window.weights.resize(static_cast<std::size_t>(n));
    for (std::int32_t i = 0; i < n; ++i) {
        const double t = 2 * std::numbers::pi * i / n;
        const double w = 0.35875 - 0.48829 * std::cos(t) + 0.14128 * std::cos(2 * t) -
                         0.01168 * std::cos(3 * t);
        window.weights[i] = w;
        window.sum += w;
        window.sumOfSquares += w * w;
    }
    return window;
}

// 1 for bin 0 and the bin at half the rate, which have no mirror image; 2 for
// the others, which stand for their negative-frequency twin too.
double sidesOf(std::int32_t k, std::int32_t n) { return k == 0 || 2 * k == n ? 1 : 2; }

Spectrum spectrumOf(const std::vector<std::int16_t>& samples, std::int32_t sampleRate)
{
    Spectrum spectrum;
    const auto n = static_cast<std::int32_t>(samples.size());
    spectrum.sampleRate = sampleRate;
    spectrum.sampleCount = n;
    if (n == 0) return spectrum;
    spectrum.binWidth = static_cast<double>(sampleRate) / n;

    const Window& window = blackmanHarris(n);
    std::vector<float> weighted(samples.size());
    for (std::int32_t i = 0; i < n; ++i)
        weighted[i] = static_cast<float>(samples[i] / kFullScale * window.weights[i]);
    const std::vector<std::complex<float>> bins = gacFftForward(weighted);

    spectrum.power.resize(bins.size());
    spectrum.levelDb.resize(bins.size());
    for (std::int32_t k = 0; k < static_cast<std::int32_t>(bins.size()); ++k) {
        const double sides = sidesOf(k, n);
        const double magnitude2 = std::norm(std::complex<double>(bins[k]));
        spectrum.power[k] = sides * magnitude2 / (n / 2.0 * window.sumOfSquares);
        const double amplitude = sides * std::sqrt(magnitude2) / window.sum;
        spectrum.levelDb[k] = static_cast<float>(gdPowerRatioDb(amplitude * amplitude, 1));
    }
    return spectrum;
}

enum class Band : std::uint8_t { Rest, Dc, Fundamental, Harmonic };

// Gives the bins centre-kLobe..centre+kLobe (those that exist) to the band,
// leaving bins that already belong to one.
void claimLobe(std::vector<Band>& bands, std::int32_t centre, Band band)
{
    const std::int32_t last = static_cast<std::int32_t>(bands.size()) - 1;
    for (std::int32_t k = std::max(0, centre - kLobe); k <= std::min(last, centre + kLobe); ++k) {
        if (bands[k] == Band::Rest) bands[k] = band;
    }
}

// The bin of largest power from `first` on, the lowest on a tie.
std::int32_t strongestBin(const std::vector<double>& power, std::int32_t first)
{
    return static_cast<std::int32_t>(
        std::max_element(power.begin() + first, power.end()) - power.begin());
}

SpectrumFigures figuresOf(const Spectrum& spectrum)
{
    SpectrumFigures figures;
    const std::vector<double>& power = spectrum.power;
    const auto binCount = static_cast<std::int32_t>(power.size());
    if (binCount == 0) return figures;

    std::vector<Band> bands(power.size(), Band::Rest);
    claimLobe(bands, 0, Band::Dc);
    const std::int32_t firstCandidate = 2 * kLobe + 1;
    double fundamentalBin = 0;
    if (binCount > firstCandidate) {
        const std::int32_t peak = strongestBin(power, firstCandidate);
        claimLobe(bands, peak, Band::Fundamental);
        double weight = 0;
        double weightedBin = 0;
        for (std::int32_t k = 0; k < binCount; ++k) {
            if (bands[k] != Band::Fundamental) continue;
            weight += power[k];
            weightedBin += k * power[k];
        }
        fundamentalBin = weight > 0 ? weightedBin / weight : peak;
        const double halfRateBin = spectrum.sampleCount / 2.0;
        for (std::int32_t h = 2; h <= kLastHarmonic && h * fundamentalBin < halfRateBin; ++h)
            claimLobe(bands, static_cast<std::int32_t>(std::lround(h * fundamentalBin)),
                      Band::Harmonic);
    }

    double fundamental = 0;
    double harmonics = 0;
    double residual = 0;
    std::int32_t lobeBins = 0;
    std::int32_t residualBins = 0;
    for (std::int32_t k = 0; k < binCount; ++k) {
        switch (bands[k]) {
        case Band::Dc: break;
        case Band::Fundamental:
            fundamental += power[k];
            ++lobeBins;
            break;
        case Band::Harmonic: harmonics += power[k]; [[fallthrough]];
        case Band::Rest:
            residual += power[k];
            ++residualBins;
            break;
        }
    }

    figures.tone = toBool16(fundamental > 0 && residualBins > 0 &&
                            fundamental * residualBins >= kToneMargin * residual * lobeBins);
    if (figures.tone) figures.frequency = fundamentalBin * spectrum.binWidth;
    figures.levelDb = gdPowerRatioDb(fundamental, 1);
    figures.totalLevelDb = gdPowerRatioDb(fundamental + residual, 1);
    figures.thdDb = gdPowerRatioDb(harmonics, fundamental);
    figures.thdnDb = gdPowerRatioDb(residual, fundamental);
    figures.sinadDb = gdPowerRatioDb(fundamental + residual, residual);
    return figures;
}

}  // namespace

Spectrum gSpectrum(const rt::SampleArray& anSamples, std::int32_t lSampleRate, ErrorFlag& bError)
{
    Spectrum spectrum;
    rt::Trap trap(kModule, "gSpectrum", bError);
    trap.step([&] {
        if (lSampleRate <= 0)
            rt::raise(rt::kErrInvalidCall, "lSampleRate(" + std::to_string(lSampleRate) + ") <= 0");
        spectrum = spectrumOf(anSamples.items(), lSampleRate);
    });
    return spectrum;
}

SpectrumFigures gSpectrumFigures(const Spectrum& tSpectrum, ErrorFlag& bError)
{
    SpectrumFigures figures;
    rt::Trap trap(kModule, "gSpectrumFigures", bError);
    trap.step([&] { figures = figuresOf(tSpectrum); });
    return figures;
}

double gdPowerRatioDb(double dNumerator, double dDenominator)
{
    constexpr double kCeilingDb = -kSpectrumFloorDb;
    if (!(dNumerator > 0)) return kSpectrumFloorDb;
    if (!(dDenominator > 0)) return kCeilingDb;
    return std::clamp(10 * std::log10(dNumerator / dDenominator), kSpectrumFloorDb, kCeilingDb);
}
