#pragma once
// The twenty rows under "Archivos Seleccionados": each row's number, its
// selection mark (Option1 to Option20, all in one group), its file field
// (named by its settings key), a "Buscar" button and a play button. The rows
// only hold and show the files; what the buttons do is the window's.
#include <array>
#include <functional>

#include "core/window.h"

namespace mv {

class FileRows {
public:
    static constexpr int kCount = 20;
    // The settings key, and control name, of row `row`'s file field (1..20).
    static const char* fileKey(int row);

    struct Actions {
        std::function<void(int row)> play;    // the row's play button
        std::function<void(int row)> browse;  // its "Buscar"
    };
    // From the window's build(); the controls live and die with the window's.
    void build(WindowParts parts, Container& area, Actions actions);

    TextBox& file(int row) const { return *m_files.at(static_cast<size_t>(row - 1)); }
    OptionButton& mark(int row) const { return *m_marks.at(static_cast<size_t>(row - 1)); }
    // What the operator is asked for when a row has no usable file. Row 9's
    // message has always been spelled with a capital "A".
    static const char* selectFileMessage(int row);

private:
    std::array<TextBox*, kCount> m_files{};
    std::array<OptionButton*, kCount> m_marks{};
};

}  // namespace mv
