#pragma once
// Start-up texts and small text and focus helpers used all over the program.
#include <cstdint>
#include <optional>
#include <string>

#include "base/Types.h"

namespace ui {
class Control;
}

// The operating-system description, filled at start-up; "Windows version
// unknown" when it cannot be read (the error log's first line shows it).
extern std::string gsOSVersion;
// The program's title text, "Wavelark v1.0.0".
extern std::string gsProgNameVersion;
// Whether the user's regional settings changed since the settings were last
// written, kept by gGStartUpSetStuff for the main window's start-up.
extern Bool16 gbUserRegionChanged;

// Fills gsOSVersion and gsProgNameVersion and keeps the regional check's
// answer in gbUserRegionChanged.
void gGStartUpSetStuff(ErrorFlag& bError);

// "Linux v" & major & "." & minor & " Build " & patch & " " & the kernel's
// version text, from the host's systemVersion; "Windows version unknown"
// when it cannot be read. A release without major and minor numbers is a
// run-time error.
std::string gsGGetOSVersion(ErrorFlag& bError);

// gsProgNameVersion = product name & " v" & major & "." & minor & "." & revision.
void gGSetProgNameVersionUser(ErrorFlag& bError);

// A Null value (no value) gives ""; otherwise leading NULs, trailing NULs and
// surrounding blanks are removed until none is left at either end.
std::string gsGTrim(const std::optional<std::string>& vText, ErrorFlag& bError);
// Drops sChar from the front of sText as long as it is the first character.
std::string gsGStringLeftStrip(const std::string& sText, const std::string& sChar,
                               ErrorFlag& bError);
// True when gsGTrim(sText) keeps at least one character.
Bool16 gbGLenTrim(const std::string& sText, ErrorFlag& bError);
// The character code of the first character, 0 for an empty text.
std::int16_t gnGAscii(const std::string& sText);
// Gives the control the focus when it is enabled and visible.
Bool16 gbGSetFocus(ui::Control& control);
// The display pattern of a voltage (for rt::formatNumber): "0.0" from 10 up,
// "0.00" from 0.05 up, "0.000" below.
std::string gsGFormat(float Value, ErrorFlag& bError);
// A frequency that plays (fPlayed, Hz) as text in the user's form, next to
// the one asked for (fAsked): the asked text ("1000") when the two agree to
// nine decimals, else fPlayed with three decimals or as many more as it
// takes for the text to differ from fAsked's ("440.022", "1000.0004"), so a
// frequency played is never shown rounded to the one asked.
std::string gsFrequencyText(double fPlayed, float fAsked, ErrorFlag& bError);
