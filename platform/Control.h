#pragma once
// Controls and forms as the core sees them. The windows' widgets implement
// these small interfaces, so procedures in wavelark_core can read and set a
// control's text, give it the focus or enable it without QtWidgets.
#include <cstdint>
#include <string>
#include <vector>

namespace ui {

class Control {
public:
    virtual ~Control() = default;

    // The control's name in the window ("txtFrequency1", "mnuFiExit").
    virtual std::string name() const = 0;
    // Its kind: "TextBox", "Label", "CheckBox", "OptionButton",
    // "CommandButton", "UpDown", "VScrollBar", "PictureBox", "TabStrip",
    // "Menu", "CommonDialog".
    virtual std::string typeName() const = 0;

    virtual bool enabled() const = 0;
    virtual void setEnabled(bool enabled) = 0;
    virtual bool visible() const = 0;
    // Gives the control the keyboard focus.
    virtual void setFocus() = 0;

    // The text of a text box, or the caption of a label, button or menu item.
    virtual std::string text() const { return {}; }
    virtual void setText(const std::string&) {}
    // The text that stays when a typed key replaces the selection (the whole
    // text when nothing is selected): what a key filter judges the key with.
    virtual std::string unselectedText() const { return text(); }
};

// An up-down (spin) control: a 32-bit value stepped between Min and Max.
class UpDownControl : public Control {
public:
    virtual std::int32_t value() const = 0;
    virtual void setValue(std::int32_t value) = 0;
    virtual std::int32_t min() const = 0;
    virtual void setMin(std::int32_t min) = 0;
    virtual std::int32_t max() const = 0;
    virtual void setMax(std::int32_t max) = 0;
    virtual std::int32_t increment() const = 0;
    virtual void setIncrement(std::int32_t increment) = 0;
};

// A window: its name and every control on it, menu items included, in the
// order they were created.
class Form {
public:
    virtual ~Form() = default;
    virtual std::string formName() const = 0;
    virtual std::vector<Control*> controls() const = 0;
};

}  // namespace ui
