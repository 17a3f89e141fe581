#include "clock/clock_window.h"

#include <cstdio>

#include "core/dialogs.h"
#include "core/dtmf_code.h"
#include "core/errors.h"
#include "core/event_log.h"
#include "core/program.h"

namespace mv {

ClockWindow::ClockWindow(Program& program) : HubWindow(program), m_player(*this) {}

ClockWindow::~ClockWindow() = default;

void ClockWindow::build() {
    HubWindow::build();
    PlayerStripOptions o;
    o.progress = PlayerStripOptions::Progress::PlainSeconds;
    o.ptt = m_ptt;
    o.volumeSlider = m_volume;
    o.volSet = m_volSet;
    o.applyVolumeAndRateAtLoad = true;
    // The clock releases the transmitter through its own check, which also
    // waits for the sequence to finish.
    o.releaseCheck = false;
    // A voice file that will not play is reported by the composer.
    o.onRenderError = [](const std::string&, const std::string&) {};
    auto& area = playerStripArea();
    Button& play = area.add(make<Button>("btnPlay", "Play"));
    play.onClick = [this] { playButton(); };
    m_player.build(parts(), area, std::move(o));
    m_fileLocation = controlAs<TextBox>("FILELOCATION");
    m_inUseWav = controlAs<OptionButton>("OPTIONWAV");
    m_inUseMp3 = controlAs<OptionButton>("OPTIONMP3");

    m_composer = std::make_unique<AnnouncementComposer>(ComposerContext{
        m_player,
        *controlAs<CheckBox>("CHECK1"),
        *controlAs<CheckBox>("CHECK2"),
        *controlAs<OptionButton>("OPTION5"),
        *controlAs<OptionButton>("OPTION6"),
        *controlAs<CheckBox>("AMPM"),
        *m_hh,
        *m_mm,
        *m_amPm,
        *m_fileLocation,
        *m_inUseWav,
        [this] { return scheduler().wallNow().hour; },
        [this](bool on) {
            if (m_poll) m_poll->setEnabled(on);
        },
        [this] { return m_poll && m_poll->enabled(); },
        [this](const std::string& path, const std::string&) { voiceFilesMissing(path); },
    });
    m_sayTheTime->onClick = [this] { sayTheTime(); };
    m_connectButton->onClick = [this] { connectButton(); };
}

void ClockWindow::afterSettingsLoaded() {
    m_composer->setSequenceActive(false);
    refreshTimeFields(scheduler().wallNow());
}

void ClockWindow::startClockTimers() {
    makeTimer("ClockTick", 1000, true, [this] { clockTick(); });
    makeTimer("VoiceFollower", 100, true, [this] { followVoice(); });
    m_releaseCheck = &makeTimer("ReleaseCheck", 1000, true, [this] { m_composer->checkRelease(); });
    makeTimer("AutoConnect", 60000, true, [this] { autoConnect(); });
    m_poll = &makeTimer("SequencePoll", 1, false, [this] { m_composer->pollSequence(); });
}

void ClockWindow::onUnload() {
    m_player.cleanUp();
    m_player.release();
    m_composer.reset();
    m_poll = nullptr;
    m_releaseCheck = nullptr;
}

void ClockWindow::setReleaseCheckEnabled(bool enabled) {
    // The check starts with the hub's other timers; until then there is nothing to switch.
    if (m_releaseCheck) m_releaseCheck->setEnabled(enabled);
}

void ClockWindow::refreshTimeFields(const LocalDateTime& now) {
    char buf[8];
    const bool twelve = controlAs<OptionButton>("OPTION1")->value();
    const int hour12 = now.hour % 12 == 0 ? 12 : now.hour % 12;
    std::snprintf(buf, sizeof buf, "%02d", twelve ? hour12 : now.hour);
    m_hh->setText(buf);
    std::snprintf(buf, sizeof buf, "%02d", now.minute);
    m_mm->setText(buf);
    m_amPm->setText(now.hour < 12 ? "AM" : "PM");
}

void ClockWindow::clockTick() {
    const LocalDateTime now = scheduler().wallNow();
    m_showTheTime->setCaption(now.timeText());
    if (channelBusy(host())) return;
    refreshTimeFields(now);
    if (host().isCarrierDetected()) return;
    const std::string t = now.timeText().substr(3);  // "mm:ss"
    if (t == "00:00" && controlAs<CheckBox>("ONHOUR")->ticked()) startAnnouncement();
    if ((t == "15:00" || t == "45:00") && controlAs<CheckBox>("QUARTERHOUR")->ticked()) startAnnouncement();
    if (t == "30:00" && controlAs<CheckBox>("HALFHOUR")->ticked()) startAnnouncement();
}

void ClockWindow::startAnnouncement() {
    AnnouncementComposer& c = *m_composer;
    if (!c.loadFile()) return;
    c.applySliders();
    m_player.run();
    m_player.seek(0);
    c.setStep(c.startValue());
    c.setNextStep(c.startValue());
    m_poll->setEnabled(true);
}

void ClockWindow::announceFromTheTime() {
    // Whoever asks by DTMF hears the time itself at once, never the bell or
    // greeting first, whatever the last announcement left in Step.
    AnnouncementComposer& c = *m_composer;
    c.setStep(1);
    if (!c.loadFile()) return;
    c.applySliders();
    m_player.run();
    m_player.seek(0);
    c.setStep(1);
    c.setNextStep(1);
    m_poll->setEnabled(true);
}

void ClockWindow::onDTMFString(const std::string& digits) {
    auto matches = [&](const char* field, const char* function) {
        const std::string& code = controlAs<TextBox>(field)->text();
        if (!dtmfCodeMatches(digits, code)) return false;
        log().dtmfCommand(name(), code, function);
        return true;
    };
    if (matches("TEXT38", "Conecion Automatica")) controlAs<CheckBox>("CHECK3")->click();
    if (matches("TEXT39", "Anuncio Estaciones")) controlAs<CheckBox>("CONDISC")->click();
    if (matches("DTMFTIME", "DTMF - Local Time")) ignoreErrors([this] { announceFromTheTime(); });
}

void ClockWindow::followVoice() {
    for (size_t v = 1; v < m_voiceSelectors.size(); ++v)
        m_voiceSelectors[v]->setEnabled(!m_voiceFolders[v]->text().empty());
    for (size_t v = 0; v < m_voiceSelectors.size(); ++v) {
        if (!m_voiceSelectors[v]->value()) continue;
        m_fileLocation->setText(m_voiceFolders[v]->text());
        (m_voiceWav[v]->value() ? m_inUseWav : m_inUseMp3)->setValue(true);
    }
}

void ClockWindow::autoConnect() {
    const std::string conference = controlAs<TextBox>("TEXT37")->text();
    if (conference.empty() || !controlAs<CheckBox>("CHECK3")->ticked()) return;
    ignoreErrors([&] {
        if (!host().isConnectedTo(conference)) host().connect(conference, true);
    });
}

void ClockWindow::connectButton() {
    const std::string conference = controlAs<TextBox>("TEXT37")->text();
    if (conference.empty()) return;
    ignoreErrors([&] { toggleConnection(host(), conference); });
}

void ClockWindow::sayTheTime() {
    if (channelBusy(host())) return;
    startAnnouncement();
}

void ClockWindow::playButton() {
    if (!m_composer->loadFile()) return;
    m_player.run();
    m_player.seek(0);
}

void ClockWindow::voiceFilesMissing(const std::string& path) {
    m_voiceSelectors[0]->setValue(true);
    m_fileLocation->setText(program().defaultVoiceFolder());
    m_inUseWav->setValue(true);
    log().error(name(), "cannot play the voice file " + path);
    dialogs().message({name(), "Error",
                       "  Error, no encontro ningun despositivo (No estan los Archivos de Voz)\n\n"
                       "                               US Paul, UK Audrey & UK Charles \n"
                       "A complete voice comes installed in " +
                           program().defaultVoiceFolder() +
                           " ; to record your own, put one .wav or .mp3 file per word (TheTimeIs, 00 to 59, "
                           "Hour, Minutes, AM, PM, DingDong, DingDong2, GoodMorning, GoodAfternoon, GoodEvening, "
                           "Blank) in a folder and enter it on the Ficheros tab.",
                       DialogIcon::Exclamation, DialogButtons::OK});
}

}  // namespace mv
