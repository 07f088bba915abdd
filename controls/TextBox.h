#pragma once
// The text box: a line edit that raises the events the program's handlers
// are written for.
//  - KeyPress(keyAscii): the character code of a typed character (8 for
//    Backspace, 13 for Enter); the handler may change it, 0 swallows it.
//  - KeyDown / KeyUp(keyCode, shift): the key code (38 Up, 33 Page Up ...)
//    and the shift state (1 Shift, 2 Ctrl, 4 Alt), as in platform/KeyCodes.h.
//  - Change(): every change of the text, typed or set from code.
//  - Validate(cancel): when the focus is about to leave for another control
//    of the window (Tab, a click, an accelerator, a focus change from code);
//    cancel = true keeps the focus in the box, and the click or accelerator
//    that would have moved it does nothing. Switching to another window or
//    opening a popup or menu is not leaving the box. A control marked with
//    setCausesValidation(widget, false), such as a Cancel button, takes the
//    focus without asking.
//  - LostFocus(): the focus has gone to another control of the window (after
//    Validate let it go, or to a control that does not ask).
// The core reads and sets the text, and gives the focus, through control().
#include <cstdint>
#include <functional>

#include <QLineEdit>
#include <QPlainTextEdit>

#include "controls/ControlAdapters.h"

namespace ui {

class TextBox : public QLineEdit, public StandIn<> {
    Q_OBJECT
public:
    explicit TextBox(const QString& name, QWidget* parent = nullptr);

    std::function<void(std::int16_t& keyAscii)> KeyPress;
    std::function<void(std::int16_t& keyCode, std::int16_t shift)> KeyDown;
    std::function<void(std::int16_t& keyCode, std::int16_t shift)> KeyUp;
    std::function<void()> Change;
    std::function<void(bool& cancel)> Validate;
    std::function<void()> LostFocus;

    // Asks Validate whether the focus may leave; true when it may.
    bool validateLeaving();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    bool focusNextPrevChild(bool next) override;

private:
    void raiseLostFocus();

    bool validating_ = false;
};

// Whether a control's taking the focus runs the leave-check of the box that
// has it (true unless set otherwise).
void setCausesValidation(QWidget* control, bool causesValidation);
bool causesValidation(const QWidget* control);

// A multi-line text box (the device report); setReadOnly locks it.
class MultiLineTextBox : public QPlainTextEdit, public StandIn<> {
    Q_OBJECT
public:
    explicit MultiLineTextBox(const QString& name, QWidget* parent = nullptr);
};

}  // namespace ui
