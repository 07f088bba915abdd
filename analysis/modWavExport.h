#pragma once
// Export of a sample array as a WAV file (16-bit mono PCM).
#include <cstdint>
#include <string>

#include "base/Array.h"
#include "base/Types.h"

// Writes anSamples at lSampleRate samples/s to sPath, replacing a file that
// is there. The file is written under a temporary name in the same folder and
// renamed into place once complete, so a failed export leaves no partial
// file and an existing file as it was. Returns "" when the file was written,
// else why not in words the user can act on (read-only folder, disk full,
// missing folder, ...). Bad input (no samples, no file name, a rate below 1)
// is refused the same way. A new file gets the user's usual permissions, a
// replaced one keeps its own. bError is set when an unexpected
// failure was reported through the error handler; the text then says so.
std::string gsWavExport(const std::string& sPath, const rt::SampleArray& anSamples,
                        std::int32_t lSampleRate, ErrorFlag& bError);
