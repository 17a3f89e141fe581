#pragma once
// Reads marrowvane's command line: the suite's own GNU-style options, and
// the options every Qt program takes (-style, -platform, -reverse ...), which
// are set aside untouched for the desktop front end to hand to Qt.
#include <string>
#include <vector>

#include "app/headless_runner.h"

namespace mv {

struct CommandLine {
    enum class Action { Run, Help, Version, Bad };
    Action action = Action::Run;
    bool headless = false;
    HeadlessOptions options;
    // The program name followed by every Qt option with its value, in the
    // order given, as Qt expects its argv.
    std::vector<std::string> qtArguments;
    // Why the line was refused (Action::Bad), for a one-line message.
    std::string error;
};

CommandLine parseCommandLine(const std::vector<std::string>& arguments);

// The --help text; it names the suite's options and says where Qt's are.
std::string usageText();

}  // namespace mv
