// marrowvane: the desktop suite by default (simulated host and its console),
// or `--headless --scenario FILE` to run a scenario in virtual time.
#include <iostream>
#include <string>
#include <vector>

#include "app/command_line.h"
#include "app/headless_runner.h"
#include "core/program.h"
#ifdef MV_HAVE_GUI
#include "gui/gui_main.h"
#endif

namespace {

void version(std::ostream& out) {
    const mv::ProductInfo p = mv::builtProduct();
    out << "marrowvane (" << p.name << ") " << p.versionText() << "\n"
        << "Copyright (C) 2026 The Marrowvane developers.\n"
           "License GPLv3+: GNU GPL version 3 or later <https://gnu.org/licenses/gpl.html>.\n"
           "This is free software: you are free to change and redistribute it.\n"
           "There is NO WARRANTY, to the extent permitted by law.\n";
}

}  // namespace

int main(int argc, char** argv) {
    const mv::CommandLine line = mv::parseCommandLine(std::vector<std::string>(argv, argv + argc));
    switch (line.action) {
        case mv::CommandLine::Action::Help: std::cout << mv::usageText(); return 0;
        case mv::CommandLine::Action::Version: version(std::cout); return 0;
        case mv::CommandLine::Action::Bad:
            // One line on standard error and exit status 2, as command-line tools do.
            std::cerr << "marrowvane: " << line.error << " (try 'marrowvane --help')\n";
            return 2;
        case mv::CommandLine::Action::Run: break;
    }
    if (line.headless) return mv::runHeadless(line.options);
#ifdef MV_HAVE_GUI
    if (line.options.automationHost) {
        std::cerr << "marrowvane: the desktop suite runs on the simulated host; --host com needs --headless\n";
        return 2;
    }
    return mv::runGui(line.qtArguments, line.options);
#else
    std::cerr << "marrowvane: this build has no desktop front end; use --headless --scenario FILE\n";
    return 1;
#endif
}
