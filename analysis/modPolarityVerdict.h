#pragma once
// The polarity and delay verdict of a measured burst: the recording is
// cross-correlated with the burst that was played to find where, how loud
// and which way up the burst came back.
//
// The played array is trimmed to its burst p (first to last non-zero
// sample) and correlated with the recording r at every lag at which they
// overlap: c(t) = sum over j of r[t + j] p[j]. The lag of largest |c| is the
// best alignment:
// - delay: how many samples later the burst starts in the recording than in
//   the played array (negative when the recording started late), and the
//   same in milliseconds;
// - polarity: inverted when c is negative there;
// - gain: 20 log10 |g| dB, g = c / (sum of p[j]^2 over the overlap), the
//   least-squares scale from the played burst to the recording.
// The peak counts as a signal when |c| is at least 10 times (20 dB) the rms of
// c over the lags more than a burst's length from it, where the burst cannot
// meet itself. White noise alone peaks 3 to 5 times that rms high (10 to 14
// dB, more lags reaching higher), so the margin leaves room for hum and other
// coloured noise, while a 480-sample burst is still found, some 27 dB clear,
// when its rms equals the noise's. A steady tone instead of a burst
// correlates alike at every lag and gives no signal either.
#include <cstdint>
#include <string>

#include "base/Array.h"
#include "base/Types.h"

struct PolarityVerdict {
    Bool16 signal = kFalse;      // False: "No signal", and the next four are 0
    Bool16 inverted = kFalse;
    std::int32_t delaySamples = 0;
    double delayMs = 0;
    double gainDb = 0;
    // How far the peak stood above the correlation's rms, also when too
    // little (0 when nothing was correlated).
    double peakToNoiseDb = 0;
};

// The verdict on anRecorded, recorded at lSampleRate (> 0) samples/s while
// anPlayed was played at the same rate. No signal when either is empty or
// silent.
PolarityVerdict gPolarityVerdict(const rt::SampleArray& anPlayed,
                                 const rt::SampleArray& anRecorded, std::int32_t lSampleRate,
                                 ErrorFlag& bError);

// "Polarity: normal", "Polarity: INVERTED" or "No signal".
std::string gsPolarityText(const PolarityVerdict& tVerdict);
