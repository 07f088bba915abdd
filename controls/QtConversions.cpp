#include "controls/QtConversions.h"

#include <QApplication>
#include <QPalette>

#include "platform/KeyCodes.h"

namespace ui {

namespace {

constexpr std::uint32_t kSystemColourBit = 0x80000000u;

QColor systemColour(int index)
{
    const QPalette palette = QApplication::palette();
    switch (index) {
    case 0x05: return palette.color(QPalette::Base);             // window background
    case 0x08: return palette.color(QPalette::Text);             // window text
    case 0x0D: return palette.color(QPalette::Highlight);        // highlight
    case 0x0E: return palette.color(QPalette::HighlightedText);  // highlight text
    case 0x11: return palette.color(QPalette::Disabled, QPalette::ButtonText);  // grey text
    case 0x12: return palette.color(QPalette::ButtonText);       // button text
    case 0x0F:                                                    // button face
    default: return palette.color(QPalette::Button);
    }
}

// The keys whose codes are not a run of letters, digits or function keys.
std::int16_t namedKeyCode(int key)
{
    switch (key) {
    case Qt::Key_Backspace: return kKeyBack;
    case Qt::Key_Tab:
    case Qt::Key_Backtab: return kKeyTab;
    case Qt::Key_Return:
    case Qt::Key_Enter: return kKeyReturn;
    case Qt::Key_Shift: return kKeyShift;
    case Qt::Key_Control: return kKeyControl;
    case Qt::Key_Alt: return kKeyMenu;
    case Qt::Key_Escape: return kKeyEscape;
    case Qt::Key_Space: return kKeySpace;
    case Qt::Key_PageUp: return kKeyPageUp;
    case Qt::Key_PageDown: return kKeyPageDown;
    case Qt::Key_End: return kKeyEnd;
    case Qt::Key_Home: return kKeyHome;
    case Qt::Key_Left: return kKeyLeft;
    case Qt::Key_Up: return kKeyUp;
    case Qt::Key_Right: return kKeyRight;
    case Qt::Key_Down: return kKeyDown;
    case Qt::Key_Insert: return kKeyInsert;
    case Qt::Key_Delete: return kKeyDelete;
    case Qt::Key_Minus: return kKeyMinus;
    case Qt::Key_Period: return kKeyPeriod;
    case Qt::Key_Comma: return kKeyComma;
    default: return 0;
    }
}

}  // namespace

QColor toQColor(std::int32_t colour)
{
    const auto value = static_cast<std::uint32_t>(colour);
    if ((value & kSystemColourBit) != 0) return systemColour(static_cast<int>(value & 0xFFu));
    return QColor(static_cast<int>(value & 0xFF), static_cast<int>((value >> 8) & 0xFF),
                  static_cast<int>((value >> 16) & 0xFF));
}

std::int32_t fromQColor(const QColor& colour)
{
    return colour.red() | (colour.green() << 8) | (colour.blue() << 16);
}

std::int16_t keyCodeOf(const QKeyEvent* event)
{
    const int key = event->key();
    if (key >= Qt::Key_A && key <= Qt::Key_Z) return static_cast<std::int16_t>(kKeyA + key - Qt::Key_A);
    if (key >= Qt::Key_0 && key <= Qt::Key_9) return static_cast<std::int16_t>(kKey0 + key - Qt::Key_0);
    if (key >= Qt::Key_F1 && key <= Qt::Key_F24)
        return static_cast<std::int16_t>(kKeyF1 + key - Qt::Key_F1);
    return namedKeyCode(key);
}

std::int16_t keyAsciiOf(const QKeyEvent* event)
{
    const int key = event->key();
    const Qt::KeyboardModifiers modifiers = event->modifiers();
    if ((modifiers & Qt::ControlModifier) && !(modifiers & Qt::AltModifier) && key >= Qt::Key_A &&
        key <= Qt::Key_Z)
        return asciiCtrl(static_cast<char>('A' + key - Qt::Key_A));
    const QString typed = event->text();
    return typed.isEmpty() ? 0 : static_cast<std::int16_t>(typed.at(0).unicode());
}

std::int16_t shiftStateOf(Qt::KeyboardModifiers modifiers)
{
    std::int16_t shift = 0;
    if (modifiers & Qt::ShiftModifier) shift |= kShiftMask;
    if (modifiers & Qt::ControlModifier) shift |= kCtrlMask;
    if (modifiers & Qt::AltModifier) shift |= kAltMask;
    return shift;
}

std::int16_t buttonCodeOf(Qt::MouseButton button)
{
    switch (button) {
    case Qt::LeftButton: return kLeftButton;
    case Qt::RightButton: return kRightButton;
    case Qt::MiddleButton: return kMiddleButton;
    default: return 0;
    }
}

Qt::PenStyle toPenStyle(std::int16_t drawStyle)
{
    static const Qt::PenStyle styles[] = {Qt::SolidLine, Qt::DashLine, Qt::DotLine,
                                          Qt::DashDotLine, Qt::DashDotDotLine, Qt::NoPen};
    return drawStyle >= 0 && drawStyle <= 5 ? styles[drawStyle] : Qt::SolidLine;
}

}  // namespace ui
