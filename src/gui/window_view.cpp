#include "gui/window_view.h"

#include <QBoxLayout>
#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QSlider>
#include <QTabWidget>
#include <QValidator>
#include <optional>

#include "core/controls.h"
#include "core/window.h"
#include "gui/caption_colours.h"
#include "gui/option_group_keys.h"

namespace mv {
namespace {

QString qs(const std::string& text) { return QString::fromStdString(text); }

// The engine keeps Windows line ends in multi-line texts; the editor shows '\n'.
QString shownMultiLine(const std::string& text) {
    QString s = qs(text);
    s.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    return s;
}

// The digits-only and upper-case styles as the operator meets them while
// typing: a refused character never appears, a letter appears in upper case.
class TextStyleValidator final : public QValidator {
public:
    TextStyleValidator(const TextBox& box, QObject* parent) : QValidator(parent), m_box(box) {}
    State validate(QString& input, int&) const override {
        if (m_box.digitsOnly())
            for (QChar c : input)
                if (c < QLatin1Char('0') || c > QLatin1Char('9')) return Invalid;
        if (m_box.upperCase()) input = input.toUpper();
        return Acceptable;
    }

private:
    const TextBox& m_box;
};

// Check and option buttons whose state only the engine changes: a click asks
// the engine, and the engine's answer comes back through the view listener.
class EngineCheckBox final : public QCheckBox {
public:
    using QCheckBox::QCheckBox;

protected:
    void nextCheckState() override {}
};

class EngineRadioButton final : public QRadioButton {
public:
    using QRadioButton::QRadioButton;

protected:
    void nextCheckState() override {}
};

// A label the engine rewrites while the node idles (a clock, a countdown, a
// lamp). A new text that fits where the layout put the label repaints the
// label alone: pinned to its size, it asks nothing of the layout, whereas any
// label's new text otherwise lays out its whole window again and a tab
// control around it repaints every page pixel, several times a second.
// A text that does not fit unpins it, and the layout makes room as usual.
class SteadyLabel final : public QLabel {
public:
    using QLabel::QLabel;

    void showText(const QString& text) {
        if (text == this->text()) return;
        if (isVisible() && minimumSize() != size()) setFixedSize(size());
        setText(text);
        const QSize wanted = QLabel::sizeHint();
        if (wanted.width() > width() || wanted.height() > height()) {
            setMinimumSize(0, 0);
            setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
        }
    }
};

// What a log's view has taken in so far. Shared by the listener and sync(),
// which hold separate copies of the refresh.
struct ShownLines {
    uint64_t clears = ~uint64_t{0};
    uint64_t appended = 0;
    size_t inView = 0;
};

// The newest line in view, the caret after it (unless the operator is
// selecting text), so the view is still there when it is shown later.
void followNewest(QPlainTextEdit& edit) {
    QTextCursor cursor = edit.textCursor();
    if (!cursor.hasSelection()) {
        cursor.movePosition(QTextCursor::End);
        edit.setTextCursor(cursor);
    }
    edit.verticalScrollBar()->setValue(edit.verticalScrollBar()->maximum());
}

void appendLine(QPlainTextEdit& edit, const std::string& line, ShownLines& shown) {
    const QString text = QString::fromStdString(line);
    if (shown.inView == 0) {
        // The first line goes into the editor's one empty block.
        edit.setPlainText(text);
    } else if (edit.document()->isEmpty()) {
        // The view holds one empty line, which appendPlainText would write into.
        QTextCursor end(edit.document());
        end.movePosition(QTextCursor::End);
        end.insertBlock();
        end.insertText(text);
    } else {
        edit.appendPlainText(text);
    }
    shown.inView = std::min(shown.inView + 1, static_cast<size_t>(edit.maximumBlockCount()));
}

// Brings a log's view up to date. New lines are appended one by one (the
// editor drops its oldest block itself at the bound), so a long log costs the
// same per line as a short one; only a clear, or more new lines than the log
// keeps, rebuilds the view. The view follows the newest line unless the
// operator has scrolled back to read.
void showLines(QPlainTextEdit& edit, const LineLog& log, ShownLines& shown) {
    const auto& lines = log.lines();
    QScrollBar& bar = *edit.verticalScrollBar();
    const bool following = bar.value() >= bar.maximum();
    const uint64_t fresh = log.appendedLines() - shown.appended;
    if (shown.clears != log.clears() || log.appendedLines() < shown.appended || fresh > lines.size()) {
        QStringList all;
        all.reserve(static_cast<int>(lines.size()));
        for (const std::string& line : lines) all << QString::fromStdString(line);
        edit.setPlainText(all.join(QLatin1Char('\n')));
        shown = {log.clears(), log.appendedLines(), lines.size()};
        followNewest(edit);
        return;
    }
    if (fresh == 0) return;
    for (size_t i = lines.size() - fresh; i < lines.size(); ++i) appendLine(edit, lines[i], shown);
    shown.appended = log.appendedLines();
    if (following) followNewest(edit);
}

Qt::CheckState checkState(int value) {
    return value == 1 ? Qt::Checked : value == 2 ? Qt::PartiallyChecked : Qt::Unchecked;
}

void syncCommon(const Control& c, QWidget& w) {
    if (w.isEnabled() != c.enabled()) w.setEnabled(c.enabled());
    // A tab control shows and hides its own pages.
    const bool tabPage = c.kind() == ControlKind::Container &&
                         static_cast<const Container&>(c).containerKind() == ContainerKind::TabPage;
    if (!tabPage && w.isHidden() == c.visible()) w.setVisible(c.visible());
    const QString tip = qs(c.toolTip());
    if (w.toolTip() != tip) w.setToolTip(tip);
}

template <class W>
void syncCaption(W& w, const Control& c) {
    const QString text = literalCaption(c.caption());
    if (w.text() != text) w.setText(text);
}

// The shortest a slider's track is drawn, in pixels.
constexpr int kSliderMinimumLength = 150;

void tighten(QLayout& layout) {
    layout.setContentsMargins(4, 4, 4, 4);
    layout.setSpacing(4);
}

}  // namespace

QString literalCaption(const std::string& caption) {
    QString s = qs(caption);
    s.replace(QLatin1Char('&'), QStringLiteral("&&"));
    return s;
}

WindowView::WindowView(Window& window, QWidget& host, Post post) : m_window(window), m_post(std::move(post)) {
    m_optionKeys = std::make_unique<OptionGroupKeys>(
        [this](OptionButton& option) { operate(option, [&option] { option.click(); }); });
    auto* layout = new QVBoxLayout(&host);
    tighten(*layout);
    if (Container* root = window.root()) layout->addWidget(build(*root, &host));
}

WindowView::~WindowView() {
    *m_alive = false;
    for (const auto& [control, widget] : m_widgets) const_cast<Control*>(control)->setViewListener(nullptr);
}

QWidget* WindowView::widgetFor(const Control& control) const {
    const auto it = m_widgets.find(&control);
    return it == m_widgets.end() ? nullptr : it->second;
}

void WindowView::sync(Control& control) {
    const auto it = m_refresh.find(&control);
    if (it != m_refresh.end()) it->second();
}

void WindowView::bind(Control& control, QWidget* widget, std::function<void()> refresh) {
    m_widgets[&control] = widget;
    auto full = [&control, widget, refresh = std::move(refresh)] {
        refresh();
        syncCommon(control, *widget);
    };
    full();
    m_refresh[&control] = full;
    control.setViewListener([full](Control&) { full(); });
}

void WindowView::operate(Control& control, std::function<void()> action) {
    std::weak_ptr<bool> alive = m_alive;
    m_post([this, alive, &control, action = std::move(action)] {
        if (alive.expired()) return;
        action();
        // The engine may have refused or reshaped the change (a disabled
        // control, a filtered character): show what it holds now.
        if (!alive.expired()) sync(control);
    });
}

template <class C>
void WindowView::clickThrough(QAbstractButton* widget, C& control) {
    QObject::connect(widget, &QAbstractButton::clicked, [this, &control] {
        operate(control, [&control] { control.click(); });
    });
}

QWidget* WindowView::build(Control& control, QWidget* parent) {
    switch (control.kind()) {
        case ControlKind::Container: return buildContainer(static_cast<Container&>(control), parent);

        case ControlKind::TextBox: {
            auto& box = static_cast<TextBox&>(control);
            if (box.multiLine()) {
                auto* edit = new QPlainTextEdit(parent);
                edit->setReadOnly(box.readOnly());
                bind(box, edit, [edit, &box] {
                    const QString text = shownMultiLine(box.text());
                    if (edit->toPlainText() != text) {
                        const QSignalBlocker quiet(edit);
                        edit->setPlainText(text);
                    }
                    if (edit->isReadOnly() != box.readOnly()) edit->setReadOnly(box.readOnly());
                });
                QObject::connect(edit, &QPlainTextEdit::textChanged, [this, edit, &box] {
                    const std::string typed = edit->toPlainText().toStdString();
                    operate(box, [&box, typed] { box.typeText(typed); });
                });
                return edit;
            }
            auto* edit = new QLineEdit(parent);
            edit->setValidator(new TextStyleValidator(box, edit));
            auto focusRequests = std::make_shared<uint64_t>(box.focusRequests());
            bind(box, edit, [edit, &box, focusRequests] {
                const QString text = qs(box.text());
                if (edit->text() != text) {
                    const QSignalBlocker quiet(edit);
                    const int cursor = edit->cursorPosition();
                    edit->setText(text);
                    // Someone typing in the field keeps their place.
                    if (edit->hasFocus()) edit->setCursorPosition(std::min<int>(cursor, static_cast<int>(text.size())));
                }
                const int maxLength = box.maxLength() > 0 ? box.maxLength() : 32767;
                if (edit->maxLength() != maxLength) edit->setMaxLength(maxLength);
                if (edit->isReadOnly() != box.readOnly()) edit->setReadOnly(box.readOnly());
                if (*focusRequests != box.focusRequests()) {
                    *focusRequests = box.focusRequests();
                    edit->setFocus(Qt::OtherFocusReason);
                }
            });
            QObject::connect(edit, &QLineEdit::textEdited, [this, &box](const QString& text) {
                const std::string typed = text.toStdString();
                operate(box, [&box, typed] { box.typeText(typed); });
            });
            // Queued behind the typing above, so the engine has the whole text first.
            QObject::connect(edit, &QLineEdit::returnPressed, [this, &box] {
                operate(box, [&box] { box.pressEnter(); });
            });
            return edit;
        }

        case ControlKind::CheckBox: {
            auto& check = static_cast<CheckBox&>(control);
            auto* widget = new EngineCheckBox(parent);
            widget->setTristate(true);
            bind(check, widget, [widget, &check] {
                syncCaption(*widget, check);
                if (widget->checkState() != checkState(check.value())) widget->setCheckState(checkState(check.value()));
            });
            clickThrough(widget, check);
            return widget;
        }

        case ControlKind::OptionButton: {
            auto& option = static_cast<OptionButton&>(control);
            auto* widget = new EngineRadioButton(parent);
            widget->setAutoExclusive(false);
            bind(option, widget, [widget, &option, keys = m_optionKeys.get()] {
                syncCaption(*widget, option);
                if (widget->isChecked() != option.value()) widget->setChecked(option.value());
                keys->refresh(option);
            });
            clickThrough(widget, option);
            m_optionKeys->add(option, *widget);
            return widget;
        }

        case ControlKind::Label: {
            auto& label = static_cast<Label&>(control);
            auto* widget = new SteadyLabel(parent);
            widget->setTextFormat(Qt::PlainText);
            std::optional<Rgb> shownFore;
            std::optional<Rgb> shownBack;
            bind(label, widget, [widget, &label, shownFore, shownBack]() mutable {
                widget->showText(qs(label.caption()));
                const std::optional<Rgb> back =
                    label.hasBackColor() ? std::optional<Rgb>(label.backColor()) : std::nullopt;
                if (shownFore == label.foreColor() && shownBack == back) return;
                shownFore = label.foreColor();
                shownBack = back;
                paintCaption(*widget, label.foreColor(), back);
            });
            return widget;
        }

        case ControlKind::Slider: {
            auto& slider = static_cast<Slider&>(control);
            const bool vertical = slider.orientation() == Orientation::Vertical;
            auto* frame = new QWidget(parent);
            auto* widget = new QSlider(vertical ? Qt::Vertical : Qt::Horizontal, frame);
            widget->setTickPosition(vertical ? QSlider::TicksRight : QSlider::TicksBelow);
            // However tight the window, a slider stays long enough to set by hand.
            if (vertical)
                widget->setMinimumHeight(kSliderMinimumLength * 2 / 3);
            else
                widget->setMinimumWidth(kSliderMinimumLength);
            QBoxLayout* layout = vertical ? static_cast<QBoxLayout*>(new QHBoxLayout(frame))
                                          : static_cast<QBoxLayout*>(new QVBoxLayout(frame));
            layout->setContentsMargins(0, 0, 0, 0);
            layout->setSpacing(0);
            layout->addWidget(widget);
            if (!slider.scaleLabels.empty()) {
                auto* scale = new QWidget(frame);
                QBoxLayout* scaleLayout = vertical ? static_cast<QBoxLayout*>(new QVBoxLayout(scale))
                                                   : static_cast<QBoxLayout*>(new QHBoxLayout(scale));
                scaleLayout->setContentsMargins(0, 0, 0, 0);
                // Listed as drawn: left to right, or top (the maximum) to bottom.
                const auto& labels = slider.scaleLabels;
                for (size_t i = 0; i < labels.size(); ++i) {
                    if (i > 0) scaleLayout->addStretch();
                    scaleLayout->addWidget(new QLabel(qs(labels[i]), scale));
                }
                layout->addWidget(scale);
            }
            bind(slider, frame, [widget, &slider] {
                const QSignalBlocker quiet(widget);
                if (widget->minimum() != slider.min() || widget->maximum() != slider.max())
                    widget->setRange(slider.min(), slider.max());
                if (widget->singleStep() != slider.smallChange()) widget->setSingleStep(slider.smallChange());
                if (widget->pageStep() != slider.largeChange()) {
                    widget->setPageStep(slider.largeChange());
                    widget->setTickInterval(slider.largeChange());
                }
                if (widget->value() != slider.value()) widget->setValue(slider.value());
            });
            QObject::connect(widget, &QSlider::valueChanged, [this, &slider](int value) {
                operate(slider, [&slider, value] { slider.setValue(value); });
            });
            return frame;
        }

        case ControlKind::Button: {
            auto& button = static_cast<Button&>(control);
            auto* widget = new QPushButton(parent);
            widget->setAutoDefault(false);
            bind(button, widget, [widget, &button] { syncCaption(*widget, button); });
            clickThrough(widget, button);
            return widget;
        }

        case ControlKind::LineLog: {
            auto& log = static_cast<LineLog&>(control);
            // A plain-text editor: nothing a line holds is read as markup.
            auto* edit = new QPlainTextEdit(parent);
            edit->setReadOnly(true);
            edit->setUndoRedoEnabled(false);
            edit->setMaximumBlockCount(static_cast<int>(std::min<size_t>(log.maxLines(), 1u << 30)));
            auto shown = std::make_shared<ShownLines>();
            bind(log, edit, [edit, &log, shown] { showLines(*edit, log, *shown); });
            return edit;
        }

        case ControlKind::ComboBox: {
            auto& combo = static_cast<ComboBox&>(control);
            auto* widget = new QComboBox(parent);
            widget->setEditable(true);
            widget->setInsertPolicy(QComboBox::NoInsert);
            bind(combo, widget, [widget, &combo] {
                const QSignalBlocker quiet(widget);
                const auto& items = combo.items();
                bool same = widget->count() == static_cast<int>(items.size());
                for (int i = 0; same && i < widget->count(); ++i) same = widget->itemText(i) == qs(items[static_cast<size_t>(i)]);
                if (!same) {
                    widget->clear();
                    for (const std::string& item : items) widget->addItem(qs(item));
                }
                const int index = combo.listIndex();
                if (index >= 0 && widget->currentIndex() != index) widget->setCurrentIndex(index);
                if (widget->currentText() != qs(combo.text())) widget->setEditText(qs(combo.text()));
            });
            auto chosen = [this, &combo](const QString& text) {
                const std::string value = text.toStdString();
                operate(combo, [&combo, value] { combo.setText(value); });
            };
            QObject::connect(widget, &QComboBox::textActivated, chosen);
            QObject::connect(widget->lineEdit(), &QLineEdit::textEdited, chosen);
            return widget;
        }
    }
    return new QWidget(parent);
}

QWidget* WindowView::buildContainer(Container& container, QWidget* parent) {
    const auto& children = container.children();
    switch (container.containerKind()) {
        case ContainerKind::Tabs: {
            auto* tabs = new QTabWidget(parent);
            for (Control* child : children) {
                QWidget* page = build(*child, tabs);
                const int index = tabs->addTab(page, literalCaption(child->caption()));
                // A page's caption is its tab's text, so the page's listener renames the tab.
                if (child->kind() == ControlKind::Container) {
                    auto previous = m_refresh[child];
                    const auto refresh = [tabs, page, index, child, previous] {
                        if (previous) previous();
                        const QString text = literalCaption(child->caption());
                        if (tabs->tabText(index) != text) tabs->setTabText(index, text);
                        tabs->setTabEnabled(index, child->enabled());
                    };
                    m_refresh[child] = refresh;
                    child->setViewListener([refresh](Control&) { refresh(); });
                }
            }
            bind(container, tabs, [] {});
            return tabs;
        }
        case ContainerKind::Frame: {
            auto* frame = new QGroupBox(parent);
            // A frame given columns lays its children out row by row (label, field).
            if (container.columns() > 0) {
                auto* layout = new QGridLayout(frame);
                tighten(*layout);
                const int columns = container.columns();
                for (size_t i = 0; i < children.size(); ++i)
                    layout->addWidget(build(*children[i], frame), static_cast<int>(i) / columns,
                                      static_cast<int>(i) % columns);
            } else {
                auto* layout = new QVBoxLayout(frame);
                tighten(*layout);
                for (Control* child : children) layout->addWidget(build(*child, frame));
            }
            bind(container, frame, [frame, &container] {
                const QString title = literalCaption(container.caption());
                if (frame->title() != title) frame->setTitle(title);
            });
            return frame;
        }
        case ContainerKind::Grid: {
            auto* grid = new QWidget(parent);
            auto* layout = new QGridLayout(grid);
            tighten(*layout);
            const int columns = std::max(1, container.columns());
            for (size_t i = 0; i < children.size(); ++i) {
                const int column = static_cast<int>(i) % columns;
                layout->addWidget(build(*children[i], grid), static_cast<int>(i) / columns, column);
                // Text fields take the width the grid has to spare (file paths, captions);
                // labels and buttons keep the width their text needs.
                if (children[i]->kind() == ControlKind::TextBox) layout->setColumnStretch(column, 1);
            }
            bind(container, grid, [] {});
            return grid;
        }
        case ContainerKind::Row:
        case ContainerKind::Column:
        case ContainerKind::TabPage: {
            auto* box = new QWidget(parent);
            QBoxLayout* layout = container.containerKind() == ContainerKind::Row ? static_cast<QBoxLayout*>(new QHBoxLayout(box))
                                                                               : static_cast<QBoxLayout*>(new QVBoxLayout(box));
            tighten(*layout);
            for (Control* child : children) layout->addWidget(build(*child, box));
            // Pages keep their contents at the top however tall the tab control grows.
            if (container.containerKind() == ContainerKind::TabPage) layout->addStretch();
            bind(container, box, [] {});
            return box;
        }
    }
    return new QWidget(parent);
}

}  // namespace mv
