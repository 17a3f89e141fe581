#include "event_flood.h"

#include <algorithm>
#include <memory>
#include <ostream>
#include <streambuf>

#include "app/suite.h"
#include "core/controls.h"

namespace mv::test {
namespace {

// Counts the log's lines without keeping them.
class LineCounter final : public std::streambuf {
public:
    uint64_t lines = 0;

protected:
    int overflow(int c) override {
        if (c == '\n') ++lines;
        return c == EOF ? 0 : c;
    }
};

void measure(const Control& control, const std::string& window, FloodReport& r) {
    const std::string where = window + "." + control.name();
    switch (control.kind()) {
    case ControlKind::LineLog: {
        const auto& log = static_cast<const LineLog&>(control);
        if (log.lines().size() >= r.longestLineList) {
            r.longestLineList = log.lines().size();
            r.longestLineListName = where;
        }
        break;
    }
    case ControlKind::TextBox: {
        const auto& box = static_cast<const TextBox&>(control);
        if (box.text().size() > r.longestText) {
            r.longestText = box.text().size();
            r.longestTextName = where;
        }
        break;
    }
    case ControlKind::ComboBox:
        r.longestList = std::max(r.longestList, static_cast<const ComboBox&>(control).items().size());
        break;
    case ControlKind::Container:
        for (const Control* child : static_cast<const Container&>(control).children()) measure(*child, window, r);
        break;
    default: break;
    }
}

std::string chatLine(int i) {
    static const char* const calls[] = {"EA4XYZ-L", "K1ABC", "LU7DW-R", "G4ABC", "VK2XYZ", "JA1ZZZ"};
    return std::string(calls[i % 6]) + ">mensaje " + std::to_string(i) + " en la inundacion del nodo";
}

// Keys no window answers to by default, so only the time code keys the transmitter.
std::string junkDtmf(int i) {
    static const char keys[] = "0ABCD*#";
    std::string digits;
    for (int n = 0; n < 3 + i % 6; ++n) digits += keys[(i * 7 + n * 3) % 7];
    return digits;
}

}  // namespace

FloodReport runEventFlood(const FloodOptions& o) {
    FloodReport r;
    LineCounter counter;
    std::ostream logStream(&counter);
    SuiteOptions so;
    so.settingsDir = o.settingsDir;
    so.virtualStart = o.start;
    so.logStream = &logStream;
    so.defaultVoiceFolder = o.voiceFolder;
    so.defaultToneFolder = o.toneFolder;
    Suite suite(so);
    std::string why;
    if (suite.program().start("hub", nullptr, why) != Program::StartResult::Started) return r;
    Scheduler& scheduler = suite.scheduler();
    SimulatedHost& host = suite.host();
    // The operator has the chat and history windows open, as on a busy evening.
    for (const char* name : {"messages", "history"})
        if (Window* w = suite.program().window(name)) scheduler.post([w] { w->show(); });
    scheduler.runUntil(scheduler.now());
    const std::string timeCode = suite.program().window("hub")->controlAs<TextBox>("DTMFTIME")->text();

    uint64_t ticks = 0;
    const int64_t floodStart = scheduler.now();
    Timer probe(scheduler, "probe", 1000, true, [&] { ++ticks; });

    // The flood in a hundred bursts over the spread, each handled before the next.
    constexpr int kBursts = 100;
    int chats = 0;
    int dtmf = 0;
    for (int burst = 1; burst <= kBursts; ++burst) {
        for (; chats < static_cast<int64_t>(o.chats) * burst / kBursts; ++chats) host.receiveChat(chatLine(chats));
        for (; dtmf < static_cast<int64_t>(o.dtmfStrings) * burst / kBursts; ++dtmf)
            host.receiveDTMF(o.timeCodeEvery > 0 && dtmf % o.timeCodeEvery == o.timeCodeEvery - 1 ? timeCode
                                                                                                : junkDtmf(dtmf));
        scheduler.runUntil(floodStart + o.spreadMs * burst / kBursts);
    }
    if (o.checkpoint) o.checkpoint("flooded");

    // On to the hour: its announcement must key on time.
    const LocalDateTime at = scheduler.wallNowExact();
    const int64_t toHourMs = ((59 - at.minute) * 60 + (60 - at.second)) * 1000LL - at.millisecond;
    const int64_t hour = scheduler.now() + toHourMs;
    host.clearCommands();
    scheduler.runUntil(hour);
    r.probeTicks = ticks;
    scheduler.runUntil(hour + 60000);
    for (const SimulatedHost::Command& c : host.commands())
        if (c.call == "SetPTT" && c.args == std::vector<std::string>{"true"} && c.timeMs >= hour) {
            r.hourKeyedAfterMs = c.timeMs - hour;
            break;
        }
    r.secondsPassed = static_cast<uint64_t>((hour - floodStart) / 1000);
    probe.setEnabled(false);
    scheduler.runUntil(scheduler.now() + 5 * 60000);

    for (const auto& window : suite.program().windows())
        if (window->isLoaded() && window->root()) measure(*window->root(), window->name(), r);
    r.logLines = counter.lines;
    r.hostRecord = host.commands().size();
    r.endsReleased = !host.pttKeyed();
    r.programEnded = suite.program().ended();
    if (o.checkpoint) o.checkpoint("end");
    return r;
}

}  // namespace mv::test
