#pragma once
// How long the day-long tests run. A whole day unless MV_LONG_RUN_HOURS asks
// for fewer hours: the sanitizer run, where everything is many times slower,
// runs them for a few hours so that every test still runs under it.
#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace mv::test {

inline int64_t longRunMs(int64_t fullMs) {
    const char* hours = std::getenv("MV_LONG_RUN_HOURS");
    const int64_t asked = hours ? std::atoll(hours) : 0;
    return asked > 0 ? std::min(fullMs, asked * 3600 * 1000) : fullMs;
}

}  // namespace mv::test
