#pragma once
// The polarity test: one burst played while the input records it, and the
// recording plotted, so the user sees whether the first half-cycle comes
// back positive or negative.
#include <cstdint>

#include "base/Array.h"
#include "base/Types.h"

// Plays one burst of fBurstCycles cycles at fFrequency in a buffer of
// lBurstPeriod ms (the output is reopened for it), records the input over
// that pass into anRecord (which must reach index 1; it is sized to the
// pass) and plots the recording in yellow at full scale 32767, after
// clearing the plot when bClearPlot is set.
void gWavePolarity(float fFrequency, float fBurstCycles, std::int32_t lBurstPeriod,
                   Bool16 bClearPlot, rt::SampleArray& anRecord, ErrorFlag& bError);
