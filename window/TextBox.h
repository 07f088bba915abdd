#pragma once
// The text box: a line edit that raises the events the program's handlers
// are written for.
//  - KeyPress(keyAscii): the character code of a typed character (8 for
//    Backspace, 13 for Enter); the handler may change it, 0 swallows it.
//  - KeyDown / KeyUp(keyCode, shift): the key code (38 Up, 33 Page Up ...)
//    and the shift state (1 Shift, 2 Ctrl, 4 Alt).
//  - Change(): every change of the text, typed or set from code.
//  - Validate(cancel): when the focus is about to leave for another control
//    of the window (Tab, a click, an accelerator, a focus change from code);
//    cancel = true keeps the focus in the box, and the click or accelerator
//    that would have moved it does nothing. Switching to another window or
//    opening a popup or menu is not leaving the box. A control marked with
//    setCausesValidation(widget, false), such as a Cancel button, takes the
//    focus without asking.
// A multi-line box (for reports) is a MultiLineTextBox.
#include <cstdint>
#include <functional>
#include <string>

#include <QLineEdit>
#include <QPlainTextEdit>

#include "platform/Control.h"

namespace ui {

class TextBox : public QLineEdit, public Control {
    Q_OBJECT
public:
    TextBox(const QString& name, QWidget* parent = nullptr);

    std::function<void(std::int16_t& keyAscii)> KeyPress;
    std::function<void(std::int16_t& keyCode, std::int16_t shift)> KeyDown;
    std::function<void(std::int16_t& keyCode, std::int16_t shift)> KeyUp;
    std::function<void()> Change;
    std::function<void(bool& cancel)> Validate;

    // Asks Validate whether the focus may leave; true when it may.
    bool validateLeaving();

    std::string name() const override;
    std::string typeName() const override { return "TextBox"; }
    bool enabled() const override { return isEnabled(); }
    void setEnabled(bool enabled) override { QLineEdit::setEnabled(enabled); }
    bool visible() const override;
    // Gives the box the focus; while the box is losing it (a Validate
    // answering cancel), once the change under way has finished.
    void setFocus() override;
    std::string text() const override { return QLineEdit::text().toStdString(); }
    void setText(const std::string& text) override;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    bool focusNextPrevChild(bool next) override;

private:
    bool validating_ = false;
    bool losingFocus_ = false;
};

// Whether a control's taking the focus runs the leave-check of the box that
// has it (true unless set otherwise).
void setCausesValidation(QWidget* control, bool causesValidation);
bool causesValidation(const QWidget* control);

// A read-only or editable multi-line text box (the device report).
class MultiLineTextBox : public QPlainTextEdit, public Control {
    Q_OBJECT
public:
    MultiLineTextBox(const QString& name, QWidget* parent = nullptr);

    std::string name() const override;
    std::string typeName() const override { return "TextBox"; }
    bool enabled() const override { return isEnabled(); }
    void setEnabled(bool enabled) override { QPlainTextEdit::setEnabled(enabled); }
    bool visible() const override;
    void setFocus() override { QPlainTextEdit::setFocus(Qt::OtherFocusReason); }
    std::string text() const override;
    void setText(const std::string& text) override;
    // A locked box can be read and selected but not edited.
    void setLocked(bool locked) { setReadOnly(locked); }
};

// The key code and shift state of a Qt key event, as the handlers know them.
std::int16_t keyCodeOf(const QKeyEvent* event);
std::int16_t shiftStateOf(const QKeyEvent* event);

}  // namespace ui
