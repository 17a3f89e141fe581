// marrowvane: the desktop suite by default (simulated host and its console),
// or `--headless --scenario FILE` to run a scenario in virtual time.
#include <cstring>
#include <iostream>
#include <string>

#include "app/headless_runner.h"
#include "core/program.h"
#include "core/settings_store.h"
#ifdef MV_HAVE_GUI
#include "gui/gui_main.h"
#endif

namespace {

void usage(std::ostream& out) {
    out << "Usage: marrowvane [OPTION]...\n"
           "       marrowvane --headless --scenario FILE [OPTION]...\n"
           "Automate an EchoLink node: talking clock, idents, courtesy tones, beacons,\n"
           "DTMF control and a chat monitor, against the simulated host.\n"
           "\n"
           "With no --headless, opens the desktop suite (it also takes Qt's own options,\n"
           "such as -style NAME).\n"
           "\n"
           "  --settings-dir DIR   keep the settings files in DIR\n"
           "  --record FILE.wav    record the air (and the transmitter in FILE.wav.tx)\n"
           "  --headless           run a scenario without a window; needs --scenario\n"
           "  --scenario FILE      the scenario to run\n"
           "  --log FILE           write the event log to FILE (default: standard output);\n"
           "                       SIGUSR1 reopens it, for log rotation\n"
           "  --log-queries        log host queries and repeated commands too\n"
           "  --realtime           run the scenario on the real clock and sound device\n"
           "  --seed N             seed the random choices (virtual time default: 1)\n"
           "  --until DATE-TIME    stop the run at YYYY-MM-DDTHH:MM:SS (local) at the latest\n"
           "  --help               show this help and exit\n"
           "  --version            show the version and exit\n"
           "\n"
           "Exit status: 0 done, 1 could not run, 2 bad command line or scenario.\n"
           "Settings: $XDG_CONFIG_HOME/marrowvane/ (usually ~/.config/marrowvane/).\n"
           "Home page: <https://marrowvane.example.org/>\n";
}

void version(std::ostream& out) {
    const mv::ProductInfo p = mv::builtProduct();
    out << "marrowvane (" << p.name << ") " << p.versionText() << "\n"
        << "Copyright (C) 2026 The Marrowvane developers.\n"
           "License GPLv3+: GNU GPL version 3 or later <https://gnu.org/licenses/gpl.html>.\n"
           "This is free software: you are free to change and redistribute it.\n"
           "There is NO WARRANTY, to the extent permitted by law.\n";
}

// One line on standard error and exit status 2, as command-line tools do.
[[noreturn]] void badCommandLine(const std::string& message) {
    std::cerr << "marrowvane: " << message << " (try 'marrowvane --help')\n";
    std::exit(2);
}

}  // namespace

int main(int argc, char** argv) {
    mv::HeadlessOptions options;
    bool headless = false;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        auto value = [&](const char* name) -> std::string {
            if (i + 1 >= argc) badCommandLine(std::string("option '") + name + "' needs a value");
            return argv[++i];
        };
        if (arg == "--headless") headless = true;
        else if (arg == "--scenario") options.scenarioPath = value("--scenario");
        else if (arg == "--log") options.logPath = value("--log");
        else if (arg == "--record") options.recordPath = value("--record");
        else if (arg == "--settings-dir") options.settingsDir = value("--settings-dir");
        else if (arg == "--realtime") options.realtime = true;
        else if (arg == "--log-queries") options.logQueries = true;
        else if (arg == "--seed") {
            long long n = 0;
            const std::string v = value("--seed");
            if (!mv::setting::parseWhole(v, n) || n < 0) badCommandLine("--seed takes a whole number, not '" + v + "'");
            options.seed = static_cast<uint64_t>(n);
        } else if (arg == "--until") {
            // As the log writes times (2026-11-23T06:00:00), or with a blank.
            const std::string given = value("--until");
            std::string v = given;
            if (v.size() > 10 && v[10] == 'T') v[10] = ' ';
            const auto t = mv::LocalDateTime::parse(v);
            if (!t || t->year < 1970 || t->year > 9999)
                badCommandLine("--until takes a local date and time, YYYY-MM-DDTHH:MM:SS, not '" + given + "'");
            options.until = t;
        } else if (arg == "--version") {
            version(std::cout);
            return 0;
        } else if (arg == "--help" || arg == "-h") {
            usage(std::cout);
            return 0;
        } else {
            badCommandLine("unrecognized option '" + arg + "'");
        }
    }
    if (headless) {
        if (options.scenarioPath.empty()) badCommandLine("--headless needs --scenario FILE");
        return mv::runHeadless(options);
    }
#ifdef MV_HAVE_GUI
    return mv::runGui(argc, argv, options);
#else
    std::cerr << "marrowvane: this build has no desktop front end; use --headless --scenario FILE\n";
    return 1;
#endif
}
