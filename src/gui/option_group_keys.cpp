#include "gui/option_group_keys.h"

#include <QAbstractButton>
#include <QKeyEvent>

#include "core/controls.h"

namespace mv {
namespace {

bool choosable(const OptionButton& o) { return o.enabled() && o.visible(); }

}  // namespace

OptionGroupKeys::OptionGroupKeys(std::function<void(OptionButton&)> choose) : m_choose(std::move(choose)) {}

void OptionGroupKeys::add(OptionButton& option, QAbstractButton& widget) {
    const OptionGroup* group = &option.group();
    m_groups[group].push_back({&option, &widget});
    m_groupOf[&widget] = group;
    widget.installEventFilter(this);
    refresh(option);
}

void OptionGroupKeys::refresh(const OptionButton& option) {
    const auto it = m_groups.find(&option.group());
    if (it == m_groups.end()) return;
    const std::vector<Member>& members = it->second;
    const Member* stop = nullptr;
    for (const Member& m : members)
        if (m.option->value() && choosable(*m.option)) stop = &m;
    for (const Member& m : members)
        if (!stop && choosable(*m.option)) stop = &m;
    for (const Member& m : members) {
        const Qt::FocusPolicy policy = &m == stop ? Qt::StrongFocus : Qt::ClickFocus;
        if (m.widget->focusPolicy() != policy) m.widget->setFocusPolicy(policy);
    }
}

bool OptionGroupKeys::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::KeyPress) return false;
    const int key = static_cast<QKeyEvent*>(event)->key();
    int step = 0;
    if (key == Qt::Key_Down || key == Qt::Key_Right) step = 1;
    if (key == Qt::Key_Up || key == Qt::Key_Left) step = -1;
    if (step == 0) return false;
    const auto group = m_groupOf.find(watched);
    if (group == m_groupOf.end()) return false;
    const std::vector<Member>& members = m_groups[group->second];
    const int count = static_cast<int>(members.size());
    int at = 0;
    while (at < count && members[static_cast<size_t>(at)].widget != watched) ++at;
    // The next button that can be chosen, round the group.
    for (int i = 1; i < count; ++i) {
        const Member& next = members[static_cast<size_t>(((at + step * i) % count + count) % count)];
        if (!choosable(*next.option)) continue;
        next.widget->setFocus(Qt::TabFocusReason);
        m_choose(*next.option);
        break;
    }
    return true;
}

}  // namespace mv
