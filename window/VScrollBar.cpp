#include "window/VScrollBar.h"

#include "base/RuntimeError.h"

namespace ui {

VScrollBar::VScrollBar(const QString& name, QWidget* parent) : QScrollBar(Qt::Vertical, parent)
{
    setObjectName(name);
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
    if (value < minimum() || value > maximum()) rt::raise(380, "Invalid property value");
    setValue(value);
}

}  // namespace ui
