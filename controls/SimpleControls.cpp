#include "controls/SimpleControls.h"

#include <QSignalBlocker>

#include "controls/QtConversions.h"
#include "platform/Colours.h"

namespace ui {

Label::Label(const QString& name, const QString& caption, QWidget* parent)
    : QLabel(caption, parent), StandIn(this, name, "Label"), foreColor_(kColourButtonText)
{
}

void Label::setForeColor(std::int32_t colour)
{
    foreColor_ = colour;
    QPalette palette = this->palette();
    palette.setColor(QPalette::WindowText, toQColor(colour));
    setPalette(palette);
}

CheckBox::CheckBox(const QString& name, const QString& caption, QWidget* parent)
    : QCheckBox(caption, parent), StandIn(this, name, "CheckBox")
{
    connect(this, &QCheckBox::toggled, this, [this] {
        if (Click) Click();
    });
}

OptionButton::OptionButton(const QString& name, const QString& caption, QWidget* parent)
    : QRadioButton(caption, parent), StandIn(this, name, "OptionButton")
{
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
    : QPushButton(caption, parent), StandIn(this, name, "CommandButton")
{
    setAutoDefault(false);
    connect(this, &QPushButton::clicked, this, [this] {
        if (Click) Click();
    });
}

}  // namespace ui
