#include "busy_node.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <random>
#include <streambuf>
#include <utility>

#include "app/suite.h"
#include "core/controls.h"
#include "core/dialogs.h"
#include "core/event_log.h"

namespace mv::test {
namespace {

// Counts the log's lines and its `error` lines without keeping the text: a
// week of log would not fit in a test's memory.
class LogCounter final : public std::streambuf {
public:
    uint64_t lines = 0;
    uint64_t errors = 0;
    std::string lastError;

protected:
    int overflow(int c) override {
        if (c == EOF) return 0;
        if (c != '\n') {
            if (m_line.size() < 4096) m_line.push_back(static_cast<char>(c));
            return c;
        }
        ++lines;
        if (m_line.find("\"kind\":\"error\"") != std::string::npos) {
            ++errors;
            lastError = m_line;
        }
        m_line.clear();
        return c;
    }

private:
    std::string m_line;
};

// Nobody is at an unattended node to answer a dialog: one that opens is a fault.
class NoDialogs final : public Dialogs {
public:
    explicit NoDialogs(std::function<void(const std::string&)> opened) : m_opened(std::move(opened)) {}
    DialogAnswer message(const MessageRequest& r) override {
        m_opened("a dialog opened: " + r.text);
        return DialogAnswer::Cancel;
    }
    std::optional<std::string> openFile(const FileRequest&) override {
        m_opened("a file dialog opened");
        return std::nullopt;
    }
    std::optional<std::string> saveFile(const FileRequest&) override {
        m_opened("a save dialog opened");
        return std::nullopt;
    }

private:
    std::function<void(const std::string&)> m_opened;
};

const char* const kStations[] = {"EA4XYZ-L", "K1ABC", "LU7DW-R", "G4ABC", "VK2XYZ", "JA1ZZZ", "*SPAIN*", "CQ100"};

class BusyNode {
public:
    BusyNode(const BusyNodeOptions& o)
        : m_options(o), m_random(o.seed), m_logStream(&m_logCounter), m_noDialogs([this](const std::string& what) {
              fail(what);
          }) {}

    BusyNodeReport run() {
        SuiteOptions so;
        so.settingsDir = m_options.settingsDir;
        so.virtualStart = m_options.start;
        so.logStream = &m_logStream;
        so.defaultVoiceFolder = m_options.voiceFolder;
        so.defaultToneFolder = m_options.toneFolder;
        so.sampleFolder = m_options.sampleFolder;
        m_suite = std::make_unique<Suite>(so);
        m_suite->program().seedRandom(m_options.seed);
        m_suite->dialogs().setTarget(m_noDialogs);
        m_suite->host().setStateListener([this] { watchTransmitter(); });
        m_suite->host().setCommandListener([this](const SimulatedHost::Command& c) {
            m_report.morseSent += c.call == "SendCW";
            m_report.fanStarts += c.call == "SetDTR" && !c.repeat && c.args == std::vector<std::string>{"true"};
        });
        m_suite->log().addListener([this](const LogRecord& r) { count(r); });
        const int64_t startedAt = now();
        std::string why;
        if (m_suite->program().start("hub", nullptr, why) != Program::StartResult::Started) {
            fail("the suite did not start: " + why);
            return m_report;
        }
        setCodes();
        if (m_options.everyModuleAtWork) setEveryModuleToWork();
        m_suite->host().setRandomFaults(m_options.failShare, m_options.busyShare,
                                        static_cast<uint32_t>(m_options.seed * 7919 + 1));

        const int64_t end = now() + m_options.durationMs;
        while (now() < end && !m_suite->program().ended()) {
            happen();
            pass(gap(20000));
        }
        if (m_suite->program().ended()) fail("a handler ended the program");

        // The node falls quiet: whatever is on the air has its time to end.
        m_suite->host().setRandomFaults(0, 0, 0);
        if (m_suite->host().carrier()) m_suite->host().setCarrier(false);
        if (m_suite->host().receiving()) m_suite->host().setReceiving(false);
        pass(5 * 60 * 1000);
        m_report.endsReleased = !m_suite->host().pttKeyed();
        if (!m_report.endsReleased) fail("the run ends with the transmitter keyed");
        m_report.faults = m_suite->host().faultCounts();
        m_report.errorLines = m_logCounter.errors;
        m_report.logLines = m_logCounter.lines;
        m_report.timerTicks = m_suite->scheduler().dispatchedTicks();
        m_report.simulatedMs = now() - startedAt;
        return m_report;
    }

private:
    int64_t now() const { return m_suite->scheduler().now(); }
    int64_t uniform(int64_t low, int64_t high) { return std::uniform_int_distribution<int64_t>(low, high)(m_random); }
    bool chance(double p) { return std::bernoulli_distribution(p)(m_random); }
    int64_t gap(int64_t meanMs) {
        return 1 + static_cast<int64_t>(std::exponential_distribution<double>(1.0 / meanMs)(m_random));
    }
    template <size_t N>
    const char* pick(const char* const (&from)[N]) {
        return from[uniform(0, N - 1)];
    }

    void fail(const std::string& what) {
        for (const std::string& f : m_report.failures)
            if (f.rfind(what.substr(0, 40), 0) == 0) return;
        const std::string at = m_suite ? m_suite->scheduler().wallNowExact().isoText() : std::string("start");
        m_report.failures.push_back(what + " (at " + at + ")");
    }

    // Every DTMF code the loaded windows answer to, each set to its own digits.
    void setCodes() {
        auto code = [&](const char* window, const std::string& field, const std::string& digits) {
            Window* w = m_suite->program().window(window);
            if (!w || !w->isLoaded()) return;
            auto* box = w->controlAs<TextBox>(field);
            if (!box) return;
            if (box->text().empty()) box->setText(digits);
            m_codes.push_back(box->text());
        };
        code("hub", "TEXT38", "71");
        code("hub", "TEXT39", "72");
        code("hub", "DTMFTIME", "123");
        code("courtesy", "TEXT4", "81");
        code("player", "TEXT4", "51");
        code("courtesy", "TEXT5", "80");
        code("dtmf", "TEXT1111", "91");
        code("dtmf", "TEXT2222", "90");
        code("dtmf", "TEXT222", "93");
        code("dtmf", "TEXT333", "94");
        code("dtmf", "TEXT111", "73");
        code("dtmf", "TEXT555", "74");
        for (int row = 1; row <= 12; ++row) {
            code("dtmf", "CALL" + std::to_string(row), kStations[row % 8]);
            m_codes.pop_back();
            code("dtmf", "DTMF" + std::to_string(row), std::to_string(200 + row));
        }
        for (int group = 1; group <= 2; ++group) {
            code("dtmf", "DTMFGROUP" + std::to_string(group) + "CONNECT", std::to_string(60 + 2 * group));
            code("dtmf", "DTMFGROUP" + std::to_string(group) + "DISC", std::to_string(61 + 2 * group));
        }
        if (m_codes.empty()) fail("no window answers to DTMF");
        // Courtesy tones played keyed rather than the host's Morse, so the
        // suite keys and releases after every over.
        if (Window* courtesy = m_suite->program().window("courtesy"); courtesy && courtesy->isLoaded())
            if (auto* tones = courtesy->controlAs<OptionButton>("OPTION2")) tones->setValue(true);
    }

    // What the suite did on the air, read from its log as it is written.
    void count(const LogRecord& r) {
        auto op = [&r]() -> std::string {
            for (const LogField& f : r.fields)
                if (f.key == "op")
                    if (const auto* v = std::get_if<LogValue>(&f.value))
                        if (const auto* text = std::get_if<std::string>(v)) return *text;
            return {};
        };
        if (r.kind == "speech") m_report.utterances += op() == "speak";
        else if (r.kind == "media") m_report.filesPlayed += op() == "run";
        else if (r.kind == "dtmf") ++m_report.dtmfCommands;
    }

    // Everything an operator can switch on, on: both idents every ten
    // minutes, chat read aloud, stations announced with the time as they come
    // and go, the beacon text (a random line of it) every fifteen minutes and
    // on the half hour, the ident window's Morse letter after every over, the
    // fan on the DTR line, a silence slot from 03:00 to 05:00 every day, the
    // long-over message after a minute on either side, the time-outs
    // counting, the player's beacons every five minutes and on the hour,
    // quarters and half hour, and the text message window open (it is loaded
    // by its hub button, not at start-up).
    void setEveryModuleToWork() {
        Program& program = m_suite->program();
        auto window = [&](const char* name) -> Window* {
            Window* w = program.window(name);
            if (!w) return nullptr;
            w->load();
            if (!w->isLoaded()) fail(std::string("the ") + name + " window did not load");
            return w->isLoaded() ? w : nullptr;
        };
        auto text = [&](Window* w, const char* field, const std::string& value) {
            if (auto* box = w ? w->controlAs<TextBox>(field) : nullptr) box->setText(value);
            else fail(std::string("no text box ") + field);
        };
        auto tick = [&](Window* w, const char* box) {
            if (auto* check = w ? w->controlAs<CheckBox>(box) : nullptr) check->setValue(1);
            else fail(std::string("no check box ") + box);
        };
        auto choose = [&](Window* w, const char* button) {
            if (auto* option = w ? w->controlAs<OptionButton>(button) : nullptr) option->setValue(true);
            else fail(std::string("no option button ") + button);
        };
        if (Window* messages = window("messages")) messages->show();
        if (Window* idents = window("idents")) {
            text(idents, "Callsign", "Este es el nodo E A 4 X Y Z, setenta y tres");
            text(idents, "BeaconPeriod6", "10");
            tick(idents, "StopClock6");
            text(idents, "CWCallsign", "EA4XYZ");
            text(idents, "BeaconPeriod7", "10");
            tick(idents, "StopClock7");
            tick(idents, "SayText");
            tick(idents, "AddTime");
            text(idents, "TextInput3", "Nodo de pruebas EA4XYZ\nReunion los jueves a las nueve\nVisite nuestra web");
            choose(idents, "Option5");
            text(idents, "BeaconPeriod3", "15");
            tick(idents, "StopClock3");
            tick(idents, "InfoHalf");
            tick(idents, "UseCT");
            choose(idents, "UseDTR");
            tick(idents, "FanCTRL");
            const std::pair<const char*, const char*> silenceSlot[] = {
                {"HourOFF1", "3"}, {"MinsOFF1", "0"}, {"HourON1b", "5"}, {"MinsON1b", "0"}};
            for (const auto& [field, value] : silenceSlot) text(idents, field, value);
            for (const char* day : {"Sun", "Mon", "Tue", "Wed", "Thur", "Fri", "Sat"}) tick(idents, day);
        }
        if (Window* courtesy = window("courtesy")) {
            text(courtesy, "TEXT6", "Por favor, haga pausas entre cambios");
            text(courtesy, "BEACONPERIOD", "60");
            for (const char* box : {"CHECK2", "CHECK3", "CHECK4", "CHECK7"}) tick(courtesy, box);
        }
        if (Window* player = window("player")) {
            for (const char* box : {"ONHOUR", "QUARTERHOUR", "HALFHOUR", "StopClock1"}) tick(player, box);
            text(player, "BeaconPeriod1", "5");
        }
        window("tts");
    }

    // The transmitter's stretches: each one measured, none longer than the limit.
    void watchTransmitter() {
        if (!m_suite) return;
        const bool keyed = m_suite->host().pttKeyed();
        if (keyed && m_keyedSince < 0) {
            m_keyedSince = now();
            ++m_report.keyings;
        }
        if (!keyed && m_keyedSince >= 0) {
            measureKeyed();
            m_keyedSince = -1;
        }
    }
    // Also called while keyed, so a transmitter that never unkeys is seen.
    void measureKeyed() {
        const int64_t keyedFor = now() - m_keyedSince;
        m_report.longestKeyedMs = std::max(m_report.longestKeyedMs, keyedFor);
        if (keyedFor > m_options.keyedLimitMs)
            fail("the transmitter stayed keyed longer than " + std::to_string(m_options.keyedLimitMs) + " ms");
    }
    void checkTransmitter() {
        watchTransmitter();
        if (m_keyedSince >= 0) measureKeyed();
    }
    // Time passes in steps short enough to see a stuck transmitter soon.
    void pass(int64_t ms) {
        const int64_t until = now() + ms;
        while (now() < until && !m_suite->program().ended()) {
            m_suite->scheduler().runUntil(std::min(until, now() + 5000));
            checkTransmitter();
        }
    }

    void over(bool rf) {
        SimulatedHost& host = m_suite->host();
        const bool kerchunk = rf && chance(0.2);
        (rf ? m_report.rfOvers : m_report.internetOvers)++;
        if (kerchunk) ++m_report.kerchunks;
        rf ? host.setCarrier(true) : host.setReceiving(true);
        if (kerchunk) {
            pass(uniform(100, 900));
        } else {
            pass(uniform(1000, 4000));
            // An RF over often carries a code.
            if (rf && chance(0.3)) dtmf();
            pass(uniform(2000, 90000));
        }
        rf ? host.setCarrier(false) : host.setReceiving(false);
    }

    void dtmf() {
        ++m_report.dtmfStrings;
        std::string digits;
        if (chance(0.85)) {
            digits = m_codes[static_cast<size_t>(uniform(0, static_cast<int64_t>(m_codes.size()) - 1))];
        } else {
            static const char keys[] = "0123456789ABCD*#";
            for (int64_t n = uniform(1, 8); n > 0; --n) digits += keys[uniform(0, 15)];
        }
        m_suite->host().receiveDTMF(digits);
    }

    void happen() {
        SimulatedHost& host = m_suite->host();
        const int64_t what = uniform(0, 99);
        if (what < 35) {
            over(true);
        } else if (what < 55) {
            over(false);
        } else if (what < 67) {
            dtmf();
        } else if (what < 77) {
            ++m_report.connects;
            host.stationConnects(pick(kStations), "Operador", "10.0.0." + std::to_string(uniform(1, 254)));
        } else if (what < 85) {
            ++m_report.disconnects;
            host.stationDisconnects(pick(kStations));
        } else if (what < 97) {
            ++m_report.chats;
            host.receiveChat(std::string(pick(kStations)) + ">hola desde el nodo, " + std::to_string(now()));
        } else {
            host.setBusy(!host.busy());
        }
    }

    BusyNodeOptions m_options;
    std::mt19937_64 m_random;
    LogCounter m_logCounter;
    std::ostream m_logStream;
    NoDialogs m_noDialogs;
    std::unique_ptr<Suite> m_suite;
    std::vector<std::string> m_codes;
    int64_t m_keyedSince = -1;
    BusyNodeReport m_report;
};

}  // namespace

BusyNodeReport runBusyNode(const BusyNodeOptions& options) { return BusyNode(options).run(); }

FlakyAgainstSound runFlakyAgainstSound(const BusyNodeOptions& options) {
    FlakyAgainstSound r;
    BusyNodeOptions sound = options;
    sound.failShare = sound.busyShare = 0;
    sound.settingsDir = options.settingsDir / "sound";
    r.sound = runBusyNode(sound);
    BusyNodeOptions flaky = options;
    flaky.keyedLimitMs = r.sound.longestKeyedMs + kReleaseAllowanceMs;
    flaky.settingsDir = options.settingsDir / "flaky";
    r.flaky = runBusyNode(flaky);
    return r;
}

}  // namespace mv::test
