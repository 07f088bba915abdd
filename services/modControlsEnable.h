#pragma once
// Switches every control of an open form on or off at once.
#include <string>

#include "base/Types.h"

// Sets the enabled state of every control and menu item of the open form
// sFormName, except the colour dialog and menu separators; nothing happens
// when no such form is open.
void gControlsEnable(const std::string& sFormName, Bool16 bEnable, ErrorFlag& bError);
