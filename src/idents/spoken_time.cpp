#include "idents/spoken_time.h"

#include <cstdio>

#include "core/program.h"
#include "idents/ident_window.h"
#include "idents/speech_engine.h"

namespace mv {

std::string timePhrase(const std::string& lead, const LocalDateTime& at, bool twelveHour, int amPmGap) {
    char buf[32];
    if (twelveHour) {
        const int hour12 = at.hour % 12 == 0 ? 12 : at.hour % 12;
        std::snprintf(buf, sizeof buf, "%d %02d%*s%s", hour12, at.minute, amPmGap, "", at.hour < 12 ? "AM" : "PM");
    } else {
        std::snprintf(buf, sizeof buf, "%02d %02d", at.hour, at.minute);
    }
    return lead + buf;
}

bool fixedTimeDue(const LocalDateTime& at, bool hourly, bool halfHour, bool quarters) {
    if (at.second != 15) return false;
    return (at.minute == 0 && hourly) || (at.minute == 30 && halfHour) ||
           ((at.minute == 15 || at.minute == 45) && quarters);
}

SpokenTime::SpokenTime(IdentWindow& window) : m_window(window) {}

void SpokenTime::build(WindowParts parts, Container& parent, SettingsBinder& binder) {
    auto& frame = parent.add(parts.make<Container>("frameSayTheTimeTts", ContainerKind::Frame, "Say The Time TTS"));
    auto& form = frame.add(parts.make<Container>("rowTimeForm", ContainerKind::Row));
    OptionGroup& group = parts.makeGroup();
    m_twelve = &form.add(parts.make<OptionButton>("Option1", "12 Horas", group));
    auto& twentyFour = form.add(parts.make<OptionButton>("Option2", "24 Horas", group));
    auto& boxes = frame.add(parts.make<Container>("rowTimeBoxes", ContainerKind::Row));
    m_onHour = &boxes.add(parts.make<CheckBox>("TimeHourly", "Hora"));
    m_onHalf = &boxes.add(parts.make<CheckBox>("TimeHalf", "Medias Horas"));
    m_onQuarter = &boxes.add(parts.make<CheckBox>("TimeQuarter", "Cuartos de Horas"));
    auto& say = frame.add(parts.make<Button>("btnSayTheTimeTts", "Say the Time TTS"));
    say.onClick = [this] { queueTimeOfDay(); };

    binder.bindOption("OPTION1", *m_twelve, "False");
    binder.bindOption("OPTION2", twentyFour, "False");
    binder.bindCheck("TIMEHOURLY", *m_onHour, "0");
    binder.bindCheck("TIMEHALF", *m_onHalf, "0");
    binder.bindCheck("TIMEQUARTER", *m_onQuarter, "0");
}

void SpokenTime::theTimeBit() {
    SpeechEngine& speech = m_window.speech();
    const LocalDateTime now = m_window.program().scheduler().wallNow();
    speech.setText(timePhrase(speech.phrase("AT"), now, twelveHour(), 2));
    speech.setSkipDelay(true);
    speech.setPending(true);
}

void SpokenTime::queueTimeOfDay() {
    SpeechEngine& speech = m_window.speech();
    const LocalDateTime now = m_window.program().scheduler().wallNow();
    speech.setText(timePhrase(speech.phrase("THETIMEIS"), now, twelveHour(), 1));
    speech.setPending(true);
}

void SpokenTime::atSecond(const LocalDateTime& at) {
    if (fixedTimeDue(at, m_onHour->ticked(), m_onHalf->ticked(), m_onQuarter->ticked())) queueTimeOfDay();
}

}  // namespace mv
