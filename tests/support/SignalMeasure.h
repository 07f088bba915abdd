#pragma once
// Measurements of recorded signals for tests: frequency from zero
// crossings, RMS and peak, where a signal starts, and a tone's amplitude and
// phase window by window (a missing, repeated or silent stretch shows as a
// phase step or an amplitude dip between windows).
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <numbers>
#include <vector>

namespace testing_support {

// Frequency from the rising zero crossings (interpolated between samples);
// 0 with fewer than two crossings.
inline double measureFrequency(const std::int16_t* s, std::size_t n, double rate)
{
    double first = -1;
    double last = -1;
    std::size_t crossings = 0;
    for (std::size_t i = 1; i < n; ++i) {
        if (s[i - 1] < 0 && s[i] >= 0) {
            const double at = (i - 1) + static_cast<double>(-s[i - 1]) / (s[i] - s[i - 1]);
            if (crossings == 0) first = at;
            last = at;
            ++crossings;
        }
    }
    if (crossings < 2) return 0;
    return (crossings - 1) * rate / (last - first);
}

inline double rmsOf(const std::int16_t* s, std::size_t n)
{
    double sum = 0;
    for (std::size_t i = 0; i < n; ++i) sum += static_cast<double>(s[i]) * s[i];
    return n == 0 ? 0 : std::sqrt(sum / n);
}

inline int peakOf(const std::int16_t* s, std::size_t n)
{
    int peak = 0;
    for (std::size_t i = 0; i < n; ++i) peak = std::max(peak, std::abs(static_cast<int>(s[i])));
    return peak;
}

// The first index whose magnitude exceeds the threshold; n when none does.
inline std::size_t onsetIndex(const std::int16_t* s, std::size_t n, int threshold)
{
    for (std::size_t i = 0; i < n; ++i) {
        if (std::abs(static_cast<int>(s[i])) > threshold) return i;
    }
    return n;
}

struct ToneWindow {
    double amplitude;
    double phase;  // radians, of the tone at the window's first sample
};

// The tone's amplitude and phase in consecutive windows of `window` samples.
inline std::vector<ToneWindow> toneWindows(const std::int16_t* s, std::size_t n, double rate,
                                           double frequency, std::size_t window)
{
    std::vector<ToneWindow> windows;
    const double w = 2 * std::numbers::pi * frequency / rate;
    for (std::size_t start = 0; start + window <= n; start += window) {
        double re = 0;
        double im = 0;
        for (std::size_t i = 0; i < window; ++i) {
            re += s[start + i] * std::cos(w * i);
            im += s[start + i] * std::sin(w * i);
        }
        // s = A sin(wi + p) correlates to re = A/2 sin p, im = A/2 cos p.
        windows.push_back({2 * std::hypot(re, im) / window, std::atan2(re, im)});
    }
    return windows;
}

// The largest phase step between consecutive windows beyond what the tone
// itself advances, in radians (0 for a continuous tone).
inline double largestPhaseStep(const std::vector<ToneWindow>& windows, double rate,
                               double frequency, std::size_t window)
{
    const double advance = 2 * std::numbers::pi * frequency * window / rate;
    double largest = 0;
    for (std::size_t k = 1; k < windows.size(); ++k) {
        double step = windows[k].phase - windows[k - 1].phase - advance;
        step = std::remainder(step, 2 * std::numbers::pi);
        largest = std::max(largest, std::abs(step));
    }
    return largest;
}

// The smallest and largest window amplitude relative to their median.
inline std::pair<double, double> amplitudeSpread(const std::vector<ToneWindow>& windows)
{
    if (windows.empty()) return {0, 0};
    std::vector<double> amplitudes;
    for (const ToneWindow& tw : windows) amplitudes.push_back(tw.amplitude);
    std::vector<double> sorted = amplitudes;
    std::nth_element(sorted.begin(), sorted.begin() + sorted.size() / 2, sorted.end());
    const double median = sorted[sorted.size() / 2];
    const auto [low, high] = std::minmax_element(amplitudes.begin(), amplitudes.end());
    return {*low / median, *high / median};
}

// A cycle-aligned tone: `cycles` cycles of a sine of `amplitude` in exactly
// `length` samples, starting at phase 0.
inline std::vector<std::int16_t> makeTone(std::size_t length, double cycles, double amplitude)
{
    std::vector<std::int16_t> tone(length);
    for (std::size_t i = 0; i < length; ++i) {
        tone[i] = static_cast<std::int16_t>(
            std::lround(amplitude * std::sin(2 * std::numbers::pi * cycles * i / length)));
    }
    return tone;
}

}  // namespace testing_support
