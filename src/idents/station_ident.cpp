#include "idents/station_ident.h"

#include "core/errors.h"
#include "core/event_log.h"
#include "core/host_link.h"
#include "core/module_surfaces.h"
#include "core/number_text.h"
#include "core/program.h"
#include "idents/ident_window.h"
#include "idents/speech_engine.h"

namespace mv {
namespace {

using Step = PeriodCountdownOptions::Step;

// The countdowns' values at start-up and after an idle stop: a voice ident
// soon after the node comes to life, and the Morse ident a little earlier.
constexpr const char* kVoiceStartSeconds = "10";
constexpr const char* kCwStartSeconds = "15";
constexpr const char* kIdleStartSeconds = "10";
constexpr const char* kVoiceAfterIdleSeconds = "15";
constexpr const char* kCwAfterIdleSeconds = "10";

// The idents' form of the countdown: minutes, and a period is never zero.
PeriodCountdownOptions identCountdown(const char* timerName) {
    PeriodCountdownOptions o;
    o.timerName = timerName;
    o.emptiedPeriod = "1";
    o.zeroPeriodBecomesOneAtTick = true;
    return o;
}

// An ident's count: falls while its "Use" box is ticked. A tick whose timer
// was stopped by what it let run first (the idle stop, due in the same
// second) does nothing, so the count keeps the value the stop gave it.
Step counting(PeriodCountdown& countdown, const CheckBox& use) {
    if (!countdown.tickSource().enabled()) return Step::Skip;
    return use.value() != 0 ? Step::Count : Step::Hold;
}

}  // namespace

size_t characterCount(const std::string& text) {
    size_t n = 0;
    for (unsigned char c : text) n += (c & 0xC0) != 0x80;
    return n;
}

std::string splitCall(const std::string& call) {
    std::string out;
    out.reserve(call.size() * 2);
    for (size_t i = 0; i < call.size(); ++i) {
        out += call[i];
        const bool lastByteOfCharacter =
            i + 1 == call.size() || (static_cast<unsigned char>(call[i + 1]) & 0xC0) != 0x80;
        if (lastByteOfCharacter) out += ' ';
    }
    return out;
}

StationIdent::StationIdent(IdentWindow& window) : m_window(window) {}

StationIdent::~StationIdent() = default;

void StationIdent::build(WindowParts parts, Container& page, SettingsBinder& binder) {
    auto& row = page.add(parts.make<Container>("rowIdents", ContainerKind::Row));
    buildVoice(parts, row.add(parts.make<Container>("frameVoiceIdent", ContainerKind::Frame,
                                                    "Voice Ident Callsign    (70 Chrs Max)")),
               binder);
    buildCw(parts, row.add(parts.make<Container>("frameCwIdent", ContainerKind::Frame, "CW Ident Callsign")), binder);
    buildIdle(parts, page.add(parts.make<Container>("frameIdleStop", ContainerKind::Frame, "Link Idle")), binder);
}

void StationIdent::buildVoice(WindowParts parts, Container& frame, SettingsBinder& binder) {
    auto& textRow = frame.add(parts.make<Container>("rowCallsign", ContainerKind::Row));
    m_callsign = &textRow.add(parts.make<TextBox>("Callsign", "Your Call"));
    m_callsign->setMaxLength(70);
    m_callsign->setToolTip("Enter you Call");
    m_callsignLength = &textRow.add(parts.make<Label>("CallsignLength", std::to_string(characterCount("Your Call"))));

    auto& countRow = frame.add(parts.make<Container>("rowVoicePeriod", ContainerKind::Row));
    auto& use = countRow.add(parts.make<CheckBox>("StopClock6", "Use"));
    use.setToolTip("Use TTS Ident");
    countRow.add(parts.make<Label>("lblVoiceEvery", "ID Every"));
    auto& period = countRow.add(parts.make<TextBox>("BeaconPeriod6", "15"));
    period.setToolTip("TTS Ident Your Call Every xx Minutes");
    auto& seconds = countRow.add(parts.make<Label>("BeaconSeconds6", kVoiceStartSeconds));
    PeriodCountdownOptions o = identCountdown("Beacon6");
    o.beforeTick = [this] { m_window.restateHostWait(); };
    o.step = [this, &use] { return counting(*m_voice, use); };
    m_voice = std::make_unique<PeriodCountdown>(parts, period, seconds, &use, std::move(o), [this] { voiceIdentDue(); });

    auto& buttons = frame.add(parts.make<Container>("rowVoiceButtons", ContainerKind::Row));
    auto& pttNow = buttons.add(parts.make<Button>("btnPttCallNow", "PTT Call Now"));
    pttNow.setToolTip("Say the Voice Ident Callsign with PTT");
    pttNow.onClick = [this] { pttCallNow(); };
    auto& sayNow = buttons.add(parts.make<Button>("btnSayCallNow", "Say Call Now"));
    sayNow.setToolTip("Say the Voice Ident Callsign no PTT");
    sayNow.onClick = [this] { sayCallNow(); };

    binder.bindText("CALLSIGN", *m_callsign, "Your Call");
    binder.bindCheck("STOPCLOCK6", use, "0");
    binder.bindText("BEACONPERIOD6", period, "15");
}

void StationIdent::buildCw(WindowParts parts, Container& frame, SettingsBinder& binder) {
    // Starts empty: "Send ID" turns an empty call into one blank, so nothing
    // stray is ever keyed in Morse.
    m_cwCallsign = &frame.add(parts.make<TextBox>("CWCallsign", ""));
    m_cwCallsign->setToolTip("Enter you Call");

    auto& countRow = frame.add(parts.make<Container>("rowCwPeriod", ContainerKind::Row));
    auto& use = countRow.add(parts.make<CheckBox>("StopClock7", "Use"));
    countRow.add(parts.make<Label>("lblCwEvery", "ID Every"));
    auto& period = countRow.add(parts.make<TextBox>("BeaconPeriod7", "15"));
    period.setMaxLength(3);
    period.setToolTip("CW Ident Ever xx Minutes");
    auto& seconds = countRow.add(parts.make<Label>("BeaconSeconds7", kCwStartSeconds));
    PeriodCountdownOptions o = identCountdown("Beacon7");
    // In silence mode the Morse countdown stands still and nothing is sent.
    o.step = [this, &use] { return m_window.speech().announcementsDisabled() ? Step::Skip : counting(*m_cw, use); };
    o.afterTick = [this] { sendDeferredCw(); };
    m_cw = std::make_unique<PeriodCountdown>(parts, period, seconds, nullptr, std::move(o), [this] { cwIdentDue(); });

    auto& send = frame.add(parts.make<Button>("btnSendId", "Send ID"));
    send.setToolTip("Send the CW Ident Callsign with PTT");
    send.onClick = [this] { sendId(); };

    binder.bindText("CWCALLSIGN", *m_cwCallsign, "");
    binder.bindCheck("STOPCLOCK7", use, "0");
    binder.bindText("BEACONPERIOD7", period, "15");
}

void StationIdent::buildIdle(WindowParts parts, Container& frame, SettingsBinder& binder) {
    m_idleCheck = &frame.add(parts.make<CheckBox>("IDCheck", "If Link Idle   (VK Use)"));
    m_idleCheck->setToolTip("Use if in VK");
    auto& row = frame.add(parts.make<Container>("rowIdle", ContainerKind::Row));
    row.add(parts.make<Label>("lblTurnIdOff", "Turn ID Off After"));
    auto& seconds = row.add(parts.make<Label>("IDSeconds", kIdleStartSeconds));
    auto& period = row.add(parts.make<TextBox>("VoicePeriod", "10"));
    period.setToolTip("If Node Idle for xx Minutes dont sent Ident. ( Used in VK)");
    row.add(parts.make<Label>("lblIdleMinutes", "Min"));

    // The idle stop is the countdown with its own ending: at zero it stops the
    // idents (when enabled) and then itself, unless the channel is in use,
    // which starts the idle time over. Editing the period never starts or
    // stops its timer.
    PeriodCountdownOptions o = identCountdown("IDTimer");
    o.editStartsOrStopsTick = false;
    o.afterTick = [this] { afterIdleTick(); };
    m_idle = std::make_unique<PeriodCountdown>(parts, period, seconds, m_idleCheck, std::move(o), [this] { idleTimeUp(); });
    // An emptied or zero period greys the box out (the field becomes "1").
    period.onChange = [this, &period] {
        const bool zero = periodValue(period.text()) <= 0;
        m_idle->onPeriodChanged();
        m_idleCheck->setEnabled(!zero);
    };

    binder.bindCheck("IDCHECK", *m_idleCheck, "0");
    binder.bindText("VOICEPERIOD", period, "10");
}

void StationIdent::startCounting() {
    m_voice->secondsLabel().setCaption(kVoiceStartSeconds);
    m_cw->secondsLabel().setCaption(kCwStartSeconds);
    m_idle->secondsLabel().setCaption(kIdleStartSeconds);
    for (Timer* t : {&voiceTimer(), &cwTimer(), &idleTimer()}) t->setEnabled(true);
}

void StationIdent::voiceIdentDue() {
    SpeechEngine& speech = m_window.speech();
    speech.setText(m_callsign->text());
    // While a station is heard this ident is skipped; the next comes a full period later.
    if (!m_window.channelBusyFlag()) speech.setPending(true);
}

void StationIdent::cwIdentDue() {
    HostObject& host = m_window.host();
    if (!host.isCarrierDetected())
        host.sendCW(0, m_cwCallsign->text());
    else
        m_cwPending = true;
}

void StationIdent::sendDeferredCw() {
    // The node transmits (its own speech, or the host keyed by anyone): a
    // Morse ident held back by a local carrier goes out now.
    if (!m_cwPending || !showsPttOn(m_window.program(), m_window.name())) return;
    m_window.host().sendCW(0, m_cwCallsign->text());
    m_cwPending = false;
}

void StationIdent::idleTimeUp() {
    m_idleRanOut = true;
    if (!m_idleCheck->ticked()) return;
    voiceTimer().setEnabled(false);
    cwTimer().setEnabled(false);
    m_voice->secondsLabel().setCaption(kVoiceAfterIdleSeconds);
    m_cw->secondsLabel().setCaption(kCwAfterIdleSeconds);
}

void StationIdent::afterIdleTick() {
    const bool ranOut = m_idleRanOut;
    m_idleRanOut = false;
    if (channelBusy(m_window.host()))
        m_idle->restart();
    else if (ranOut)
        idleTimer().setEnabled(false);
}

void StationIdent::followReception(bool receiving) { cwTimer().setEnabled(!receiving && voiceTimer().enabled()); }

void StationIdent::restartOnActivity(bool receiving) {
    if (!channelBusy(m_window.host())) return;
    idleTimer().setEnabled(true);
    voiceTimer().setEnabled(true);
    // The Morse ident stays stopped while an Internet station is heard, as
    // followReception just left it: restarting it here would let its tick
    // run within the next second's clock and send Morse over the station.
    if (!receiving) cwTimer().setEnabled(true);
}

void StationIdent::pttCallNow() {
    if (m_callsign->text().empty()) m_callsign->setText("NoCall");
    SpeechEngine& speech = m_window.speech();
    speech.setText(m_callsign->text());
    speech.speakTheText();
}

void StationIdent::sayCallNow() {
    if (m_callsign->text().empty()) m_callsign->setText("No Callsign");
    m_window.speech().sayUnkeyedOrLog(m_callsign->text());
}

void StationIdent::sendId() {
    if (m_window.speech().announcementsDisabled()) return;
    if (m_cwCallsign->text().empty()) m_cwCallsign->setText(" ");
    cwIdentDue();
}

}  // namespace mv
