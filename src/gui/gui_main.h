#pragma once
// The desktop suite: the hub and the host console on the real clock.
#include "app/headless_runner.h"

namespace mv {

// Runs until the program ends; returns the process exit status.
int runGui(int argc, char** argv, const HeadlessOptions& options);

}  // namespace mv
