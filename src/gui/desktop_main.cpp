// marrowvane-desktop: the desktop suite, started by `marrowvane` in its own
// process with the same command line when it is not asked to run headless.
#include <iostream>
#include <string>
#include <vector>

#include "app/command_line.h"
#include "gui/gui_main.h"

int main(int argc, char** argv) {
    const mv::CommandLine line = mv::parseCommandLine(std::vector<std::string>(argv, argv + argc));
    if (line.action != mv::CommandLine::Action::Run || line.headless) {
        std::cerr << "marrowvane-desktop: start it as marrowvane\n";
        return 2;
    }
    return mv::runGui(line.qtArguments, line.options);
}
