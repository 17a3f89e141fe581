#pragma once
// The whole suite in virtual time with the ident window at hand: its
// controls by name, its host calls, the speech lines of the log, and the
// option to record the air.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "app/suite.h"
#include "idents/ident_window.h"
#include "idents/speech_engine.h"
#include "idents/station_ident.h"
#include "idents/tts_window.h"
#include "platform/audio/air_recorder.h"
#include "support/suite_rig.h"

namespace mv::test {

class IdentsRig : public SuiteRig {
protected:
    // Starts on Monday 23 November 2026 at 10:01:00, away from the talking
    // clock's quarter hours, unless told otherwise (logMs counts from 10:01).
    // A second start in one test begins afresh: new suite, empty log.
    void start(bool recordAir = false, const std::function<void(Suite&)>& beforeStart = {},
               const LocalDateTime& at = {2026, 11, 23, 10, 1, 0, 0}) {
        suite.reset();
        logText.str("");
        startedAt = at;
        startSuite(at, std::string(MV_TEST_VOICE_DIR) + "/", [&](Suite& s) {
            if (recordAir) s.air().startRecording(airPath());
            if (beforeStart) beforeStart(s);
        });
        idents = static_cast<IdentWindow*>(suite->program().window("idents"));
        // The hub's own conference connection stays off: its connect would be
        // announced in the middle of every test.
        suite->program().window("hub")->controlAs<CheckBox>("CHECK3")->setValue(0);
        tts = static_cast<TtsWindow*>(suite->program().window("tts"));
    }
    std::string airPath() const { return (dir.path() / "air.wav").string(); }
    AirRecording stopRecording() {
        suite->air().stopRecording();
        return AirRecording::load(airPath());
    }

    TextBox& text(const char* name) { return *idents->controlAs<TextBox>(name); }
    // Sets a text field, a check box (0/1) or selects an option, as the operator would.
    void set(const char* name, const std::string& value) {
        operate([&] {
            Control* c = idents->control(name);
            ASSERT_NE(c, nullptr) << name;
            if (auto* t = dynamic_cast<TextBox*>(c)) t->setText(value);
            if (auto* b = dynamic_cast<CheckBox*>(c)) b->setValue(std::stoi(value));
            if (auto* o = dynamic_cast<OptionButton*>(c)) o->setValue(value == "True");
        });
    }
    void click(const char* caption) {
        operate([&] {
            Button* b = dynamic_cast<Button*>(idents->findByCaption(caption));
            ASSERT_NE(b, nullptr) << caption;
            b->click();
        });
    }
    // The texts spoken keyed, in order, from the log's speech lines.
    std::vector<std::string> keyedTexts() const {
        std::vector<std::string> out;
        for (const auto& line : speechLines()) {
            if (line.find("\"keyed\":true") == std::string::npos) continue;
            const size_t from = line.find("\"text\":\"") + 8;
            out.push_back(line.substr(from, line.find("\",\"keyed\"") - from));
        }
        return out;
    }
    // The ident window's chat lines sent to the node.
    std::vector<std::string> chatSent() const {
        std::vector<std::string> out;
        for (const auto& c : calls("SendChatText")) out.push_back(c.args.at(0));
        return out;
    }
    CheckBox& check(const char* name) { return *idents->controlAs<CheckBox>(name); }
    Label& label(const char* name) { return *idents->controlAs<Label>(name); }
    Button& button(const char* caption) { return *dynamic_cast<Button*>(idents->findByCaption(caption)); }

    // The ident window's calls of one command, in order.
    std::vector<SimulatedHost::Command> calls(const std::string& call) const {
        std::vector<SimulatedHost::Command> out;
        for (const auto& c : suite->host().commands())
            if (c.call == call && c.window == "idents") out.push_back(c);
        return out;
    }
    // Milliseconds since the start, of the last call of `call` with `arg`.
    int64_t lastCallMs(const std::string& call, const std::string& arg) const {
        int64_t at = -1;
        for (const auto& c : calls(call))
            if (!c.args.empty() && c.args[0] == arg) at = c.timeMs;
        return at;
    }
    // When the ident window keyed the transmitter, in ms since the start.
    std::vector<int64_t> keyedAt() const {
        std::vector<int64_t> out;
        for (const auto& c : calls("SetPTT"))
            if (c.args[0] == "true") out.push_back(c.timeMs);
        return out;
    }
    // The log's speech lines, as their JSON text.
    std::vector<std::string> speechLines() const {
        std::vector<std::string> out;
        std::istringstream lines(logText.str());
        for (std::string line; std::getline(lines, line);)
            if (line.find("\"kind\":\"speech\"") != std::string::npos) out.push_back(line);
        return out;
    }
    // Milliseconds since the start of a log line's time stamp (same day).
    int64_t logMs(const std::string& line) const {
        const size_t t = line.find('T', line.find("\"t\":\"") + 5);
        const int h = std::stoi(line.substr(t + 1, 2)), m = std::stoi(line.substr(t + 4, 2));
        const int sec = std::stoi(line.substr(t + 7, 2)), ms = std::stoi(line.substr(t + 10, 3));
        return ((h * 60LL + m) * 60 + sec) * 1000 + ms -
               ((startedAt.hour * 60LL + startedAt.minute) * 60 + startedAt.second) * 1000;
    }
    // The part of the log written from now on.
    size_t logMark() const { return logText.str().size(); }
    std::string logSince(size_t mark) const { return logText.str().substr(mark); }

    LocalDateTime startedAt;
    IdentWindow* idents = nullptr;
    TtsWindow* tts = nullptr;
};

}  // namespace mv::test
