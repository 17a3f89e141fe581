#include "idents/ident_clock.h"

#include "core/errors.h"
#include "core/module_surfaces.h"
#include "core/program.h"
#include "idents/announcement_switches.h"
#include "idents/ident_window.h"
#include "idents/information_texts.h"
#include "idents/spoken_time.h"
#include "idents/speech_engine.h"
#include "idents/station_ident.h"

namespace mv {
IdentClock::IdentClock(IdentWindow& window) : m_window(window) {}

void IdentClock::build(WindowParts parts, Container& row) {
    m_showTime = &row.add(parts.make<Label>("ShowTime", "00:00:00"));
    m_reception = &row.add(parts.make<Label>("PTT2", ""));
    parts.makeTimer("Timer1", 1000, true, [this] { secondTick(); });
    parts.makeTimer("Timer3", 1000, true, [this] { keepKeyedForPlayers(); });
}

void IdentClock::keepKeyedForPlayers() {
    // A host that dropped the line under a long file (its own time-out, a
    // keying it lost) is keyed again within a second. The keying stays the
    // playing window's: its own release at the end of the file takes the
    // transmitter down, and this window never holds it for them.
    const Program& program = m_window.program();
    for (const char* player : {"hub", "player"})
        if (showsPttOn(program, player)) {
            ignoreErrors([&] { m_window.keepTransmitterKeyedFor(player); });
            return;
        }
}

void IdentClock::secondTick() {
    // The second this tick stands for: a queued utterance spoken below takes
    // time, and the fixed-time texts must still see their own second.
    const LocalDateTime at = m_window.program().scheduler().wallNow();
    m_showTime->setCaption(at.timeText());
    m_window.program().scheduler().processPendingEvents();
    for (auto& [text, count] : m_lengths) count->setCaption(std::to_string(characterCount(text->text())));
    ignoreErrors([this] { handOverQueuedSpeech(); });
    m_window.switches().secondTick();
    m_window.restateHostWait();
    bool receiving = false;
    ignoreErrors([&] { receiving = followReception(); });
    ignoreErrors([&] { m_window.ident().restartOnActivity(receiving); });
    ignoreErrors([&] { fixedTimes(at); });
}

void IdentClock::fixedTimes(const LocalDateTime& at) {
    if (m_window.channelBusyFlag() || m_window.host().isCarrierDetected()) return;
    m_window.information().atSecond(at);
    m_window.spokenTime().atSecond(at);
}

void IdentClock::handOverQueuedSpeech() {
    const Program& program = m_window.program();
    for (const char* w : {"hub", "player", "idents"})
        if (showsPttOn(program, w)) return;
    if (m_window.speech().pending()) m_window.speech().speakTheText();
}

bool IdentClock::followReception() {
    const bool receiving = m_window.host().isReceiving();
    m_reception->setCaption(receiving ? kReceivingSignal : kNotReceiving);
    m_window.ident().followReception(receiving);
    m_window.information().followReception(receiving);
    if (!receiving) {
        if (DtmfControl* dtmf = surfaceOf<DtmfControl>(m_window.program(), "dtmf")) dtmf->startDelayTimer();
    }
    return receiving;
}

}  // namespace mv
