#pragma once
// The operator monkey: a whole suite driven in virtual time by a careless
// operator (random clicks, typing, sliders, windows shown and hidden, dialogs
// answered) between the random events of a busy node, while it watches what an
// unattended node must never do. What it did is written down as a scenario,
// so any fault it finds replays with `marrowvane --headless`.
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "core/local_time.h"
#include "platform/audio/air_mixer.h"

namespace mv::test {

struct MonkeyOptions {
    uint64_t seed = 1;
    LocalDateTime start{2026, 11, 22, 6, 0, 0, 0};
    int64_t durationMs = 24 * 3600 * 1000LL;
    std::filesystem::path settingsDir;
    // The mean gap between two things happening (operator or node).
    int64_t meanGapMs = 20000;
    // Longest the transmitter may stay keyed with nothing on the air.
    int64_t keyedSilenceLimitMs = 30000;
};

struct MonkeyReport {
    uint64_t operatorActions = 0;
    uint64_t hostEvents = 0;
    uint64_t logLines = 0;
    // The whole log's text folded into one number (see addToLogDigest).
    uint64_t logDigest = 0;
    int64_t longestKeyedSilenceMs = 0;
    // Each broken rule once, with the local time it was first seen.
    std::vector<std::string> failures;
    // The run as a scenario: `marrowvane --headless --seed <seed> --scenario`
    // on an empty settings folder replays it.
    std::string scenario;
    // The log's last lines, to read beside a failure.
    std::vector<std::string> logTail;
};

// Listens to the air and calls `tooLong` once for each stretch in which the
// transmitter stays keyed with nothing on the air for more than `limitMs`,
// with the frame at which the limit was passed.
class KeyedSilenceWatch final : public AirTap {
public:
    KeyedSilenceWatch(int64_t limitMs, std::function<void(int64_t atFrame)> tooLong);
    void air(const float* stereo, int64_t frames, bool keyed) override;
    void silence(int64_t frames, bool keyed) override;
    // The longest keyed silence heard so far.
    int64_t longestMs() const;

private:
    void quietEnds(int64_t frames);
    void end();
    void check();

    int64_t m_limitFrames;
    std::function<void(int64_t)> m_tooLong;
    int64_t m_run = 0;
    int64_t m_longest = 0;
    int64_t m_frame = 0;
    bool m_reported = false;
};

MonkeyReport runOperatorMonkey(const MonkeyOptions& options);

// FNV-1a over the log's bytes: two runs that wrote the same log agree.
inline constexpr uint64_t kLogDigestStart = 14695981039346656037ull;
inline uint64_t addToLogDigest(uint64_t digest, char c) {
    return (digest ^ static_cast<unsigned char>(c)) * 1099511628211ull;
}

// Whether `line` is one JSON object (keys, strings, numbers, literals,
// arrays and objects nested), nothing before or after it.
bool isJsonObjectLine(const std::string& line);

}  // namespace mv::test
