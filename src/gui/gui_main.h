#pragma once
// The desktop suite: the hub and the host console on the real clock.
#include <string>
#include <vector>

#include "app/headless_runner.h"

namespace mv {

// Runs until the program ends; returns the process exit status. `qtArguments`
// is the program name and the Qt options of the command line, for Qt.
int runGui(const std::vector<std::string>& qtArguments, const HeadlessOptions& options);

}  // namespace mv
