#include "app/command_line.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "core/settings_store.h"

namespace mv {
namespace {

// Qt's own options, as QApplication and QGuiApplication read them. Qt takes
// each with one dash or two, and a value either as the next argument or
// after '='.
struct QtOption {
    std::string_view name;
    bool takesValue;
};
constexpr std::array<QtOption, 20> kQtOptions{{
    {"style", true},        {"stylesheet", true},    {"platform", true},    {"platformpluginpath", true},
    {"platformtheme", true}, {"plugin", true},       {"qwindowgeometry", true}, {"qwindowicon", true},
    {"qwindowtitle", true}, {"session", true},       {"display", true},     {"geometry", true},
    {"qmljsdebugger", true}, {"fontengine", true},   {"dialogs", true},     {"reverse", false},
    {"widgetcount", false}, {"nograb", false},       {"dograb", false},     {"sync", false},
}};

const QtOption* qtOption(std::string_view arg, bool& hasInlineValue) {
    if (arg.size() < 2 || arg[0] != '-') return nullptr;
    std::string_view name = arg.substr(arg[1] == '-' ? 2 : 1);
    const size_t eq = name.find('=');
    hasInlineValue = eq != std::string_view::npos;
    if (hasInlineValue) name = name.substr(0, eq);
    for (const QtOption& o : kQtOptions)
        if (o.name == name) return (hasInlineValue && !o.takesValue) ? nullptr : &o;
    return nullptr;
}

}  // namespace

std::string usageText() {
    return "Usage: marrowvane [OPTION]... [QT-OPTION]...\n"
           "       marrowvane --headless --scenario FILE [OPTION]...\n"
           "Automate an EchoLink node: talking clock, idents, courtesy tones, beacons,\n"
           "DTMF control and a chat monitor, against the simulated host.\n"
           "\n"
           "  --settings-dir DIR   keep the settings files in DIR\n"
           "  --log FILE           write the event log to FILE (headless default: standard\n"
           "                       output; the desktop appends); SIGUSR1 reopens it\n"
           "  --log-queries        log host queries and repeated commands too\n"
           "  --record FILE.wav    record the air (and the transmitter in FILE.wav.tx)\n"
           "  --seed N             seed the random choices (virtual time default: 1)\n"
           "  --host simulated|com the simulated node, or the host program through its\n"
           "                       automation interface (Windows builds; their default)\n"
           "  --show WINDOW,...    show these windows at start-up, by name (player,\n"
           "                       idents, tts, courtesy, dtmf, keypad, history,\n"
           "                       messages, about), or all of them (--show all)\n"
           "  --headless           run a scenario without a window; needs --scenario\n"
           "  --scenario FILE      the scenario to run (headless only)\n"
           "  --realtime           run it on the real clock and sound device (headless only)\n"
           "  --until DATE-TIME    stop the run at YYYY-MM-DDTHH:MM:SS local time at the\n"
           "                       latest (headless only)\n"
           "  --help               show this help and exit\n"
           "  --version            show the version and exit\n"
           "\n"
           "The desktop suite also takes the options every Qt program takes, such as\n"
           "-style NAME, -platform NAME, -reverse or -stylesheet FILE (see qt6options(7)).\n"
           "\n"
           "SIGINT, SIGTERM and SIGHUP release the transmitter and end the run in order.\n"
           "Exit status: 0 done (also when ended by one of those signals), 1 could not\n"
           "run or a fatal error, 2 bad command line or scenario.\n"
           "Settings: $XDG_CONFIG_HOME/marrowvane/ (usually ~/.config/marrowvane/).\n"
           "Home page: <https://marrowvane.example.org/>\n";
}

CommandLine parseCommandLine(const std::vector<std::string>& arguments) {
    CommandLine line;
#ifdef _WIN32
    line.options.automationHost = true;
#endif
    line.qtArguments.push_back(arguments.empty() ? std::string("marrowvane") : arguments[0]);
    auto bad = [&line](std::string why) {
        line.action = CommandLine::Action::Bad;
        line.error = std::move(why);
        return line;
    };
    for (size_t i = 1; i < arguments.size(); ++i) {
        const std::string& arg = arguments[i];
        bool missing = false;
        auto value = [&](const char* name) -> std::string {
            if (i + 1 >= arguments.size()) {
                missing = true;
                line.error = std::string("option '") + name + "' needs a value";
                return {};
            }
            return arguments[++i];
        };
        bool inlineValue = false;
        if (arg == "--headless") line.headless = true;
        else if (arg == "--scenario") line.options.scenarioPath = value("--scenario");
        else if (arg == "--log") line.options.logPath = value("--log");
        else if (arg == "--record") line.options.recordPath = value("--record");
        else if (arg == "--settings-dir") line.options.settingsDir = value("--settings-dir");
        else if (arg == "--realtime") line.options.realtime = true;
        else if (arg == "--log-queries") line.options.logQueries = true;
        else if (arg == "--show") {
            const std::string v = value("--show");
            for (size_t from = 0; !missing && from <= v.size();) {
                const size_t comma = std::min(v.find(',', from), v.size());
                if (comma > from) line.options.showWindows.push_back(v.substr(from, comma - from));
                from = comma + 1;
            }
            if (!missing && line.options.showWindows.empty()) return bad("--show needs window names, such as player,idents or all");
        }
        else if (arg == "--host") {
            const std::string v = value("--host");
            if (!missing && v != "simulated" && v != "com") return bad("--host takes simulated or com, not '" + v + "'");
            line.options.automationHost = v == "com";
        }
        else if (arg == "--seed") {
            const std::string v = value("--seed");
            long long n = 0;
            if (!missing && (!setting::parseWhole(v, n) || n < 0)) return bad("--seed takes a whole number, not '" + v + "'");
            line.options.seed = static_cast<uint64_t>(n);
        } else if (arg == "--until") {
            // As the log writes times (2026-11-23T06:00:00), or with a blank.
            const std::string given = value("--until");
            std::string v = given;
            if (v.size() > 10 && v[10] == 'T') v[10] = ' ';
            const auto t = LocalDateTime::parse(v);
            if (!missing && (!t || t->year < 1970 || t->year > 9999))
                return bad("--until takes a local date and time, YYYY-MM-DDTHH:MM:SS, not '" + given + "'");
            line.options.until = t;
        } else if (arg == "--version") {
            line.action = CommandLine::Action::Version;
            return line;
        } else if (arg == "--help" || arg == "-h") {
            line.action = CommandLine::Action::Help;
            return line;
        } else if (const QtOption* qt = qtOption(arg, inlineValue)) {
            line.qtArguments.push_back(arg);
            if (qt->takesValue && !inlineValue) {
                if (i + 1 >= arguments.size()) return bad("option '" + arg + "' needs a value");
                line.qtArguments.push_back(arguments[++i]);
            }
        } else {
            return bad("unrecognized option '" + arg + "'");
        }
        if (missing) return bad(line.error);
    }
    if (line.headless && line.options.scenarioPath.empty()) return bad("--headless needs --scenario FILE");
    // A desktop run has no scenario to time, and a headless one no Qt: an
    // option that would do nothing is refused rather than ignored.
    if (!line.headless && (!line.options.scenarioPath.empty() || line.options.realtime || line.options.until))
        return bad("--scenario, --realtime and --until go with --headless");
    if (line.headless && !line.options.showWindows.empty())
        return bad("--show goes with the desktop suite; a scenario shows windows with its show lines");
    if (line.headless && line.qtArguments.size() > 1)
        return bad("'" + line.qtArguments[1] + "' is an option of the desktop suite, not of --headless");
    return line;
}

}  // namespace mv
