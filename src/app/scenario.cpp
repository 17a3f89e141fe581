#include "app/scenario.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <sstream>

namespace mv {
namespace {

struct Token {
    std::string text;   // with quotes removed
    std::string raw;    // as written
};

// Splits a line into blank-separated tokens; double quotes group blanks and
// may stand inside a token (hub."Say The Time"). \" and \\ escape inside
// quotes, and \n there is a line break (for a multi-line field).
std::vector<Token> tokenize(const std::string& line, const std::string& file, int lineNo) {
    std::vector<Token> tokens;
    size_t i = 0;
    while (i < line.size()) {
        while (i < line.size() && std::isspace(static_cast<unsigned char>(line[i]))) ++i;
        if (i >= line.size() || line[i] == '#') break;
        Token t;
        while (i < line.size() && !std::isspace(static_cast<unsigned char>(line[i]))) {
            if (line[i] == '"') {
                t.raw += line[i++];
                bool closed = false;
                while (i < line.size()) {
                    if (line[i] == '\\' && i + 1 < line.size() &&
                        (line[i + 1] == '"' || line[i + 1] == '\\' || line[i + 1] == 'n')) {
                        t.text += line[i + 1] == 'n' ? '\n' : line[i + 1];
                        t.raw += line.substr(i, 2);
                        i += 2;
                        continue;
                    }
                    if (line[i] == '"') {
                        t.raw += line[i++];
                        closed = true;
                        break;
                    }
                    t.text += line[i];
                    t.raw += line[i++];
                }
                if (!closed) throw ScenarioError(file, lineNo, "unterminated quote");
            } else {
                t.text += line[i];
                t.raw += line[i++];
            }
        }
        tokens.push_back(std::move(t));
    }
    return tokens;
}

bool parseClockTime(const std::string& s, int64_t& msOfDay) {
    int h = 0, m = 0, sec = 0, ms = 0;
    char extra = 0;
    int n = 0;
    if (s.find('.') != std::string::npos) {
        const size_t dot = s.find('.');
        const std::string frac = s.substr(dot + 1);
        if (frac.empty() || frac.size() > 3 || !std::all_of(frac.begin(), frac.end(), ::isdigit)) return false;
        ms = std::stoi(frac) * (frac.size() == 1 ? 100 : frac.size() == 2 ? 10 : 1);
        n = std::sscanf(s.substr(0, dot).c_str(), "%2d:%2d:%2d%c", &h, &m, &sec, &extra);
    } else {
        n = std::sscanf(s.c_str(), "%2d:%2d:%2d%c", &h, &m, &sec, &extra);
    }
    if (n != 3 || h < 0 || h > 23 || m < 0 || m > 59 || sec < 0 || sec > 59) return false;
    msOfDay = ((h * 60LL + m) * 60 + sec) * 1000 + ms;
    return true;
}

bool parseRelative(const std::string& s, int64_t& ms) {
    if (s.size() < 3 || s[0] != '+') return false;
    size_t i = 1;
    while (i < s.size() && std::isdigit(static_cast<unsigned char>(s[i]))) ++i;
    if (i == 1 || i - 1 > 12) return false;
    const int64_t n = std::stoll(s.substr(1, i - 1));
    const std::string unit = s.substr(i);
    if (unit == "ms") ms = n;
    else if (unit == "s") ms = n * 1000;
    else if (unit == "m") ms = n * 60000;
    else if (unit == "h") ms = n * 3600000;
    else return false;
    return true;
}

// How far a scenario may reach. A run simulates every millisecond up to its
// last line (the log and any recording with it), so a mistyped time such as
// +99999999h would run for thousands of years and fill the disk; 400 days
// covers a year-long test with room to spare.
constexpr int64_t kLongestScenarioMs = 400LL * 86400000;

bool knownWindow(const std::string& name) {
    const auto& names = scenarioWindowNames();
    return std::find(names.begin(), names.end(), name) != names.end();
}

}  // namespace

const std::vector<std::string>& scenarioWindowNames() {
    static const std::vector<std::string> names = {"hub",   "player", "history",  "idents", "dtmf",     "tts",
                                                   "about", "courtesy", "keypad", "messages", "host"};
    return names;
}

Scenario parseScenario(const std::string& text, const std::string& file) {
    Scenario sc;
    bool haveStart = false;
    bool ended = false;
    int64_t previous = 0;
    int64_t startOfDay = 0;
    std::istringstream in(text);
    std::string line;
    int lineNo = 0;
    auto fail = [&](const std::string& message) { throw ScenarioError(file, lineNo, message); };

    while (std::getline(in, line)) {
        ++lineNo;
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (lineNo == 1 && line.rfind("\xEF\xBB\xBF", 0) == 0) line.erase(0, 3);
        const std::vector<Token> tokens = tokenize(line, file, lineNo);
        if (tokens.empty()) continue;
        if (!haveStart) {
            if (tokens[0].raw != "start") fail("the first line must be: start YYYY-MM-DD HH:MM:SS");
            if (tokens.size() != 3) fail("start takes a date and a time: start YYYY-MM-DD HH:MM:SS");
            const auto t = LocalDateTime::parse(tokens[1].text + " " + tokens[2].text);
            if (!t) fail("not a date and time: " + tokens[1].text + " " + tokens[2].text);
            if (t->year < 1970 || t->year > 9999) fail("start must be in the years 1970 to 9999, not " + std::to_string(t->year));
            sc.start = *t;
            startOfDay = (t->hour * 3600LL + t->minute * 60 + t->second) * 1000;
            haveStart = true;
            continue;
        }
        if (ended) fail("nothing may follow end");

        Directive d;
        d.line = lineNo;
        size_t verbAt = 1;
        if (tokens[0].raw == "end") {
            verbAt = 0;
            d.atMs = previous;
        } else if (tokens[0].raw[0] == '+') {
            int64_t delta = 0;
            if (!parseRelative(tokens[0].raw, delta)) fail("bad relative time \"" + tokens[0].raw + "\" (use +<n>ms, s, m or h)");
            d.atMs = previous + delta;
        } else {
            int64_t msOfDay = 0;
            if (!parseClockTime(tokens[0].raw, msOfDay)) fail("bad time \"" + tokens[0].raw + "\" (use HH:MM:SS[.mmm] or +<n>s)");
            // The first such time of day at or after the previous directive.
            const int64_t prevAbs = startOfDay + previous;
            int64_t abs = (prevAbs / 86400000) * 86400000 + msOfDay;
            if (abs < prevAbs) abs += 86400000;
            d.atMs = abs - startOfDay;
        }
        if (d.atMs > kLongestScenarioMs)
            fail("\"" + tokens[0].raw + "\" reaches more than 400 days after start, the most a scenario may cover");
        if (verbAt >= tokens.size()) fail("a time needs a verb after it");
        d.verb = tokens[verbAt].raw;
        std::vector<Token> args(tokens.begin() + static_cast<std::ptrdiff_t>(verbAt + 1), tokens.end());
        auto count = [&](size_t lo, size_t hi, const char* usage) {
            if (args.size() < lo || args.size() > hi) fail(std::string("usage: ") + usage);
        };
        auto onOff = [&](const char* usage) {
            count(1, 1, usage);
            if (args[0].text != "on" && args[0].text != "off") fail(std::string("usage: ") + usage);
            d.args = {args[0].text};
        };
        auto target = [&](const Token& t) {
            const size_t dot = t.raw.find('.');
            if (dot == std::string::npos || dot == 0 || dot + 1 >= t.raw.size())
                fail("expected <window>.<control> or <window>.\"caption\", got " + t.raw);
            const std::string window = t.raw.substr(0, dot);
            if (!knownWindow(window)) fail("unknown window \"" + window + "\"");
            std::string control = t.raw.substr(dot + 1);
            d.byCaption = !control.empty() && control.front() == '"';
            if (d.byCaption) {
                control = t.text.substr(dot + 1);
                if (control.empty()) fail("empty caption");
            }
            d.args = {window, control};
        };

        if (d.verb == "carrier") onOff("carrier on|off");
        else if (d.verb == "rx") onOff("rx on|off");
        else if (d.verb == "busy") onOff("busy on|off");
        else if (d.verb == "dtmf") {
            count(1, 1, "dtmf <digits>");
            d.args = {args[0].text};
        } else if (d.verb == "connect") {
            count(1, 3, "connect <call> [\"name\"] [address]");
            for (const Token& a : args) d.args.push_back(a.text);
            while (d.args.size() < 3) d.args.push_back("");
        } else if (d.verb == "disconnect") {
            count(1, 1, "disconnect <call>");
            d.args = {args[0].text};
        } else if (d.verb == "chat") {
            count(1, 1, "chat \"<text>\"");
            d.args = {args[0].text};
        } else if (d.verb == "host-closing") {
            count(0, 0, "host-closing");
        } else if (d.verb == "set") {
            count(2, 2, "set <window>.<control> <value>");
            target(args[0]);
            d.args.push_back(args[1].text);
        } else if (d.verb == "click") {
            count(1, 1, "click <window>.<control> or click <window>.\"caption\"");
            target(args[0]);
        } else if (d.verb == "log") {
            count(1, 1, "log <window>.<control> or log <window>.\"caption\"");
            target(args[0]);
        } else if (d.verb == "show" || d.verb == "hide" || d.verb == "close") {
            count(1, 1, "show|hide|close <window>");
            if (!knownWindow(args[0].text)) fail("unknown window \"" + args[0].text + "\"");
            d.args = {args[0].text};
        } else if (d.verb == "answer") {
            count(1, 1, "answer Yes|No|OK|Cancel|\"path\"");
            d.args = {args[0].text};
        } else if (d.verb == "end") {
            count(0, 0, "end");
            ended = true;
            sc.endMs = d.atMs;
        } else {
            fail("unknown verb \"" + d.verb + "\"");
        }
        previous = d.atMs;
        if (!ended) sc.directives.push_back(std::move(d));
    }
    if (!haveStart) throw ScenarioError(file, std::max(lineNo, 1), "empty scenario: the first line must be start YYYY-MM-DD HH:MM:SS");
    if (!ended) sc.endMs = previous + 1000;
    return sc;
}

namespace {

std::string quoted(const std::string& text) {
    std::string out = "\"";
    for (char c : text) {
        if (c == '"' || c == '\\') out += '\\';
        out += c;
    }
    return out + '"';
}

}  // namespace

std::string formatDirective(const Directive& d) {
    std::string line = d.verb;
    auto target = [&] {
        line += ' ' + d.args[0] + '.' + (d.byCaption ? quoted(d.args[1]) : d.args[1]);
    };
    if (d.verb == "set") {
        target();
        line += ' ' + quoted(d.args[2]);
    } else if (d.verb == "click" || d.verb == "log") {
        target();
    } else if (d.verb == "carrier" || d.verb == "rx" || d.verb == "busy" || d.verb == "show" || d.verb == "hide" ||
               d.verb == "close") {
        line += ' ' + d.args[0];
    } else {
        for (const std::string& a : d.args) line += ' ' + quoted(a);
    }
    return line;
}

Scenario loadScenario(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) throw ScenarioError(path, 0, "cannot open the scenario file");
    std::ostringstream text;
    text << in.rdbuf();
    return parseScenario(text.str(), path);
}

}  // namespace mv
