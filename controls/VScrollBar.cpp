#include "controls/VScrollBar.h"

#include "base/RuntimeError.h"

namespace ui {

VScrollBar::VScrollBar(const QString& name, QWidget* parent)
    : QScrollBar(Qt::Vertical, parent), StandIn(this, name, "VScrollBar")
{
    connect(this, &QScrollBar::valueChanged, this, [this] {
        if (!isSliderDown() && Change) Change();
    });
    connect(this, &QScrollBar::sliderMoved, this, [this] {
        if (Scroll) Scroll();
    });
    connect(this, &QScrollBar::sliderReleased, this, [this] {
        if (Change) Change();
    });
}

void VScrollBar::setValue16(std::int16_t value)
{
    if (value < minimum() || value > maximum()) rt::raise(rt::kErrInvalidPropertyValue);
    setValue(value);
}

}  // namespace ui
