// A busy week on a flaky host: the whole suite in virtual time under a busy
// node's events while a share of host calls fail and some are refused as
// busy. Prints what happened, the longest keyed stretch and the faults drawn;
// exits non-zero when a rule was broken.
//
//   faulty_week [--days N] [--seed S] [--fail SHARE] [--busy SHARE]
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

#include "busy_node.h"

int main(int argc, char** argv) {
    mv::test::BusyNodeOptions o;
    o.durationMs = 7 * 24 * 3600 * 1000LL;
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string flag = argv[i];
        const char* value = argv[i + 1];
        if (flag == "--days") o.durationMs = static_cast<int64_t>(std::atof(value) * 24 * 3600 * 1000);
        else if (flag == "--seed") o.seed = std::strtoull(value, nullptr, 10);
        else if (flag == "--fail") o.failShare = std::atof(value);
        else if (flag == "--busy") o.busyShare = std::atof(value);
        else {
            std::fprintf(stderr, "usage: faulty_week [--days N] [--seed S] [--fail SHARE] [--busy SHARE]\n");
            return 2;
        }
    }
    const auto dir = std::filesystem::temp_directory_path() / ("mv-faulty-week-" + std::to_string(o.seed));
    std::filesystem::remove_all(dir);
    o.settingsDir = dir / "settings";
    o.voiceFolder = std::string(MV_VOICE_DIR) + "/";
    o.toneFolder = std::string(MV_TONES_DIR) + "/";

    const auto t0 = std::chrono::steady_clock::now();
    const mv::test::FlakyAgainstSound run = mv::test::runFlakyAgainstSound(o);
    const mv::test::BusyNodeReport& r = run.flaky;
    const double wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    std::filesystem::remove_all(dir);

    std::printf("simulated %.1f days twice (sound and flaky host) in %.1f s (seed %llu)\n", o.durationMs / 86400000.0, wall,
                static_cast<unsigned long long>(o.seed));
    std::printf("RF overs %llu (kerchunks %llu), Internet overs %llu, DTMF strings %llu\n",
                static_cast<unsigned long long>(r.rfOvers), static_cast<unsigned long long>(r.kerchunks),
                static_cast<unsigned long long>(r.internetOvers), static_cast<unsigned long long>(r.dtmfStrings));
    std::printf("connects %llu, disconnects %llu, chat lines %llu\n", static_cast<unsigned long long>(r.connects),
                static_cast<unsigned long long>(r.disconnects), static_cast<unsigned long long>(r.chats));
    std::printf("host calls %llu: failed %llu (%.2f%%), refused as busy %llu (%.2f%%)\n",
                static_cast<unsigned long long>(r.faults.calls), static_cast<unsigned long long>(r.faults.failed),
                100.0 * r.faults.failed / std::max<uint64_t>(1, r.faults.calls),
                static_cast<unsigned long long>(r.faults.refused),
                100.0 * r.faults.refused / std::max<uint64_t>(1, r.faults.calls));
    std::printf("sound host: transmitter keyed %llu times, longest %.1f s\n",
                static_cast<unsigned long long>(run.sound.keyings), run.sound.longestKeyedMs / 1000.0);
    std::printf("flaky host: transmitter keyed %llu times, longest %.1f s (limit %.1f s); ends %s\n",
                static_cast<unsigned long long>(r.keyings), r.longestKeyedMs / 1000.0,
                (run.sound.longestKeyedMs + mv::test::kReleaseAllowanceMs) / 1000.0,
                r.endsReleased ? "released" : "KEYED");
    std::printf("log lines %llu, of them error lines %llu\n", static_cast<unsigned long long>(r.logLines),
                static_cast<unsigned long long>(r.errorLines));
    for (const std::string& f : run.sound.failures) std::printf("FAIL (sound host): %s\n", f.c_str());
    for (const std::string& f : r.failures) std::printf("FAIL: %s\n", f.c_str());
    const bool pass = r.failures.empty() && run.sound.failures.empty();
    std::printf("%s\n", pass ? "PASS" : "FAIL");
    return pass ? 0 : 1;
}
