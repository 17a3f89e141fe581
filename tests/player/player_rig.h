#pragma once
// The whole suite in virtual time with the player window at hand: tone files
// written on the spot, the rows and fields set as the operator sets them, and
// what the player put on the air read back from the host's command record and
// the event log.
#include <functional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "air/audio_fixtures.h"
#include "player/player_window.h"
#include "platform/audio/air_recorder.h"
#include "support/suite_rig.h"

namespace mv::test {

class PlayerRig : public SuiteRig {
protected:
    // Starts the suite at `at`; no sample beacons unless `samples`, so every
    // row starts empty. The hub's own hour, quarter and half-hour
    // announcements are switched off unless `clock`.
    void start(LocalDateTime at, bool record = false, bool samples = false, bool clock = false) {
        startSuite(at, std::string(MV_TEST_VOICE_DIR) + "/", [&](Suite& s) {
            s.program().setSampleFolder(samples ? std::string(MV_TEST_SAMPLES_DIR) + "/" : "");
            if (record) s.air().startRecording(airPath());
            // The host keeps only its latest commands, and the other windows'
            // polling fills that record within hours of virtual time: the
            // player's keyings are noted as they are made.
            playerKeying.clear();
            s.host().setCommandListener([this](const SimulatedHost::Command& c) {
                if (c.window == "player" && c.call == "SetPTT" && c.args.size() == 1)
                    playerKeying.push_back({c.timeMs, c.args[0] == "true"});
            });
        });
        player = static_cast<PlayerWindow*>(suite->program().window("player"));
        hub = suite->program().window("hub");
        if (!clock)
            operate([&] {
                for (const char* box : {"ONHOUR", "QUARTERHOUR", "HALFHOUR"}) hub->controlAs<CheckBox>(box)->setValue(0);
            });
    }
    std::string airPath() const { return (dir.path() / "air.wav").string(); }
    AirRecording air() {
        suite->air().stopRecording();
        return AirRecording::load(airPath());
    }
    // A tone file of `seconds` in the scratch folder.
    std::string tone(const std::string& name, double seconds) {
        const std::string path = (dir.path() / name).string();
        writeWav(path, seconds);
        return path;
    }
    void runTo(int h, int m, int s, int ms = 0) {
        const LocalDateTime now = suite->scheduler().wallNowExact();
        const int64_t nowMs = ((now.hour * 60LL + now.minute) * 60 + now.second) * 1000 + now.millisecond;
        const int64_t target = ((h * 60LL + m) * 60 + s) * 1000 + ms;
        run(target - nowMs);
    }

    TextBox& text(const std::string& name) { return *player->controlAs<TextBox>(name); }
    CheckBox& check(const std::string& name) { return *player->controlAs<CheckBox>(name); }
    OptionButton& option(const std::string& name) { return *player->controlAs<OptionButton>(name); }
    Label& label(const std::string& name) { return *player->controlAs<Label>(name); }
    void click(const std::string& caption) { operate([&] { static_cast<Button*>(player->findByCaption(caption))->click(); }); }
    void clickControl(const std::string& name) { operate([&] { player->controlAs<Button>(name)->click(); }); }
    void type(const std::string& field, const std::string& value) { operate([&] { text(field).typeText(value); }); }
    void setRow(int row, const std::string& path) {
        operate([&] { player->controlAs<TextBox>(FileRows::fileKey(row))->setText(path); });
    }

    // Forgets the host's commands so far, the player's keyings with them.
    void clearCommands() {
        suite->host().clearCommands();
        playerKeying.clear();
    }
    // SetPTT calls from the player window: true (keyed) or false (released).
    size_t playerPtt(bool on) const {
        size_t n = 0;
        for (const auto& [atMs, keyed] : playerKeying) n += keyed == on;
        return n;
    }
    // The files the player ran, in order.
    std::vector<std::string> runs() const {
        std::vector<std::string> out;
        std::istringstream lines(logText.str());
        for (std::string line; std::getline(lines, line);) {
            if (line.find("\"kind\":\"media\",\"window\":\"player\",\"op\":\"run\"") == std::string::npos) continue;
            const size_t p = line.find("\"path\":\"") + 8;
            out.push_back(line.substr(p, line.rfind('"') - p));
        }
        return out;
    }
    // Monotonic times at which the player keyed the transmitter.
    std::vector<int64_t> keyTimes() const {
        std::vector<int64_t> out;
        for (const auto& [atMs, keyed] : playerKeying)
            if (keyed) out.push_back(atMs);
        return out;
    }
    // Runs until the host's transmitter drops; returns when, or -1 within `limitMs`.
    int64_t releasedWithin(int64_t limitMs) {
        const int64_t end = suite->scheduler().now() + limitMs;
        while (suite->scheduler().now() < end) {
            run(1);
            if (!suite->host().pttKeyed()) return suite->scheduler().now();
        }
        return -1;
    }

    PlayerWindow* player = nullptr;
    Window* hub = nullptr;
    // The player's SetPTT calls: when, and whether it keyed.
    std::vector<std::pair<int64_t, bool>> playerKeying;
};

// Monotonic ms of a wall time on the rig's start day, for a suite started at `start`.
inline int64_t msAt(const LocalDateTime& start, int h, int m, int s) {
    return ((h * 60LL + m) * 60 + s) * 1000 - ((start.hour * 60LL + start.minute) * 60 + start.second) * 1000;
}

}  // namespace mv::test
