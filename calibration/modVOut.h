#pragma once
// Output in volts. With an AC voltmeter across the output, the user reads
// the level at the reference master level and 16383 steps below it; the
// master scale is taken as logarithmic (equal steps multiply the voltage by
// equal factors), so these two readings give the volts at every level.
//
// The calibration is kept as two texts, VOutMax (volts at the reference
// level 49151) and VOut2 (volts 16383 steps lower), held by the main
// window's boxes txtVOutMax and txtVOut2. The procedures below read those
// texts in the user's form (the boxes' form) or in the locale-independent
// form (what gVOutCalibrate writes); a text that is neither is 0.
#include <cstdint>
#include <string>

#include "base/Types.h"

namespace ui {
class Control;
}

// The master level the calibration is read at (three quarters of 65535),
// the interval to the second reading, and the step of the check reading.
inline constexpr std::int32_t kVOutReferenceLevel = 49151;
inline constexpr std::int32_t kVOutInterval = 16383;
inline constexpr std::int32_t kVOutCheckStep = 255;
// The output level label's caption when it shows no volts.
inline constexpr const char* kVOutPlainCaption = "Ou&t";

// The three-step dialogue with the user and the meter, on a 1000 Hz sine
// that this procedure plays and closes again at the end, however the
// dialogue ends. It leaves the engine's shape and frequency and the master
// level as the measurement needed them: the caller restores its own signal,
// level and Mute afterwards.
//  1. "Calibrating Output Voltage" asks for the meter; Cancel ends it with
//     nothing touched.
//  2. Reading 1 at level 49151 (starting from sVOutMax).
//  3. Reading 2 at 49151 - 255, the check that the output falls with the
//     master level.
//  4. Reading 3 at 49151 - 16383, unless the fall over that interval is
//     already known (see lState).
// On success sVOutMax becomes reading 1 and sVOut2 reading 3, both as
// locale-independent text (" 2", " .5"), and lState becomes 16383. An
// empty answer or a reading of 0 at any step ends the dialogue with both
// texts and lState unchanged. When reading 2 is not more than 0.005 V
// below reading 1 the output does not follow the master level: "Sorry -
// your soundboard is not suitable for calibration" (titled "Calibration"),
// and both texts become "0", so no volts are shown.
//
// lState is the interval, in level steps, over which this run of the
// program has measured how the card's output falls: 0 before any
// calibration, 16383 after a successful one. The caller keeps it for the
// run only (not in the settings) and puts it back to 0 when the output
// device changes. With 16383 and a usable calibration in sVOutMax and
// sVOut2, a re-calibration (a new amplifier after the card, a new meter)
// skips reading 3: the card's fall is the one already measured, so sVOut2
// becomes the new reading 1 times the old sVOut2 / sVOutMax.
void gVOutCalibrate(std::string& sVOutMax, std::string& sVOut2, std::int32_t& lState,
                    ErrorFlag& bError);

// Volts (RMS) at master level lStep: 0 at level 0, else
// fVOutMax * (fVOut2 / fVOutMax) ^ ((49151 - lStep) / 16383). Only for a
// usable calibration (gbVOutMaxValidActive).
float gfStep2VOut(std::int32_t lStep, float fVOutMax, float fVOut2, ErrorFlag& bError);

// Whether a calibration can be used: 0 < fVOutMax <= 99 and
// 0 < fVOut2 < fVOutMax.
Bool16 gbVOutMaxValidActive(float fVOutMax, float fVOut2, ErrorFlag& bError);

// The volts (RMS) of a full-scale sine at the output level bar's value
// lOutLevelBar, or 0 when sVOutMax and sVOut2 are not a usable
// calibration.
float gfVOutFullScale(std::int32_t lOutLevelBar, const std::string& sVOutMax,
                      const std::string& sVOut2, ErrorFlag& bError);

// The volts at the output level bar's value (0 at the top, loudest, to
// 32767) in the volt format ("1.00"), when sVOutMax and sVOut2 are a usable
// calibration; "" otherwise. The one rule for every place that shows the
// output in volts.
std::string gsVOutLevelVolts(std::int32_t lOutLevelBar, const std::string& sVOutMax,
                             const std::string& sVOut2, ErrorFlag& bError);

// The output level label's caption: "Ou&t  " + gsVOutLevelVolts + " (V) "
// with a usable calibration, else the plain "Ou&t", so the label never
// shows the volts of a calibration that is no longer usable.
std::string gsVOutLevelCaption(std::int32_t lOutLevelBar, const std::string& sVOutMax,
                               const std::string& sVOut2, ErrorFlag& bError);

// The text identifying a calibration made now: the output device's name
// and today's date, "Wavelark Virtual Card 2026-11-23".
std::string gsVOutIdent(ErrorFlag& bError);

// Key-down stepping of the calibration boxes (as gsKeyDown): the box's
// new text. VOutMax runs 0..99; VOut2 runs 0..the present VOutMax.
std::string gVOutMaxKeyDown(std::int16_t KeyCode, std::int16_t Shift, const std::string& Text,
                            ErrorFlag& bError);
std::string gVOut2KeyDown(std::int16_t KeyCode, std::int16_t Shift, const std::string& Text,
                          const std::string& sVOutMax, ErrorFlag& bError);

// Leave-checks of the calibration boxes (gbCtrlTxtError, no unit), with a
// resolution of 0.01: True keeps the focus in the box. VOutMax runs 0..99
// and refuses 0 when the caller says so; VOut2 runs 0..the present VOutMax
// and allows 0.
Bool16 gbVOutMaxValidate(Bool16 bZeroRefused, const std::string& Title, ui::Control& TextBox,
                         ErrorFlag& bError);
Bool16 gbVOut2Validate(const std::string& sVOutMax, const std::string& Title,
                       ui::Control& TextBox, ErrorFlag& bError);
