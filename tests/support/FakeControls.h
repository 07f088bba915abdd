#pragma once
// Controls and forms without widgets, for core tests of procedures that take
// a ui::Control or a ui::UpDownControl, or look through the open forms.
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/Control.h"
#include "platform/Forms.h"

namespace testing_support {

class FakeControl : public ui::Control {
public:
    FakeControl(std::string name, std::string typeName, std::string text = {})
        : name_(std::move(name)), typeName_(std::move(typeName)), text_(std::move(text))
    {
    }
    std::string name() const override { return name_; }
    std::string typeName() const override { return typeName_; }
    bool enabled() const override { return enabled_; }
    void setEnabled(bool enabled) override { enabled_ = enabled; }
    bool visible() const override { return visible_; }
    void setVisible(bool visible) { visible_ = visible; }
    void setFocus() override { ++focusCount; }
    std::string text() const override { return text_; }
    void setText(const std::string& text) override
    {
        text_ = text;
        ++setTextCount;
    }

    int focusCount = 0;
    int setTextCount = 0;

private:
    std::string name_;
    std::string typeName_;
    std::string text_;
    bool enabled_ = true;
    bool visible_ = true;
};

// A text box holding `text`.
class FakeTextBox : public FakeControl {
public:
    explicit FakeTextBox(std::string text = {}) : FakeControl("txtTest", "TextBox", std::move(text)) {}
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

// A form that is in the open-forms list while it exists.
class FakeForm : public ui::Form {
public:
    explicit FakeForm(std::string name) : name_(std::move(name)) { ui::addOpenForm(this); }
    ~FakeForm() override { ui::removeOpenForm(this); }
    FakeForm(const FakeForm&) = delete;
    FakeForm& operator=(const FakeForm&) = delete;

    FakeControl& add(std::string name, std::string typeName, std::string text = {})
    {
        controls_.push_back(std::make_unique<FakeControl>(std::move(name), std::move(typeName),
                                                          std::move(text)));
        return *controls_.back();
    }
    std::string formName() const override { return name_; }
    std::vector<ui::Control*> controls() const override
    {
        std::vector<ui::Control*> all;
        for (const auto& control : controls_) all.push_back(control.get());
        return all;
    }

private:
    std::string name_;
    std::vector<std::unique_ptr<FakeControl>> controls_;
};

}  // namespace testing_support
