#include "controls/TextBox.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QPointer>
#include <QTimer>
#include <QWindow>

#include "controls/QtConversions.h"
#include "platform/KeyCodes.h"

namespace ui {

namespace {

constexpr const char* kCausesValidation = "causesValidation";

// Whether a click gives this widget the focus, by Qt's rule (its own policy
// and that of its focus proxy both include click focus).
bool takesClickFocus(const QWidget* widget)
{
    const QWidget* proxy = widget;
    while (proxy->focusProxy() != nullptr) proxy = proxy->focusProxy();
    return (widget->focusPolicy() & Qt::ClickFocus) == Qt::ClickFocus &&
           (proxy->focusPolicy() & Qt::ClickFocus) == Qt::ClickFocus;
}

// The widget that a press at `position` of a top-level widget will give the
// focus to, found as Qt finds it: the innermost enabled widget under the
// press, or its nearest parent, that takes click focus; none when the press
// leaves the focus where it is.
QWidget* clickFocusTarget(QWidget* topLevel, QPoint position)
{
    QWidget* widget = topLevel->childAt(position);
    if (widget == nullptr) widget = topLevel;
    QPoint local = widget == topLevel ? position : widget->mapFrom(topLevel, position);
    while (widget != nullptr) {
        if (widget->isEnabled() && widget->rect().contains(local) && takesClickFocus(widget))
            return widget;
        if (widget->isWindow()) break;
        local += widget->pos();
        widget = widget->parentWidget();
    }
    return nullptr;
}

QWidget* topLevelOf(const QWindow* window)
{
    for (QWidget* widget : QApplication::topLevelWidgets())
        if (widget->windowHandle() == window) return widget;
    return nullptr;
}

TextBox* focusedBox() { return qobject_cast<TextBox*>(QApplication::focusWidget()); }

// True when moving the focus from the box to the target is leaving the box
// in the sense of its Validate.
bool isLeaving(const TextBox* box, const QWidget* target)
{
    return box != nullptr && target != nullptr && target != box && !box->isAncestorOf(target) &&
           target->window() == box->window() && causesValidation(target);
}

// Asks the focused text box before a click or an accelerator moves the focus
// away from it, so that a refusal keeps the focus and the clicked control
// does not act. A real press reaches the window before any widget, and Qt
// moves the focus between the two; a press sent straight to a widget (as
// tests may) has already moved the focus, and the box's focus-out asks then.
class LeaveGuard : public QObject {
public:
    using QObject::QObject;

    // True when the focus arriving at `focus` is a leave that was asked and
    // allowed before the focus moved; it is not asked again.
    bool takeAllowedLeave(const QWidget* focus)
    {
        const bool allowed = !allowedTarget_.isNull() && allowedTarget_ == focus;
        allowedTarget_ = nullptr;
        return allowed;
    }

    // The focus-out of a press sent to a widget refused the leave: the press
    // itself is swallowed when it reaches the widget.
    bool refusePress = false;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        switch (event->type()) {
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonDblClick:
            if (watched->isWidgetType()) return pressAtWidget();
            if (auto* window = qobject_cast<QWindow*>(watched))
                return pressAtWindow(window, static_cast<QMouseEvent*>(event));
            return false;
        case QEvent::Shortcut:
            if (watched->isWidgetType()) return accelerator(static_cast<QWidget*>(watched));
            return false;
        default:
            return false;
        }
    }

private:
    bool pressAtWidget()
    {
        allowedTarget_ = nullptr;
        const bool refuse = refusePress;
        refusePress = false;
        return refuse;
    }

    bool pressAtWindow(QWindow* window, QMouseEvent* press)
    {
        allowedTarget_ = nullptr;
        refusePress = false;
        TextBox* box = focusedBox();
        QWidget* topLevel = topLevelOf(window);
        if (box == nullptr || topLevel == nullptr || topLevel != box->window()) return false;
        return refuseLeave(box, clickFocusTarget(topLevel, press->position().toPoint()));
    }

    bool accelerator(QWidget* target)
    {
        allowedTarget_ = nullptr;
        if (auto* label = qobject_cast<QLabel*>(target); label != nullptr && label->buddy() != nullptr)
            target = label->buddy();
        return refuseLeave(focusedBox(), target);
    }

    // Asks the box whether the focus may go to the target; true (swallow
    // the event) when it may not.
    bool refuseLeave(TextBox* box, QWidget* target)
    {
        if (!isLeaving(box, target)) return false;
        if (!box->validateLeaving()) return true;
        while (target->focusProxy() != nullptr) target = target->focusProxy();
        allowedTarget_ = target;
        // Not every allowed event moves the focus (an accelerator clicks its
        // button in place): the permission ends with this event.
        QTimer::singleShot(0, this, [this] { allowedTarget_ = nullptr; });
        return false;
    }

    QPointer<QWidget> allowedTarget_;
};

LeaveGuard& leaveGuard()
{
    static QPointer<LeaveGuard> guard;
    if (guard.isNull()) {
        guard = new LeaveGuard(QCoreApplication::instance());
        QCoreApplication::instance()->installEventFilter(guard);
    }
    return *guard;
}

}  // namespace

void setCausesValidation(QWidget* control, bool causesValidation)
{
    control->setProperty(kCausesValidation, causesValidation);
}

bool causesValidation(const QWidget* control)
{
    const QVariant value = control->property(kCausesValidation);
    return !value.isValid() || value.toBool();
}

TextBox::TextBox(const QString& name, QWidget* parent)
    : QLineEdit(parent), StandIn(this, name, "TextBox")
{
    leaveGuard();
    connect(this, &QLineEdit::textChanged, this, [this] {
        if (Change) Change();
    });
}

void TextBox::keyPressEvent(QKeyEvent* event)
{
    std::int16_t keyCode = keyCodeOf(event);
    if (KeyDown && keyCode != 0) KeyDown(keyCode, shiftStateOf(event->modifiers()));

    // Delete edits the text without typing a character.
    std::int16_t keyAscii = keyAsciiOf(event);
    if (!KeyPress || keyAscii == 0 || keyAscii == kAsciiDelete || event->key() == Qt::Key_Tab ||
        event->key() == Qt::Key_Backtab || event->key() == Qt::Key_Escape) {
        QLineEdit::keyPressEvent(event);
        return;
    }
    const std::int16_t original = keyAscii;
    KeyPress(keyAscii);
    if (keyAscii == 0) {
        event->accept();
        return;
    }
    if (keyAscii == original) {
        QLineEdit::keyPressEvent(event);
        return;
    }
    // The handler turned the key into another character: type that instead.
    insert(QString(QChar(static_cast<char16_t>(keyAscii))));
    event->accept();
}

void TextBox::keyReleaseEvent(QKeyEvent* event)
{
    std::int16_t keyCode = keyCodeOf(event);
    if (KeyUp && keyCode != 0 && !event->isAutoRepeat())
        KeyUp(keyCode, shiftStateOf(event->modifiers()));
    QLineEdit::keyReleaseEvent(event);
}

bool TextBox::validateLeaving()
{
    if (!Validate || validating_) return true;
    validating_ = true;
    bool cancel = false;
    Validate(cancel);
    validating_ = false;
    return !cancel;
}

bool TextBox::focusNextPrevChild(bool next)
{
    // Tab and Backtab ask before the move. (Qt also calls this on a hidden
    // box to pass the focus on; that is not the user leaving.)
    if (isVisible() && !validateLeaving()) return true;  // the focus stays here
    return QLineEdit::focusNextPrevChild(next);
}

void TextBox::focusOutEvent(QFocusEvent* event)
{
    QLineEdit::focusOutEvent(event);
    LeaveGuard& guard = leaveGuard();
    const Qt::FocusReason reason = event->reason();
    switch (reason) {
    case Qt::TabFocusReason:
    case Qt::BacktabFocusReason:
        raiseLostFocus();  // asked before the move
        return;
    case Qt::ActiveWindowFocusReason:
    case Qt::PopupFocusReason:
    case Qt::MenuBarFocusReason:
        return;  // another window, a popup or the menus: not leaving the box
    default:
        break;
    }
    const QWidget* next = QApplication::focusWidget();
    // A click or accelerator asked already, or the control does not ask.
    if (guard.takeAllowedLeave(next) || !isLeaving(this, next)) {
        raiseLostFocus();
        return;
    }
    // The focus has already moved (a focus change from code, or a press sent
    // straight to a widget): ask now and take the focus back on a refusal,
    // once the focus change under way has finished.
    const FocusMoving moving;
    if (!validateLeaving()) {
        if (reason == Qt::MouseFocusReason) guard.refusePress = true;
        giveFocus(this);
        return;
    }
    raiseLostFocus();
}

void TextBox::raiseLostFocus()
{
    // Only a move to another control of this window is losing the focus.
    const QWidget* next = QApplication::focusWidget();
    if (!LostFocus || next == nullptr || next == this || next->window() != window()) return;
    const FocusMoving moving;
    LostFocus();
}

MultiLineTextBox::MultiLineTextBox(const QString& name, QWidget* parent)
    : QPlainTextEdit(parent), StandIn(this, name, "TextBox")
{
}

}  // namespace ui
