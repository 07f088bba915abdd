#pragma once
// Finds an open form by name.
#include <cstdint>
#include <string>

#include "base/Types.h"

// The index of the first open form named sFormName, -1 when none is open.
std::int16_t gnFormPtr(const std::string& sFormName, ErrorFlag& bError);
