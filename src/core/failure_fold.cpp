#include "core/failure_fold.h"

namespace mv {

namespace {
std::string keyOf(const std::string& call, const std::string& about) { return call + '\0' + about; }
}  // namespace

std::optional<std::string> FailureFold::failed(const std::string& call, const std::string& about,
                                               const std::string& message, int64_t nowMs) {
    std::string line = call + ": " + message;
    const std::string key = keyOf(call, about);
    auto it = m_failing.find(key);
    if (it == m_failing.end()) {
        m_failing.emplace(key, Failing{message, nowMs, 0});
        return line;
    }
    Failing& f = it->second;
    if (f.message == message && nowMs - f.writtenAtMs < kQuietMs) {
        ++f.uncounted;
        return std::nullopt;
    }
    if (f.uncounted > 0) {
        line += " (failed " + std::to_string(f.uncounted) + " more " + (f.uncounted == 1 ? "time" : "times");
        if (f.message != message) line += " with \"" + f.message + "\"";
        line += " since the last line about it)";
    }
    f = Failing{message, nowMs, 0};
    return line;
}

std::optional<std::string> FailureFold::succeeded(const std::string& call, const std::string& about,
                                                  int64_t nowMs) {
    auto it = m_failing.find(keyOf(call, about));
    if (it == m_failing.end() || nowMs - it->second.writtenAtMs < kQuietMs) return std::nullopt;
    const Failing f = it->second;
    m_failing.erase(it);
    if (f.uncounted == 0) return std::nullopt;
    return call + ": answers again, after failing " + std::to_string(f.uncounted) + " more " +
           (f.uncounted == 1 ? "time" : "times") + " with \"" + f.message + "\" since the last line about it";
}

}  // namespace mv
