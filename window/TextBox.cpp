#include "window/TextBox.h"

#include <QKeyEvent>
#include <QTimer>

namespace ui {

namespace {

// Turns the program's "\r\n" line ends into the editor's and back.
QString toEditor(const std::string& text)
{
    return QString::fromStdString(text).replace("\r\n", "\n");
}

}  // namespace

std::int16_t keyCodeOf(const QKeyEvent* event)
{
    const int key = event->key();
    if (key >= Qt::Key_A && key <= Qt::Key_Z) return static_cast<std::int16_t>('A' + (key - Qt::Key_A));
    if (key >= Qt::Key_0 && key <= Qt::Key_9) return static_cast<std::int16_t>('0' + (key - Qt::Key_0));
    if (key >= Qt::Key_F1 && key <= Qt::Key_F24) return static_cast<std::int16_t>(112 + (key - Qt::Key_F1));
    switch (key) {
    case Qt::Key_Backspace: return 8;
    case Qt::Key_Tab:
    case Qt::Key_Backtab: return 9;
    case Qt::Key_Return:
    case Qt::Key_Enter: return 13;
    case Qt::Key_Shift: return 16;
    case Qt::Key_Control: return 17;
    case Qt::Key_Alt: return 18;
    case Qt::Key_Escape: return 27;
    case Qt::Key_Space: return 32;
    case Qt::Key_PageUp: return 33;
    case Qt::Key_PageDown: return 34;
    case Qt::Key_End: return 35;
    case Qt::Key_Home: return 36;
    case Qt::Key_Left: return 37;
    case Qt::Key_Up: return 38;
    case Qt::Key_Right: return 39;
    case Qt::Key_Down: return 40;
    case Qt::Key_Insert: return 45;
    case Qt::Key_Delete: return 46;
    case Qt::Key_Minus: return 189;
    case Qt::Key_Period: return 190;
    case Qt::Key_Comma: return 188;
    default: return 0;
    }
}

std::int16_t shiftStateOf(const QKeyEvent* event)
{
    const Qt::KeyboardModifiers modifiers = event->modifiers();
    std::int16_t shift = 0;
    if (modifiers & Qt::ShiftModifier) shift |= 1;
    if (modifiers & Qt::ControlModifier) shift |= 2;
    if (modifiers & Qt::AltModifier) shift |= 4;
    return shift;
}

TextBox::TextBox(const QString& name, QWidget* parent) : QLineEdit(parent)
{
    setObjectName(name);
    connect(this, &QLineEdit::textChanged, this, [this] {
        if (Change) Change();
    });
}

std::string TextBox::name() const { return objectName().toStdString(); }

bool TextBox::visible() const { return isVisibleTo(window()); }

void TextBox::setText(const std::string& text) { QLineEdit::setText(QString::fromStdString(text)); }

void TextBox::keyPressEvent(QKeyEvent* event)
{
    std::int16_t keyCode = keyCodeOf(event);
    if (KeyDown && keyCode != 0) KeyDown(keyCode, shiftStateOf(event));

    const QString typed = event->text();
    if (!KeyPress || typed.isEmpty() || event->key() == Qt::Key_Tab ||
        event->key() == Qt::Key_Backtab || event->key() == Qt::Key_Escape) {
        QLineEdit::keyPressEvent(event);
        return;
    }
    std::int16_t keyAscii = static_cast<std::int16_t>(typed.at(0).unicode());
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
    if (KeyUp && keyCode != 0 && !event->isAutoRepeat()) KeyUp(keyCode, shiftStateOf(event));
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
    if (!validateLeaving()) return true;  // the focus stays here
    return QLineEdit::focusNextPrevChild(next);
}

void TextBox::focusOutEvent(QFocusEvent* event)
{
    QLineEdit::focusOutEvent(event);
    // Tab and Backtab were validated before the move; a switch to another
    // application or a popup is not leaving the box.
    const Qt::FocusReason reason = event->reason();
    if (reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason ||
        reason == Qt::ActiveWindowFocusReason || reason == Qt::PopupFocusReason)
        return;
    if (!validateLeaving()) QTimer::singleShot(0, this, [this] { setFocus(); });
}

MultiLineTextBox::MultiLineTextBox(const QString& name, QWidget* parent) : QPlainTextEdit(parent)
{
    setObjectName(name);
}

std::string MultiLineTextBox::name() const { return objectName().toStdString(); }

bool MultiLineTextBox::visible() const { return isVisibleTo(window()); }

std::string MultiLineTextBox::text() const
{
    return toPlainText().replace("\n", "\r\n").toStdString();
}

void MultiLineTextBox::setText(const std::string& text) { setPlainText(toEditor(text)); }

}  // namespace ui
