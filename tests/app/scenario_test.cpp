// Scenario files: times, verbs and the errors a bad line gets.
#include "app/scenario.h"

#include <gtest/gtest.h>

namespace mv {
namespace {

TEST(ScenarioTest, TimesAreAbsoluteOrRelativeAndAbsoluteOnesNeverGoBack) {
    const Scenario s = parseScenario(
        "# a comment\n"
        "start 2026-11-22 23:59:50\n"
        "23:59:55 carrier on   # trailing comment\n"
        "+1500ms carrier off\n"
        "00:00:10 dtmf 123\n"       // after midnight: the next day
        "+2m chat \"N0CALL>hello \\\"there\\\" C:\\\\n\\n\"\n"
        "+1h end\n",
        "t.scn");
    EXPECT_EQ(s.start.timeText(), "23:59:50");
    ASSERT_EQ(s.directives.size(), 4u);
    EXPECT_EQ(s.directives[0].atMs, 5000);
    EXPECT_EQ(s.directives[0].line, 3);
    EXPECT_EQ(s.directives[1].atMs, 6500);
    EXPECT_EQ(s.directives[2].atMs, 20000);
    EXPECT_EQ(s.directives[3].atMs, 140000);
    EXPECT_EQ(s.directives[3].args[0], "N0CALL>hello \"there\" C:\\n\n") << "\\n in quotes is a line break";
    EXPECT_EQ(s.endMs, 140000 + 3600000);
}

TEST(ScenarioTest, ASceneMayReachFourHundredDaysAndNoFurther) {
    const Scenario s = parseScenario("start 9999-01-01 00:00:00\n+9599h rx on\n23:59:59.999 rx off\n", "t.scn");
    EXPECT_EQ(s.directives[1].atMs, 400LL * 86400000 - 1);
}

TEST(ScenarioTest, WithoutEndTheRunStopsOneSecondAfterTheLastLine) {
    const Scenario s = parseScenario("start 2026-11-22 14:00:00\n14:00:05.250 rx on\n", "t.scn");
    EXPECT_EQ(s.directives[0].atMs, 5250);
    EXPECT_EQ(s.endMs, 6250);
}

TEST(ScenarioTest, TargetsByNameOrByCaption) {
    const Scenario s = parseScenario(
        "start 2026-11-22 14:00:00\n"
        "+1s click hub.\"Guardar y Salir\"\n"
        "+1s set hub.TEXT38 \"#5\"\n"
        "+1s connect K1ABC \"John Smith\" 10.0.0.1\n"
        "+1s connect W2XYZ\n"
        "+1s answer \"/tmp/some file.wav\"\n",
        "t.scn");
    EXPECT_TRUE(s.directives[0].byCaption);
    EXPECT_EQ(s.directives[0].args, (std::vector<std::string>{"hub", "Guardar y Salir"}));
    EXPECT_FALSE(s.directives[1].byCaption);
    EXPECT_EQ(s.directives[1].args, (std::vector<std::string>{"hub", "TEXT38", "#5"}));
    EXPECT_EQ(s.directives[2].args, (std::vector<std::string>{"K1ABC", "John Smith", "10.0.0.1"}));
    EXPECT_EQ(s.directives[3].args, (std::vector<std::string>{"W2XYZ", "", ""}));
    EXPECT_EQ(s.directives[4].args[0], "/tmp/some file.wav");
}

TEST(ScenarioTest, BadLinesNameTheFileAndLine) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"14:00:00 carrier on\n", "t.scn:1: the first line must be"},
        {"start 2026-13-01 00:00:00\n", "t.scn:1: not a date"},
        {"start 2026-11-22 14:00:00\n\n+1s carrier maybe\n", "t.scn:3: usage: carrier on|off"},
        {"start 2026-11-22 14:00:00\n25:00:00 rx on\n", "t.scn:2: bad time"},
        {"start 2026-11-22 14:00:00\n+5x rx on\n", "t.scn:2: bad relative time"},
        {"start 2026-11-22 14:00:00\n+1s jump\n", "t.scn:2: unknown verb \"jump\""},
        {"start 2026-11-22 14:00:00\n+1s click nowhere.Foo\n", "t.scn:2: unknown window \"nowhere\""},
        {"start 2026-11-22 14:00:00\n+1s chat \"unterminated\n", "t.scn:2: unterminated quote"},
        {"start 2026-11-22 14:00:00\n+1s end\n+1s rx on\n", "t.scn:3: nothing may follow end"},
        {"start 2026-11-22 14:00:00\n+1s set hub.TEXT4\n", "t.scn:2: usage: set"},
        {"", "t.scn:1: empty scenario"},
        // A run simulates every millisecond up to its last line: a time past
        // 400 days, or a start outside the calendar the log can write, is a typo.
        {"start 2026-11-22 14:00:00\n+1s rx on\n+99999999h carrier on\n",
         "t.scn:3: \"+99999999h\" reaches more than 400 days after start"},
        {"start 2026-11-22 14:00:00\n+9600h rx on\n+1ms end\n", "t.scn:3: \"+1ms\" reaches more than 400 days"},
        {"start 1969-12-31 23:59:59\n", "t.scn:1: start must be in the years 1970 to 9999, not 1969"},
    };
    for (const auto& [text, expected] : cases) {
        try {
            parseScenario(text, "t.scn");
            ADD_FAILURE() << "accepted: " << text;
        } catch (const ScenarioError& e) {
            EXPECT_EQ(std::string(e.what()).rfind(expected, 0), 0u) << e.what();
        }
    }
}

TEST(ScenarioTest, AWrittenDirectiveParsesBackToItself) {
    // What the operator monkey writes down must replay exactly, odd texts and all.
    const std::vector<Directive> directives = {
        {0, 0, "set", {"hub", "TEXT37", "say \"hi\" C:\\x\\ # not a comment"}, false},
        {0, 0, "set", {"messages", "MessageEntry", ""}, false},
        {0, 0, "click", {"hub", "Say The Time"}, true},
        {0, 0, "click", {"hub", "btnPlay"}, false},
        {0, 0, "chat", {"EA4XYZ-L>\xE2\x80\xAE/rev/ \xF0\x9F\x93\xBB \"\\"}, false},
        {0, 0, "connect", {"K1ABC", "Ann \"Q\" Lee", "192.0.2.1"}, false},
        {0, 0, "dtmf", {"#5*"}, false},
        {0, 0, "answer", {"/tmp/a b.wav"}, false},
        {0, 0, "carrier", {"on"}, false},
        {0, 0, "hide", {"history"}, false},
    };
    std::string text = "start 2026-11-22 14:00:00\n";
    for (const Directive& d : directives) text += "+1s " + formatDirective(d) + "\n";
    const Scenario back = parseScenario(text, "t.scn");
    ASSERT_EQ(back.directives.size(), directives.size());
    for (size_t i = 0; i < directives.size(); ++i) {
        const Directive& d = back.directives[i];
        EXPECT_EQ(d.verb, directives[i].verb) << i;
        EXPECT_EQ(d.byCaption, directives[i].byCaption) << i;
        std::vector<std::string> want = directives[i].args;
        if (d.verb == "connect") want.resize(3);
        EXPECT_EQ(d.args, want) << formatDirective(directives[i]);
    }
}

}  // namespace
}  // namespace mv
