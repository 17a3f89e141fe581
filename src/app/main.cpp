// marrowvane: the desktop suite by default (simulated host and its console),
// or `--headless --scenario FILE` to run a scenario in virtual time.
#include <iostream>
#include <string>
#include <vector>

#include "app/command_line.h"
#include "app/headless_runner.h"
#include "core/program.h"
#ifdef MV_HAVE_GUI
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>
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

#ifdef MV_HAVE_GUI
// The desktop is a program of its own (marrowvane-desktop, beside this one in
// a build tree, in the private program folder once installed), so a headless
// node never maps Qt, X and their libraries: about 8 MB of its resident
// memory. It takes over this process (same process number, same signals) with
// the same command line.
int runDesktop(char** argv) {
    std::string beside;
    char self[PATH_MAX];
    const ssize_t n = readlink("/proc/self/exe", self, sizeof self - 1);
    if (n > 0) {
        const std::string exe(self, static_cast<size_t>(n));
        beside = exe.substr(0, exe.rfind('/') + 1) + "marrowvane-desktop";
    }
    for (const std::string& path : {beside, std::string(MV_DESKTOP_INSTALLED)}) {
        if (path.empty() || access(path.c_str(), X_OK) != 0) continue;
        execv(path.c_str(), argv);
        std::cerr << "marrowvane: cannot start the desktop suite " << path << ": " << std::strerror(errno) << '\n';
        return 1;
    }
    std::cerr << "marrowvane: this installation has no desktop suite (" << MV_DESKTOP_INSTALLED
              << " is missing); --headless --scenario FILE still runs\n";
    return 1;
}
#endif

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
    return runDesktop(argv);
#else
    std::cerr << "marrowvane: this build has no desktop front end; use --headless --scenario FILE\n";
    return 1;
#endif
}
