#pragma once
// The small "Local Hora" clock module windows carry: a label with the local
// time of day ("14:05:09"), refreshed every second by a timer that lives and
// dies with its window, and its caption label beside it.
#include <string>

#include "core/window.h"

namespace mv {

// Adds the clock (a Label named `name`) and its caption to `row`; returns the clock.
Label& addLocalTimeLabel(WindowParts parts, Container& row, const std::string& name, const std::string& caption);

}  // namespace mv
