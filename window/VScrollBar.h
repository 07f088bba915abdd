#pragma once
// The vertical scroll bar: Value from Min (top) to Max (bottom). Change is
// raised when the value has been changed (a click, a key, a set from code,
// or the end of a drag); Scroll while the thumb is being dragged.
#include <cstdint>
#include <functional>

#include <QScrollBar>

#include "platform/Control.h"

namespace ui {

class VScrollBar : public QScrollBar, public Control {
    Q_OBJECT
public:
    VScrollBar(const QString& name, QWidget* parent = nullptr);

    std::function<void()> Change;
    std::function<void()> Scroll;

    std::int16_t Value() const { return static_cast<std::int16_t>(value()); }
    // Sets the value; an out-of-range value fails with "Invalid property value".
    void setValue16(std::int16_t value);

    std::string name() const override { return objectName().toStdString(); }
    std::string typeName() const override { return "VScrollBar"; }
    bool enabled() const override { return isEnabled(); }
    void setEnabled(bool enabled) override { QScrollBar::setEnabled(enabled); }
    bool visible() const override { return isVisibleTo(window()); }
    void setFocus() override { QScrollBar::setFocus(Qt::OtherFocusReason); }
};

}  // namespace ui
