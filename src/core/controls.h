#pragma once
// The controls a window is made of. Controls are the live settings: the rest
// of the suite reads a setting by reading its control. Each control tells its
// view (if one is attached) when it changes, and runs the engine's handler on
// every change, whether the operator or the program made it.
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace mv {

enum class ControlKind { TextBox, CheckBox, OptionButton, Label, Slider, Button, ComboBox, LineLog, Container };
enum class ContainerKind { Column, Row, Grid, Frame, Tabs, TabPage };
enum class Orientation { Horizontal, Vertical };

struct Rgb {
    uint8_t r = 0, g = 0, b = 0;
    bool operator==(const Rgb&) const = default;
};
inline constexpr Rgb kPttOnRed{255, 0, 0};
inline constexpr Rgb kPttOffGreen{0, 128, 0};
inline constexpr Rgb kBlack{0, 0, 0};
// A transmit indicator's two captions; other windows read them as state.
inline constexpr const char* kPttOn = "PTT ON";
inline constexpr const char* kPttOff = "PTT OFF";

class Container;

class Control {
public:
    Control(ControlKind kind, std::string name) : m_kind(kind), m_name(std::move(name)) {}
    virtual ~Control() = default;
    Control(const Control&) = delete;
    Control& operator=(const Control&) = delete;

    ControlKind kind() const { return m_kind; }
    const std::string& name() const { return m_name; }

    // Caption as shown now, and as designed (a relabelled button is still
    // found by the caption it was designed with).
    const std::string& caption() const { return m_caption; }
    const std::string& designCaption() const { return m_designCaption; }
    void setCaption(const std::string& caption);

    bool enabled() const { return m_enabled; }
    void setEnabled(bool enabled);
    bool visible() const { return m_visible; }
    void setVisible(bool visible);
    const std::string& toolTip() const { return m_toolTip; }
    void setToolTip(std::string tip) { m_toolTip = std::move(tip); }

    Container* parent() const { return m_parent; }

    // The view (GUI widget) that mirrors this control; told after each change.
    void setViewListener(std::function<void(Control&)> listener) { m_viewListener = std::move(listener); }

protected:
    void notifyView() {
        if (m_viewListener) m_viewListener(*this);
    }
    void initCaption(std::string caption) {
        m_caption = caption;
        m_designCaption = std::move(caption);
    }

private:
    friend class Container;
    ControlKind m_kind;
    std::string m_name;
    std::string m_caption;
    std::string m_designCaption;
    std::string m_toolTip;
    bool m_enabled = true;
    bool m_visible = true;
    Container* m_parent = nullptr;
    std::function<void(Control&)> m_viewListener;
};

class TextBox final : public Control {
public:
    explicit TextBox(std::string name, std::string text = {});
    const std::string& text() const { return m_text; }
    // Programmatic change: runs the change handler when the text changes,
    // including from inside the change handler itself.
    void setText(const std::string& text);
    // Operator typing the whole field: the digits-only and upper-case styles
    // filter what is typed. Returns false when some characters were refused.
    bool typeText(const std::string& typed);

    void setDigitsOnly(bool on);
    bool digitsOnly() const { return m_digitsOnly; }
    void setUpperCase(bool on);
    bool upperCase() const { return m_upperCase; }
    void setMaxLength(int n) { m_maxLength = n; }
    int maxLength() const { return m_maxLength; }
    void setMultiLine(bool on) { m_multiLine = on; }
    bool multiLine() const { return m_multiLine; }
    void setReadOnly(bool on) { m_readOnly = on; }
    bool readOnly() const { return m_readOnly; }

    // The operator pressed Enter in the field (a single-line entry that sends).
    void pressEnter() {
        if (enabled() && onEnter) onEnter();
    }
    // Asks the view to put the input focus here; counted so a view that
    // missed a request can tell that one came.
    void requestFocus() {
        ++m_focusRequests;
        notifyView();
    }
    uint64_t focusRequests() const { return m_focusRequests; }

    std::function<void()> onChange;
    std::function<void()> onEnter;

private:
    std::string m_text;
    uint64_t m_focusRequests = 0;
    int m_maxLength = 0;
    bool m_digitsOnly = false;
    bool m_upperCase = false;
    bool m_multiLine = false;
    bool m_readOnly = false;
};

class CheckBox final : public Control {
public:
    CheckBox(std::string name, std::string caption, int value = 0);
    // 0 clear, 1 ticked, 2 greyed.
    int value() const { return m_value; }
    bool ticked() const { return m_value != 0; }
    void setValue(int value);
    // Operator click: clear becomes ticked, anything else becomes clear.
    void click();
    std::function<void()> onClick;

private:
    int m_value;
};

class OptionButton;

// The radio buttons of one group: setting one clears the others.
class OptionGroup {
public:
    void add(OptionButton* button) { m_buttons.push_back(button); }
    const std::vector<OptionButton*>& buttons() const { return m_buttons; }
    OptionButton* selected() const;

private:
    std::vector<OptionButton*> m_buttons;
};

class OptionButton final : public Control {
public:
    OptionButton(std::string name, std::string caption, OptionGroup& group);
    bool value() const { return m_value; }
    // Setting True clears the others of the group and runs the click handler.
    void setValue(bool value);
    void click() { if (enabled()) setValue(true); }
    OptionGroup& group() const { return m_group; }
    std::function<void()> onClick;

private:
    friend class OptionGroup;
    OptionGroup& m_group;
    bool m_value = false;
};

class Label final : public Control {
public:
    Label(std::string name, std::string caption, Rgb fore = kBlack);
    Rgb foreColor() const { return m_fore; }
    void setForeColor(Rgb color);
    bool hasBackColor() const { return m_hasBack; }
    Rgb backColor() const { return m_back; }
    void setBackColor(Rgb color);
    // Caption and colour in one change (one repaint).
    void set(const std::string& caption, Rgb fore);
    // A transmit indicator: "PTT ON" in red or "PTT OFF" in green.
    void showPtt(bool on) { set(on ? kPttOn : kPttOff, on ? kPttOnRed : kPttOffGreen); }

private:
    Rgb m_fore;
    Rgb m_back;
    bool m_hasBack = false;
};

class Slider final : public Control {
public:
    Slider(std::string name, int min, int max, int value, Orientation orientation = Orientation::Horizontal);
    int value() const { return m_value; }
    void setValue(int value);  // clamped to the range
    int min() const { return m_min; }
    int max() const { return m_max; }
    void setRange(int min, int max);
    void setMax(int max) { setRange(m_min, max); }
    int smallChange() const { return m_small; }
    int largeChange() const { return m_large; }
    void setSteps(int small, int large) { m_small = small; m_large = large; }
    Orientation orientation() const { return m_orientation; }
    // Labels drawn along the scale, e.g. {"0%", "50%", "100%"}.
    std::vector<std::string> scaleLabels;
    std::function<void()> onChange;

private:
    int m_min, m_max, m_value;
    int m_small = 1, m_large = 10;
    Orientation m_orientation;
};

class Button final : public Control {
public:
    Button(std::string name, std::string caption);
    void click() {
        if (enabled() && onClick) onClick();
    }
    std::function<void()> onClick;
};

class ComboBox final : public Control {
public:
    explicit ComboBox(std::string name);
    const std::vector<std::string>& items() const { return m_items; }
    void setItems(std::vector<std::string> items);
    const std::string& text() const { return m_text; }
    void setText(const std::string& text);
    int listIndex() const;
    std::function<void()> onChange;

private:
    std::vector<std::string> m_items;
    std::string m_text;
};

// A read-only multi-line text kept as whole lines, newest last, holding at
// most a fixed number of lines (the oldest go first), so a log that runs for
// weeks stays the same size. Text goes in as plain text only: line breaks
// (CR LF, a lone CR or a lone LF) start new lines and any other control or
// text-direction character is shown as U+FFFD, so nothing in it is ever
// interpreted. Views are told of each change and can add just the new lines.
class LineLog final : public Control {
public:
    // Characters kept of one line; a longer one is cut and ends with "...".
    static constexpr size_t kMaxLineBytes = 4000;

    LineLog(std::string name, size_t maxLines);
    size_t maxLines() const { return m_maxLines; }
    const std::deque<std::string>& lines() const { return m_lines; }
    // Adds `text` as one line, or several when it holds line breaks (a break
    // at its very end adds no empty line).
    void append(std::string_view text);
    void clear();
    // Every line followed by CR LF, as a multi-line text box holds it.
    std::string text() const;

    // Lines appended since the last clear, counting those dropped since, and
    // how many clears there have been: a view compares them with what it
    // shows to add only what is new.
    uint64_t appendedLines() const { return m_appended; }
    uint64_t clears() const { return m_clears; }

private:
    void addLine(std::string line);

    size_t m_maxLines;
    std::deque<std::string> m_lines;
    uint64_t m_appended = 0;
    uint64_t m_clears = 0;
};

// Layout: a column, row or grid of controls, a frame with a caption, a tab
// control (whose children are tab pages) or one tab page.
class Container final : public Control {
public:
    Container(std::string name, ContainerKind kind, std::string caption = {}, int columns = 0);
    ContainerKind containerKind() const { return m_containerKind; }
    int columns() const { return m_columns; }
    const std::vector<Control*>& children() const { return m_children; }
    template <class T>
    T& add(T& child) {
        addChild(&child);
        return child;
    }
    void addChild(Control* child);

private:
    ContainerKind m_containerKind;
    int m_columns;
    std::vector<Control*> m_children;
};

}  // namespace mv
