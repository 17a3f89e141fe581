#pragma once
// The whole suite in virtual time with the courtesy window loaded hidden, the
// default tones built with the program, and in the ident window's place
// either a stand-in that notes what it was asked to say, the suite's own
// ident window, or a window that offers no voice at all.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "core/module_surfaces.h"
#include "courtesy/courtesy_window.h"
#include "support/read_text.h"
#include "support/stand_in_window.h"
#include "support/suite_rig.h"

namespace mv::test {

// The ident window's speech desk, as far as the courtesy window uses it: each
// utterance takes two seconds of the air, keyed.
class SpokenWords final : public Window, public SpeechDesk {
public:
    explicit SpokenWords(Program& program) : Window(program, "idents") {}
    struct Utterance {
        int64_t atMs;
        std::string text;
    };
    std::vector<Utterance> said;

    void setSpeechText(const std::string& text) override { m_text = text; }
    const std::string& speechText() const override { return m_text; }
    void setSpeechPending(bool pending) override { m_pending = pending; }
    bool speechPending() const override { return m_pending; }
    void setSkipSpeechDelay(bool) override {}
    void speakTheText() override {
        said.push_back({scheduler().now(), m_text});
        host().setPTT(true);
        scheduler().block(2000);
        host().setPTT(false);
    }

protected:
    void build() override { setRoot(make<Container>("identsRoot", ContainerKind::Column)); }
    void onLoad() override { createHostObject(); }

private:
    std::string m_text;
    bool m_pending = false;
};

enum class IdentVoice { StandIn, Suites, None };

class CourtesyRig : public SuiteRig {
protected:
    // Starts the suite at 10:01 (clear of the clock's quarter-hour
    // announcements for the next thirteen minutes) with `ini` as the courtesy
    // window's settings file, when given.
    void start(const std::string& ini = {}, IdentVoice identVoice = IdentVoice::StandIn) {
        if (!ini.empty()) {
            std::filesystem::create_directories(settingsDir());
            std::ofstream(settingsDir() / kCourtesySettingsFile, std::ios::binary) << ini;
        }
        voice = nullptr;
        startSuite({2026, 11, 23, 10, 1, 0, 0}, std::string(MV_TEST_VOICE_DIR) + "/", [&](Suite& s) {
            s.program().setDefaultToneFolder(std::string(MV_TEST_TONES_DIR) + "/");
            // The stand-in or the voiceless window goes in the ident window's place.
            if (identVoice == IdentVoice::StandIn)
                voice = static_cast<SpokenWords*>(&s.program().addWindow(std::make_unique<SpokenWords>(s.program())));
            if (identVoice == IdentVoice::None) s.program().addWindow(std::make_unique<StandInWindow>(s.program(), "idents"));
            if (!recordPath.empty()) s.air().startRecording(recordPath);
        });
        courtesy = static_cast<CourtesyWindow*>(suite->program().window("courtesy"));
        origin = suite->scheduler().now();
    }
    // Ends the running suite, so a test can start another.
    void stopSuite() {
        suite.reset();
        logText.str("");
    }
    // Runs to `ms` after the start.
    void at(int64_t ms) { suite->scheduler().runUntil(origin + ms); }
    int64_t elapsed() const { return suite->scheduler().now() - origin; }

    TextBox& text(const char* name) { return *courtesy->controlAs<TextBox>(name); }
    CheckBox& check(const char* name) { return *courtesy->controlAs<CheckBox>(name); }
    Label& label(const char* name) { return *courtesy->controlAs<Label>(name); }
    Button& button(const char* name) { return *courtesy->controlAs<Button>(name); }
    // The operator's click or typing, queued like the real thing.
    void click(const char* name) {
        operate([&] { button(name).click(); });
    }
    size_t count(const std::string& call) const { return suite->host().countCommands(call, "courtesy"); }
    // When each of the courtesy window's calls of one kind was made, in ms from the start.
    std::vector<int64_t> times(const std::string& call) const {
        std::vector<int64_t> out;
        for (const auto& c : suite->host().commands())
            if (c.call == call && c.window == "courtesy") out.push_back(c.timeMs - origin);
        return out;
    }
    // The arguments of the courtesy window's last call of one kind.
    std::vector<std::string> lastArgs(const std::string& call) const {
        const auto& all = suite->host().commands();
        for (auto it = all.rbegin(); it != all.rend(); ++it)
            if (it->call == call && it->window == "courtesy") return it->args;
        return {"(never called)"};
    }
    std::string courtesyFile() const { return readText(settingsDir() / kCourtesySettingsFile); }

    std::string recordPath;
    CourtesyWindow* courtesy = nullptr;
    SpokenWords* voice = nullptr;
    int64_t origin = 0;
};

}  // namespace mv::test
