#pragma once
// Adapters that let the core reach the window's widgets through
// ui::Control, and the list of a window's controls.
#include <memory>
#include <string>
#include <vector>

#include <QColor>

#include "platform/Control.h"

class QAction;
class QWidget;

namespace ui {

// Any widget: labels, frames, tab controls and the like. Text reaches the
// caption of a label or button.
class WidgetControl : public Control {
public:
    WidgetControl(QWidget* widget, std::string typeName);

    std::string name() const override;
    std::string typeName() const override { return typeName_; }
    bool enabled() const override;
    void setEnabled(bool enabled) override;
    bool visible() const override;
    void setFocus() override;
    std::string text() const override;
    void setText(const std::string& text) override;

private:
    QWidget* widget_;
    std::string typeName_;
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
    // Takes a control the window owns elsewhere (a widget that is a Control).
    void add(Control* control) { all_.push_back(control); }
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
