#include "core/errors.h"

namespace mv {

bool ignoreErrors(const std::function<void()>& step) {
    try {
        step();
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

void ignoreErrors(std::initializer_list<std::function<void()>> steps) {
    for (const auto& step : steps) ignoreErrors(step);
}

}  // namespace mv
