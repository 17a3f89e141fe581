#include "operator_monkey.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <streambuf>

#include "app/directive_runner.h"
#include "app/scenario.h"
#include "app/suite.h"
#include "core/controls.h"
#include "core/errors.h"
#include "courtesy/courtesy_engine.h"
#include "platform/audio/air_mixer.h"
#include "platform/morse.h"

namespace mv::test {
namespace {

// ---- the log, checked line by line as it is written ----------------------

class JsonReader {
public:
    explicit JsonReader(const std::string& text) : m_s(text) {}
    bool objectLine() {
        if (!object()) return false;
        return m_at == m_s.size();
    }

private:
    bool object() {
        if (!take('{')) return false;
        if (take('}')) return true;
        do {
            if (!string() || !take(':') || !value()) return false;
        } while (take(','));
        return take('}');
    }
    bool array() {
        if (!take('[')) return false;
        if (take(']')) return true;
        do {
            if (!value()) return false;
        } while (take(','));
        return take(']');
    }
    bool value() {
        if (m_at >= m_s.size()) return false;
        const char c = m_s[m_at];
        if (c == '{') return object();
        if (c == '[') return array();
        if (c == '"') return string();
        for (const char* word : {"true", "false", "null"})
            if (m_s.compare(m_at, std::char_traits<char>::length(word), word) == 0) {
                m_at += std::char_traits<char>::length(word);
                return true;
            }
        return number();
    }
    bool number() {
        const size_t from = m_at;
        take('-');
        if (!digits()) return false;
        if (take('.') && !digits()) return false;
        if (m_at < m_s.size() && (m_s[m_at] == 'e' || m_s[m_at] == 'E')) {
            ++m_at;
            if (!take('+')) take('-');
            if (!digits()) return false;
        }
        return m_at > from;
    }
    bool digits() {
        const size_t from = m_at;
        while (m_at < m_s.size() && m_s[m_at] >= '0' && m_s[m_at] <= '9') ++m_at;
        return m_at > from;
    }
    bool string() {
        if (!take('"')) return false;
        while (m_at < m_s.size()) {
            const auto c = static_cast<unsigned char>(m_s[m_at]);
            if (c == '"') {
                ++m_at;
                return true;
            }
            if (c < 0x20) return false;
            if (c == '\\') {
                if (++m_at >= m_s.size()) return false;
                const char e = m_s[m_at++];
                if (e == 'u') {
                    for (int i = 0; i < 4; ++i, ++m_at)
                        if (m_at >= m_s.size() || !std::isxdigit(static_cast<unsigned char>(m_s[m_at]))) return false;
                } else if (std::string_view("\"\\/bfnrt").find(e) == std::string_view::npos) {
                    return false;
                }
                continue;
            }
            if (!utf8Character()) return false;
        }
        return false;
    }
    // One well-formed UTF-8 character (no overlong forms, no surrogates).
    bool utf8Character() {
        const auto b0 = static_cast<unsigned char>(m_s[m_at]);
        int extra = 0;
        uint32_t cp = 0;
        if (b0 < 0x80) {
            ++m_at;
            return true;
        } else if ((b0 & 0xE0) == 0xC0) {
            extra = 1;
            cp = b0 & 0x1F;
        } else if ((b0 & 0xF0) == 0xE0) {
            extra = 2;
            cp = b0 & 0x0F;
        } else if ((b0 & 0xF8) == 0xF0) {
            extra = 3;
            cp = b0 & 0x07;
        } else {
            return false;
        }
        if (m_at + extra >= m_s.size()) return false;
        for (int i = 1; i <= extra; ++i) {
            const auto b = static_cast<unsigned char>(m_s[m_at + i]);
            if ((b & 0xC0) != 0x80) return false;
            cp = (cp << 6) | (b & 0x3F);
        }
        static constexpr uint32_t kLeast[] = {0, 0x80, 0x800, 0x10000};
        if (cp < kLeast[extra] || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) return false;
        m_at += extra + 1;
        return true;
    }
    bool take(char c) {
        if (m_at < m_s.size() && m_s[m_at] == c) {
            ++m_at;
            return true;
        }
        return false;
    }

    const std::string& m_s;
    size_t m_at = 0;
};

// Receives the log as the suite writes it: checks each line and keeps the
// last few, so a day's log is judged without being held.
class CheckedLog final : public std::streambuf {
public:
    explicit CheckedLog(std::vector<std::string>& failures) : m_failures(failures) {}
    uint64_t lines() const { return m_lines; }
    uint64_t digest() const { return m_digest; }
    std::vector<std::string> tail() const { return {m_tail.begin(), m_tail.end()}; }

protected:
    int_type overflow(int_type c) override {
        if (c == traits_type::eof()) return c;
        m_digest = addToLogDigest(m_digest, static_cast<char>(c));
        if (c == '\n') endLine();
        else m_line += static_cast<char>(c);
        return c;
    }
    std::streamsize xsputn(const char* s, std::streamsize n) override {
        for (std::streamsize i = 0; i < n; ++i) overflow(static_cast<unsigned char>(s[i]));
        return n;
    }

private:
    void endLine() {
        ++m_lines;
        const bool shaped = isJsonObjectLine(m_line) && m_line.rfind("{\"t\":\"", 0) == 0 &&
                            m_line.find("\",\"kind\":\"") == 29;
        if (!shaped && m_badLines++ == 0) m_failures.push_back("the log wrote a line that is not a log record: " + m_line);
        if (shaped) {
            // The times never run backwards (the run stays inside one season).
            const std::string t = m_line.substr(6, 23);
            if (t < m_lastTime && m_backwards++ == 0)
                m_failures.push_back("the log's time ran back from " + m_lastTime + " to " + t);
            m_lastTime = std::max(m_lastTime, t);
        }
        m_tail.push_back(std::move(m_line));
        if (m_tail.size() > 40) m_tail.pop_front();
        m_line.clear();
    }

    std::vector<std::string>& m_failures;
    std::string m_line;
    std::string m_lastTime;
    std::deque<std::string> m_tail;
    uint64_t m_lines = 0;
    uint64_t m_digest = kLogDigestStart;
    uint64_t m_badLines = 0;
    uint64_t m_backwards = 0;
};

// ---- what the operator and the node do -----------------------------------

// Buttons that end the whole program on purpose: the monkey leaves them alone
// (an end it did not ask for is a fault it reports).
const std::set<std::pair<std::string, std::string>> kEndsTheProgram = {
    {"hub", "btnSaveExit"},
};

// Controls that would write into the suite's own sound folders: with "Guardar
// a wav" ticked, "Reproducir" writes the editor's text as a wave file under
// whatever name the monkey's next answer gives, and those answers name the
// installed voice files. The rest of the run, its replay and every later test
// would then hear other sounds. The wave writing has tests of its own.
const std::set<std::pair<std::string, std::string>> kWritesSoundFiles = {
    {"idents", "SaveToWave"},
};

// The comment and `start` lines in front of the directives.
constexpr int kScenarioHeadLines = 3;

const char* const kCalls[] = {"EA4XYZ-L", "K1ABC", "*ECHOTEST*", "EA1URO-R", "M0XYZ", "*SPAIN*", "LU1AAA-L"};

class Monkey {
public:
    Monkey(const MonkeyOptions& options, Suite& suite, MonkeyReport& report)
        : m_options(options), m_suite(suite), m_report(report), m_runner(suite), m_random(options.seed * 7919 + 13) {}

    void run() {
        Scheduler& scheduler = m_suite.scheduler();
        const int64_t origin = scheduler.now();
        int64_t at = 0;
        int64_t lastWritten = 0;
        while (true) {
            const int64_t gap = std::clamp<int64_t>(
                static_cast<int64_t>(std::exponential_distribution<double>(1.0 / m_options.meanGapMs)(m_random)), 20,
                10 * 60 * 1000);
            at += gap;
            if (at >= m_options.durationMs) break;
            scheduler.runUntil(origin + at);
            if (m_suite.program().ended()) return;
            Directive d = next();
            d.atMs = at;
            // The line it will have in the written scenario, for the runner's messages.
            d.line = kScenarioHeadLines + ++m_written;
            m_scenario << '+' << (at - lastWritten) << "ms " << formatDirective(d) << '\n';
            lastWritten = at;
            m_lastAction = formatDirective(d);
            try {
                m_runner.apply(d);
            } catch (const ProgramEnded&) {
                return;
            }
        }
        scheduler.runUntil(origin + m_options.durationMs);
        m_scenario << '+' << (m_options.durationMs - lastWritten) << "ms end\n";
    }

    std::string scenarioLines() const { return m_scenario.str(); }
    const std::string& lastAction() const { return m_lastAction; }

private:
    Directive next() {
        Directive d{};
        if (chance(0.5) && operatorAction(d)) {
            ++m_report.operatorActions;
            return d;
        }
        hostEvent(d);
        ++m_report.hostEvents;
        return d;
    }

    bool operatorAction(Directive& d) {
        Program& program = m_suite.program();
        if (chance(0.08)) {
            // Show a window (loading it if it never was) or put one away.
            const auto& windows = program.windows();
            Window& w = *windows[pick(windows.size())];
            d.verb = (w.isVisible() && w.name() != "hub") ? "hide" : "show";
            d.args = {w.name()};
            return true;
        }
        if (chance(0.05) && m_suite.scriptedDialogs().pending() == 0) {
            // Answers the next dialog, whatever asks.
            static const char* const kAnswers[] = {"Yes", "No", "OK", "Cancel"};
            d.verb = "answer";
            d.args = {chance(0.3) ? filePath() : std::string(kAnswers[pick(4)])};
            return true;
        }
        std::vector<std::pair<Window*, Control*>> reachable;
        for (const auto& w : program.windows()) {
            if (!w->isLoaded() || !w->isVisible()) continue;
            for (const auto& c : w->controls())
                if (usable(*w, *c)) reachable.emplace_back(w.get(), c.get());
        }
        if (reachable.empty()) return false;
        auto [w, c] = reachable[pick(reachable.size())];
        d.args = {w->name(), c->name()};
        if (c->kind() == ControlKind::TextBox) {
            d.verb = "set";
            d.args.push_back(typedText(static_cast<TextBox&>(*c)));
        } else if (auto* s = dynamic_cast<Slider*>(c)) {
            d.verb = "set";
            d.args.push_back(std::to_string(std::uniform_int_distribution<int>(s->min(), s->max())(m_random)));
        } else if (auto* combo = dynamic_cast<ComboBox*>(c)) {
            d.verb = "set";
            d.args.push_back(!combo->items().empty() && chance(0.8) ? combo->items()[pick(combo->items().size())]
                                                                    : typedText(TextBox("")));
        } else {
            d.verb = "click";
        }
        return true;
    }

    bool usable(const Window& w, const Control& c) const {
        for (const Control* p = &c; p; p = p->parent())
            if (!p->visible() || !p->enabled()) return false;
        if (kEndsTheProgram.count({w.name(), c.name()})) return false;
        if (kWritesSoundFiles.count({w.name(), c.name()})) return false;
        switch (c.kind()) {
            case ControlKind::Button:
            case ControlKind::CheckBox:
            case ControlKind::OptionButton:
            case ControlKind::Slider:
            case ControlKind::ComboBox: return true;
            case ControlKind::TextBox: return !static_cast<const TextBox&>(c).readOnly();
            default: return false;
        }
    }

    void hostEvent(Directive& d) {
        SimulatedHost& host = m_suite.host();
        const int kind = pick(100);
        if (kind < 18) {
            d.verb = "carrier";
            d.args = {host.carrier() ? "off" : "on"};
        } else if (kind < 34) {
            d.verb = "rx";
            d.args = {host.receiving() ? "off" : "on"};
        } else if (kind < 40) {
            d.verb = "busy";
            d.args = {host.busy() ? "off" : "on"};
        } else if (kind < 62) {
            d.verb = "dtmf";
            d.args = {dtmfString()};
        } else if (kind < 74) {
            d.verb = "connect";
            const std::string call = kCalls[pick(std::size(kCalls))];
            d.args = {call, chance(0.2) ? oddText() : "Op " + call, "192.0.2." + std::to_string(pick(250) + 1)};
        } else if (kind < 84) {
            d.verb = "disconnect";
            const auto& stations = host.stations();
            if (!stations.empty() && chance(0.8)) {
                auto it = stations.begin();
                std::advance(it, pick(stations.size()));
                d.args = {it->first};
            } else {
                d.args = {kCalls[pick(std::size(kCalls))]};
            }
        } else {
            d.verb = "chat";
            static const char* const kSaid[] = {"hola a todos", "/ver/", "73 de EA4XYZ", "QSL?", "", "silencio"};
            d.args = {std::string(kCalls[pick(std::size(kCalls))]) + ">" + (chance(0.3) ? oddText() : kSaid[pick(6)])};
        }
    }

    // A code a window listens for (any text field that could be one), or digits at random.
    std::string dtmfString() {
        if (chance(0.6)) {
            std::vector<std::string> codes;
            for (const auto& w : m_suite.program().windows()) {
                if (!w->isLoaded()) continue;
                for (const auto& c : w->controls()) {
                    const auto* t = dynamic_cast<const TextBox*>(c.get());
                    if (t && !t->text().empty() && t->text().size() <= 8 &&
                        t->text().find_first_not_of("0123456789*#ABCD") == std::string::npos)
                        codes.push_back(t->text());
                }
            }
            if (!codes.empty()) return codes[pick(codes.size())];
        }
        static const char kKeys[] = "0123456789*#ABCD";
        std::string s;
        const int n = 1 + pick(6);
        for (int i = 0; i < n; ++i) s += kKeys[pick(16)];
        return s;
    }

    std::string typedText(const TextBox& box) {
        const int kind = pick(10);
        if (kind < 4) return std::to_string(std::uniform_int_distribution<int>(-5, box.digitsOnly() ? 99999 : 200)(m_random));
        if (kind < 5) return "";
        if (kind < 6) return dtmfString();
        if (kind < 7) return filePath();
        if (kind < 8) return std::string(static_cast<size_t>(300), 'W');
        return oddText();
    }

    std::string oddText() {
        static const char* const kOdd[] = {
            "Canci\xC3\xB3n \xC3\xB1" "and\xC3\xBA", "\xE2\x80\xAE/rev/", "say \"hi\" \\ # no comment", "\xF0\x9F\x93\xBB radio",
            "  blanks  ", "=;[SETTINGS]", "99999999999999999999", "1e5", "-0", "\xE2\x80\x8F\xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D"};
        return kOdd[pick(std::size(kOdd))];
    }

    std::string filePath() {
        static const char* const kNames[] = {"TheTimeIs.wav", "1.wav", "bell.wav", "missing.wav"};
        return chance(0.7) ? installedVoiceFolder() + kNames[pick(4)] : std::string("/nonexistent/file.mp3");
    }

    bool chance(double p) { return std::bernoulli_distribution(p)(m_random); }
    int pick(size_t n) { return std::uniform_int_distribution<int>(0, static_cast<int>(n) - 1)(m_random); }

    const MonkeyOptions& m_options;
    Suite& m_suite;
    MonkeyReport& m_report;
    DirectiveRunner m_runner;
    std::mt19937_64 m_random;
    std::ostringstream m_scenario;
    int m_written = 0;
    std::string m_lastAction;
};

std::string timeOfFrame(const LocalDateTime& start, int64_t frame) {
    return LocalDateTime::fromNaiveMs(start.toNaiveMs() + frame / kAirFramesPerMs).isoText();
}

// "YYYY-MM-DD HH:MM:SS", as a scenario's first line gives it.
std::string startLine(const LocalDateTime& start) {
    std::string iso = start.isoText();
    iso[10] = ' ';
    return "start " + iso.substr(0, 19) + "\n";
}

}  // namespace

KeyedSilenceWatch::KeyedSilenceWatch(int64_t limitMs, std::function<void(int64_t atFrame)> tooLong)
    : m_limitFrames(limitMs * kAirFramesPerMs), m_tooLong(std::move(tooLong)) {}

void KeyedSilenceWatch::air(const float* stereo, int64_t frames, bool keyed) {
    if (!keyed) {
        quietEnds(frames);
        return;
    }
    for (int64_t i = 0; i < frames; ++i) {
        // Below the 16-bit recording's smallest step is no sound.
        const bool sound = std::fabs(stereo[2 * i]) > 1.0f / 32768 || std::fabs(stereo[2 * i + 1]) > 1.0f / 32768;
        if (sound) {
            end();
        } else {
            ++m_run;
            check();
        }
        ++m_frame;
    }
}

void KeyedSilenceWatch::silence(int64_t frames, bool keyed) {
    if (!keyed) return quietEnds(frames);
    m_run += frames;
    m_frame += frames;
    check();
}

int64_t KeyedSilenceWatch::longestMs() const { return std::max(m_longest, m_run) / kAirFramesPerMs; }

void KeyedSilenceWatch::quietEnds(int64_t frames) {
    end();
    m_frame += frames;
}

void KeyedSilenceWatch::end() {
    m_longest = std::max(m_longest, m_run);
    m_run = 0;
    m_reported = false;
}

void KeyedSilenceWatch::check() {
    if (m_run > m_limitFrames && !m_reported) {
        m_reported = true;
        m_tooLong(m_frame - (m_run - m_limitFrames));
    }
}

bool isJsonObjectLine(const std::string& line) { return JsonReader(line).objectLine(); }

MonkeyReport runOperatorMonkey(const MonkeyOptions& options) {
    MonkeyReport report;
    CheckedLog checked(report.failures);
    std::ostream logStream(&checked);

    SuiteOptions so;
    so.settingsDir = options.settingsDir;
    so.virtualStart = options.start;
    so.logStream = &logStream;
    // The folders a headless run of the written scenario uses too.
    so.defaultVoiceFolder = installedVoiceFolder();
    so.defaultToneFolder = installedToneFolder();
    so.sampleFolder = installedSampleFolder();
    Suite suite(so);
    Program& program = suite.program();

    KeyedSilenceWatch watch(options.keyedSilenceLimitMs, [&](int64_t frame) {
        report.failures.push_back(timeOfFrame(options.start, frame) + ": the transmitter has been keyed for " +
                                  std::to_string(options.keyedSilenceLimitMs / 1000) + " s with nothing on the air");
    });
    suite.air().mixer().setTap(&watch);
    // What escapes a handler is a fault: each handler copes with what it meets.
    suite.scheduler().setErrorSink([&](const std::string& message) {
        report.failures.push_back(suite.clock().localTimeAt(suite.clock().monotonicMs()).isoText() +
                                  ": a handler stopped: " + message);
        suite.log().error("", message);
    });
    std::string endReason;
    suite.log().addListener([&](const LogRecord& r) {
        if (r.kind != "end") return;
        for (const LogField& f : r.fields)
            if (const auto* v = std::get_if<LogValue>(&f.value); v && f.key == "reason" && std::holds_alternative<std::string>(*v))
                endReason = std::get<std::string>(*v);
    });

    program.seedRandom(options.seed);
    std::string message;
    if (program.start("hub", nullptr, message) != Program::StartResult::Started) {
        report.failures.push_back("the suite did not start: " + message);
        return report;
    }
    // As the headless runner says it, so a replay's log matches line for line.
    suite.log().write({{}, "start", {{"seed", LogValue{static_cast<int64_t>(options.seed)}}}});

    Monkey monkey(options, suite, report);
    monkey.run();
    if (program.ended())
        report.failures.push_back("the program ended (" + endReason + ") after: " + monkey.lastAction());
    else
        program.shutdown("scenario");
    suite.air().mixer().catchUp();
    suite.air().mixer().setTap(nullptr);
    // The suite's own key must be off at the end. Morse the host was given
    // just before the end goes on keying by itself (the host link cannot stop
    // it), for at most the length of the longest courtesy letter; longer is a
    // text the suite should never have handed over.
    const int64_t hostMorseLeftMs = suite.host().toneKeyedUntilMs() - suite.scheduler().now();
    const int64_t longestLetterMs =
        morse::durationMs(std::string(kCourtesyLetterMaxLength, '0'), suite.host().cwWpm);
    if (suite.host().pttKeyed()) report.failures.push_back("the run ended with the transmitter keyed");
    else if (hostMorseLeftMs > longestLetterMs)
        report.failures.push_back("the run ended with the host keying itself for " + std::to_string(hostMorseLeftMs) +
                                  " ms more");
    report.longestKeyedSilenceMs = watch.longestMs();
    report.logLines = checked.lines();
    report.logTail = checked.tail();
    report.logDigest = checked.digest();
    report.scenario = "# Operator monkey, seed " + std::to_string(options.seed) + ": replay with\n" +
                      "#   marrowvane --headless --seed " + std::to_string(options.seed) +
                      " --settings-dir EMPTY-DIR --scenario THIS-FILE\n" + startLine(options.start) +
                      monkey.scenarioLines();
    return report;
}

}  // namespace mv::test
