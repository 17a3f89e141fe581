#pragma once
// The talking clock from inside the ident window: buttons that show the clock
// or start its recorded time announcement at once, a button that queues the
// time in words, and a read-only copy of the clock's options, refreshed twice
// a second together with the "Señal Recibida" status.
#include <array>
#include <utility>

#include "core/window.h"

namespace mv {

class IdentWindow;
class SpokenTime;

inline constexpr const char* kSignalReceived = "Señal Recibida";
// What the status shows while nothing is received: fifteen blanks.
inline constexpr const char* kNoSignal = "               ";

class ClockShortcuts {
public:
    ClockShortcuts(IdentWindow& window, SpokenTime& time);

    // The "Diga La Hora - - wav/mp3" frame into `parent`, the status into `status`.
    void build(WindowParts parts, Container& parent, Container& status);

    // Timer2.
    void refresh();

private:
    void startClockAnnouncement();

    IdentWindow& m_window;
    SpokenTime& m_time;
    Label* m_signal = nullptr;
    // Each copy beside the name of the clock's control it mirrors.
    std::array<std::pair<CheckBox*, const char*>, 5> m_boxes{};
    std::array<std::pair<OptionButton*, const char*>, 2> m_options{};
};

}  // namespace mv
