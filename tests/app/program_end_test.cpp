// However the program ends, in the middle of an announcement: the air goes
// quiet, the last host command releases the transmitter and is logged, then
// the `end` line; nothing a handler does afterwards reaches the host.
#include "core/program.h"

#include <gtest/gtest.h>

#include <functional>
#include <sstream>

#include "app/suite.h"
#include "clock/clock_window.h"
#include "core/errors.h"
#include "support/suite_rig.h"

namespace mv {
namespace {

class ProgramEndTest : public test::SuiteRig {
protected:
    // The talking clock keyed and speaking, 1.5 s into "Say The Time".
    void startSpeaking() {
        startSuite({2026, 11, 22, 13, 59, 50, 0}, std::string(MV_TEST_VOICE_DIR) + "/");
        hub = suite->program().window("hub");
        operate([&] { static_cast<Button*>(hub->findByCaption("Say The Time"))->click(); });
        run(1500);
        ASSERT_TRUE(suite->host().pttKeyed());
    }
    std::vector<std::string> logLines() const {
        std::vector<std::string> lines;
        std::istringstream in(logText.str());
        for (std::string line; std::getline(in, line);) lines.push_back(line);
        return lines;
    }
    static bool has(const std::string& line, const std::string& part) { return line.find(part) != std::string::npos; }

    // What every end must leave behind.
    void expectEndedInOrder(const std::string& reason) {
        EXPECT_TRUE(suite->program().ended());
        EXPECT_FALSE(suite->host().pttKeyed());
        const auto& cmds = suite->host().commands();
        ASSERT_FALSE(cmds.empty());
        EXPECT_EQ(cmds.back().window, "program");
        EXPECT_EQ(cmds.back().call, "SetPTT");
        EXPECT_EQ(cmds.back().args, (std::vector<std::string>{"false"}));

        const auto lines = logLines();
        ASSERT_GE(lines.size(), 3u);
        EXPECT_TRUE(has(lines.back(), "\"kind\":\"end\",\"reason\":\"" + reason + "\"")) << lines.back();
        const std::string& release = lines[lines.size() - 2];
        EXPECT_TRUE(has(release, "\"window\":\"program\",\"call\":\"SetPTT\",\"args\":[false]")) << release;
        // The voice was stopped on the air before that release.
        size_t stop = lines.size();
        for (size_t i = 0; i + 2 < lines.size(); ++i)
            if (has(lines[i], "\"kind\":\"media\"") && has(lines[i], "\"op\":\"stop\"")) stop = i;
        EXPECT_LT(stop, lines.size() - 2) << "no media stop before the release";
        PlayerStrip& strip = static_cast<ClockWindow*>(hub)->player();
        ASSERT_TRUE(strip.hasGraph());
        EXPECT_FALSE(strip.graph()->running());
        EXPECT_EQ(hub->controlAs<Label>("PTT")->caption(), "PTT OFF");

        // Nothing afterwards reaches the host, whatever is still due.
        const size_t after = cmds.size();
        run(5000);
        EXPECT_EQ(suite->host().commands().size(), after);
    }

    Window* hub = nullptr;
};

TEST_F(ProgramEndTest, EveryWayOfEndingSilencesTheAirAndReleasesTheTransmitterLast) {
    struct Way {
        const char* name;
        std::function<void(Suite&, Window&)> act;
        const char* reason;
    };
    const std::vector<Way> ways = {
        {"host closing", [](Suite& s, Window&) { s.host().closing(); }, "host closing"},
        {"quit prompt",
         [](Suite& s, Window& w) {
             s.scriptedDialogs().queueAnswer("Yes");
             s.scheduler().post([&w] { w.closeBox(); });
         },
         "quit"},
        // Save-and-exit unkeys nothing of its own; the end releases anyway.
        {"save and exit",
         [](Suite& s, Window& w) {
             s.scheduler().post([&w] {
                 static_cast<Button*>(w.findByCaption(">>>>>>>>  Guardar y Salir  <<<<<<<<"))->click();
             });
         },
         "save and exit"},
        {"from outside (a signal)", [](Suite& s, Window&) { s.program().shutdown("stopped by SIGHUP"); },
         "stopped by SIGHUP"},
    };
    for (const Way& way : ways) {
        SCOPED_TRACE(way.name);
        logText.str("");
        startSpeaking();
        way.act(*suite, *hub);
        run(1);
        expectEndedInOrder(way.reason);
        suite.reset();
    }
}

TEST_F(ProgramEndTest, AHandlerStillWaitingWhenTheProgramEndsCannotKeyAgain) {
    startSpeaking();
    bool resumed = false;
    suite->scheduler().post([&] {
        int polls = 0;
        // A keyed wait, during which the program is told to end.
        suite->scheduler().blockUntil(
            [&] {
                if (++polls == 100) suite->program().shutdown("stopped by SIGTERM");
                return false;
            },
            5000);
        resumed = true;
        hub->host().setPTT(true);
    });
    run(1);
    EXPECT_FALSE(resumed) << "the wait must unwind its handler once the program has ended";
    expectEndedInOrder("stopped by SIGTERM");
    EXPECT_THROW(hub->host().setPTT(true), ProgramEnded);
    EXPECT_FALSE(suite->host().pttKeyed());
}

TEST_F(ProgramEndTest, ASoundSourceThatLeftIsNotSilencedAndAFailingOneDoesNotStopTheEnd) {
    startSuite({2026, 11, 22, 13, 59, 50, 0}, std::string(MV_TEST_VOICE_DIR) + "/");
    int silenced = 0;
    AirStop gone = suite->program().addAirStop("gone", [&] { silenced += 100; });
    AirStop failing = suite->program().addAirStop("speech", [] { throw SpeechError("the voice did not stop"); });
    AirStop kept = suite->program().addAirStop("kept", [&] { ++silenced; });
    gone.reset();
    EXPECT_FALSE(gone.joined());
    suite->program().shutdown("scenario");
    EXPECT_EQ(silenced, 1);
    EXPECT_NE(logText.str().find("\"window\":\"speech\",\"message\":\"silencing at the end: the voice did not stop\""),
              std::string::npos);
    EXPECT_EQ(suite->host().commands().back().window, "program");
    EXPECT_NE(logText.str().rfind("\"kind\":\"end\""), std::string::npos);
}

}  // namespace
}  // namespace mv
