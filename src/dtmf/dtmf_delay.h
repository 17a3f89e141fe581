#pragma once
// The DTMF delay: how many seconds a station may transmit and still operate
// the node by DTMF. While nothing is heard the countdown waits at the full
// allowance; while a signal is received (and "Usar Retardo" is ticked) it
// falls a second at a time. At "0" the tick source stops and the countdown
// stays at "0" until the ident window starts it again, which it does each
// second the node receives nothing.
//
// This is not a PeriodCountdown: it reloads on every quiet tick instead of at
// zero, and at zero it stops and holds "0" (the window reads that as "ran
// out") instead of reloading and running an action.
#include <string>

#include "core/window.h"

namespace mv {

inline constexpr const char* kSignalReceived = "Se\xC3\xB1" "al Recibida";
inline constexpr const char* kNoSignal = "      ";

class DtmfDelay {
public:
    // Wires itself to the seconds field's change handler; its tick source
    // "DTMFDelay" runs from the window's load.
    DtmfDelay(WindowParts parts, TextBox& seconds, CheckBox& useDelay, Label& countdown, Label& indicator);
    DtmfDelay(const DtmfDelay&) = delete;
    DtmfDelay& operator=(const DtmfDelay&) = delete;

    // Editing the allowance: "0" or empty stops the tick source, anything
    // else starts it; the countdown shows the field's text.
    void onSecondsChanged();
    // One tick: reads the host's reception and counts.
    void onTick();
    // Starts the tick source (a running one is left as it is).
    void start();
    // The countdown reads "0": a station has transmitted for longer than allowed.
    bool ranOut() const { return m_countdown.caption() == "0"; }

    Timer& tickSource() { return *m_timer; }

private:
    Window& m_window;
    TextBox& m_seconds;
    CheckBox& m_useDelay;
    Label& m_countdown;
    Label& m_indicator;
    Timer* m_timer = nullptr;
};

}  // namespace mv
