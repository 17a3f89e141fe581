#include "idents/announcement_switches.h"

#include "core/dtmf_code.h"
#include "core/errors.h"
#include "core/event_log.h"
#include "core/program.h"
#include "idents/ident_window.h"
#include "idents/speech_engine.h"
#include "idents/spoken_time.h"

namespace mv {

AnnouncementSwitches::AnnouncementSwitches(IdentWindow& window, SpokenTime& time) : m_window(window), m_time(time) {}

void AnnouncementSwitches::build(WindowParts parts, Container& row, SettingsBinder& binder) {
    // Whether received text messages are read out; the text message window
    // reads the box by name.
    auto& anuncios = row.add(parts.make<Container>("frameAnuncios", ContainerKind::Frame, "Anuncios"));
    m_sayText = &anuncios.add(parts.make<CheckBox>("SayText", "Mensaje Texto"));
    m_sayText->setToolTip("Announce Text Messages");
    anuncios.add(parts.make<Label>("lblToggleText", "Comutador Mensaje Texto"));
    m_toggleText = &anuncios.add(parts.make<TextBox>("ToggleText", ""));

    auto& codes = row.add(parts.make<Container>("frameDtmfAnnouncements", ContainerKind::Frame, "DTMF Announcements"));
    m_warn = &codes.add(parts.make<CheckBox>("Check2", "Warn About Silence Mode"));
    auto& offRow = codes.add(parts.make<Container>("rowAnnounceOff", ContainerKind::Row));
    offRow.add(parts.make<Label>("lblAnnounceOff", "OFF"));
    m_announceOff = &offRow.add(parts.make<TextBox>("AnnounceOff", ""));
    auto& onRow = codes.add(parts.make<Container>("rowAnnounceOn", ContainerKind::Row));
    onRow.add(parts.make<Label>("lblAnnounceOn", "ON"));
    m_announceOn = &onRow.add(parts.make<TextBox>("AnnounceOn", ""));

    binder.bindCheck("SAYTEXT", *m_sayText, "0");
    binder.bindText("TOGGLETEXT", *m_toggleText, "");
    binder.bindCheck("CHECK2", *m_warn, "0");
    binder.bindText("ANNOUNCEOFF", *m_announceOff, "");
    binder.bindText("ANNOUNCEON", *m_announceOn, "");
}

bool AnnouncementSwitches::isTimeRequest(const std::string& digits) const {
    const Window* dtmf = m_window.program().window("dtmf");
    if (!dtmf || !dtmf->isLoaded()) return false;
    const auto* code = dtmf->controlAs<TextBox>("DTMF");
    const auto* use = dtmf->controlAs<CheckBox>("USEDTMF");
    return code && use && use->ticked() && dtmfCodeMatches(digits, code->text());
}

void AnnouncementSwitches::onDTMFString(const std::string& digits) {
    m_window.program().scheduler().processPendingEvents();
    EventLog& log = m_window.program().log();
    SpeechEngine& speech = m_window.speech();
    // Each code is tested on its own: one string set in two fields does both.
    if (dtmfCodeMatches(digits, m_toggleText->text())) {
        const bool reading = !m_sayText->ticked();
        log.dtmfCommand(m_window.name(), digits, reading ? "Mensaje Texto on" : "Mensaje Texto off");
        m_sayText->setValue(reading ? 1 : 0);
        speech.setText(speech.phrase(reading ? "TEXTMESSAGEENABLED" : "TEXTMESSAGEDISABLED"));
        speech.setPending(true);
    }
    if (dtmfCodeMatches(digits, m_announceOff->text())) {
        log.dtmfCommand(m_window.name(), digits, "Silence mode on");
        enterSilence();
    }
    if (dtmfCodeMatches(digits, m_announceOn->text())) {
        log.dtmfCommand(m_window.name(), digits, "Silence mode off");
        leaveSilence();
    }
    if (isTimeRequest(digits)) {
        log.dtmfCommand(m_window.name(), digits, "DTMF Por Hora");
        m_time.queueTimeOfDay();
    }
}

void AnnouncementSwitches::warn(const char* phraseKey, const char* chatNotice) {
    SpeechEngine& speech = m_window.speech();
    speech.setText(speech.phrase(phraseKey));
    speech.setPending(true);
    const std::string notice = m_window.program().scheduler().wallNow().dateTimeText() + chatNotice;
    ignoreErrors([&] { m_window.host().sendChatText(notice); });
}

void AnnouncementSwitches::enterSilence() {
    CheckBox& silence = m_window.speech().disableAnnouncements();
    if (!m_warn->ticked()) {
        silence.setValue(1);
        return;
    }
    // Out of silence until the notice has been heard.
    silence.setValue(0);
    warn("SILENCEMODEENABLED", kSilenceStartNotice);
    m_silenceAfterNotice = true;
}

void AnnouncementSwitches::leaveSilence() {
    m_silenceAfterNotice = false;
    m_window.speech().disableAnnouncements().setValue(0);
    if (m_warn->ticked()) warn("SILENCEMODEDISABLED", kSilenceEndNotice);
}

void AnnouncementSwitches::secondTick() {
    if (!m_silenceAfterNotice || m_window.speech().pending()) return;
    m_silenceAfterNotice = false;
    m_window.speech().disableAnnouncements().setValue(1);
}

}  // namespace mv
