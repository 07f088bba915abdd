#pragma once
// Controls and forms without widgets, for core tests of procedures that take
// a ui::Control or look through the open forms.
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
    void setText(const std::string& text) override { text_ = text; }

    int focusCount = 0;

private:
    std::string name_;
    std::string typeName_;
    std::string text_;
    bool enabled_ = true;
    bool visible_ = true;
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
