#include "core/number_text.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace mv {

std::optional<double> numberOf(std::string_view text) {
    size_t i = 0;
    while (i < text.size() && (text[i] == ' ' || text[i] == '\t')) ++i;
    size_t end = text.size();
    while (end > i && (text[end - 1] == ' ' || text[end - 1] == '\t')) --end;
    const std::string_view core = text.substr(i, end - i);
    size_t p = 0;
    if (p < core.size() && (core[p] == '+' || core[p] == '-')) ++p;
    size_t digits = 0;
    bool dot = false;
    for (; p < core.size(); ++p) {
        const char c = core[p];
        if (c >= '0' && c <= '9') {
            ++digits;
        } else if (c == '.' && !dot) {
            dot = true;
        } else {
            return std::nullopt;
        }
    }
    if (digits == 0) return std::nullopt;
    const double value = std::strtod(std::string(core).c_str(), nullptr);
    if (!std::isfinite(value)) return std::nullopt;
    return value;
}

std::string decimalText(double value) {
    if (value == 0) return "0";  // also turns -0 into "0"
    const double whole = std::nearbyint(value);
    char buf[64];
    if (whole == value && std::fabs(value) < 1e15) {
        // Whole numbers are most of what the countdowns show each second:
        // written as integers, without the general floating-point formatter.
        const auto [end, ec] = std::to_chars(buf, buf + sizeof buf, static_cast<long long>(value));
        return std::string(buf, ec == std::errc() ? end : buf);
    }
    std::snprintf(buf, sizeof buf, "%.6f", value);
    std::string s = buf;
    while (!s.empty() && s.back() == '0') s.pop_back();
    if (!s.empty() && s.back() == '.') s.pop_back();
    return s == "-0" ? "0" : s;
}

double periodValue(std::string_view text) {
    const std::optional<double> n = numberOf(text);
    return n && *n > 0 ? *n : 0;
}

}  // namespace mv
