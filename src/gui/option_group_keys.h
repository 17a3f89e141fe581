#pragma once
// Keyboard habits of option buttons as operators know them: one Tab stop per
// group (the chosen button, or the first that can be chosen), and the arrow
// keys moving to the next or previous button of the group and choosing it.
#include <QObject>
#include <functional>
#include <unordered_map>
#include <vector>

class QAbstractButton;

namespace mv {

class OptionButton;
class OptionGroup;

class OptionGroupKeys final : public QObject {
public:
    // `choose` asks the engine to choose an option, as a click would.
    explicit OptionGroupKeys(std::function<void(OptionButton&)> choose);

    void add(OptionButton& option, QAbstractButton& widget);
    // The group's Tab stop follows its choice and what can be chosen.
    void refresh(const OptionButton& option);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct Member {
        OptionButton* option;
        QAbstractButton* widget;
    };
    std::function<void(OptionButton&)> m_choose;
    std::unordered_map<const OptionGroup*, std::vector<Member>> m_groups;
    std::unordered_map<const QObject*, const OptionGroup*> m_groupOf;
};

}  // namespace mv
