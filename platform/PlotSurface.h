#pragma once
// A drawing surface for plots: the picture box on screen or the printer
// page. Coordinates are in the surface's units; colours are the program's
// 32-bit colour values (blue-green-red, system colours with the high bit set).
#include <cstdint>
#include <string>

namespace ui {

class PlotSurface {
public:
    virtual ~PlotSurface() = default;

    // "PictureBox" on screen, "Printer" on paper.
    virtual std::string typeName() const = 0;
    virtual std::int32_t backColor() const = 0;
    virtual std::int32_t foreColor() const = 0;
    virtual void setForeColor(std::int32_t colour) = 0;
    // 0 solid; other values are dashed and dotted pens.
    virtual void setDrawStyle(std::int16_t style) = 0;

    // Clears to the back colour; the current point goes to (0, 0).
    virtual void cls() = 0;
    // Moves the current point without drawing.
    virtual void moveTo(float x, float y) = 0;
    // A line from the current point; the end becomes the current point.
    virtual void lineTo(float x, float y) = 0;
    // A line between two points; the end becomes the current point.
    virtual void line(float x1, float y1, float x2, float y2) = 0;
    // An unfilled box with the two corners given.
    virtual void box(float x1, float y1, float x2, float y2) = 0;
    // Shows what was drawn (on screen).
    virtual void refresh() = 0;
};

}  // namespace ui
