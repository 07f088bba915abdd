#include "window/ControlAdapters.h"

#include <QAbstractButton>
#include <QAction>
#include <QColorDialog>
#include <QLabel>
#include <QWidget>

#include "window/Colors.h"

namespace ui {

WidgetControl::WidgetControl(QWidget* widget, std::string typeName)
    : widget_(widget), typeName_(std::move(typeName))
{
}

std::string WidgetControl::name() const { return widget_->objectName().toStdString(); }
bool WidgetControl::enabled() const { return widget_->isEnabled(); }
void WidgetControl::setEnabled(bool enabled) { widget_->setEnabled(enabled); }
bool WidgetControl::visible() const { return widget_->isVisibleTo(widget_->window()); }
void WidgetControl::setFocus() { widget_->setFocus(Qt::OtherFocusReason); }

std::string WidgetControl::text() const
{
    if (const auto* label = qobject_cast<const QLabel*>(widget_)) return label->text().toStdString();
    if (const auto* button = qobject_cast<const QAbstractButton*>(widget_))
        return button->text().toStdString();
    return {};
}

void WidgetControl::setText(const std::string& text)
{
    if (auto* label = qobject_cast<QLabel*>(widget_)) label->setText(QString::fromStdString(text));
    else if (auto* button = qobject_cast<QAbstractButton*>(widget_))
        button->setText(QString::fromStdString(text));
}

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
