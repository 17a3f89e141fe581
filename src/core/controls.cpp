#include "core/controls.h"

#include <algorithm>
#include <cctype>

#include "core/plain_text.h"

namespace mv {

void Control::setCaption(const std::string& caption) {
    if (caption == m_caption) return;
    m_caption = caption;
    notifyView();
}

void Control::setEnabled(bool enabled) {
    if (enabled == m_enabled) return;
    m_enabled = enabled;
    notifyView();
}

void Control::setVisible(bool visible) {
    if (visible == m_visible) return;
    m_visible = visible;
    notifyView();
}

TextBox::TextBox(std::string name, std::string text) : Control(ControlKind::TextBox, std::move(name)), m_text(std::move(text)) {}

namespace {
// Length in bytes of the UTF-8 character starting with `lead` (a stray byte
// counts as a character of its own).
size_t utf8Length(unsigned char lead) {
    if (lead >= 0xF0 && lead <= 0xF4) return 4;
    if (lead >= 0xE0) return lead <= 0xEF ? 3 : 1;
    if (lead >= 0xC2) return 2;
    return 1;
}

// The first `characters` characters of a UTF-8 text, never half of one.
std::string firstCharacters(const std::string& text, int characters) {
    size_t at = 0;
    for (int n = 0; n < characters && at < text.size(); ++n) at += utf8Length(static_cast<unsigned char>(text[at]));
    return text.substr(0, std::min(at, text.size()));
}
}  // namespace

void TextBox::setText(const std::string& text) {
    std::string value = m_maxLength > 0 ? firstCharacters(text, m_maxLength) : text;
    if (value == m_text) return;
    m_text = std::move(value);
    notifyView();
    if (onChange) onChange();
}

bool TextBox::typeText(const std::string& typed) {
    if (m_readOnly || !enabled()) return false;
    std::string accepted;
    bool allAccepted = true;
    int characters = 0;
    for (size_t i = 0; i < typed.size();) {
        const auto lead = static_cast<unsigned char>(typed[i]);
        size_t n = utf8Length(lead);
        if (i + n > typed.size()) n = typed.size() - i;
        std::string ch = typed.substr(i, n);
        i += n;
        if (m_digitsOnly && !(n == 1 && std::isdigit(lead))) {
            allAccepted = false;
            continue;
        }
        if (m_maxLength > 0 && characters >= m_maxLength) {
            allAccepted = false;
            break;
        }
        if (m_upperCase) {
            if (n == 1) {
                ch[0] = static_cast<char>(std::toupper(lead));
            } else if (n == 2 && lead == 0xC3) {
                // Latin letters with accents (á é í ó ú ñ ü ...): their capitals
                // lie 0x20 below, all but the division sign.
                const auto second = static_cast<unsigned char>(ch[1]);
                if (second >= 0xA0 && second <= 0xBE && second != 0xB7) ch[1] = static_cast<char>(second - 0x20);
            }
        }
        accepted += ch;
        ++characters;
    }
    setText(accepted);
    return allAccepted;
}

void TextBox::setDigitsOnly(bool on) {
    if (on == m_digitsOnly) return;
    m_digitsOnly = on;
    notifyView();
}

void TextBox::setUpperCase(bool on) {
    if (on == m_upperCase) return;
    m_upperCase = on;
    notifyView();
}

CheckBox::CheckBox(std::string name, std::string caption, int value)
    : Control(ControlKind::CheckBox, std::move(name)), m_value(value) {
    initCaption(std::move(caption));
}

void CheckBox::setValue(int value) {
    if (value < 0 || value > 2) value = value ? 1 : 0;
    if (value == m_value) return;
    m_value = value;
    notifyView();
    if (onClick) onClick();
}

void CheckBox::click() {
    if (!enabled()) return;
    setValue(m_value == 0 ? 1 : 0);
}

OptionButton* OptionGroup::selected() const {
    for (OptionButton* b : m_buttons)
        if (b->value()) return b;
    return nullptr;
}

OptionButton::OptionButton(std::string name, std::string caption, OptionGroup& group)
    : Control(ControlKind::OptionButton, std::move(name)), m_group(group) {
    initCaption(std::move(caption));
    group.add(this);
}

void OptionButton::setValue(bool value) {
    if (value) {
        for (OptionButton* other : m_group.buttons()) {
            if (other != this && other->m_value) {
                other->m_value = false;
                other->notifyView();
            }
        }
        if (m_value) return;
        m_value = true;
        notifyView();
        if (onClick) onClick();
        return;
    }
    if (!m_value) return;
    m_value = false;
    notifyView();
}

Label::Label(std::string name, std::string caption, Rgb fore) : Control(ControlKind::Label, std::move(name)), m_fore(fore) {
    initCaption(std::move(caption));
}

void Label::setForeColor(Rgb color) {
    if (color == m_fore) return;
    m_fore = color;
    notifyView();
}

void Label::setBackColor(Rgb color) {
    if (m_hasBack && color == m_back) return;
    m_back = color;
    m_hasBack = true;
    notifyView();
}

void Label::set(const std::string& caption, Rgb fore) {
    if (caption == this->caption() && fore == m_fore) return;
    m_fore = fore;
    if (caption != this->caption())
        setCaption(caption);  // notifies
    else
        notifyView();
}

Slider::Slider(std::string name, int min, int max, int value, Orientation orientation)
    : Control(ControlKind::Slider, std::move(name)), m_min(min), m_max(max), m_value(std::clamp(value, min, max)),
      m_orientation(orientation) {}

void Slider::setValue(int value) {
    value = std::clamp(value, m_min, std::max(m_min, m_max));
    if (value == m_value) return;
    m_value = value;
    notifyView();
    if (onChange) onChange();
}

void Slider::setRange(int min, int max) {
    if (max < min) max = min;
    if (min == m_min && max == m_max) return;
    m_min = min;
    m_max = max;
    notifyView();
    if (m_value < min || m_value > max) setValue(std::clamp(m_value, min, max));
}

Button::Button(std::string name, std::string caption) : Control(ControlKind::Button, std::move(name)) {
    initCaption(std::move(caption));
}

ComboBox::ComboBox(std::string name) : Control(ControlKind::ComboBox, std::move(name)) {}

void ComboBox::setItems(std::vector<std::string> items) {
    m_items = std::move(items);
    notifyView();
}

void ComboBox::setText(const std::string& text) {
    if (text == m_text) return;
    m_text = text;
    notifyView();
    if (onChange) onChange();
}

int ComboBox::listIndex() const {
    const auto it = std::find(m_items.begin(), m_items.end(), m_text);
    return it == m_items.end() ? -1 : static_cast<int>(it - m_items.begin());
}

LineLog::LineLog(std::string name, size_t maxLines)
    : Control(ControlKind::LineLog, std::move(name)), m_maxLines(std::max<size_t>(1, maxLines)) {}

void LineLog::append(std::string_view text) {
    size_t start = 0;
    while (start < text.size()) {
        const size_t brk = text.find_first_of("\r\n", start);
        if (brk == std::string_view::npos) {
            addLine(withoutControlCharacters(text.substr(start), kReplacementCharacter));
            break;
        }
        addLine(withoutControlCharacters(text.substr(start, brk - start), kReplacementCharacter));
        start = brk + (text.compare(brk, 2, "\r\n") == 0 ? 2 : 1);
    }
    if (text.empty()) addLine({});
    notifyView();
}

void LineLog::addLine(std::string line) {
    if (line.size() > kMaxLineBytes) {
        size_t cut = kMaxLineBytes;
        // Never cut a character in two.
        while (cut > 0 && (static_cast<unsigned char>(line[cut]) & 0xC0) == 0x80) --cut;
        line.resize(cut);
        line += "...";
    }
    if (m_lines.size() == m_maxLines) m_lines.pop_front();
    m_lines.push_back(std::move(line));
    ++m_appended;
}

void LineLog::clear() {
    if (m_lines.empty() && m_appended == 0) return;
    m_lines.clear();
    m_appended = 0;
    ++m_clears;
    notifyView();
}

std::string LineLog::text() const {
    std::string all;
    size_t size = 0;
    for (const std::string& line : m_lines) size += line.size() + 2;
    all.reserve(size);
    for (const std::string& line : m_lines) {
        all += line;
        all += "\r\n";
    }
    return all;
}

Container::Container(std::string name, ContainerKind kind, std::string caption, int columns)
    : Control(ControlKind::Container, std::move(name)), m_containerKind(kind), m_columns(columns) {
    initCaption(std::move(caption));
}

void Container::addChild(Control* child) {
    child->m_parent = this;
    m_children.push_back(child);
}

}  // namespace mv
