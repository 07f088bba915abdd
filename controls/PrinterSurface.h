#pragma once
// The printer page as a plot surface: lines go straight to a painter on the
// printer, as vectors at the printer's resolution. Paper is never cleared and
// its background is white; the plot draws on it in the colours it is given.
#include <cstdint>

#include <QPainter>
#include <QPointF>

#include "platform/PlotSurface.h"

namespace ui {

class PrinterSurface : public PlotSurface {
public:
    // penWidth in the painter's units.
    PrinterSurface(QPainter& painter, qreal penWidth) : painter_(painter), penWidth_(penWidth) {}

    std::string typeName() const override { return "Printer"; }
    std::int32_t backColor() const override;
    std::int32_t foreColor() const override { return foreColor_; }
    void setForeColor(std::int32_t colour) override { foreColor_ = colour; }
    void setDrawStyle(std::int16_t style) override { drawStyle_ = style; }
    void cls() override { current_ = QPointF(0, 0); }
    void moveTo(float x, float y) override { current_ = QPointF(x, y); }
    void lineTo(float x, float y) override { line(current_.x(), current_.y(), x, y); }
    void line(float x1, float y1, float x2, float y2) override;
    void box(float x1, float y1, float x2, float y2) override;
    void refresh() override {}

private:
    void usePen();

    QPainter& painter_;
    qreal penWidth_;
    std::int32_t foreColor_ = 0;  // black
    std::int16_t drawStyle_ = 0;
    QPointF current_;
};

}  // namespace ui
