// What the node does, as any bytes make it: DTMF strings, chat lines, carrier
// and Internet receive, stations connecting and leaving, the host busy, time
// passing. One suite with every window loaded takes input after input in
// virtual time. Nothing here may crash it, open a dialog (nobody is there to
// answer one) or hold the transmitter keyed longer than any legitimate
// transmission; when the fuzzing run ends the suite ends released.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <string>

#include "app/suite.h"
#include "support/temp_dir.h"

namespace {

// Longer than anything the default settings can send in one go.
constexpr int64_t kLongestTransmissionMs = 10 * 60 * 1000;

[[noreturn]] void fail(const std::string& what) {
    std::fprintf(stderr, "suite fuzz: %s\n", what.c_str());
    std::abort();
}

class NoDialogs final : public mv::Dialogs {
public:
    mv::DialogAnswer message(const mv::MessageRequest& r) override { fail("a dialog opened: " + r.text); }
    std::optional<std::string> openFile(const mv::FileRequest&) override { fail("a file dialog opened"); }
    std::optional<std::string> saveFile(const mv::FileRequest&) override { fail("a save dialog opened"); }
};

struct Node {
    mv::test::TempDir dir;
    std::ostringstream log;
    NoDialogs noDialogs;
    std::unique_ptr<mv::Suite> suite;
    int64_t keyedSince = -1;

    Node() {
        mv::SuiteOptions o;
        o.settingsDir = dir.path() / "settings";
        o.virtualStart = mv::LocalDateTime{2026, 11, 22, 21, 59, 0, 0};
        o.logStream = &log;
        o.defaultVoiceFolder = std::string(MV_TEST_VOICE_DIR) + "/";
        suite = std::make_unique<mv::Suite>(o);
        suite->dialogs().setTarget(noDialogs);
        suite->host().setStateListener([this] { watchTransmitter(); });
        std::string message;
        if (suite->program().start("hub", nullptr, message) != mv::Program::StartResult::Started)
            fail("the suite did not start: " + message);
    }

    int64_t now() { return suite->scheduler().now(); }

    void watchTransmitter() {
        const bool keyed = suite->host().pttKeyed();
        if (keyed && keyedSince < 0) keyedSince = now();
        if (!keyed) keyedSince = -1;
    }
    void checkTransmitter() {
        watchTransmitter();
        if (keyedSince >= 0 && now() - keyedSince > kLongestTransmissionMs)
            fail("the transmitter has been keyed for " + std::to_string((now() - keyedSince) / 1000) + " s");
    }
    void run(int64_t ms) {
        suite->scheduler().runUntil(now() + ms);
        checkTransmitter();
    }
    // The log keeps growing over a long run; only its tail is worth keeping.
    void trimLog() {
        if (log.tellp() > (1 << 20)) log.str(std::string());
    }
};

Node& node() {
    static Node* n = [] {
        auto* made = new Node;
        std::atexit([] {
            Node& last = node();
            last.suite->host().setCarrier(false);
            last.suite->host().setReceiving(false);
            last.run(20 * 60 * 1000);
            if (last.suite->host().pttKeyed()) fail("the fuzzing run ends with the transmitter keyed");
        });
        return made;
    }();
    return *n;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Node& n = node();
    mv::SimulatedHost& host = n.suite->host();
    const std::string input(reinterpret_cast<const char*>(data), size);
    size_t at = 0;
    int64_t spent = 0;
    while (at < input.size()) {
        size_t end = input.find('\n', at);
        if (end == std::string::npos) end = input.size();
        const std::string record = input.substr(at, end - at);
        at = end + 1;
        if (record.empty()) continue;
        const std::string text = record.substr(1);
        switch (record[0]) {
        case 'D': host.receiveDTMF(text); break;
        case 'M': host.receiveChat(text); break;
        case 'C': host.setCarrier(!host.carrier()); break;
        case 'R': host.setReceiving(!host.receiving()); break;
        case 'B': host.setBusy(!host.busy()); break;
        case 'S': host.stationConnects(text, "Nombre " + text, "10.0.0.1"); break;
        case 'X': host.stationDisconnects(text); break;
        case 'T': {
            // Up to two minutes per record and ten per input, so one input
            // cannot stall the run.
            int64_t ms = 0;
            for (char c : text.substr(0, 6))
                if (c >= '0' && c <= '9') ms = ms * 10 + (c - '0');
            ms = std::min<int64_t>(ms * 10, 120000);
            if (spent + ms > 600000) ms = 600000 - spent;
            spent += ms;
            n.run(ms);
            break;
        }
        default: break;
        }
        n.run(50);
    }
    n.run(1000);
    n.trimLog();
    return 0;
}
