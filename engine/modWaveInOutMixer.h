#pragma once
// The start-up device check: a wave output, a wave input and the mixer.
#include <functional>
#include <string>

#include "base/Types.h"

// The two device searches the check makes first: gbWaveOutThere and
// gbWaveInThere of the wave module unless a test puts its own in place.
// Each returns True when it chose a device and sets the error flag when a
// capability read failed.
using WaveDeviceSearch = std::function<Bool16(ErrorFlag&)>;
extern WaveDeviceSearch gWaveOutThereSearch;
extern WaveDeviceSearch gWaveInThereSearch;

// Output first: none found, or a failed search, gives False. Then input:
// none found while bInputRequired is set, or a failed search, gives False.
// Otherwise the result of the mixer walk (gbMixerThereInit), which leaves
// the mixer report in sMixerReport.
Bool16 gbWaveInOutMixerThere(Bool16 bInputRequired, std::string& sMixerReport, ErrorFlag& bError);
