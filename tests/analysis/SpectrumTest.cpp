// The spectrum and its figures: against what the test signals were built to
// read, and against a second, plain computation of the same figures (a
// double-precision DFT bin by bin, the residual by Parseval's theorem from
// the time samples) on every kind of input the window can hand over.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>
#include <string>
#include <vector>

#include "analysis/modSpectrum.h"
#include "tests/analysis/TestSignals.h"

namespace {

using namespace analysis_test;

// ---- the plain computation ------------------------------------------------

struct PlainFigures {
    bool tone = false;
    double frequency = 0;
    double levelDb = -140;
    double totalLevelDb = -140;
    double thdDb = -140;
    double thdnDb = -140;
    double sinadDb = -140;
};

double plainDb(double numerator, double denominator)
{
    if (numerator <= 0) return -140;
    if (denominator <= 0) return 140;
    return std::clamp(10 * std::log10(numerator / denominator), -140.0, 140.0);
}

PlainFigures plainFigures(const rt::SampleArray& samples, double rate)
{
    PlainFigures figures;
    const long n = samples.size();
    if (n == 0) return figures;

    // Windowed samples in units of full scale, and the window's energy.
    std::vector<double> y(n);
    double windowEnergy = 0;
    double windowedEnergy = 0;
    for (long i = 0; i < n; ++i) {
        const double t = 2 * std::numbers::pi * i / n;
        const double w = 0.35875 - 0.48829 * std::cos(t) + 0.14128 * std::cos(2 * t) -
                         0.01168 * std::cos(3 * t);
        y[i] = samples.data()[i] / kFullScale * w;
        windowEnergy += w * w;
        windowedEnergy += y[i] * y[i];
    }
    // Bin powers by the DFT's own sum, one bin at a time.
    const long half = n / 2;
    std::vector<std::complex<double>> turn(n);
    for (long m = 0; m < n; ++m) turn[m] = std::polar(1.0, -2 * std::numbers::pi * m / n);
    std::vector<double> power(half + 1);
    for (long k = 0; k <= half; ++k) {
        std::complex<double> sum = 0;
        for (long i = 0; i < n; ++i) sum += y[i] * turn[(k * i) % n];
        const double sides = (k == 0 || 2 * k == n) ? 1 : 2;
        power[k] = sides * std::norm(sum) / (n / 2.0 * windowEnergy);
    }
    // Everything, from the time samples: sum |X|^2 = n sum y^2.
    const double everything = 2 * windowedEnergy / windowEnergy;

    enum Owner { kRest, kDc, kFundamental, kHarmonic };
    std::vector<Owner> owner(half + 1, kRest);
    const auto claim = [&](long centre, Owner who) {
        for (long k = centre - 4; k <= centre + 4; ++k)
            if (k >= 0 && k <= half && owner[k] == kRest) owner[k] = who;
    };
    claim(0, kDc);
    double fundamentalBin = 0;
    if (half >= 9) {
        long peak = 9;
        for (long k = 10; k <= half; ++k)
            if (power[k] > power[peak]) peak = k;
        claim(peak, kFundamental);
        double weight = 0;
        double moment = 0;
        for (long k = 0; k <= half; ++k)
            if (owner[k] == kFundamental) weight += power[k], moment += k * power[k];
        fundamentalBin = weight > 0 ? moment / weight : peak;
        for (long h = 2; h <= 10 && h * fundamentalBin < n / 2.0; ++h)
            claim(std::lround(h * fundamentalBin), kHarmonic);
    }
    double dc = 0, fundamental = 0, harmonics = 0;
    long lobeBins = 0, residualBins = 0;
    for (long k = 0; k <= half; ++k) {
        if (owner[k] == kDc) dc += power[k];
        if (owner[k] == kFundamental) fundamental += power[k], ++lobeBins;
        if (owner[k] == kHarmonic) harmonics += power[k];
        if (owner[k] == kHarmonic || owner[k] == kRest) ++residualBins;
    }
    const double residual = std::max(0.0, everything - dc - fundamental);

    figures.tone = fundamental > 0 && residualBins > 0 &&
                   fundamental / lobeBins >= 100 * residual / residualBins;
    if (figures.tone) figures.frequency = fundamentalBin * rate / n;
    figures.levelDb = plainDb(fundamental, 1);
    figures.totalLevelDb = plainDb(fundamental + residual, 1);
    figures.thdDb = plainDb(harmonics, fundamental);
    figures.thdnDb = plainDb(residual, fundamental);
    figures.sinadDb = plainDb(fundamental + residual, residual);
    return figures;
}

// ---- helpers ---------------------------------------------------------------

struct Analysed {
    Spectrum spectrum;
    SpectrumFigures figures;
};

Analysed analyse(const rt::SampleArray& samples, std::int32_t rate)
{
    ErrorFlag error = kFalse;
    Analysed result;
    result.spectrum = gSpectrum(samples, rate, error);
    result.figures = gSpectrumFigures(result.spectrum, error);
    EXPECT_FALSE(error);
    return result;
}

bool finiteWithinRange(const SpectrumFigures& f)
{
    for (double value : {f.levelDb, f.totalLevelDb, f.thdDb, f.thdnDb, f.sinadDb})
        if (!(value >= kSpectrumFloorDb && value <= -kSpectrumFloorDb)) return false;
    return std::isfinite(f.frequency);
}

// A -6 dBFS sine with a third harmonic 1 % (-40 dB) of it.
std::vector<double> sineWithThird(std::size_t n, double rate, double frequency)
{
    std::vector<double> signal(n, 0.0);
    addSine(signal, rate, frequency, amplitudeOfDbfs(-6));
    addSine(signal, rate, 3 * frequency, amplitudeOfDbfs(-6) / 100, 1.1);
    return signal;
}

struct Case {
    std::string name;
    rt::SampleArray samples;
    std::int32_t rate;
    bool tone;
};

std::vector<Case> everyKindOfInput()
{
    std::vector<Case> cases;
    cases.push_back({"third harmonic between bins", toSamples(sineWithThird(4096, 48000, 1000)),
                     48000, true});
    cases.push_back({"third harmonic on a bin", toSamples(sineWithThird(4410, 44100, 1000)), 44100,
                     true});

    std::vector<double> noisy(4096, 0.0);
    addSine(noisy, 48000, 997, amplitudeOfDbfs(-6));
    addNoise(noisy, amplitudeOfDbfs(-6) / std::numbers::sqrt2 / 100, 7);
    cases.push_back({"tone in noise", toSamples(noisy), 48000, true});

    std::vector<double> noise(4096, 0.0);
    addNoise(noise, 0.1 * kFullScale, 11);
    cases.push_back({"white noise", toSamples(noise), 48000, false});

    std::vector<double> clipped(4096, 0.0);
    addSine(clipped, 48000, 440, 4 * kFullScale);
    cases.push_back({"clipped square", toSamples(clipped), 48000, true});

    std::vector<double> low(4096, 0.0);
    addSine(low, 48000, 110, 2 * kFullScale);  // harmonic lobes side by side
    cases.push_back({"low clipped tone", toSamples(low), 48000, true});

    std::vector<double> offset(4096, 5000.0);
    addSine(offset, 44100, 5000, amplitudeOfDbfs(-20));
    cases.push_back({"tone on a DC offset", toSamples(offset), 44100, true});

    // Hum louder than the tone, but too low to be taken for the fundamental.
    std::vector<double> hum(4096, 0.0);
    addSine(hum, 48000, 1000, amplitudeOfDbfs(-6));
    addSine(hum, 48000, 4.6 * 48000 / 4096, amplitudeOfDbfs(-3));
    cases.push_back({"tone over hum", toSamples(hum), 48000, true});

    std::vector<double> topHarmonic(4096, 0.0);  // the second harmonic just above half the rate
    addSine(topHarmonic, 48000, (4096 / 4 + 1.3) * 48000 / 4096, 1.5 * kFullScale);
    cases.push_back({"harmonic above half the rate", toSamples(topHarmonic), 48000, true});

    std::vector<double> halfRate(64);
    for (std::size_t i = 0; i < halfRate.size(); ++i) halfRate[i] = i % 2 ? -16000 : 16000;
    cases.push_back({"tone at half the rate", toSamples(halfRate), 48000, true});

    cases.push_back({"silence", toSamples(std::vector<double>(4096, 0.0)), 44100, false});
    cases.push_back({"one sample", toSamples({1000.0}), 44100, false});
    cases.push_back({"fewer samples than a lobe", toSamples({1000, -500, 300, 0, 2}), 44100, false});
    cases.push_back({"nothing", rt::SampleArray(), 44100, false});
    return cases;
}

// ---- tests -----------------------------------------------------------------

TEST(SpectrumFigures, AgreeWithAPlainComputationOnEveryKindOfInput)
{
    for (const Case& c : everyKindOfInput()) {
        SCOPED_TRACE(c.name);
        const Analysed module = analyse(c.samples, c.rate);
        const SpectrumFigures& f = module.figures;
        const PlainFigures plain = plainFigures(c.samples, c.rate);
        EXPECT_TRUE(finiteWithinRange(f));
        for (float level : module.spectrum.levelDb) ASSERT_TRUE(level >= kSpectrumFloorDb && level < 10);
        EXPECT_EQ(f.tone != kFalse, c.tone);
        EXPECT_EQ(f.tone != kFalse, plain.tone);
        EXPECT_NEAR(f.frequency, plain.frequency, 1e-3 * module.spectrum.binWidth);
        EXPECT_NEAR(f.levelDb, plain.levelDb, 0.1);
        EXPECT_NEAR(f.totalLevelDb, plain.totalLevelDb, 0.1);
        EXPECT_NEAR(f.thdDb, plain.thdDb, 0.1);
        EXPECT_NEAR(f.thdnDb, plain.thdnDb, 0.1);
        EXPECT_NEAR(f.sinadDb, plain.sinadDb, 0.1);
    }
}

TEST(SpectrumFigures, OnePercentThirdHarmonicReadsMinus40Db)
{
    // 65,536 samples at 48 kHz: 1 kHz falls between bins.
    const SpectrumFigures f = analyse(toSamples(sineWithThird(65536, 48000, 1000)), 48000).figures;
    EXPECT_TRUE(f.tone);
    EXPECT_NEAR(f.frequency, 1000, 0.001);
    EXPECT_NEAR(f.levelDb, -6.0, 0.01);
    EXPECT_NEAR(f.thdDb, -40.0, 0.05);
    EXPECT_NEAR(f.thdnDb, -40.0, 0.05);  // the harmonic dwarfs the 16-bit noise
    EXPECT_NEAR(f.sinadDb, 40.0, 0.05);
}

TEST(SpectrumFigures, LevelAndFrequencyHoldWhereverTheToneFallsBetweenBins)
{
    constexpr std::size_t n = 16384;
    constexpr double rate = 48000;
    const double binWidth = rate / n;
    for (double offset = 0; offset < 1; offset += 0.125) {
        const double frequency = (341 + offset) * binWidth;
        SCOPED_TRACE(frequency);
        std::vector<double> signal(n, 0.0);
        addSine(signal, rate, frequency, amplitudeOfDbfs(-6));
        const SpectrumFigures f = analyse(toSamples(signal), rate).figures;
        EXPECT_NEAR(f.levelDb, -6.0, 0.01);
        EXPECT_NEAR(f.frequency, frequency, 1e-3 * binWidth);
    }
}

TEST(SpectrumFigures, NoiseAddedToAToneGivesTheSinadItWasBuiltWith)
{
    constexpr std::size_t n = 65536;
    std::vector<double> noise(n, 0.0);
    addNoise(noise, amplitudeOfDbfs(-6) / std::numbers::sqrt2 / std::pow(10, 50 / 20.0), 3);
    std::vector<double> signal = noise;
    addSine(signal, 48000, 1000, amplitudeOfDbfs(-6));
    // The rounding to 16 bits adds 1/12 LSB^2 of noise of its own.
    const double noisePower = std::pow(rmsOf(noise), 2) + 1.0 / 12;
    const double tonePower = std::pow(amplitudeOfDbfs(-6), 2) / 2;
    const double builtSinad = 10 * std::log10((tonePower + noisePower) / noisePower);

    const SpectrumFigures f = analyse(toSamples(signal), 48000).figures;
    EXPECT_TRUE(f.tone);
    EXPECT_NEAR(f.sinadDb, builtSinad, 0.1);
    EXPECT_NEAR(f.thdnDb, -10 * std::log10(tonePower / noisePower), 0.1);
}

TEST(SpectrumFigures, WhiteNoiseReadsItsLevelAndNoTone)
{
    for (unsigned seed = 1; seed <= 4; ++seed) {
        for (std::size_t n : {1024u, 65536u}) {
            SCOPED_TRACE(testing::Message() << "seed " << seed << ", " << n << " samples");
            std::vector<double> noise(n, 0.0);
            addNoise(noise, amplitudeOfDbfs(-20) / std::numbers::sqrt2, seed);
            const SpectrumFigures f = analyse(toSamples(noise), 44100).figures;
            EXPECT_FALSE(f.tone);
            EXPECT_EQ(f.frequency, 0);
            // The window weighs the middle most, so short noise varies a little more.
            EXPECT_NEAR(f.totalLevelDb, dbfsOfRms(rmsOf(noise)), n < 4096 ? 0.5 : 0.1);
        }
    }
}

TEST(SpectrumFigures, ToneTenDbUnderWhiteNoiseIsStillATone)
{
    constexpr std::size_t n = 65536;
    std::vector<double> signal(n, 0.0);
    addNoise(signal, amplitudeOfDbfs(-20) / std::numbers::sqrt2, 5);
    addSine(signal, 48000, 3000, amplitudeOfDbfs(-30));
    const SpectrumFigures f = analyse(toSamples(signal), 48000).figures;
    EXPECT_TRUE(f.tone);
    EXPECT_NEAR(f.frequency, 3000, 0.1);
    EXPECT_NEAR(f.levelDb, -30, 0.5);
}

TEST(SpectrumFigures, SquareWaveReadsItsHarmonicsAndRmsLevel)
{
    // 100 Hz, 240 samples up and 240 down: odd harmonics of 1/h.
    std::vector<double> square(48000);
    for (std::size_t i = 0; i < square.size(); ++i) square[i] = (i % 480) < 240 ? kFullScale : -kFullScale;
    const SpectrumFigures f = analyse(toSamples(square), 48000).figures;
    const double oddHarmonics = 1.0 / 9 + 1.0 / 25 + 1.0 / 49 + 1.0 / 81;
    EXPECT_TRUE(f.tone);
    EXPECT_NEAR(f.frequency, 100, 1e-3);
    EXPECT_NEAR(f.levelDb, 20 * std::log10(4 / std::numbers::pi), 0.01);
    EXPECT_NEAR(f.totalLevelDb, 10 * std::log10(2.0), 0.01);
    EXPECT_NEAR(f.thdDb, 10 * std::log10(oddHarmonics), 0.02);
}

TEST(Spectrum, PlotsFullScaleAtZeroDbfsAndSilenceOnTheFloor)
{
    std::vector<double> sine(4800, 0.0);
    addSine(sine, 48000, 1000, kFullScale);
    const Spectrum tone = analyse(toSamples(sine), 48000).spectrum;
    ASSERT_EQ(tone.levelDb.size(), 2401u);
    EXPECT_DOUBLE_EQ(tone.binWidth, 10);
    EXPECT_NEAR(*std::max_element(tone.levelDb.begin(), tone.levelDb.end()), 0, 0.01);
    EXPECT_NEAR(tone.levelDb[100], 0, 0.01);

    // Bin 0 has no mirror image: a DC offset of half full scale reads -6 dBFS.
    const Spectrum offset = analyse(toSamples(std::vector<double>(4800, kFullScale / 2)), 48000).spectrum;
    EXPECT_NEAR(offset.levelDb[0], -6.02, 0.01);

    const Spectrum silence = analyse(toSamples(std::vector<double>(4800, 0.0)), 48000).spectrum;
    for (float level : silence.levelDb) ASSERT_EQ(level, kSpectrumFloorDb);
}

TEST(Spectrum, PlansKeptForEarlierSizesGiveTheSameSpectraAgain)
{
    // More sizes than plans are kept, some of them awkward for the transform.
    const std::vector<std::size_t> sizes = {4096, 4410, 1000, 8191, 48000, 7, 4096, 8191, 4410};
    std::vector<std::vector<float>> first(sizes.size());
    for (std::size_t pass = 0; pass < 2; ++pass) {
        for (std::size_t s = 0; s < sizes.size(); ++s) {
            std::vector<double> signal(sizes[s], 0.0);
            addSine(signal, 44100, 1234.5, amplitudeOfDbfs(-3));
            addNoise(signal, 100, 9);
            const Spectrum spectrum = analyse(toSamples(signal), 44100).spectrum;
            if (pass == 0) first[s] = spectrum.levelDb;
            else EXPECT_EQ(spectrum.levelDb, first[s]) << sizes[s] << " samples";
        }
    }
}

TEST(Spectrum, RateBelowOneIsAnError)
{
    ErrorFlag error = kFalse;
    const Spectrum spectrum = gSpectrum(toSamples({1, 2, 3}), 0, error);
    EXPECT_TRUE(error);
    EXPECT_TRUE(spectrum.levelDb.empty());
}

}  // namespace
