#include "core/connection_line.h"

#include <cstdio>

namespace mv {

std::string connectionLine(const LocalDateTime& at, const std::string& call, const std::string& name,
                           const std::string& address) {
    const int hour12 = at.hour % 12 == 0 ? 12 : at.hour % 12;
    char time[16];
    std::snprintf(time, sizeof time, " %d:%02d %s", hour12, at.minute, at.hour < 12 ? "AM" : "PM");
    return std::string(time) + " -- " + call + " -- " + name + " -- " + address;
}

}  // namespace mv
