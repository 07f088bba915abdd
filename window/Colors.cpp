#include "window/Colors.h"

#include <QApplication>
#include <QPalette>

namespace ui {

namespace {

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

}  // namespace

QColor toQColor(std::int32_t colour)
{
    const auto value = static_cast<std::uint32_t>(colour);
    if ((value & 0x80000000u) != 0) return systemColour(static_cast<int>(value & 0xFFu));
    return QColor(static_cast<int>(value & 0xFF), static_cast<int>((value >> 8) & 0xFF),
                  static_cast<int>((value >> 16) & 0xFF));
}

std::int32_t fromQColor(const QColor& colour)
{
    return colour.red() | (colour.green() << 8) | (colour.blue() << 16);
}

}  // namespace ui
