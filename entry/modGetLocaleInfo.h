#pragma once
// The user's regional settings: the decimal character (read afresh on every
// use, so a change takes effect at once) and the region code under which the
// stored settings were written. When the region changed between two runs the
// stored numbers may use another decimal character, so start-up is told to
// ignore them.
#include <string>

#include "base/Types.h"

namespace host {
class SettingsBatch;
}

// Where the program's settings live in the per-user store: the region code
// beside the main window's values.
inline constexpr const char* kSettingsAppKey = "Marlo";
inline constexpr const char* kSettingsSection = "Wavelark";

// The user's decimal character; empty (after a message) when the locale
// cannot be read.
std::string gsGetLocaleInfoUserDecimalChar(ErrorFlag& bError);

// True when a region was stored ("UserRegion") and the current one differs;
// then the user is told once that the start-up defaults are used. False on
// the first run (nothing stored) and when the codes are equal.
Bool16 gbGetLocaleInfoUserRegionChanged(ErrorFlag& bError);

// Stores the current region code as "UserRegion", so the next run can tell
// whether it changed. Nothing is stored when the code cannot be read.
void gGetLocaleInfoSaveUserRegion(ErrorFlag& bError);
// The same as one save of a settings batch, written with the batch's others.
void gGetLocaleInfoSaveUserRegion(host::SettingsBatch& store, ErrorFlag& bError);
