#include "controls/ControlAdapters.h"

#include <QAbstractButton>
#include <QAction>
#include <QColorDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QWidget>

#include "controls/QtConversions.h"
#include "platform/qt/LiveWait.h"

namespace ui {

namespace {

int gFocusMoves = 0;

// The program's text uses "\r\n" between lines; the editors use "\n".
QString toEditor(const std::string& text) { return QString::fromStdString(text).replace("\r\n", "\n"); }
std::string fromEditor(QString text) { return text.replace("\n", "\r\n").toStdString(); }

}  // namespace

template <class Interface>
std::string WidgetAdapter<Interface>::name() const
{
    return widget_->objectName().toStdString();
}

template <class Interface>
bool WidgetAdapter<Interface>::enabled() const
{
    return widget_->isEnabled();
}

template <class Interface>
void WidgetAdapter<Interface>::setEnabled(bool enabled)
{
    widget_->setEnabled(enabled);
}

template <class Interface>
bool WidgetAdapter<Interface>::visible() const
{
    return widget_->isVisibleTo(widget_->window());
}

template <class Interface>
void WidgetAdapter<Interface>::setFocus()
{
    giveFocus(widget_);
}

template <class Interface>
std::string WidgetAdapter<Interface>::text() const
{
    if (const auto* box = qobject_cast<const QLineEdit*>(widget_)) return box->text().toStdString();
    if (const auto* box = qobject_cast<const QPlainTextEdit*>(widget_))
        return fromEditor(box->toPlainText());
    if (const auto* label = qobject_cast<const QLabel*>(widget_)) return label->text().toStdString();
    if (const auto* button = qobject_cast<const QAbstractButton*>(widget_))
        return button->text().toStdString();
    return {};
}

template <class Interface>
std::string WidgetAdapter<Interface>::unselectedText() const
{
    const auto* box = qobject_cast<const QLineEdit*>(widget_);
    if (box == nullptr || !box->hasSelectedText()) return text();
    return box->text().remove(box->selectionStart(), box->selectionLength()).toStdString();
}

template <class Interface>
void WidgetAdapter<Interface>::setText(const std::string& text)
{
    const QString qtext = QString::fromStdString(text);
    if (auto* box = qobject_cast<QLineEdit*>(widget_)) box->setText(qtext);
    else if (auto* box = qobject_cast<QPlainTextEdit*>(widget_)) box->setPlainText(toEditor(text));
    else if (auto* label = qobject_cast<QLabel*>(widget_)) label->setText(qtext);
    else if (auto* button = qobject_cast<QAbstractButton*>(widget_)) button->setText(qtext);
}

template class WidgetAdapter<Control>;
template class WidgetAdapter<UpDownControl>;

void giveFocus(QWidget* widget)
{
    if (gFocusMoves == 0 && !host::waitUnderway()) {
        widget->setFocus(Qt::OtherFocusReason);
        return;
    }
    host::afterWaits(widget, [widget] { giveFocus(widget); });
}

FocusMoving::FocusMoving() { ++gFocusMoves; }
FocusMoving::~FocusMoving() { --gFocusMoves; }

MenuControl::MenuControl(QAction* action) : action_(action) {}

std::string MenuControl::name() const { return action_->objectName().toStdString(); }
bool MenuControl::enabled() const { return action_->isEnabled(); }
void MenuControl::setEnabled(bool enabled) { action_->setEnabled(enabled); }
bool MenuControl::visible() const { return action_->isVisible(); }
std::string MenuControl::text() const
{
    return action_->isSeparator() ? std::string("-") : action_->text().toStdString();
}
void MenuControl::setText(const std::string& text) { action_->setText(QString::fromStdString(text)); }

CommonDialog::CommonDialog(QWidget* owner, std::string name) : owner_(owner), name_(std::move(name))
{
}

void CommonDialog::ShowColor()
{
    const QColor chosen = QColorDialog::getColor(toQColor(color_), owner_);
    if (chosen.isValid()) color_ = fromQColor(chosen);
}

Control* ControlList::find(const std::string& name) const
{
    for (Control* control : all_)
        if (control->name() == name) return control;
    return nullptr;
}

}  // namespace ui
