#pragma once
// The ident window's one-second clock (SecondTick): shows the time and the
// lengths of the texts, hands queued speech to the voice once no window
// transmits, follows Internet reception, starts the idents again on activity
// and speaks the fixed-time texts. Its companion (Timer3) tells the host
// again each second to keep the transmitter keyed while the talking clock or
// the audio player plays.
#include <string>
#include <utility>
#include <vector>

#include "core/local_time.h"
#include "core/window.h"

namespace mv {

class IdentWindow;

// What the reception label shows while nothing is heard, and while something is.
inline constexpr const char* kNotReceiving = "      ";
inline constexpr const char* kReceivingSignal = "Receiving Signal";

class IdentClock {
public:
    explicit IdentClock(IdentWindow& window);

    // The time and reception labels into `row`; the clock's timers.
    void build(WindowParts parts, Container& row);
    // Shows `text`'s length in characters in `count` every second.
    void showLength(TextBox& text, Label& count) { m_lengths.emplace_back(&text, &count); }

    void secondTick();
    // Timer3.
    void keepKeyedForPlayers();

private:
    void handOverQueuedSpeech();
    // Returns whether an Internet station is heard.
    bool followReception();
    // The texts due 15 seconds past the hour, the quarters and the half hour,
    // unless a station is heard.
    void fixedTimes(const LocalDateTime& at);

    IdentWindow& m_window;
    Label* m_showTime = nullptr;
    Label* m_reception = nullptr;
    std::vector<std::pair<TextBox*, Label*>> m_lengths;
};

}  // namespace mv
