#include "core/clock.h"

#include <chrono>
#include <ctime>

namespace mv {

RealClock::RealClock()
    : m_originNs(std::chrono::duration_cast<std::chrono::nanoseconds>(
                     std::chrono::steady_clock::now().time_since_epoch())
                     .count()) {}

int64_t RealClock::monotonicMs() const {
    const int64_t ns =
        std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now().time_since_epoch())
            .count();
    return (ns - m_originNs) / 1000000;
}

LocalDateTime RealClock::localTimeAt(int64_t mono) const {
    const auto sys = std::chrono::system_clock::now();
    const int64_t sysMs =
        std::chrono::duration_cast<std::chrono::milliseconds>(sys.time_since_epoch()).count() -
        (monotonicMs() - mono);
    const std::time_t secs = static_cast<std::time_t>(sysMs >= 0 ? sysMs / 1000 : (sysMs - 999) / 1000);
    std::tm tm{};
#ifdef _WIN32
    localtime_s(&tm, &secs);  // the Windows C runtime's thread-safe form
#else
    localtime_r(&secs, &tm);
#endif
    LocalDateTime t;
    t.year = tm.tm_year + 1900;
    t.month = tm.tm_mon + 1;
    t.day = tm.tm_mday;
    t.hour = tm.tm_hour;
    t.minute = tm.tm_min;
    t.second = tm.tm_sec;
    t.millisecond = static_cast<int>(((sysMs % 1000) + 1000) % 1000);
    return t;
}

}  // namespace mv
