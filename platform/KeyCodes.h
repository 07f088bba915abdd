#pragma once
// The keyboard and mouse as the handlers know them. Key-down and key-up
// handlers get a key code and a shift state; key-press handlers get the
// character typed (KeyAscii); mouse handlers get a button. Only the windows
// translate Qt's events into these.
#include <cstdint>

namespace ui {

// Key codes.
inline constexpr std::int16_t kKeyBack = 8;
inline constexpr std::int16_t kKeyTab = 9;
inline constexpr std::int16_t kKeyReturn = 13;
inline constexpr std::int16_t kKeyShift = 16;
inline constexpr std::int16_t kKeyControl = 17;
inline constexpr std::int16_t kKeyMenu = 18;  // Alt
inline constexpr std::int16_t kKeyEscape = 27;
inline constexpr std::int16_t kKeySpace = 32;
inline constexpr std::int16_t kKeyPageUp = 33;
inline constexpr std::int16_t kKeyPageDown = 34;
inline constexpr std::int16_t kKeyEnd = 35;
inline constexpr std::int16_t kKeyHome = 36;
inline constexpr std::int16_t kKeyLeft = 37;
inline constexpr std::int16_t kKeyUp = 38;
inline constexpr std::int16_t kKeyRight = 39;
inline constexpr std::int16_t kKeyDown = 40;
inline constexpr std::int16_t kKeyInsert = 45;
inline constexpr std::int16_t kKeyDelete = 46;
inline constexpr std::int16_t kKey0 = 48;  // to kKey0 + 9
inline constexpr std::int16_t kKeyA = 65;  // to kKeyA + 25
inline constexpr std::int16_t kKeyF1 = 112;  // to kKeyF1 + 23
inline constexpr std::int16_t kKeyComma = 188;
inline constexpr std::int16_t kKeyMinus = 189;
inline constexpr std::int16_t kKeyPeriod = 190;

// Shift-state bits, added together.
inline constexpr std::int16_t kShiftMask = 1;
inline constexpr std::int16_t kCtrlMask = 2;
inline constexpr std::int16_t kAltMask = 4;

// Mouse buttons.
inline constexpr std::int16_t kLeftButton = 1;
inline constexpr std::int16_t kRightButton = 2;
inline constexpr std::int16_t kMiddleButton = 4;

// Character codes of the key-press handlers beyond the printable ones.
inline constexpr std::int16_t kAsciiBackspace = 8;
inline constexpr std::int16_t kAsciiEnter = 13;
inline constexpr std::int16_t kAsciiDelete = 127;

// Ctrl with a letter types that letter's control character (Ctrl+A is 1).
inline constexpr std::int16_t kAsciiCtrlA = 1;
inline constexpr std::int16_t asciiCtrl(char letter) { return static_cast<std::int16_t>(letter - 'A' + kAsciiCtrlA); }

// The clipboard and editing shortcuts a number box lets through: select
// all, copy, paste, cut, redo (Ctrl+Y) and undo.
inline constexpr bool isEditingShortcut(std::int16_t keyAscii)
{
    for (char letter : {'A', 'C', 'V', 'X', 'Y', 'Z'})
        if (keyAscii == asciiCtrl(letter)) return true;
    return false;
}

}  // namespace ui
