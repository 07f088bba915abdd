#pragma once
// The picture box: a plot surface that draws into a retained image, so what
// was drawn stays until it is cleared, also when the window is covered and
// uncovered. Its background colour is a program colour value (a system
// colour by default); Click is raised on a click, Resized once the image has
// taken a new size (what was drawn stays at the top left, the rest is
// background), so the owner can draw it again to fit.
#include <cstdint>
#include <functional>

#include <QImage>
#include <QPointF>
#include <QFrame>

class QPainter;

#include "controls/ControlAdapters.h"
#include "platform/PlotSurface.h"

namespace ui {

class PictureBox : public QFrame, public StandIn<>, public PlotSurface {
    Q_OBJECT
public:
    explicit PictureBox(const QString& name, QWidget* parent = nullptr);

    std::function<void()> Click;
    std::function<void()> Resized;

    void setBackColor(std::int32_t colour);
    // The drawing area in pixels (inside the sunken frame).
    int scaleWidth() const { return image_.width(); }
    int scaleHeight() const { return image_.height(); }
    const QImage& image() const { return image_; }

    // PlotSurface
    std::string typeName() const override { return "PictureBox"; }
    std::int32_t backColor() const override { return backColor_; }
    std::int32_t foreColor() const override { return foreColor_; }
    void setForeColor(std::int32_t colour) override { foreColor_ = colour; }
    void setDrawStyle(std::int16_t style) override { drawStyle_ = style; }
    void cls() override;
    void moveTo(float x, float y) override;
    void lineTo(float x, float y) override;
    void line(float x1, float y1, float x2, float y2) override;
    void box(float x1, float y1, float x2, float y2) override;
    void refresh() override { update(); }
    // Draws with a painter on the retained image (text and pictures the
    // plot calls above cannot draw), then shows it.
    void paintOn(const std::function<void(QPainter&)>& draw);

    QSize sizeHint() const override { return {320, 180}; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    QPen pen() const;

    std::int32_t backColor_;
    std::int32_t foreColor_;
    std::int16_t drawStyle_ = 0;
    QPointF current_;
    QImage image_;
};

}  // namespace ui
