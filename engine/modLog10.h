#pragma once
// Base-10 logarithm for the engine's logarithmic sweep.
#include "base/Types.h"

// log10(fIn) as a 32-bit float. A value <= 0 has no logarithm: it is reported
// as "fIn(" value ") <= 0", the error flag is set and 0 comes back.
float gfLog10(float fIn, ErrorFlag& bError);
