#pragma once
// A busy node on a flaky host: the whole suite driven in virtual time by the
// events of a busy EchoLink node (RF and Internet overs with kerchunks among
// them, every window's DTMF codes, stations coming and going, chat, the busy
// flag, the clock running) while a share of host calls fail or are refused as
// busy. It watches the transmitter and what no unattended node may do.
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "core/local_time.h"
#include "platform/simulated_host.h"

namespace mv::test {

struct BusyNodeOptions {
    uint64_t seed = 1;
    LocalDateTime start{2026, 11, 23, 0, 0, 0, 0};
    int64_t durationMs = 24 * 3600 * 1000LL;
    double failShare = 0.10;
    double busyShare = 0.05;
    std::filesystem::path settingsDir;
    std::string voiceFolder;
    std::string toneFolder;
    // Longest the transmitter may stay keyed in one stretch.
    int64_t keyedLimitMs = 60000;
    // Every module window loaded and at work beside the node's events: voice
    // and Morse idents, stations announced, the beacon text, the fan, a
    // silence slot, chat read aloud, the long-over message, the player's
    // beacons (the sample beacon from `sampleFolder`) and the text message
    // window open, as on a node whose operator switched everything on.
    bool everyModuleAtWork = false;
    std::string sampleFolder;
};

struct BusyNodeReport {
    uint64_t rfOvers = 0;
    uint64_t kerchunks = 0;
    uint64_t internetOvers = 0;
    uint64_t dtmfStrings = 0;
    uint64_t connects = 0;
    uint64_t disconnects = 0;
    uint64_t chats = 0;
    uint64_t keyings = 0;        // stretches the transmitter was keyed
    uint64_t utterances = 0;     // texts the speech voice was given to say
    uint64_t filesPlayed = 0;    // sound files a window started on the air
    uint64_t morseSent = 0;      // Morse texts handed to the host
    uint64_t fanStarts = 0;      // times the DTR line was raised (the fan)
    uint64_t dtmfCommands = 0;   // received strings a window took as its code
    uint64_t timerTicks = 0;     // timer handlers the engine ran
    int64_t simulatedMs = 0;     // virtual time from start-up to the end
    int64_t longestKeyedMs = 0;  // the longest of them
    uint64_t errorLines = 0;     // logged `error` lines
    uint64_t logLines = 0;
    SimulatedHost::FaultCounts faults;
    bool endsReleased = false;
    // Each broken rule once, with the local time it was first seen.
    std::vector<std::string> failures;
};

BusyNodeReport runBusyNode(const BusyNodeOptions& options);

// What a failed or refused release may add to a transmission: the suite
// unkeys again at its next one-second release check, and at these shares ten
// such retries failing in a row is out of reach even over a week.
inline constexpr int64_t kReleaseAllowanceMs = 10000;

// The same node run twice with the same events: first on a sound host, which
// gives the longest legitimate transmission, then on the flaky one, whose
// transmissions may exceed it only by the release allowance.
struct FlakyAgainstSound {
    BusyNodeReport sound;
    BusyNodeReport flaky;
};
FlakyAgainstSound runFlakyAgainstSound(const BusyNodeOptions& options);

}  // namespace mv::test
