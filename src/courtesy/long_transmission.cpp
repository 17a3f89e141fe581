#include "courtesy/long_transmission.h"

#include <cmath>

#include "core/event_log.h"
#include "core/module_surfaces.h"
#include "core/number_text.h"
#include "core/program.h"
#include "courtesy/presence_countdown.h"

namespace mv {

using namespace courtesy;

namespace {
constexpr long long kLongestPeriodMs = 65535;
}

LongTransmissionMessage::LongTransmissionMessage(Window& window) : m_window(window) {}

void LongTransmissionMessage::build(WindowParts parts, Container& area, const ChannelPresence& presence) {
    m_presence = &presence;
    auto& frame = area.add(parts.make<Container>("frameLongTransmission", ContainerKind::Frame,
                                                 "Mensaje por Transmision Larga"));
    m_message = &frame.add(parts.make<TextBox>("TEXT6", ""));
    m_message->setMultiLine(true);
    auto& buttons = frame.add(parts.make<Container>("messageButtons", ContainerKind::Row));
    buttons.add(parts.make<Button>("btnClearMessage", "Borrar")).onClick = [this] { m_message->setText(""); };
    buttons.add(parts.make<Button>("btnTestMessage", "Prueba")).onClick = [this] { test(); };

    auto& allowedFrame = frame.add(parts.make<Container>("frameAllowed", ContainerKind::Frame, "Tiempo permitido"));
    auto& allowed = allowedFrame.add(parts.make<Container>("allowedGrid", ContainerKind::Grid, "", 2));
    allowed.add(parts.make<Label>("lblBEACONPERIOD", "Segundos Transmision"));
    TextBox& period = allowed.add(parts.make<TextBox>("BEACONPERIOD", "150"));
    allowed.add(parts.make<Label>("lblTEXT8", "Segundos Retardo"));
    m_delay = &allowed.add(parts.make<TextBox>("TEXT8", "3"));
    m_delay->setDigitsOnly(true);
    allowed.add(parts.make<Label>("lblTEXT7", "DTMF"));
    allowed.add(parts.make<TextBox>("TEXT7", "#22#"));

    auto& sides = frame.add(parts.make<Container>("messageSides", ContainerKind::Grid, "", 3));
    m_countInternet = &sides.add(parts.make<CheckBox>("CHECK2", "Usar via IP", 0));
    sides.add(parts.make<Label>("lblIPCounter", "IP"));
    Label& internetSeconds = sides.add(parts.make<Label>("IPCounter", "0"));
    m_countRf = &sides.add(parts.make<CheckBox>("CHECK3", "Usar via RF", 0));
    sides.add(parts.make<Label>("lblRFCounter", "RF"));
    Label& rfSeconds = sides.add(parts.make<Label>("RFCounter", "0"));

    // The seconds form. Both counters share the one period field; each wires
    // the same edit rule to it.
    m_internetCounter = std::make_unique<PeriodCountdown>(
        parts, period, internetSeconds, nullptr, presenceCountdownOptions("Timer4", 1, [this] {
            return presenceStep(m_presence->internetPresent(), *m_countInternet);
        }),
        [this] { m_internetPending = true; });
    m_rfCounter = std::make_unique<PeriodCountdown>(
        parts, period, rfSeconds, nullptr, presenceCountdownOptions("Timer6", 1, [this] {
            return presenceStep(m_presence->rfUserPresent(), *m_countRf);
        }),
        [this] { m_rfPending = true; });
    m_internetSender = &parts.makeTimer("Timer7", 1000, true, [this] { sendChat(); });
    m_rfSender = &parts.makeTimer("Timer8", 1000, true, [this] { speak(); });
}

void LongTransmissionMessage::release() {
    m_internetCounter.reset();
    m_rfCounter.reset();
    m_internetSender = m_rfSender = nullptr;
}

void LongTransmissionMessage::clearPending() {
    m_internetPending = false;
    m_rfPending = false;
}

void LongTransmissionMessage::stopRfCounter() { m_rfCounter->tickSource().setEnabled(false); }

void LongTransmissionMessage::setDelay(Timer& sender) {
    // "0" gives a period of 0: the timer never ticks and the message stays
    // due. A text that gives no period a timer can have (no number, over
    // 65.535 s) leaves the period as it was.
    const std::optional<double> seconds = numberOf(m_delay->text());
    if (!seconds || *seconds < 0) return;
    const long long ms = std::llround(*seconds * 1000);
    if (ms > kLongestPeriodMs) return;
    if (sender.interval() != ms) sender.setInterval(static_cast<int>(ms));
}

void LongTransmissionMessage::arm() {
    if (m_presence->internetPresent()) {
        m_internetSender->setEnabled(false);
        setDelay(*m_internetSender);
    } else {
        m_internetSender->setEnabled(true);
    }
    if (m_presence->rfUserPresent()) {
        m_rfSender->setEnabled(false);
        setDelay(*m_rfSender);
    } else {
        m_rfSender->setEnabled(true);
    }
}

// A message goes out once: the flag is cleared before the attempt, so a host
// or voice that refuses it leaves one error line, not one every few seconds.
void LongTransmissionMessage::sendChat() {
    if (m_presence->internetPresent() || !m_internetPending) return;
    m_internetPending = false;
    m_window.host().sendChatText(m_message->text());
}

void LongTransmissionMessage::speak() {
    if (m_presence->rfUserPresent() || !m_rfPending) return;
    m_rfPending = false;
    speakMessage();
}

void LongTransmissionMessage::speakMessage() {
    SpeechDesk* desk = surfaceOf<SpeechDesk>(m_window.program(), "idents");
    if (!desk) {
        m_window.program().log().error(m_window.name(), "no ident window to speak the long-transmission message");
        return;
    }
    desk->setSpeechText(m_message->text());
    desk->speakTheText();
}

void LongTransmissionMessage::test() {
    m_window.host().sendChatText(m_message->text());
    speakMessage();
}

}  // namespace mv
