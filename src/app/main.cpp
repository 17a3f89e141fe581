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
    out << "usage: marrowvane [--settings-dir DIR] [--record FILE.wav]\n"
           "       marrowvane --headless --scenario FILE [--log FILE] [--record FILE.wav]\n"
           "                  [--settings-dir DIR] [--realtime] [--seed N]\n"
           "       marrowvane --version\n";
}

}  // namespace

int main(int argc, char** argv) {
    mv::HeadlessOptions options;
    bool headless = false;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        auto value = [&](const char* name) -> std::string {
            if (i + 1 >= argc) {
                std::cerr << "marrowvane: " << name << " needs a value\n";
                usage(std::cerr);
                std::exit(2);
            }
            return argv[++i];
        };
        if (arg == "--headless") headless = true;
        else if (arg == "--scenario") options.scenarioPath = value("--scenario");
        else if (arg == "--log") options.logPath = value("--log");
        else if (arg == "--record") options.recordPath = value("--record");
        else if (arg == "--settings-dir") options.settingsDir = value("--settings-dir");
        else if (arg == "--realtime") options.realtime = true;
        else if (arg == "--seed") {
            long long n = 0;
            const std::string v = value("--seed");
            if (!mv::setting::parseWhole(v, n) || n < 0) {
                std::cerr << "marrowvane: --seed takes a whole number, not " << v << '\n';
                return 2;
            }
            options.seed = static_cast<uint64_t>(n);
        }
        else if (arg == "--version") {
            const mv::ProductInfo p = mv::builtProduct();
            std::cout << p.name << " " << p.versionText() << '\n';
            return 0;
        } else if (arg == "--help" || arg == "-h") {
            usage(std::cout);
            return 0;
        } else {
            std::cerr << "marrowvane: unknown option " << arg << '\n';
            usage(std::cerr);
            return 2;
        }
    }
    if (headless) {
        if (options.scenarioPath.empty()) {
            std::cerr << "marrowvane: --headless needs --scenario FILE\n";
            return 2;
        }
        return mv::runHeadless(options);
    }
#ifdef MV_HAVE_GUI
    return mv::runGui(argc, argv, options);
#else
    std::cerr << "marrowvane: this build has no desktop front end; use --headless --scenario FILE\n";
    return 1;
#endif
}
