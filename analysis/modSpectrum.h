#pragma once
// The spectrum of a 16-bit sample array and the distortion figures read from
// it.
//
// Spectrum. The n samples x[i] (i = 0..n-1, in units of full scale 32767)
// are weighted by the periodic 4-term Blackman-Harris window
//     w[i] = 0.35875 - 0.48829 cos(2 pi i/n) + 0.14128 cos(4 pi i/n)
//            - 0.01168 cos(6 pi i/n)
// and transformed: X[k] = sum of x[i] w[i] e^(-2 pi j k i/n), k = 0..n/2,
// bin k lying at k * rate / n Hz. With c[k] = 1 for bin 0 and (n even) bin
// n/2 and 2 for every other bin:
// - level[k] = 20 log10(c[k] |X[k]| / sum w) dBFS, the bin's amplitude: a
//   full-scale sine centred on a bin peaks at 0 dBFS there. This is what the
//   plot shows.
// - power[k] = c[k] |X[k]|^2 / (n/2 * sum w^2), the bin's share of the mean
//   square relative to a full-scale sine's. A tone's power summed over its
//   main lobe is its mean square whatever its place between bins: 1 for a
//   full-scale sine, 0.25 for one at -6 dBFS. The figures add these.
//
// Figures. With L = 4 bins (the window's main lobe reaches 4 bins either side
// of a tone):
// - DC band: bins 0..L.
// - Fundamental: the bin of largest power among bins 2L+1..n/2 (so its lobe
//   never touches the DC band), the lowest such bin on a tie; its lobe is that
//   bin and L bins either side, up to bin n/2. F = the lobe's power.
// - Frequency: the power-weighted mean bin of the lobe, sum k power[k] / F,
//   times rate / n. For this window the mean lies within 1e-6 bin of a clean
//   tone wherever it falls between bins, where a parabola through the three
//   top bins is off by up to 0.003 bin.
// - Level: 10 log10(F) dBFS, so a -6 dBFS sine reads -6.0 (rms-based: a
//   full-scale square reads +3 dBFS).
// - Harmonics h = 2..kLastHarmonic whose frequency h * f is below half the
//   rate: the bins within L of round(h * f in bins). A bin is counted once,
//   in the first of DC band, fundamental, harmonic 2, 3, ... it belongs to.
//   H = their power.
// - R = the power of every bin outside the DC band and the fundamental's
//   lobe (noise and distortion, harmonics included).
// - Total level: 10 log10(F + R) dBFS, everything but DC.
// - THD = 10 log10(H / F) dB; THD+N = 10 log10(R / F) dB; SINAD =
//   10 log10((F + R) / R) dB.
// - A tone is present when F > 0 and the lobe holds at least 100 times (20 dB)
//   the power the residual puts on average into as many bins. The strongest
//   lobe of white noise alone stands 3 to 8 dB above that average, from a few
//   hundred to a million samples, while a tone 10 dB under the noise of a
//   65,536-sample spectrum stands some 25 dB above it.
// Every decibel figure lies within -140..+140 dB (a zero power gives -140),
// so silence or a single sample reads finite numbers, never -inf or NaN;
// without a tone the frequency is 0 and the figures describe the strongest
// lobe, which the caller should not show as a tone's.
#include <cstdint>
#include <vector>

#include "base/Array.h"
#include "base/Types.h"

// The bottom of the plotted range and of every figure.
inline constexpr double kSpectrumFloorDb = -140;
// The last harmonic THD counts.
inline constexpr std::int32_t kLastHarmonic = 10;

struct Spectrum {
    std::int32_t sampleRate = 0;
    std::int32_t sampleCount = 0;   // n, the samples analysed
    double binWidth = 0;            // Hz between bins: rate / n
    std::vector<double> power;      // bins 0..n/2, as above
    std::vector<float> levelDb;     // bins 0..n/2, dBFS, never below the floor
};

struct SpectrumFigures {
    Bool16 tone = kFalse;           // a tone stands clearly above the rest
    double frequency = 0;           // Hz; 0 without a tone
    double levelDb = kSpectrumFloorDb;
    double totalLevelDb = kSpectrumFloorDb;
    double thdDb = kSpectrumFloorDb;
    double thdnDb = kSpectrumFloorDb;
    double sinadDb = kSpectrumFloorDb;
};

// The spectrum of every sample of anSamples at lSampleRate (> 0) samples/s;
// no bins for an empty array.
Spectrum gSpectrum(const rt::SampleArray& anSamples, std::int32_t lSampleRate, ErrorFlag& bError);

// The figures of tSpectrum, as defined above.
SpectrumFigures gSpectrumFigures(const Spectrum& tSpectrum, ErrorFlag& bError);

// 10 log10(dNumerator / dDenominator) held within -140..+140 dB: a zero
// numerator gives -140, a zero denominator (numerator not zero) +140.
double gdPowerRatioDb(double dNumerator, double dDenominator);
