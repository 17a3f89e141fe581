// The operator monkey: its watches see the faults they are for, a day of
// random operating per seed breaks none of the node's rules, and what it
// writes down replays the same run headless.
//
// Many seeds: MV_MONKEY_SEEDS=1-200 (and MV_MONKEY_DAYS=N) on this test; a
// failing seed's scenario is written to MV_MONKEY_OUT (default: the working
// directory) as monkey-seed-N.scn.
#include "operator_monkey.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>

#include "app/headless_runner.h"
#include "core/clock.h"
#include "support/child_process.h"
#include "support/long_run.h"
#include "support/read_text.h"
#include "support/temp_dir.h"

namespace mv::test {
namespace {

TEST(OperatorMonkeyTest, TheLogCheckTellsARecordFromAnythingElse) {
    const char* const good[] = {
        R"({"t":"2026-11-22T14:00:00.000","kind":"host","window":"hub","call":"SetPTT","args":[true]})",
        R"({"a":[1,-2.5,3e4,{"b":null},[]],"c":"\u202e \"q\" caf\u00e9 )"
        "\xC3\xA9\xF0\x9F\x93\xBB\"}",
        "{}",
    };
    const char* const bad[] = {
        R"({"t":"2026-11-22T14:00:00.000","kind":"host")",          // cut short
        R"({"t":"x"} trailing)",                                    // something after it
        "{\"t\":\"a\x01\"}",                                        // raw control character
        "{\"t\":\"caf\xE9\"}",                                      // Latin-1, not UTF-8
        "{\"t\":\"\xC0\xAF\"}",                                     // overlong slash
        "{\"t\":\"\xED\xA0\x80\"}",                                 // a lone surrogate
        R"({"t":"\x41"})",                                          // no such escape
        R"({"t":01x})",                                             // no such number
        R"(["t"])",                                                 // not an object
        R"({t:1})",                                                 // key not a string
    };
    for (const char* line : good) EXPECT_TRUE(isJsonObjectLine(line)) << line;
    for (const char* line : bad) EXPECT_FALSE(isJsonObjectLine(line)) << line;
}

TEST(OperatorMonkeyTest, TheAirWatchCountsOnlyKeyedSilenceAndReportsEachStretchOnce) {
    VirtualClock clock({2026, 11, 22, 14, 0, 0, 0});
    AirMixer mixer(clock);
    std::vector<int64_t> reportsAtMs;
    KeyedSilenceWatch watch(30000, [&](int64_t frame) { reportsAtMs.push_back(frame / kAirFramesPerMs); });
    mixer.setTap(&watch);
    auto advance = [&](int64_t ms) {
        clock.advanceBy(ms);
        mixer.catchUp();
    };

    advance(120000);  // unkeyed silence is no fault
    mixer.setTransmitter(true, 0);
    advance(29990);
    EXPECT_TRUE(reportsAtMs.empty()) << "under 30 s is allowed";
    // A DTMF burst on the air ends the silent stretch.
    mixer.addTone(clock.monotonicMs(), 100, 697, 1209);
    advance(29000);
    EXPECT_TRUE(reportsAtMs.empty());
    EXPECT_EQ(watch.longestMs(), 29990);
    advance(40000);
    ASSERT_EQ(reportsAtMs.size(), 1u) << "one report for one stretch, however long";
    // 30 s after the burst (whose fade ends on a few silent samples).
    EXPECT_NEAR(reportsAtMs[0], 120000 + 29990 + 100 + 30000, 3);
    mixer.setTransmitter(false, 0);
    advance(1000);
    mixer.setTransmitter(true, 0);
    advance(31000);
    EXPECT_EQ(reportsAtMs.size(), 2u) << "a new keying is a new stretch";
}

std::vector<uint64_t> seedsToRun() {
    const char* given = std::getenv("MV_MONKEY_SEEDS");
    std::string text = given ? given : "1-3";
    uint64_t first = 0, last = 0;
    char dash = 0;
    std::istringstream in(text);
    in >> first;
    if (!(in >> dash >> last) || dash != '-') last = first;
    std::vector<uint64_t> seeds;
    for (uint64_t s = first; s <= last; ++s) seeds.push_back(s);
    return seeds;
}

TEST(OperatorMonkeyTest, ADayOfRandomOperatingBreaksNoneOfTheNodesRules) {
    const char* days = std::getenv("MV_MONKEY_DAYS");
    const int64_t durationMs = days ? std::max(1, std::atoi(days)) * 24 * 3600 * 1000LL : test::longRunMs(24 * 3600 * 1000LL);
    const char* out = std::getenv("MV_MONKEY_OUT");
    uint64_t actions = 0, events = 0, failing = 0;
    for (uint64_t seed : seedsToRun()) {
        TempDir dir;
        MonkeyOptions o;
        o.seed = seed;
        // Each seed starts at another hour, so the clock's quarters and the
        // days' edges fall at other moments of the operating.
        o.start = LocalDateTime{2026, 11, 22, static_cast<int>(seed % 24), static_cast<int>(seed * 7 % 60), 0, 0};
        o.durationMs = durationMs;
        o.settingsDir = dir.path() / "settings";
        const MonkeyReport r = runOperatorMonkey(o);
        actions += r.operatorActions;
        events += r.hostEvents;
        std::cout << "seed " << seed << ": " << r.operatorActions << " operator actions, " << r.hostEvents
                  << " host events, " << r.logLines << " log lines, longest keyed silence " << r.longestKeyedSilenceMs
                  << " ms, " << r.failures.size() << " faults\n";
        // The day really happened: a day has thousands of both.
        EXPECT_GT(r.operatorActions, durationMs / o.meanGapMs / 4) << seed;
        EXPECT_GT(r.hostEvents, durationMs / o.meanGapMs / 4) << seed;
        if (r.failures.empty()) continue;
        ++failing;
        const std::filesystem::path file =
            std::filesystem::path(out ? out : ".") / ("monkey-seed-" + std::to_string(seed) + ".scn");
        std::ofstream(file) << r.scenario;
        std::string tail;
        for (const std::string& line : r.logTail) tail += line + "\n";
        for (const std::string& f : r.failures) ADD_FAILURE() << "seed " << seed << ": " << f;
        ADD_FAILURE() << "seed " << seed << " replays from " << std::filesystem::absolute(file) << "\nthe log's end:\n"
                      << tail;
    }
    std::cout << "all seeds: " << actions << " operator actions, " << events << " host events, " << failing
              << " seeds with faults\n";
}

uint64_t logDigest(const std::string& text) {
    uint64_t digest = kLogDigestStart;
    for (char c : text) digest = addToLogDigest(digest, c);
    return digest;
}

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

TEST(OperatorMonkeyTest, WhatItWritesDownReplaysTheSameRunHeadless) {
    TempDir dir;
    MonkeyOptions o;
    o.seed = 42;
    o.durationMs = 3 * 3600 * 1000LL;
    o.meanGapMs = 5000;
    o.settingsDir = dir.path() / "monkey-settings";
    const MonkeyReport r = runOperatorMonkey(o);
    ASSERT_TRUE(r.failures.empty()) << r.failures.front();
    ASSERT_GT(r.operatorActions, 500u);

    {
        // Replayed as an operator would, by the program in a process of its
        // own: the speech library carries a little state from one text to the
        // next within a process, so a second run in this one would speak some
        // texts a few milliseconds longer or shorter.
        const auto scn = dir.path() / "day.scn";
        std::ofstream(scn) << r.scenario;
        const pid_t replay = spawn({MV_BINARY, "--headless", "--seed", std::to_string(o.seed), "--scenario", scn.string(),
                                    "--log", (dir.path() / "replay.jsonl").string(), "--settings-dir",
                                    (dir.path() / "replay-settings").string()},
                                   dir.path() / "replay.err");
        ASSERT_EQ(waitFor(replay), 0) << readText(dir.path() / "replay.err");
    }
    const std::string replay = readText(dir.path() / "replay.jsonl");
    EXPECT_EQ(linesOf(replay).size(), r.logLines);
    EXPECT_EQ(logDigest(replay), r.logDigest) << "the replay's log differs from the monkey's";
}

}  // namespace
}  // namespace mv::test
