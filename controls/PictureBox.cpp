#include "controls/PictureBox.h"

#include <QMouseEvent>
#include <QPainter>

#include "controls/QtConversions.h"
#include "platform/Colours.h"

namespace ui {

PictureBox::PictureBox(const QString& name, QWidget* parent)
    : QFrame(parent), StandIn(this, name, "PictureBox"), backColor_(kColourButtonFace),
      foreColor_(kColourButtonText)
{
    setFrameStyle(QFrame::Panel | QFrame::Sunken);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    image_ = QImage(sizeHint(), QImage::Format_RGB32);
    image_.fill(toQColor(backColor_));
}

void PictureBox::setBackColor(std::int32_t colour)
{
    backColor_ = colour;
    cls();
    update();
}

QPen PictureBox::pen() const
{
    return QPen(toQColor(foreColor_), 1, toPenStyle(drawStyle_));
}

void PictureBox::cls()
{
    image_.fill(toQColor(backColor_));
    current_ = QPointF(0, 0);
}

void PictureBox::moveTo(float x, float y) { current_ = QPointF(x, y); }

void PictureBox::lineTo(float x, float y) { line(current_.x(), current_.y(), x, y); }

void PictureBox::line(float x1, float y1, float x2, float y2)
{
    QPainter painter(&image_);
    painter.setPen(pen());
    painter.drawLine(QPointF(x1, y1), QPointF(x2, y2));
    current_ = QPointF(x2, y2);
}

void PictureBox::box(float x1, float y1, float x2, float y2)
{
    QPainter painter(&image_);
    painter.setPen(pen());
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(QRectF(QPointF(x1, y1), QPointF(x2, y2)).normalized());
    current_ = QPointF(x2, y2);
}

void PictureBox::paintOn(const std::function<void(QPainter&)>& draw)
{
    {
        QPainter painter(&image_);
        draw(painter);
    }
    update();
}

void PictureBox::paintEvent(QPaintEvent* event)
{
    {
        QPainter painter(this);
        painter.drawImage(contentsRect().topLeft(), image_);
    }
    QFrame::paintEvent(event);  // the frame over the picture's edge
}

void PictureBox::resizeEvent(QResizeEvent* event)
{
    QFrame::resizeEvent(event);
    if (contentsRect().size() == image_.size()) return;
    QImage grown(contentsRect().size(), QImage::Format_RGB32);
    grown.fill(toQColor(backColor_));
    QPainter painter(&grown);
    painter.drawImage(0, 0, image_);
    painter.end();
    image_ = grown;
    if (Resized) Resized();
}

void PictureBox::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton && rect().contains(event->position().toPoint()) && Click)
        Click();
}

}  // namespace ui
