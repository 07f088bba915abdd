#include "controls/UpDown.h"

#include <algorithm>

#include <QMouseEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOption>

#include "controls/QtConversions.h"
#include "controls/TextBox.h"
#include "platform/qt/LiveWait.h"

namespace ui {

namespace {

constexpr int kFirstRepeatDelayMs = 400;
constexpr int kRepeatIntervalMs = 60;

}  // namespace

UpDownAdapter::UpDownAdapter(UpDown* upDown, const char* typeName)
    : WidgetAdapter(upDown, typeName), upDown_(upDown)
{
}

std::int32_t UpDownAdapter::value() const { return upDown_->value(); }
void UpDownAdapter::setValue(std::int32_t value) { upDown_->setValue(value); }
std::int32_t UpDownAdapter::min() const { return upDown_->min(); }
void UpDownAdapter::setMin(std::int32_t min) { upDown_->setMin(min); }
std::int32_t UpDownAdapter::max() const { return upDown_->max(); }
void UpDownAdapter::setMax(std::int32_t max) { upDown_->setMax(max); }
std::int32_t UpDownAdapter::increment() const { return upDown_->increment(); }
void UpDownAdapter::setIncrement(std::int32_t increment) { upDown_->setIncrement(increment); }

UpDown::UpDown(const QString& name, QWidget* parent) : QWidget(parent), StandIn(this, name, "UpDown")
{
    setFocusPolicy(Qt::NoFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred);
    connect(&repeat_, &QTimer::timeout, this, &UpDown::repeatStep);
}

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
    if (buddy_ != nullptr) buddy_->setText(QString::number(value_));
}

void UpDown::repeatStep()
{
    // A repeat that falls inside an engine wait is skipped: its Change could
    // re-enter the engine. After a step (which may itself have waited) the
    // next repeat comes a full interval later, so that a release queued
    // meanwhile is seen first.
    if (heldDirection_ == 0 || host::waitUnderway()) return;
    stepBy(heldDirection_);
    repeat_.start(kRepeatIntervalMs);
}

void UpDown::mousePressEvent(QMouseEvent* event)
{
    if (MouseDown) MouseDown(buttonCodeOf(event->button()), shiftStateOf(event->modifiers()));
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
    if (MouseUp) MouseUp(buttonCodeOf(event->button()), shiftStateOf(event->modifiers()));
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
