#pragma once
// The vertical scroll bar: Value from Min (top) to Max (bottom). Change is
// raised when the value has been changed (a click, a key, a set from code,
// or the end of a drag); Scroll while the thumb is being dragged.
#include <cstdint>
#include <functional>

#include <QScrollBar>

#include "controls/ControlAdapters.h"

namespace ui {

class VScrollBar : public QScrollBar, public StandIn<> {
    Q_OBJECT
public:
    explicit VScrollBar(const QString& name, QWidget* parent = nullptr);

    std::function<void()> Change;
    std::function<void()> Scroll;

    std::int16_t Value() const { return static_cast<std::int16_t>(value()); }
    // Sets the value; an out-of-range value fails with "Invalid property value".
    void setValue16(std::int16_t value);
};

}  // namespace ui
