#pragma once
// How the core reaches the windows' controls: every control has a ui::Control
// (platform/Control.h) beside its Qt object, never inside it, so that no Qt
// member is hidden and a widget behaves the same through any pointer.
//  - WidgetControl: any widget. Its text is a text box's text (lines joined
//    by "\r\n" in a multi-line box) or a label's or button's caption.
//  - StandIn<Adapter>: what a stand-in widget adds to its Qt class: its name
//    and its adapter, reached as control().
//  - MenuControl, CommonDialog: the controls that are not widgets.
//  - ControlList: a window's controls in the order they were made.
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <QString>

#include "platform/Control.h"

class QAction;
class QWidget;

namespace ui {

// The Control members every widget shares, over one of the core's control
// interfaces (Control, or an interface built on it such as UpDownControl).
template <class Interface>
class WidgetAdapter : public Interface {
public:
    WidgetAdapter(QWidget* widget, const char* typeName) : widget_(widget), typeName_(typeName) {}

    std::string name() const override;
    std::string typeName() const override { return typeName_; }
    bool enabled() const override;
    void setEnabled(bool enabled) override;
    bool visible() const override;
    // As giveFocus below.
    void setFocus() override;
    std::string text() const override;
    void setText(const std::string& text) override;
    std::string unselectedText() const override;

private:
    QWidget* widget_;
    const char* typeName_;
};

using WidgetControl = WidgetAdapter<Control>;

// The base of each stand-in widget, beside its Qt class: names the widget
// and holds its adapter.
template <class Adapter = WidgetControl>
class StandIn {
public:
    Adapter& control() { return control_; }
    const Adapter& control() const { return control_; }

protected:
    template <class Widget>
    StandIn(Widget* self, const QString& name, const char* typeName) : control_(self, typeName)
    {
        self->setObjectName(name);
    }
    ~StandIn() = default;

private:
    Adapter control_;
};

// Gives a widget the focus as the program asks for it. While the focus is
// moving (a text box's leave-check is running) or an engine wait is under
// way, the focus moves once that has finished.
void giveFocus(QWidget* widget);

// Marks, while it lives, that the focus is moving, for giveFocus.
class FocusMoving {
public:
    FocusMoving();
    ~FocusMoving();
    FocusMoving(const FocusMoving&) = delete;
    FocusMoving& operator=(const FocusMoving&) = delete;
};

// A menu or menu item; a separator's caption is "-".
class MenuControl : public Control {
public:
    explicit MenuControl(QAction* action);

    std::string name() const override;
    std::string typeName() const override { return "Menu"; }
    bool enabled() const override;
    void setEnabled(bool enabled) override;
    bool visible() const override;
    void setFocus() override {}
    std::string text() const override;
    void setText(const std::string& text) override;

private:
    QAction* action_;
};

// The common dialog, used for choosing a colour. Not a widget of its own.
class CommonDialog : public Control {
public:
    CommonDialog(QWidget* owner, std::string name);

    std::string name() const override { return name_; }
    std::string typeName() const override { return "CommonDialog"; }
    bool enabled() const override { return true; }
    void setEnabled(bool) override {}
    bool visible() const override { return false; }
    void setFocus() override {}

    // The colour shown first and, after ShowColor, the colour chosen
    // (unchanged when the user cancels).
    std::int32_t color() const { return color_; }
    void setColor(std::int32_t colour) { color_ = colour; }
    void ShowColor();

private:
    QWidget* owner_;
    std::string name_;
    std::int32_t color_ = 0;
};

// A window's controls in the order they were made.
class ControlList {
public:
    // Lists a control that lives elsewhere (a stand-in's adapter).
    void add(Control& control) { all_.push_back(&control); }
    // Keeps an adapter alive with the window and lists it.
    template <class Adapter>
    Adapter* adopt(std::unique_ptr<Adapter> adapter)
    {
        Adapter* raw = adapter.get();
        owned_.push_back(std::move(adapter));
        all_.push_back(raw);
        return raw;
    }
    const std::vector<Control*>& all() const { return all_; }
    Control* find(const std::string& name) const;

private:
    std::vector<std::unique_ptr<Control>> owned_;
    std::vector<Control*> all_;
};

}  // namespace ui
