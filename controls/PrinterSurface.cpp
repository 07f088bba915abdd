#include "controls/PrinterSurface.h"

#include <QPen>
#include <QRectF>

#include "controls/QtConversions.h"
namespace ui {

namespace {
constexpr std::int32_t kPaper = 0xFFFFFF;  // white
}  // namespace

std::int32_t PrinterSurface::backColor() const { return kPaper; }

void PrinterSurface::usePen()
{
    QPen pen(toQColor(foreColor_), penWidth_, toPenStyle(drawStyle_));
    pen.setCapStyle(Qt::RoundCap);
    pen.setJoinStyle(Qt::RoundJoin);
    painter_.setPen(pen);
    painter_.setBrush(Qt::NoBrush);
}

void PrinterSurface::line(float x1, float y1, float x2, float y2)
{
    usePen();
    painter_.drawLine(QPointF(x1, y1), QPointF(x2, y2));
    current_ = QPointF(x2, y2);
}

void PrinterSurface::box(float x1, float y1, float x2, float y2)
{
    usePen();
    painter_.drawRect(QRectF(QPointF(x1, y1), QPointF(x2, y2)).normalized());
    current_ = QPointF(x2, y2);
}

}  // namespace ui
