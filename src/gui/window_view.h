#pragma once
// Renders a window's control tree as Qt widgets and binds both ways. The
// engine's changes reach the widgets through each control's view listener
// (which only touches what differs, so rewriting the same value costs no
// repaint); the operator's changes are posted to the scheduler and run the
// same engine calls a program change would, after anything already queued.
#include <QString>
#include <functional>
#include <memory>
#include <unordered_map>

class QAbstractButton;
class QWidget;

namespace mv {

class Control;
class Container;
class OptionGroupKeys;
class Window;

class WindowView {
public:
    using Post = std::function<void(std::function<void()>)>;
    // Builds the widgets of `window`'s tree into `host` (which gets a layout).
    WindowView(Window& window, QWidget& host, Post post);
    ~WindowView();
    WindowView(const WindowView&) = delete;
    WindowView& operator=(const WindowView&) = delete;

    // The widget that shows a control (for tests and screenshots).
    QWidget* widgetFor(const Control& control) const;
    // Brings a control's widget in line with the control.
    void sync(Control& control);

private:
    QWidget* build(Control& control, QWidget* parent);
    QWidget* buildContainer(Container& container, QWidget* parent);
    void bind(Control& control, QWidget* widget, std::function<void()> refresh);
    // Posts an operator action on a control; dropped if the window unloads first.
    void operate(Control& control, std::function<void()> action);
    // An operator click on a button-like widget clicks its control.
    template <class C>
    void clickThrough(QAbstractButton* widget, C& control);

    Window& m_window;
    Post m_post;
    std::shared_ptr<bool> m_alive = std::make_shared<bool>(true);
    std::unordered_map<const Control*, QWidget*> m_widgets;
    std::unordered_map<const Control*, std::function<void()>> m_refresh;
    std::unique_ptr<OptionGroupKeys> m_optionKeys;
};

// Captions go to widgets that read '&' as a shortcut marker; shown as typed.
QString literalCaption(const std::string& caption);

}  // namespace mv
