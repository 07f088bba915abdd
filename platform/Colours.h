#pragma once
// The program keeps colours as 32-bit values: blue-green-red with red in the
// low byte, or a system colour (high bit set, low byte the colour's index,
// e.g. 8000000F button face). Only the windows turn them into Qt colours,
// for drawing.
#include <cstdint>

namespace ui {

inline constexpr std::int32_t kColourButtonFace = static_cast<std::int32_t>(0x8000000F);
inline constexpr std::int32_t kColourButtonText = static_cast<std::int32_t>(0x80000012);
inline constexpr std::int32_t kColourRed = 0x0000FF;
inline constexpr std::int32_t kColourGreen = 0x00FF00;
inline constexpr std::int32_t kColourYellow = 0x00FFFF;

}  // namespace ui
