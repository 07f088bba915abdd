#include "window/SimpleControls.h"

#include <QSignalBlocker>

#include "window/Colors.h"

namespace ui {

Label::Label(const QString& name, const QString& caption, QWidget* parent)
    : WidgetStandIn<QLabel>(caption, parent), foreColor_(kColourButtonText)
{
    setObjectName(name);
}

void Label::setForeColor(std::int32_t colour)
{
    foreColor_ = colour;
    QPalette palette = this->palette();
    palette.setColor(QPalette::WindowText, toQColor(colour));
    setPalette(palette);
}

CheckBox::CheckBox(const QString& name, const QString& caption, QWidget* parent)
    : WidgetStandIn<QCheckBox>(caption, parent)
{
    setObjectName(name);
    connect(this, &QCheckBox::toggled, this, [this] {
        if (Click) Click();
    });
}

OptionButton::OptionButton(const QString& name, const QString& caption, QWidget* parent)
    : WidgetStandIn<QRadioButton>(caption, parent)
{
    setObjectName(name);
    connect(this, &QRadioButton::toggled, this, [this](bool on) {
        if (on && Click) Click();
    });
}

void OptionButton::setValue(bool value)
{
    if (!value) {
        // Clears this button alone: no partner is selected and no Click runs.
        if (!isChecked()) return;
        const QSignalBlocker quiet(this);
        setAutoExclusive(false);
        setChecked(false);
        setAutoExclusive(true);
        return;
    }
    if (isChecked()) {
        if (Click) Click();
        return;
    }
    setChecked(true);
}

CommandButton::CommandButton(const QString& name, const QString& caption, QWidget* parent)
    : WidgetStandIn<QPushButton>(caption, parent)
{
    setObjectName(name);
    setAutoDefault(false);
    connect(this, &QPushButton::clicked, this, [this] {
        if (Click) Click();
    });
}

}  // namespace ui
