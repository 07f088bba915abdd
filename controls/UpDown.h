#pragma once
// The up-down (spin) control: two arrows that step Value by Increment
// between Min and Max, repeating while an arrow is held. Raises Change on
// every step (also when the value stands at a limit and does not move) and
// on a Value set from code that changes it; MouseDown / MouseUp with the
// button (1 left, 2 right, 4 middle). The buddy text box shows the value.
// The core reaches it as a ui::UpDownControl through control().
#include <cstdint>
#include <functional>

#include <QTimer>
#include <QWidget>

#include "controls/ControlAdapters.h"

namespace ui {

class TextBox;
class UpDown;

// The core's view of an up-down control.
class UpDownAdapter : public WidgetAdapter<UpDownControl> {
public:
    UpDownAdapter(UpDown* upDown, const char* typeName);

    std::int32_t value() const override;
    void setValue(std::int32_t value) override;
    std::int32_t min() const override;
    void setMin(std::int32_t min) override;
    std::int32_t max() const override;
    void setMax(std::int32_t max) override;
    std::int32_t increment() const override;
    void setIncrement(std::int32_t increment) override;

private:
    UpDown* upDown_;
};

class UpDown : public QWidget, public StandIn<UpDownAdapter> {
    Q_OBJECT
public:
    explicit UpDown(const QString& name, QWidget* parent = nullptr);

    std::function<void()> Change;
    std::function<void(std::int16_t button, std::int16_t shift)> MouseDown;
    std::function<void(std::int16_t button, std::int16_t shift)> MouseUp;

    void setBuddy(TextBox* buddy) { buddy_ = buddy; }
    TextBox* buddy() const { return buddy_; }

    std::int32_t value() const { return value_; }
    void setValue(std::int32_t value);
    std::int32_t min() const { return min_; }
    void setMin(std::int32_t min) { min_ = min; }
    std::int32_t max() const { return max_; }
    void setMax(std::int32_t max) { max_ = max; }
    std::int32_t increment() const { return increment_; }
    void setIncrement(std::int32_t increment) { increment_ = increment; }

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
