#pragma once
// The start-up device check: a wave output, a wave input and the mixer.
#include <string>

#include "base/Types.h"

// Output first (gbWaveOutThere): none found, or a failed search, gives
// False. Then input (gbWaveInThere): none found while bInputRequired is set,
// or a failed search, gives False. Otherwise the result of the mixer walk
// (gbMixerThereInit), which leaves the mixer report in sMixerReport.
Bool16 gbWaveInOutMixerThere(Bool16 bInputRequired, std::string& sMixerReport, ErrorFlag& bError);
