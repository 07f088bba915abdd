#pragma once
// The start-up device check: a wave output, a wave input and the mixer.
#include <functional>
#include <string>

#include "base/Types.h"

// The two device searches the check makes first, gbWaveOutThere and
// gbWaveInThere of the wave module: each returns True when it chose a
// device and sets the error flag when a capability read failed. They are
// empty until the wave module's searches are put here (a check made before
// that fails into the error reporter); tests put their own in place.
using WaveDeviceSearch = std::function<Bool16(ErrorFlag&)>;
extern WaveDeviceSearch gWaveOutThereSearch;
extern WaveDeviceSearch gWaveInThereSearch;

// Output first: none found, or a failed search, gives False. Then input:
// none found while bInputRequired is set, or a failed search, gives False.
// Otherwise the result of the mixer walk (gbMixerThereInit), which leaves
// the mixer report in sMixerReport.
Bool16 gbWaveInOutMixerThere(Bool16 bInputRequired, std::string& sMixerReport, ErrorFlag& bError);
