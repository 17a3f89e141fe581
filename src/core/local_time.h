#pragma once
// Local date-time as the node's operator sees it: a naive (zone-free) calendar
// reading kept as milliseconds since 1970-01-01 00:00:00 local, plus the text
// forms the suite shows and logs.
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace mv {

struct LocalDateTime {
    int year = 1970;
    int month = 1;   // 1..12
    int day = 1;     // 1..31
    int hour = 0;    // 0..23
    int minute = 0;  // 0..59
    int second = 0;  // 0..59
    int millisecond = 0;

    // Milliseconds since 1970-01-01 00:00:00.000 of the same (local) calendar.
    int64_t toNaiveMs() const;
    static LocalDateTime fromNaiveMs(int64_t ms);

    // "HH:MM:SS", always two-digit 24-hour, whatever the desktop's locale.
    std::string timeText() const;
    // "DD/MM/YYYY HH:MM:SS": the date and time as the node's Spanish-speaking
    // operators write them, used where a notice carries both (chat notices).
    std::string dateTimeText() const;
    // "YYYY-MM-DDTHH:MM:SS.mmm" for the event log.
    std::string isoText() const;
    // Day of week, 0 = Sunday .. 6 = Saturday.
    int weekday() const;

    // Parses "YYYY-MM-DD HH:MM:SS" (as a scenario's start line gives it).
    static std::optional<LocalDateTime> parse(std::string_view text);

    bool operator==(const LocalDateTime&) const = default;
};

}  // namespace mv
