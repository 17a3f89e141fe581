// The command line: the suite's own options, Qt's set aside for Qt, and the
// desktop suite really starting with a Qt option.
#include "app/command_line.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <thread>

#include "support/child_process.h"
#include "support/read_text.h"
#include "support/temp_dir.h"

namespace mv {
namespace {

CommandLine parse(std::vector<std::string> args) {
    args.insert(args.begin(), "marrowvane");
    return parseCommandLine(args);
}

TEST(CommandLineTest, QtOptionsAreSetAsideWithTheirValuesInEveryFormQtReads) {
    struct Case {
        std::vector<std::string> args;
        std::vector<std::string> forQt;
    };
    const Case cases[] = {
        {{"-style", "Fusion"}, {"marrowvane", "-style", "Fusion"}},
        {{"-style=Fusion"}, {"marrowvane", "-style=Fusion"}},
        {{"--style", "Fusion", "--reverse"}, {"marrowvane", "--style", "Fusion", "--reverse"}},
        {{"-platform", "offscreen", "--settings-dir", "/tmp/x", "-reverse"},
         {"marrowvane", "-platform", "offscreen", "-reverse"}},
        // A value that looks like an option still belongs to the Qt option before it.
        {{"-qwindowtitle", "--log", "-stylesheet", "a.qss"}, {"marrowvane", "-qwindowtitle", "--log", "-stylesheet", "a.qss"}},
    };
    for (const Case& c : cases) {
        const CommandLine line = parse(c.args);
        EXPECT_EQ(line.action, CommandLine::Action::Run) << c.args[0] << ": " << line.error;
        EXPECT_EQ(line.qtArguments, c.forQt) << c.args[0];
    }
    EXPECT_EQ(parse({"-platform", "offscreen", "--settings-dir", "/tmp/x"}).options.settingsDir, "/tmp/x");
}

TEST(CommandLineTest, WhatNeitherTheSuiteNorQtTakesIsRefusedWithOneLine) {
    struct Case {
        std::vector<std::string> args;
        std::string error;
    };
    const Case cases[] = {
        {{"-stlye", "Fusion"}, "unrecognized option '-stlye'"},
        {{"--colour"}, "unrecognized option '--colour'"},
        {{"scenario.scn"}, "unrecognized option 'scenario.scn'"},
        {{"-reverse=yes"}, "unrecognized option '-reverse=yes'"},
        {{"-style"}, "option '-style' needs a value"},
        {{"--log"}, "option '--log' needs a value"},
        {{"--seed", "-3"}, "--seed takes a whole number, not '-3'"},
        {{"--headless"}, "--headless needs --scenario FILE"},
        {{"--host", "echolink"}, "--host takes simulated or com, not 'echolink'"},
        {{"--until", "tomorrow"}, "--until takes a local date and time, YYYY-MM-DDTHH:MM:SS, not 'tomorrow'"},
        // A desktop run has no scenario to stop or to pace; Qt's options mean nothing headless.
        {{"--until", "2026-11-23T06:00:00"}, "--scenario, --realtime and --until go with --headless"},
        {{"--realtime"}, "--scenario, --realtime and --until go with --headless"},
        {{"--headless", "--scenario", "a.scn", "-style", "Fusion"},
         "'-style' is an option of the desktop suite, not of --headless"},
        {{"--show"}, "option '--show' needs a value"},
        {{"--show", ",,"}, "--show needs window names, such as player,idents or all"},
        {{"--headless", "--scenario", "a.scn", "--show", "all"},
         "--show goes with the desktop suite; a scenario shows windows with its show lines"},
    };
    for (const Case& c : cases) {
        const CommandLine line = parse(c.args);
        EXPECT_EQ(line.action, CommandLine::Action::Bad) << c.args[0];
        EXPECT_EQ(line.error, c.error);
    }
}

TEST(CommandLineTest, HelpAndVersionWinWhereverTheyStandAndHelpNamesBothKindsOfOption) {
    EXPECT_EQ(parse({"-style", "Fusion", "--help"}).action, CommandLine::Action::Help);
    EXPECT_EQ(parse({"-h"}).action, CommandLine::Action::Help);
    EXPECT_EQ(parse({"--version", "--bogus"}).action, CommandLine::Action::Version);
    const CommandLine headless = parse({"--headless", "--scenario", "a.scn", "--seed", "7", "--log-queries"});
    EXPECT_TRUE(headless.headless);
    EXPECT_EQ(headless.options.scenarioPath, "a.scn");
    EXPECT_EQ(headless.options.seed, 7u);
    EXPECT_TRUE(headless.options.logQueries);
    EXPECT_FALSE(headless.options.automationHost) << "the simulated node is the default off Windows";
    EXPECT_TRUE(parse({"--host", "com"}).options.automationHost);
    EXPECT_FALSE(parse({"--host", "com", "--host", "simulated"}).options.automationHost);
    // The log's way of writing a time, and the scenario's.
    for (const char* at : {"2026-11-23T06:00:00", "2026-11-23 06:00:00"})
        EXPECT_EQ(parse({"--until", at}).options.until, (LocalDateTime{2026, 11, 23, 6, 0, 0, 0})) << at;
    EXPECT_EQ(parse({"--show", ",player,,idents"}).options.showWindows, (std::vector<std::string>{"player", "idents"}));
    const std::string help = usageText();
    for (const char* named :
         {"--settings-dir", "--record", "--headless", "--log-queries", "--show WINDOW", "-style NAME", "-platform"})
        EXPECT_NE(help.find(named), std::string::npos) << named;
}

TEST(CommandLineTest, TheDesktopSuiteStartsWithAQtStyleShowsWhatItIsToldAndEndsReleasedOnTerm) {
    test::TempDir dir;
    const auto log = dir.path() / "run.jsonl";
    const pid_t pid = test::spawn({MV_BINARY, "-style", "Fusion", "-platform", "offscreen", "--settings-dir",
                                   (dir.path() / "settings").string(), "--log", log.string(), "--show",
                                   "nowhere,all"},
                                  dir.path() / "run.err");
    // The hub shows once the whole start-up is done, then every other window.
    const char* const windows[] = {"hub", "messages", "idents", "tts", "about", "keypad", "courtesy"};
    auto notYetShown = [&log, &windows] {
        const std::string text = test::readText(log);
        for (const char* window : windows)
            if (text.find("\"window\":\"" + std::string(window) + "\",\"op\":\"show\"") == std::string::npos)
                return std::string(window);
        return std::string();
    };
    // The unknown name is reported once every window is shown (each builds
    // its widgets as it shows), a moment after the last one's log line.
    auto warned = [&dir] {
        return test::readText(dir.path() / "run.err").find("there is no window called 'nowhere'") != std::string::npos;
    };
    for (int i = 0; i < 1000 && (!notYetShown().empty() || !warned()); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    ASSERT_EQ(notYetShown(), "") << test::readText(dir.path() / "run.err");
    EXPECT_TRUE(warned()) << test::readText(dir.path() / "run.err");
    ::kill(pid, SIGTERM);
    EXPECT_EQ(test::waitFor(pid), 0);
    const std::string text = test::readText(log);
    EXPECT_NE(text.find("\"call\":\"SetPTT\",\"args\":[false]}\n{\"t\""), std::string::npos);
    EXPECT_NE(text.rfind("\"kind\":\"end\""), std::string::npos);
    EXPECT_EQ(test::readText(dir.path() / "run.err").find("unknown option"), std::string::npos);
}

}  // namespace
}  // namespace mv
