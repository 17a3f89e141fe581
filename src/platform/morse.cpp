#include "platform/morse.h"

#include <cctype>
#include <cmath>
#include <utility>

namespace mv::morse {

std::string pattern(char c) {
    static const std::pair<char, const char*> table[] = {
        {'A', ".-"},     {'B', "-..."},   {'C', "-.-."},   {'D', "-.."},    {'E', "."},      {'F', "..-."},
        {'G', "--."},    {'H', "...."},   {'I', ".."},     {'J', ".---"},   {'K', "-.-"},    {'L', ".-.."},
        {'M', "--"},     {'N', "-."},     {'O', "---"},    {'P', ".--."},   {'Q', "--.-"},   {'R', ".-."},
        {'S', "..."},    {'T', "-"},      {'U', "..-"},    {'V', "...-"},   {'W', ".--"},    {'X', "-..-"},
        {'Y', "-.--"},   {'Z', "--.."},   {'0', "-----"},  {'1', ".----"},  {'2', "..---"},  {'3', "...--"},
        {'4', "....-"},  {'5', "....."},  {'6', "-...."},  {'7', "--..."},  {'8', "---.."},  {'9', "----."},
        {'/', "-..-."},  {'?', "..--.."}, {'.', ".-.-.-"}, {',', "--..--"}, {'=', "-...-"},  {'+', ".-.-."},
        {'-', "-....-"}, {'@', ".--.-."}, {':', "---..."}, {'(', "-.--."},  {')', "-.--.-"}, {'\'', ".----."},
        {'!', "-.-.--"}, {'"', ".-..-."}, {';', "-.-.-."}, {'&', ".-..."},
    };
    const char u = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    for (const auto& [ch, p] : table)
        if (ch == u) return p;
    return {};
}

double dotMs(int wpm) { return 1200.0 / (wpm > 0 ? wpm : 20); }

std::vector<Element> elements(const std::string& text, int wpm) {
    const double dot = dotMs(wpm);
    std::vector<Element> out;
    double t = 0;        // time at which the next element may start
    bool pendingWordGap = false;
    bool anyLetter = false;
    for (char c : text) {
        if (c == ' ') {
            pendingWordGap = anyLetter;
            continue;
        }
        const std::string p = pattern(c);
        if (p.empty()) continue;
        if (anyLetter) t += (pendingWordGap ? 7 : 3) * dot - dot;  // a dot gap already follows each element
        pendingWordGap = false;
        for (char e : p) {
            const double len = (e == '-' ? 3 : 1) * dot;
            out.push_back({std::llround(t), std::llround(t + len) - std::llround(t)});
            t += len + dot;
        }
        anyLetter = true;
    }
    return out;
}

int64_t durationMs(const std::string& text, int wpm) {
    const auto els = elements(text, wpm);
    return els.empty() ? 0 : els.back().startMs + els.back().durationMs;
}

}  // namespace mv::morse
