#pragma once
// Keeps a host that fails from filling the disk: every window polls it ten
// times a second, so a host that has stopped answering would write dozens of
// error lines a second for as long as the fault lasts. One fold serves the
// whole program. The first failure of a call is logged; the same failure of
// the same call again within a minute, from any window, is only counted; the
// count goes out with the next line about that call: its next failure a
// minute or more after the last line, or its first success after that
// minute. A different failure is logged at once. A call is told apart by
// what it is about as well as by name: a connect to one station failing does
// not hide a connect to another.
#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace mv {

class FailureFold {
public:
    static constexpr int64_t kQuietMs = 60'000;

    // The text to log for this failure, or nothing when it is only counted.
    std::optional<std::string> failed(const std::string& call, const std::string& about, const std::string& message,
                                      int64_t nowMs);
    // The text to log for a call that went through: the failures counted
    // since the last line, once the quiet minute is over; otherwise nothing.
    std::optional<std::string> succeeded(const std::string& call, const std::string& about, int64_t nowMs);
    // No call has failed lately: a success costs one branch.
    bool quiet() const { return m_failing.empty(); }

private:
    struct Failing {
        std::string message;
        int64_t writtenAtMs = 0;
        uint64_t uncounted = 0;  // failures since the line written at writtenAtMs
    };
    std::map<std::string, Failing> m_failing;
};

}  // namespace mv
