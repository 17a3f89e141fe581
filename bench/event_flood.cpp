// A flood of node events: 100,000 chat lines and 10,000 DTMF strings within a
// minute of virtual time into the whole suite. Prints resident memory before,
// right after and at the end, the largest list and text any window holds, and
// whether the timers and the transmitter came through it.
//
//   event_flood [--chats N] [--dtmf N]
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "event_flood.h"
#include "resident_memory.h"

using mv::bench::residentKb;

int main(int argc, char** argv) {
    mv::test::FloodOptions o;
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string flag = argv[i];
        if (flag == "--chats") o.chats = std::atoi(argv[i + 1]);
        else if (flag == "--dtmf") o.dtmfStrings = std::atoi(argv[i + 1]);
        else {
            std::fprintf(stderr, "usage: event_flood [--chats N] [--dtmf N]\n");
            return 2;
        }
    }
    const auto dir = std::filesystem::temp_directory_path() / "mv-event-flood";
    std::filesystem::remove_all(dir);
    o.settingsDir = dir / "settings";
    o.voiceFolder = std::string(MV_VOICE_DIR) + "/";
    o.toneFolder = std::string(MV_TONES_DIR) + "/";
    const double rssBefore = residentKb();
    double rssFlooded = 0;
    double rssEnd = 0;
    o.checkpoint = [&](const char* when) { (std::string(when) == "end" ? rssEnd : rssFlooded) = residentKb(); };

    const auto t0 = std::chrono::steady_clock::now();
    const mv::test::FloodReport r = mv::test::runEventFlood(o);
    const double wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    std::filesystem::remove_all(dir);

    std::printf("%d chat lines and %d DTMF strings in %.0f s of virtual time, handled in %.1f s\n", o.chats,
                o.dtmfStrings, o.spreadMs / 1000.0, wall);
    std::printf("resident memory: %.0f kB before, %.0f kB flooded, %.0f kB at the end\n", rssBefore, rssFlooded,
                rssEnd);
    std::printf("longest line list %zu lines (%s), longest text %zu bytes (%s), longest list %zu items\n",
                r.longestLineList, r.longestLineListName.c_str(), r.longestText, r.longestTextName.c_str(),
                r.longestList);
    std::printf("log lines %llu, host record %llu commands\n", static_cast<unsigned long long>(r.logLines),
                static_cast<unsigned long long>(r.hostRecord));
    std::printf("probe timer %llu ticks in %llu s; hour announcement keyed %lld ms after the hour; ends %s\n",
                static_cast<unsigned long long>(r.probeTicks), static_cast<unsigned long long>(r.secondsPassed),
                static_cast<long long>(r.hourKeyedAfterMs), r.endsReleased ? "released" : "KEYED");
    return r.endsReleased && !r.programEnded ? 0 : 1;
}
