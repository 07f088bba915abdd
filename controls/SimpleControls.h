#pragma once
// Labels and buttons as the handlers know them.
//  - Label: a caption with a fore colour kept as a program colour value.
//  - CheckBox: Value 0 clear, 1 checked; Click runs whenever the value
//    changes, from the user or from code.
//  - OptionButton: Value true when selected; setting it to true selects it,
//    deselects its group partners and runs Click (also when it was already
//    selected); setting it to false does neither.
//  - CommandButton: Click on a press.
#include <cstdint>
#include <functional>

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>

#include "controls/ControlAdapters.h"

namespace ui {

class Label : public QLabel, public StandIn<> {
    Q_OBJECT
public:
    Label(const QString& name, const QString& caption, QWidget* parent = nullptr);

    std::int32_t foreColor() const { return foreColor_; }
    void setForeColor(std::int32_t colour);

private:
    std::int32_t foreColor_;
};

class CheckBox : public QCheckBox, public StandIn<> {
    Q_OBJECT
public:
    CheckBox(const QString& name, const QString& caption, QWidget* parent = nullptr);

    std::function<void()> Click;
    std::int16_t value() const { return isChecked() ? 1 : 0; }
    void setValue(std::int16_t value) { setChecked(value != 0); }
};

class OptionButton : public QRadioButton, public StandIn<> {
    Q_OBJECT
public:
    OptionButton(const QString& name, const QString& caption, QWidget* parent = nullptr);

    std::function<void()> Click;
    bool value() const { return isChecked(); }
    void setValue(bool value);
};

class CommandButton : public QPushButton, public StandIn<> {
    Q_OBJECT
public:
    CommandButton(const QString& name, const QString& caption, QWidget* parent = nullptr);

    std::function<void()> Click;
};

}  // namespace ui
