#pragma once
// A flood of node events: a great many chat lines and DTMF strings within a
// short stretch of virtual time, into the whole suite. Reports how big every
// window's line lists, texts and lists grew, whether the timers kept their
// schedule through it, and whether the transmitter ended released.
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

#include "core/local_time.h"

namespace mv::test {

struct FloodOptions {
    int chats = 100000;
    int dtmfStrings = 10000;
    // Every this many DTMF strings, one is the talking clock's code, so the
    // flood keys the transmitter now and then; 0 for none.
    int timeCodeEvery = 1000;
    // The flood starts at `start` and is all in within this time.
    int64_t spreadMs = 60000;
    // Two minutes before the hour: the hour's announcement follows the flood.
    LocalDateTime start{2026, 11, 23, 21, 58, 0, 0};
    std::filesystem::path settingsDir;
    std::string voiceFolder;
    std::string toneFolder;
    // Called once after the flood is in and again at the end (resident memory, for the benchmark).
    std::function<void(const char* when)> checkpoint;
};

struct FloodReport {
    // The largest of each kind over every loaded window, with where it is.
    size_t longestLineList = 0;  // lines
    std::string longestLineListName;
    size_t longestText = 0;  // bytes of a text box
    std::string longestTextName;
    size_t longestList = 0;  // items of a list box
    uint64_t logLines = 0;
    uint64_t hostRecord = 0;  // commands the simulated host still holds
    // A one-second probe timer started with the flood: ticks seen against
    // whole seconds passed by the time the hour comes.
    uint64_t probeTicks = 0;
    uint64_t secondsPassed = 0;
    // When the top-of-the-hour announcement keyed, in ms after the hour; -1 if it did not.
    int64_t hourKeyedAfterMs = -1;
    bool endsReleased = false;
    bool programEnded = false;
};

FloodReport runEventFlood(const FloodOptions& options);

}  // namespace mv::test
