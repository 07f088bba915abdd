#pragma once
// The time response plot: draws a recorded or made sample array as a line
// graph in a rectangle of a drawing surface (the picture box on screen, or
// the printer page). The rectangle and the surface are kept between calls,
// so the window sets them once and then plots as often as it likes.
#include <cstdint>

#include "base/Array.h"
#include "base/Types.h"

namespace ui {
class PlotSurface;
}

// Keeps the surface and the rectangle (width and height less 8 each, the
// frame's margin) and returns the half height.
std::int16_t gnTimeResponseInit(ui::PlotSurface& surface, std::int16_t nLeft, std::int16_t nTop,
                                std::int16_t nWidth, std::int16_t nHeight, ErrorFlag& bError);

// gnTimeResponseInit, then a cleared plot with its axes; returns the half
// height.
std::int16_t gnTimeResponseShowInitClsDrawAxis(ui::PlotSurface& surface, std::int16_t nLeft,
                                               std::int16_t nTop, std::int16_t nWidth,
                                               std::int16_t nHeight, ErrorFlag& bError);

// Clears the screen plot (the printer page is never cleared) and draws the
// frame and the zero line, in the button-text colour on a button-face
// background, else in the inverse of the background.
void gTimeResponseShowClsDrawAxis(ErrorFlag& bError);

// Plots the samples in the colour given, a full-scale sample reaching 0.9 of
// the half height. With bSpanByCount the points are width / n apart and the
// line starts on the zero line; otherwise width / (n - 1) apart, starting
// with a line up to the first sample. Long arrays are thinned to about one
// point every 5 units (at least every 5th sample), always ending on the last.
// The full scale of a 16-bit signal drawn at its true size.
inline constexpr float kTimeResponseFullScale = 32767.0F;

void gTimeResponseShow(const rt::SampleArray& nSamples, Bool16 bSpanByCount, float sngFullScale,
                       std::int32_t lColour, ErrorFlag& bError);
