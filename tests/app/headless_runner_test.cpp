// The headless runner as an operator uses it: a scenario file in, a log (and
// an exit status) out, and however the run ends, the transmitter released by
// the last host command.
#include "app/headless_runner.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/child_process.h"
#include "support/read_text.h"
#include "support/temp_dir.h"

namespace mv {
namespace {

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

bool has(const std::string& line, const std::string& part) { return line.find(part) != std::string::npos; }

// The last two lines of a run that ended in order: the program's release, then `end`.
void expectReleasedLast(const std::vector<std::string>& lines, const std::string& reason) {
    ASSERT_GE(lines.size(), 2u);
    EXPECT_TRUE(has(lines.back(), "\"kind\":\"end\",\"reason\":\"" + reason + "\"")) << lines.back();
    EXPECT_TRUE(has(lines[lines.size() - 2], "\"window\":\"program\",\"call\":\"SetPTT\",\"args\":[false]"))
        << lines[lines.size() - 2];
    // The program releases once, at the very end.
    for (size_t i = 0; i + 2 < lines.size(); ++i) {
        if (!has(lines[i], "\"window\":\"program\",\"call\":\"SetPTT\"")) continue;
        ADD_FAILURE() << "released before the end: " << lines[i];
    }
}

// A run of `scenario` with its log and settings folder in `dir`.
HeadlessOptions runIn(const test::TempDir& dir, const std::filesystem::path& scenario) {
    HeadlessOptions o;
    o.scenarioPath = scenario.string();
    o.logPath = (dir.path() / "log.jsonl").string();
    o.settingsDir = (dir.path() / "settings").string();
    return o;
}

TEST(HeadlessRunnerTest, ABadScenarioStopsBeforeAnythingRuns) {
    test::TempDir dir;
    const auto scn = dir.path() / "bad.scn";
    std::ofstream(scn) << "start 2026-11-22 14:00:00\n+1s rx on\n+1s bogus\n";
    HeadlessOptions o = runIn(dir, scn);
    testing::internal::CaptureStderr();
    EXPECT_EQ(runHeadless(o), 2);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("bad.scn:3: unknown verb"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(o.logPath));
    EXPECT_FALSE(std::filesystem::exists(o.settingsDir));
}

TEST(HeadlessRunnerTest, OperatorMistakesAreLoggedAndTheRunGoesOn) {
    test::TempDir dir;
    const auto scn = dir.path() / "ok.scn";
    std::ofstream(scn) << "start 2026-11-22 14:00:00\n"
                          "+1s click hub.\"No Such Button\"\n"
                          "+1s set hub.CHECK3 5\n"
                          "+1s click player.Foo\n"
                          "+1s chat \"x /ver/\"\n"
                          "+1s log hub.DTMFTIME\n"
                          "+0s log hub.CHECK3\n";
    HeadlessOptions o = runIn(dir, scn);
    EXPECT_EQ(runHeadless(o), 0);
    const std::string log = test::readText(o.logPath);
    EXPECT_NE(log.find("has no control captioned \\\"No Such Button\\\""), std::string::npos) << log;
    EXPECT_NE(log.find("a check box takes 0, 1 or 2"), std::string::npos);
    EXPECT_NE(log.find("window \\\"player\\\" has no control \\\"Foo\\\""), std::string::npos) << log;
    EXPECT_NE(log.find("\"call\":\"SendChatText\""), std::string::npos);
    // The run names its seed, and `log` reports what a control shows.
    EXPECT_NE(log.find("{\"t\":\"2026-11-22T14:00:00.000\",\"kind\":\"start\",\"seed\":1}"), std::string::npos) << log;
    EXPECT_NE(log.find("\"kind\":\"value\",\"window\":\"hub\",\"control\":\"DTMFTIME\",\"value\":\"123\""), std::string::npos);
    EXPECT_NE(log.find("\"control\":\"CHECK3\",\"value\":1}"), std::string::npos);
    EXPECT_NE(log.find("{\"t\":\"2026-11-22T14:00:06.000\",\"kind\":\"end\",\"reason\":\"scenario\"}"), std::string::npos);
}


TEST(HeadlessRunnerTest, ARunEndingInTheMiddleOfAnAnnouncementStopsItAndReleasesLast) {
    // With an `end` line, and without one (the run stops 1 s after the last line).
    for (const char* ending : {"+1s end\n", ""}) {
        SCOPED_TRACE(*ending ? "end line" : "last line's second");
        test::TempDir dir;
        const auto scn = dir.path() / "cut.scn";
        std::ofstream(scn) << "start 2026-11-22 13:59:50\n13:59:52 click hub.\"Say The Time\"\n" << ending;
        HeadlessOptions o = runIn(dir, scn);
        EXPECT_EQ(runHeadless(o), 0);
        const auto lines = linesOf(test::readText(o.logPath));
        expectReleasedLast(lines, "scenario");
        ASSERT_GE(lines.size(), 3u);
        EXPECT_TRUE(has(lines[lines.size() - 3], "\"kind\":\"media\"") && has(lines[lines.size() - 3], "\"op\":\"stop\""))
            << "the voice stops on the air first: " << lines[lines.size() - 3];
    }
}

TEST(HeadlessRunnerTest, ASignalEndsARunInVirtualTimeInOrderToo) {
    test::TempDir dir;
    const auto scn = dir.path() / "day.scn";
    std::ofstream(scn) << "start 2026-11-22 13:59:50\n+24h end\n";
    HeadlessOptions o = runIn(dir, scn);
    // Blocked here first, so raising it cannot kill the test before the run looks.
    sigset_t interrupt, previous;
    sigemptyset(&interrupt);
    sigaddset(&interrupt, SIGINT);
    pthread_sigmask(SIG_BLOCK, &interrupt, &previous);
    std::raise(SIGINT);
    EXPECT_EQ(runHeadless(o), 0);
    pthread_sigmask(SIG_SETMASK, &previous, nullptr);
    const auto lines = linesOf(test::readText(o.logPath));
    expectReleasedLast(lines, "stopped by SIGINT");
    EXPECT_EQ(lines.back().rfind("{\"t\":\"2026-11-22T13:59:50.000\"", 0), 0u) << "not a day later: " << lines.back();
}

TEST(HeadlessRunnerTest, UntilStopsARunEarlierThanItsScenarioAndMustBeAfterItsStart) {
    test::TempDir dir;
    const auto scn = dir.path() / "week.scn";
    std::ofstream(scn) << "start 2026-11-22 13:59:50\n14:00:30 chat \"x /ver/\"\n14:20:00 chat \"x /ver/\"\n+168h end\n";
    HeadlessOptions o = runIn(dir, scn);
    o.until = LocalDateTime{2026, 11, 22, 14, 10, 0, 0};
    EXPECT_EQ(runHeadless(o), 0);
    const auto lines = linesOf(test::readText(o.logPath));
    expectReleasedLast(lines, "until");
    EXPECT_EQ(lines.back().rfind("{\"t\":\"2026-11-22T14:10:00.000\"", 0), 0u) << lines.back();
    size_t replies = 0;
    for (const auto& line : lines) replies += has(line, "\"call\":\"SendChatText\"");
    EXPECT_EQ(replies, 1u) << "the line after the limit never ran";

    std::filesystem::remove_all(dir.path() / "settings");
    std::filesystem::remove(o.logPath);
    o.until = LocalDateTime{2026, 11, 22, 13, 59, 50, 0};
    testing::internal::CaptureStderr();
    EXPECT_EQ(runHeadless(o), 2);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("--until 2026-11-22T13:59:50 is not after the run's start"),
              std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(o.logPath));
}

TEST(HeadlessRunnerTest, SighupInRealTimeWhileKeyedReleasesAndExitsWithStatusZero) {
    test::TempDir dir;
    const auto scn = dir.path() / "long.scn";
    std::ofstream(scn) << "start 2026-11-22 13:59:50\n+0ms click hub.\"Say The Time\"\n+1m end\n";
    int out[2];
    ASSERT_EQ(::pipe(out), 0);
    const std::string bin = MV_BINARY;
    const std::vector<std::string> args = {bin, "--headless", "--realtime", "--scenario", scn.string(), "--settings-dir",
                                           (dir.path() / "settings").string()};
    const pid_t pid = test::spawn(args, {}, out[1]);
    ::close(out[1]);
    // The log comes down the pipe line by line; the signal goes once the
    // transmitter is keyed, and the rest is read to the end of the run.
    std::string log;
    bool signalled = false;
    char buf[4096];
    for (ssize_t n; (n = ::read(out[0], buf, sizeof buf)) > 0;) {
        log.append(buf, static_cast<size_t>(n));
        if (!signalled && has(log, "\"call\":\"SetPTT\",\"args\":[true]")) {
            ::kill(pid, SIGHUP);
            signalled = true;
        }
    }
    ::close(out[0]);
    int status = 0;
    ::waitpid(pid, &status, 0);
    ASSERT_TRUE(signalled) << log;
    ASSERT_TRUE(WIFEXITED(status)) << "killed by signal " << (WIFSIGNALED(status) ? WTERMSIG(status) : 0);
    EXPECT_EQ(WEXITSTATUS(status), 0);
    expectReleasedLast(linesOf(log), "stopped by SIGHUP");
}

}  // namespace
}  // namespace mv
