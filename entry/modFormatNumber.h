#pragma once
// The display format of a numeric field, following from its rule: as many
// decimals as the most that its maximum, minimum or resolution has.
#include <string>

#include "base/Types.h"

// "0" + the user's decimal character + one "0" per decimal, or "" (the
// general form) when none of the three numbers has a fraction; for rt::formatNumber.
std::string gsFormatNumber(float ifMax, float ifMin, float ifResolution, ErrorFlag& bError);
