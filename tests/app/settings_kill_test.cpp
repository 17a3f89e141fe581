// A node that loses power in the middle of "Guardar": the real program saves
// over and over and is killed with SIGKILL at random moments. Every time, the
// hub's settings file holds one whole save, read the same by the store's
// rules and by Windows' rules, and the temporary file a kill can leave is
// gone once the program has started again.
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <fstream>
#include <iostream>
#include <random>
#include <set>
#include <thread>

#include "core/settings_text.h"
#include "support/child_process.h"
#include "support/read_text.h"
#include "support/temp_dir.h"
#include "support/windows_profile.h"

namespace {

namespace fs = std::filesystem;

constexpr int kKills = 120;
// Far more saves than a run lives through before its kill.
constexpr int kSavesPerRun = 3000;
constexpr size_t kHubKeys = 71;

std::string runMark(int run) { return "R" + std::to_string(run) + "-"; }
std::string marker(int run, int save) { return runMark(run) + std::to_string(save); }

// Each save changes a key at the start, one in the middle and one near the
// end of the hub's write order, all to the same mark.
void writeSavingScenario(const fs::path& path, int run) {
    std::ofstream out(path);
    out << "start 2026-11-22 13:59:50\n";
    for (int save = 1; save <= kSavesPerRun; ++save)
        out << "+1ms set hub.TEXT37 \"" << marker(run, save) << "\"\n"
            << "+0ms set hub.DTMFTIME " << run * 100000 + save << "\n"
            << "+0ms set hub.TEXT36 \"" << marker(run, save) << "\"\n"
            << "+0ms click hub.\"Guardar\"\n";
}

// The file is one whole save of run `run`: every key once, every mark alike,
// and Windows reads the marks as the store does.
::testing::AssertionResult isOneWholeSave(const std::string& bytes, int run) {
    size_t keys = 0;
    std::set<std::string> names;
    for (size_t at = 0; at < bytes.size();) {
        const size_t end = bytes.find("\r\n", at);
        if (end == std::string::npos) return ::testing::AssertionFailure() << "the last line is cut:\n" << bytes;
        const std::string line = bytes.substr(at, end - at);
        const size_t eq = line.find('=');
        if (eq != std::string::npos) {
            ++keys;
            names.insert(line.substr(0, eq));
        }
        at = end + 2;
    }
    if (keys != kHubKeys || names.size() != kHubKeys)
        return ::testing::AssertionFailure() << keys << " key lines, " << names.size() << " keys:\n" << bytes;
    const mv::SettingsText ours(bytes);
    const mv::test::WindowsProfile windows(bytes);
    const std::string mark = ours.value("SETTINGS", "TEXT37", "", 256);
    if (mark.rfind(runMark(run), 0) != 0)
        return ::testing::AssertionFailure() << "TEXT37 is \"" << mark << "\", not a save of run " << run;
    const int save = std::stoi(mark.substr(mark.find('-') + 1));
    for (const char* key : {"TEXT37", "TEXT36", "DTMFTIME"}) {
        const std::string want = std::string(key) == "DTMFTIME" ? std::to_string(run * 100000 + save) : mark;
        if (ours.value("SETTINGS", key, "", 256) != want || windows.get("SETTINGS", key, "") != want)
            return ::testing::AssertionFailure() << key << " is not from the same save as TEXT37 (" << mark << "):\n"
                                                 << bytes;
    }
    return ::testing::AssertionSuccess();
}

std::set<std::string> namesIn(const fs::path& folder) {
    std::set<std::string> names;
    for (const auto& e : fs::directory_iterator(folder)) names.insert(e.path().filename().string());
    return names;
}

TEST(SettingsKillTest, EveryKillLeavesOneWholeSaveAndTheNextStartClearsTheRest) {
    mv::test::TempDir dir;
    const fs::path settings = dir.path() / "settings";
    const fs::path file = settings / "Quillasp2.ini";
    const fs::path scenario = dir.path() / "saves.scn";
    const std::string bin = MV_BINARY;
    auto run = [&](const fs::path& scn) {
        return mv::test::spawn({bin, "--headless", "--scenario", scn.string(), "--log",
                                (dir.path() / "run.jsonl").string(), "--settings-dir", settings.string()},
                               dir.path() / "run.err");
    };
    const std::set<std::string> allowed = {"Quillasp2.ini", "Quillasp2.ini.tmp", "marrowvane.lock"};
    std::mt19937 random(20261122);
    int caughtMidSave = 0;
    for (int kill = 0; kill < kKills; ++kill) {
        writeSavingScenario(scenario, kill);
        const pid_t pid = run(scenario);
        // Once this run has saved at least once, kill it at a random moment
        // within the next few saves.
        const std::string mine = "TEXT37=" + runMark(kill);
        bool saving = false;
        for (int i = 0; i < 20000 && !saving; ++i) {
            saving = mv::test::readText(file).find(mine) != std::string::npos;
            if (!saving) std::this_thread::sleep_for(std::chrono::microseconds(500));
        }
        if (!saving) ::kill(pid, SIGKILL);
        ASSERT_TRUE(saving) << "run " << kill << " never saved: " << mv::test::readText(dir.path() / "run.err");
        std::this_thread::sleep_for(std::chrono::microseconds(std::uniform_int_distribution<int>(0, 20000)(random)));
        ::kill(pid, SIGKILL);
        ASSERT_EQ(mv::test::waitFor(pid), -1) << "run " << kill << " ended before its kill";

        caughtMidSave += fs::exists(settings / "Quillasp2.ini.tmp");
        ASSERT_TRUE(isOneWholeSave(mv::test::readText(file), kill)) << "after kill " << kill;
        for (const std::string& name : namesIn(settings)) ASSERT_TRUE(allowed.count(name)) << name;
    }

    // A start after the last kill clears what it left.
    std::ofstream(scenario) << "start 2026-11-22 13:59:50\n+1s end\n";
    ASSERT_EQ(mv::test::waitFor(run(scenario)), 0) << mv::test::readText(dir.path() / "run.err");
    EXPECT_EQ(namesIn(settings), (std::set<std::string>{"Quillasp2.ini", "marrowvane.lock"}));
    EXPECT_TRUE(isOneWholeSave(mv::test::readText(file), kKills - 1));

    std::cout << kKills << " kills, " << caughtMidSave << " of them between creating and renaming the temporary file\n";
    EXPECT_GT(caughtMidSave, 0) << "no kill landed inside a save, so this run proved little";
}

}  // namespace
