#pragma once
// How pure and how close to its set frequency a looped tone is, from the
// samples of one pass. A looped buffer repeats exactly, so a tone of whole
// cycles per pass lies on a single bin of the pass's DFT: no window and no
// leakage. The tone is fitted on that bin, and everything else (harmonics,
// quantisation, a jump at the join) is what is left once the fit and the
// mean are taken off, summed sample by sample so that a residual 100 dB down
// is not lost in a difference of large sums.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numbers>
#include <vector>

namespace testing_support {

struct LoopFigures {
    std::int64_t cycles = 0;    // the whole cycles nearest the set frequency's in one pass
    double sinadDb = 0;         // the tone against everything else but DC
    double frequency = 0;       // what the pass plays: rate x cycles / length
    double errorPpm = 0;        // frequency against the set one, parts per million
    double closingRadian = 0;   // the phase the set frequency gains over the pass
};

// The unit phasor exp(j 2 pi cycles i / n) of sample i = 0, 1, ... in turn,
// by rotation, started afresh from the exact angle every 1,024 samples so
// that rounding never builds up.
class LoopPhasors {
public:
    LoopPhasors(std::int64_t cycles, std::size_t n)
        : cycles_(cycles), length_(static_cast<std::int64_t>(n)),
          turnRe_(std::cos(angle(1))), turnIm_(std::sin(angle(1)))
    {
    }
    double re() const { return re_; }
    double im() const { return im_; }
    void advance()
    {
        if (++i_ % 1024 == 0) {
            re_ = std::cos(angle(i_));
            im_ = std::sin(angle(i_));
            return;
        }
        const double re = re_ * turnRe_ - im_ * turnIm_;
        im_ = re_ * turnIm_ + im_ * turnRe_;
        re_ = re;
    }

private:
    double angle(std::int64_t i) const
    {
        return 2 * std::numbers::pi * static_cast<double>((cycles_ * i) % length_) /
               static_cast<double>(length_);
    }
    std::int64_t cycles_;
    std::int64_t length_;
    double turnRe_;
    double turnIm_;
    std::int64_t i_ = 0;
    double re_ = 1;
    double im_ = 0;
};

inline LoopFigures loopFigures(const std::vector<std::int16_t>& x, double rate, double frequencySet)
{
    LoopFigures figures;
    const std::size_t n = x.size();
    if (n == 0) return figures;
    const double length = static_cast<double>(n);
    const double exactCycles = length * frequencySet / rate;
    figures.cycles = std::llround(exactCycles);
    figures.frequency = rate * static_cast<double>(figures.cycles) / length;
    figures.errorPpm = (figures.frequency - frequencySet) / frequencySet * 1e6;
    figures.closingRadian = 2 * std::numbers::pi * std::fabs(exactCycles - figures.cycles);

    // The mean and the bin: x[i] ~ mean + a cos + b sin of the tone's phase.
    double sum = 0, binRe = 0, binIm = 0;
    LoopPhasors phasor(figures.cycles, n);
    for (std::size_t i = 0; i < n; ++i, phasor.advance()) {
        sum += x[i];
        binRe += x[i] * phasor.re();
        binIm += x[i] * phasor.im();
    }
    const double mean = sum / length;
    const double a = 2 * binRe / length;
    const double b = 2 * binIm / length;
    double residual = 0;
    LoopPhasors again(figures.cycles, n);
    for (std::size_t i = 0; i < n; ++i, again.advance()) {
        const double e = x[i] - mean - (a * again.re() + b * again.im());
        residual += e * e;
    }
    const double signal = (a * a + b * b) / 2;
    const double noise = residual / length;
    figures.sinadDb = noise > 0 ? 10 * std::log10((signal + noise) / noise) : 200;
    return figures;
}

// The frequencies a loop is measured at: 300 spaced evenly on a log scale
// from 10 Hz to the maximum, and a few that users set and that are awkward
// for a loop (997 Hz holds no whole cycle in less than a second at 44.1 kHz;
// 19,999.9 Hz is not a float, whose exact value is then the one to play).
inline std::vector<float> loopTestFrequencies(float maximum)
{
    std::vector<float> frequencies;
    constexpr int kSteps = 300;
    for (int i = 0; i < kSteps; ++i) {
        const double f = 10 * std::pow(maximum / 10.0, i / (kSteps - 1.0));
        frequencies.push_back(std::fmin(static_cast<float>(f), maximum));
    }
    for (const float f : {440.0f, 997.0f, 1000.0f, 12345.6f, 19999.9f})
        if (f <= maximum) frequencies.push_back(f);
    return frequencies;
}

}  // namespace testing_support
