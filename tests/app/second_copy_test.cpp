// Two real processes on one settings folder: the second leaves the first alone.
#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <sstream>
#include <thread>

#include "support/child_process.h"
#include "support/read_text.h"
#include "support/temp_dir.h"

namespace {

using mv::test::spawn;
using mv::test::waitFor;

TEST(SecondCopyTest, ExitsAtOnceWithoutTouchingTheRunningNode) {
    mv::test::TempDir dir;
    const auto settings = dir.path() / "settings";
    const auto scenario = dir.path() / "long.scn";
    std::ofstream(scenario) << "start 2026-11-22 14:00:00\n+3s chat \"x /ver/\"\n+1s end\n";
    const std::string bin = MV_BINARY;
    const pid_t first = spawn({bin, "--headless", "--realtime", "--scenario", scenario.string(), "--log",
                               (dir.path() / "first.jsonl").string(), "--settings-dir", settings.string()},
                              dir.path() / "first.err");
    // Wait until the first copy holds the lock (it writes its process number there).
    for (int i = 0; i < 200 && mv::test::readText(settings / "marrowvane.lock").empty(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    ASSERT_FALSE(mv::test::readText(settings / "marrowvane.lock").empty());

    const auto t0 = std::chrono::steady_clock::now();
    const pid_t second = spawn({bin, "--headless", "--scenario", scenario.string(), "--log",
                                (dir.path() / "second.jsonl").string(), "--settings-dir", settings.string()},
                               dir.path() / "second.err");
    EXPECT_EQ(waitFor(second), 1);
    EXPECT_LT(std::chrono::steady_clock::now() - t0, std::chrono::seconds(2)) << "the second copy must not wait";
    EXPECT_NE(mv::test::readText(dir.path() / "second.err").find("already running"), std::string::npos);
    EXPECT_EQ(mv::test::readText(dir.path() / "second.jsonl"), "") << "the second copy loaded nothing and called nothing";

    EXPECT_EQ(waitFor(first), 0);
    const std::string log = mv::test::readText(dir.path() / "first.jsonl");
    EXPECT_NE(log.find("\"call\":\"SendChatText\""), std::string::npos);
    EXPECT_NE(log.find("\"kind\":\"end\""), std::string::npos);
}

}  // namespace
