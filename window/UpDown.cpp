#include "window/UpDown.h"

#include <algorithm>

#include <QMouseEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOption>

#include "window/TextBox.h"

namespace ui {

namespace {

constexpr int kFirstRepeatDelayMs = 400;
constexpr int kRepeatIntervalMs = 60;

std::int16_t buttonCode(Qt::MouseButton button)
{
    switch (button) {
    case Qt::LeftButton: return 1;
    case Qt::RightButton: return 2;
    case Qt::MiddleButton: return 4;
    default: return 0;
    }
}

std::int16_t shiftCode(Qt::KeyboardModifiers modifiers)
{
    return static_cast<std::int16_t>(((modifiers & Qt::ShiftModifier) ? 1 : 0) |
                                     ((modifiers & Qt::ControlModifier) ? 2 : 0) |
                                     ((modifiers & Qt::AltModifier) ? 4 : 0));
}

}  // namespace

UpDown::UpDown(const QString& name, QWidget* parent) : QWidget(parent)
{
    setObjectName(name);
    setFocusPolicy(Qt::NoFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred);
    connect(&repeat_, &QTimer::timeout, this, &UpDown::repeatStep);
}

std::string UpDown::name() const { return objectName().toStdString(); }

QSize UpDown::sizeHint() const { return {18, 24}; }

void UpDown::setValue(std::int32_t value)
{
    if (value == value_) return;
    value_ = value;
    syncBuddy();
    if (Change) Change();
}

void UpDown::stepBy(int direction)
{
    const std::int64_t next = static_cast<std::int64_t>(value_) +
                              static_cast<std::int64_t>(direction) * increment_;
    const std::int64_t low = std::min(min_, max_);
    const std::int64_t high = std::max(min_, max_);
    value_ = static_cast<std::int32_t>(std::clamp(next, low, high));
    syncBuddy();
    if (Change) Change();
}

void UpDown::syncBuddy()
{
    if (buddy_ != nullptr) buddy_->setText(std::to_string(value_));
}

void UpDown::repeatStep()
{
    repeat_.setInterval(kRepeatIntervalMs);
    if (heldDirection_ != 0) stepBy(heldDirection_);
}

void UpDown::mousePressEvent(QMouseEvent* event)
{
    if (MouseDown) MouseDown(buttonCode(event->button()), shiftCode(event->modifiers()));
    if (event->button() != Qt::LeftButton) return;
    heldDirection_ = event->position().y() < height() / 2.0 ? +1 : -1;
    stepBy(heldDirection_);
    repeat_.start(kFirstRepeatDelayMs);
    update();
}

void UpDown::mouseReleaseEvent(QMouseEvent* event)
{
    repeat_.stop();
    heldDirection_ = 0;
    update();
    if (MouseUp) MouseUp(buttonCode(event->button()), shiftCode(event->modifiers()));
}

void UpDown::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const int half = height() / 2;
    const QRect halves[2] = {QRect(0, 0, width(), half), QRect(0, half, width(), height() - half)};
    const QStyle::PrimitiveElement arrows[2] = {QStyle::PE_IndicatorArrowUp,
                                                QStyle::PE_IndicatorArrowDown};
    for (int i = 0; i < 2; ++i) {
        QStyleOptionButton panel;
        panel.initFrom(this);
        panel.rect = halves[i];
        const bool pressed = (i == 0 && heldDirection_ > 0) || (i == 1 && heldDirection_ < 0);
        panel.state |= pressed ? QStyle::State_Sunken : QStyle::State_Raised;
        style()->drawPrimitive(QStyle::PE_PanelButtonTool, &panel, &painter, this);
        QStyleOption arrow;
        arrow.initFrom(this);
        arrow.rect = halves[i].adjusted(3, 2, -3, -2);
        style()->drawPrimitive(arrows[i], &arrow, &painter, this);
    }
}

}  // namespace ui
