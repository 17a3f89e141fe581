#include "clock/announcement_composer.h"

#include "core/errors.h"
#include "core/player_strip.h"

namespace mv {

int AnnouncementComposer::startValue() const { return m_ctx.prefix.ticked() ? 11 : 1; }

const char* AnnouncementComposer::greetingFor(int hour) {
    if (hour >= 0 && hour < 12) return "GoodMorning";
    if (hour >= 12 && hour < 18) return "GoodAfternoon";
    return "GoodEvening";
}

std::string AnnouncementComposer::pathOf(const std::string& name) const {
    std::string folder = m_ctx.fileLocation.text();
    // A folder typed without its closing separator still finds its files.
    if (!folder.empty() && folder.back() != '/' && folder.back() != '\\') folder += '/';
    return folder + name + (m_ctx.wav.value() ? ".wav" : ".mp3");
}

std::string AnnouncementComposer::prefixFile(bool blankWhenOff) const {
    if (blankWhenOff && !m_ctx.prefix.ticked()) return "Blank";
    if (m_ctx.bell1.value()) return "DingDong";
    if (m_ctx.bell2.value()) return "DingDong2";
    return greetingFor(m_ctx.currentHour());
}

void AnnouncementComposer::playBlock(const std::string& name, int nextIfEnded) {
    if (m_failed) return;
    m_fileName = pathOf(name);
    m_ctx.player.keyOn();
    if (!m_ctx.player.loadFile(m_fileName)) {
        m_failed = true;
        return;
    }
    // The displays as they stand: the elapsed display still holds the last
    // position read, so reloading a file that has just ended reads as ended.
    PlayerStrip& p = m_ctx.player;
    if (p.elapsedDisplay().text() == p.lengthDisplay().text()) m_nextStep = nextIfEnded;
}

void AnnouncementComposer::loadStepFile(int step) {
    const bool words = m_ctx.words.ticked();
    switch (step) {
        case 1:
            m_sequenceActive = true;
            playBlock("TheTimeIs", 2);
            break;
        case 2: playBlock(m_ctx.hh.text(), words ? 22 : 3); break;
        case 22: playBlock("Hour", 3); break;
        case 3: playBlock(m_ctx.mm.text(), words ? 33 : 4); break;
        case 33: playBlock("Minutes", 4); break;
        default: break;
    }
}

bool AnnouncementComposer::loadFile() {
    m_failed = false;
    const bool words = m_ctx.words.ticked();
    if (!words) {
        if (!m_ctx.prefix.ticked() && m_step == 11) {
            m_step = 1;
            m_nextStep = 1;
        } else {
            m_sequenceActive = true;
            playBlock(prefixFile(true), 1);
        }
    } else if (m_step == 11) {
        m_sequenceActive = true;
        playBlock(prefixFile(false), 1);
    }
    if (m_step == 1 || m_step == 2 || m_step == 3 || (words && (m_step == 22 || m_step == 33))) loadStepFile(m_step);
    if (m_step == 4 && !m_failed) {
        m_ctx.setPollEnabled(false);
        playBlock(m_ctx.ampm.ticked() ? m_ctx.amPm.text() : "Blank", m_nextStep);
        if (!m_failed) {
            m_step = startValue();
            m_nextStep = m_step;
            m_sequenceActive = false;
        }
    }
    if (m_failed) abandon(m_fileName);
    return !m_failed;
}

void AnnouncementComposer::abandon(const std::string& path) {
    // A missing word file ends the announcement for good: unkeyed, the poll
    // off, and everything set for a clean start, so the next announcement
    // works as soon as the files are back. (Left half-way, the chain would
    // wait forever and the next start would find nothing to play.)
    endChain();
    m_ctx.player.cleanUp();
    m_ctx.player.elapsedDisplay().setText(m_ctx.player.lengthDisplay().text());
    if (m_ctx.voiceFilesMissing) m_ctx.voiceFilesMissing(path, "");
}

void AnnouncementComposer::endChain() {
    m_ctx.setPollEnabled(false);
    m_ctx.player.keyOff();
    m_sequenceActive = false;
    m_step = startValue();
    m_nextStep = m_step;
}

void AnnouncementComposer::applySliders() { m_ctx.player.applySliders(); }

void AnnouncementComposer::playNext() {
    applySliders();
    m_fileName.clear();
    if (!loadFile()) return;  // never key again after a failed load
    m_ctx.player.elapsedDisplay().setText("0");
    m_ctx.player.keyOn();
    m_ctx.player.run();
    m_ctx.player.seek(0);
}

void AnnouncementComposer::pollSequence() {
    if (!m_ctx.player.fileEnded()) return;
    const bool words = m_ctx.words.ticked();
    // The operator may change the announcement's form while it is on the
    // air: a word or bell step the new form leaves out passes on to the step
    // that follows it, so the announcement finishes in the new form.
    if (m_nextStep == 11 && !m_ctx.prefix.ticked()) m_nextStep = 1;
    if (!words && m_nextStep == 22) m_nextStep = 3;
    if (!words && m_nextStep == 33) m_nextStep = 4;
    bool followed = false;
    auto play = [this, &followed](int step, int after) {
        followed = true;
        m_fileName.clear();
        m_step = step;
        playNext();
        applySliders();
        if (m_failed) return false;
        m_step = after;
        return true;
    };
    if (m_ctx.prefix.ticked() && m_nextStep == 11 && !play(11, 0)) return;
    if (m_nextStep == 1 && !play(1, 0)) return;
    if (m_nextStep == 2 && !play(2, 0)) return;
    if (words && m_nextStep == 22 && !play(22, 0)) return;
    if (m_nextStep == 3 && !play(3, 11)) return;
    if (words && m_nextStep == 33 && !play(33, 11)) return;
    if (m_nextStep == 4) play(4, startValue());
    // The poll keyed the transmitter, so the poll releases it: a file that
    // has ended with nothing to follow it ends the announcement here rather
    // than holding the air until something else happens to reset the chain.
    if (!followed) endChain();
}

bool AnnouncementComposer::holdsTheAir() const { return m_sequenceActive && m_ctx.pollEnabled(); }

void AnnouncementComposer::checkRelease() {
    if (m_ctx.player.fileEnded() && !holdsTheAir()) m_ctx.player.keyOff();
}

}  // namespace mv
