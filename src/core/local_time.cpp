#include "core/local_time.h"

#include <cstdio>

namespace mv {
namespace {

// Howard Hinnant's civil-date algorithms: exact for the proleptic Gregorian calendar.
int64_t daysFromCivil(int64_t y, unsigned m, unsigned d) {
    y -= m <= 2;
    const int64_t era = (y >= 0 ? y : y - 399) / 400;
    const unsigned yoe = static_cast<unsigned>(y - era * 400);
    const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + static_cast<int64_t>(doe) - 719468;
}

void civilFromDays(int64_t z, int& y, int& m, int& d) {
    z += 719468;
    const int64_t era = (z >= 0 ? z : z - 146096) / 146097;
    const unsigned doe = static_cast<unsigned>(z - era * 146097);
    const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const int64_t yy = static_cast<int64_t>(yoe) + era * 400;
    const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const unsigned mp = (5 * doy + 2) / 153;
    d = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
    m = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
    y = static_cast<int>(yy + (m <= 2));
}

int64_t floorDiv(int64_t a, int64_t b) { return a / b - ((a % b != 0) && ((a < 0) != (b < 0))); }

int daysInMonth(int y, int m) {
    static const int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (m == 2 && ((y % 4 == 0 && y % 100 != 0) || y % 400 == 0)) return 29;
    return days[m - 1];
}

}  // namespace

int64_t LocalDateTime::toNaiveMs() const {
    const int64_t days = daysFromCivil(year, static_cast<unsigned>(month), static_cast<unsigned>(day));
    return ((days * 24 + hour) * 60 + minute) * 60000 + second * 1000 + millisecond;
}

LocalDateTime LocalDateTime::fromNaiveMs(int64_t ms) {
    LocalDateTime t;
    const int64_t days = floorDiv(ms, 86400000);
    int64_t rest = ms - days * 86400000;
    civilFromDays(days, t.year, t.month, t.day);
    t.hour = static_cast<int>(rest / 3600000);
    rest %= 3600000;
    t.minute = static_cast<int>(rest / 60000);
    rest %= 60000;
    t.second = static_cast<int>(rest / 1000);
    t.millisecond = static_cast<int>(rest % 1000);
    return t;
}

std::string LocalDateTime::timeText() const {
    char buf[16];
    std::snprintf(buf, sizeof buf, "%02d:%02d:%02d", hour, minute, second);
    return buf;
}

std::string LocalDateTime::dateTimeText() const {
    char buf[40];
    std::snprintf(buf, sizeof buf, "%02d/%02d/%04d %02d:%02d:%02d", day, month, year, hour, minute, second);
    return buf;
}

std::string LocalDateTime::isoText() const {
    char buf[40];
    std::snprintf(buf, sizeof buf, "%04d-%02d-%02dT%02d:%02d:%02d.%03d", year, month, day, hour, minute,
                  second, millisecond);
    return buf;
}

int LocalDateTime::weekday() const {
    const int64_t days = daysFromCivil(year, static_cast<unsigned>(month), static_cast<unsigned>(day));
    return static_cast<int>(days >= -4 ? (days + 4) % 7 : (days + 5) % 7 + 6);
}

std::optional<LocalDateTime> LocalDateTime::parse(std::string_view text) {
    LocalDateTime t;
    char tail = 0;
    const std::string s(text);
    const int n = std::sscanf(s.c_str(), "%4d-%2d-%2d %2d:%2d:%2d%c", &t.year, &t.month, &t.day, &t.hour,
                              &t.minute, &t.second, &tail);
    if (n != 6) return std::nullopt;
    if (t.month < 1 || t.month > 12 || t.day < 1 || t.day > daysInMonth(t.year, t.month) || t.hour > 23 ||
        t.minute > 59 || t.second > 59 || t.hour < 0 || t.minute < 0 || t.second < 0)
        return std::nullopt;
    return t;
}

}  // namespace mv
