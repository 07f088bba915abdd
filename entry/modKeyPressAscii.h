#pragma once
// Key filters of the numeric text boxes, applied to every typed character:
// they return the character code to keep, or 0 to swallow it (with a beep).
// They only keep out characters that can never belong to a number; whether
// the text is a number in range is decided when the box is left (modControl).
#include <cstdint>
#include <string>

#include "base/Types.h"

// Both filters let the clipboard and editing shortcuts through (Ctrl+A, C,
// V, X, Y, Z as their control characters): what a paste leaves in the box is
// judged like typed text, by the box's Change handler and its leave-check.

// Whole-numbered boxes: Backspace, Enter, minus and the digits pass (minus
// as often and wherever it is typed).
std::int16_t gnKeyPressAsciiInteger(std::int16_t KeyAscii, ErrorFlag& bError);

// Real boxes: Backspace, Enter, minus, the user's decimal character and the
// digits pass; the decimal character and minus only while Text does not hold
// one yet. Every code from 58 up is refused. Text is what stays of the box
// when the key replaces its selection (ui::Control::unselectedText), so
// typing "." over a selected "1.5" passes.
std::int16_t gnKeyPressAsciiReal(std::int16_t KeyAscii, const std::string& Text,
                                 ErrorFlag& bError);
