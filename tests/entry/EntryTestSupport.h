#pragma once
// Stand-ins for the controls the numeric-entry procedures touch.
#include <cstdint>
#include <string>
#include <vector>

#include "platform/Control.h"

namespace entry_testing {

// A text box as the core sees it: its text, and whether it was given the focus.
class FakeTextBox : public ui::Control {
public:
    explicit FakeTextBox(std::string text = {}) : text_(std::move(text)) {}
    std::string name() const override { return "txtTest"; }
    std::string typeName() const override { return "TextBox"; }
    bool enabled() const override { return true; }
    void setEnabled(bool) override {}
    bool visible() const override { return true; }
    void setFocus() override { ++focusCalls; }
    std::string text() const override { return text_; }
    void setText(const std::string& text) override
    {
        text_ = text;
        ++setTextCalls;
    }

    int focusCalls = 0;
    int setTextCalls = 0;

private:
    std::string text_;
};

// A spin control that records every property set, in order ("Min=0"), and
// keeps Min from rising above Max as a real control does.
class RecordingUpDown : public ui::UpDownControl {
public:
    std::string name() const override { return "updTest"; }
    std::string typeName() const override { return "UpDown"; }
    bool enabled() const override { return true; }
    void setEnabled(bool) override {}
    bool visible() const override { return true; }
    void setFocus() override {}

    std::int32_t value() const override { return value_; }
    void setValue(std::int32_t value) override { record("Value", value_ = value); }
    std::int32_t min() const override { return min_; }
    void setMin(std::int32_t min) override
    {
        if (min <= max_) min_ = min;
        record("Min", min);
    }
    std::int32_t max() const override { return max_; }
    void setMax(std::int32_t max) override { record("Max", max_ = max); }
    std::int32_t increment() const override { return increment_; }
    void setIncrement(std::int32_t increment) override { record("Increment", increment_ = increment); }

    // Loads the control without recording.
    void preset(std::int32_t value, std::int32_t min, std::int32_t max)
    {
        value_ = value;
        min_ = min;
        max_ = max;
    }

    std::vector<std::string> calls;

private:
    void record(const char* property, std::int32_t value)
    {
        calls.push_back(std::string(property) + "=" + std::to_string(value));
    }

    std::int32_t value_ = 0;
    std::int32_t min_ = 0;
    std::int32_t max_ = 10;
    std::int32_t increment_ = 1;
};

}  // namespace entry_testing
