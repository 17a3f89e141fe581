#include "core/module_surfaces.h"

namespace mv {

bool showsPttOn(const Program& program, std::string_view windowName) {
    const Window* w = program.window(windowName);
    if (!w || !w->isLoaded()) return false;
    const Control* ptt = w->control("PTT");
    return ptt && ptt->caption() == kPttOn;
}

}  // namespace mv
