#pragma once
// The up-down (spin) control: two arrows that step Value by Increment
// between Min and Max, repeating while an arrow is held. Raises Change on
// every step (also when the value stands at a limit and does not move) and
// on a Value set from code that changes it; MouseDown / MouseUp with the
// button (1 left, 2 right, 4 middle). The buddy text box shows the value.
#include <cstdint>
#include <functional>

#include <QTimer>
#include <QWidget>

#include "platform/Control.h"

namespace ui {

class TextBox;

class UpDown : public QWidget, public UpDownControl {
    Q_OBJECT
public:
    UpDown(const QString& name, QWidget* parent = nullptr);

    std::function<void()> Change;
    std::function<void(std::int16_t button, std::int16_t shift)> MouseDown;
    std::function<void(std::int16_t button, std::int16_t shift)> MouseUp;

    void setBuddy(TextBox* buddy) { buddy_ = buddy; }
    TextBox* buddy() const { return buddy_; }

    std::int32_t value() const override { return value_; }
    void setValue(std::int32_t value) override;
    std::int32_t min() const override { return min_; }
    void setMin(std::int32_t min) override { min_ = min; }
    std::int32_t max() const override { return max_; }
    void setMax(std::int32_t max) override { max_ = max; }
    std::int32_t increment() const override { return increment_; }
    void setIncrement(std::int32_t increment) override { increment_ = increment; }

    std::string name() const override;
    std::string typeName() const override { return "UpDown"; }
    bool enabled() const override { return isEnabled(); }
    void setEnabled(bool enabled) override { QWidget::setEnabled(enabled); }
    bool visible() const override { return isVisibleTo(window()); }
    void setFocus() override { QWidget::setFocus(Qt::OtherFocusReason); }

    // One step as a click on an arrow makes it: +Increment (up) or
    // -Increment (down), kept within Min..Max, then Change.
    void stepBy(int direction);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void syncBuddy();
    void repeatStep();

    TextBox* buddy_ = nullptr;
    std::int32_t value_ = 0;
    std::int32_t min_ = 0;
    std::int32_t max_ = 10;
    std::int32_t increment_ = 1;
    int heldDirection_ = 0;  // +1 up arrow held, -1 down arrow held
    QTimer repeat_;
};

}  // namespace ui
