#pragma once
// Between the program's values and Qt's: colours (platform/Colours.h) for
// drawing, and key codes, shift states and mouse buttons (platform/KeyCodes.h)
// from Qt's input events.
#include <cstdint>

#include <QColor>
#include <QKeyEvent>

namespace ui {

// A colour value as Qt draws it; a system colour is taken from the
// application's palette.
QColor toQColor(std::int32_t colour);
// A Qt colour as a blue-green-red value.
std::int32_t fromQColor(const QColor& colour);

// A plot surface's draw style (0 solid, 1 dashed, 2 dotted, 3 dash-dot,
// 4 dash-dot-dot, 5 invisible) as a Qt pen style; others draw solid.
Qt::PenStyle toPenStyle(std::int16_t drawStyle);

// The key code of a key event; 0 for a key the handlers have no code for.
std::int16_t keyCodeOf(const QKeyEvent* event);
// The character code a key types (KeyAscii): Ctrl with a letter gives the
// letter's control character whatever text the platform attached; 0 when
// the key types nothing.
std::int16_t keyAsciiOf(const QKeyEvent* event);
// The shift state of the modifiers held.
std::int16_t shiftStateOf(Qt::KeyboardModifiers modifiers);
// The code of a mouse button; 0 for buttons the handlers do not know.
std::int16_t buttonCodeOf(Qt::MouseButton button);

}  // namespace ui
