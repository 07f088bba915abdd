#pragma once
// What the ALSA wave and mixer parts share: quiet diagnostics, the mapping of
// ALSA's error numbers onto the multimedia result codes, and the library
// version that stands as the driver version in the capability records.
#include "platform/WaveApi.h"

namespace mm::alsa {

// ALSA writes its own diagnostics to the error stream; probing busy or
// missing devices, or a sound server that is not running, would fill it.
void silenceAlsaDiagnostics();

// A busy device -> MMSYSERR_ALLOCATED, a missing device or server ->
// MMSYSERR_NODRIVER, no memory -> MMSYSERR_NOMEM, anything else ->
// MMSYSERR_ERROR. `error` is ALSA's negative error number.
MMRESULT deviceError(int error);

// The library's major and minor version as a driver version word.
MMVERSION libraryVersion();

}  // namespace mm::alsa
