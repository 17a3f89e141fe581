#include "idents/clock_shortcuts.h"

#include "core/errors.h"
#include "core/module_surfaces.h"
#include "core/program.h"
#include "idents/ident_clock.h"
#include "idents/ident_window.h"
#include "idents/spoken_time.h"

namespace mv {

ClockShortcuts::ClockShortcuts(IdentWindow& window, SpokenTime& time) : m_window(window), m_time(time) {}

void ClockShortcuts::build(WindowParts parts, Container& parent, Container& status) {
    m_signal = &status.add(parts.make<Label>("SignalStatus", kNoSignal));

    auto& frame = parent.add(parts.make<Container>("frameClockShortcuts", ContainerKind::Frame, "Diga La Hora - - wav/mp3"));
    auto& copies = frame.add(parts.make<Container>("rowClockOptions", ContainerKind::Row));
    const std::pair<const char*, const char*> boxes[] = {{"ClockOnHour", "ONHOUR"},
                                                         {"ClockHalfHour", "HALFHOUR"},
                                                         {"ClockQuarterHour", "QUARTERHOUR"},
                                                         {"ClockAmPm", "AMPM"},
                                                         {"ClockHrMin", "CHECK1"}};
    const char* const boxCaptions[] = {"Hour", "Half Hour", "Quarter Hour", "AM/PM", "Hr / Min"};
    for (size_t i = 0; i < m_boxes.size(); ++i) {
        CheckBox& copy = copies.add(parts.make<CheckBox>(boxes[i].first, boxCaptions[i]));
        copy.setEnabled(false);
        m_boxes[i] = {&copy, boxes[i].second};
    }
    OptionGroup& hours = parts.makeGroup();
    m_options[0] = {&copies.add(parts.make<OptionButton>("Clock12Hour", "12 Hour", hours)), "OPTION1"};
    m_options[1] = {&copies.add(parts.make<OptionButton>("Clock24Hour", "24 Hour", hours)), "OPTION2"};
    for (auto& [copy, original] : m_options) copy->setEnabled(false);

    auto& buttons = frame.add(parts.make<Container>("rowClockButtons", ContainerKind::Row));
    auto& showClock = buttons.add(parts.make<Button>("btnShowClock", "Horas De la Disposición"));
    showClock.onClick = [this] {
        if (Window* hub = m_window.program().window("hub")) hub->show();
    };
    auto& sayTime = buttons.add(parts.make<Button>("btnSayTimeWav", "Say Time wav/mp3"));
    sayTime.onClick = [this] { startClockAnnouncement(); };
    auto& laHora = buttons.add(parts.make<Button>("btnLaHoraWav", "La Hora wav/mp3"));
    laHora.setToolTip("Permite Enviar la Hora via Radio");
    laHora.onClick = [this] { startClockAnnouncement(); };
    auto& sayTts = buttons.add(parts.make<Button>("btnSayTimeTts", "Say Time TTS"));
    sayTts.onClick = [this] { m_time.queueTimeOfDay(); };

    parts.makeTimer("Timer2", 500, true, [this] { refresh(); });
}

void ClockShortcuts::startClockAnnouncement() {
    // The clock's own start, without its busy test: the operator asked.
    if (TalkingClock* clock = surfaceOf<TalkingClock>(m_window.program(), "hub")) ignoreErrors([clock] {
            clock->startAnnouncement();
        });
}

void ClockShortcuts::refresh() {
    const Label* reception = m_window.controlAs<Label>("PTT2");
    m_signal->setCaption(reception && reception->caption() == kReceivingSignal ? kSignalReceived : kNoSignal);
    const Window* hub = m_window.program().window("hub");
    if (!hub || !hub->isLoaded()) return;
    for (auto& [copy, original] : m_boxes)
        if (const auto* box = hub->controlAs<CheckBox>(original)) copy->setValue(box->value());
    for (auto& [copy, original] : m_options)
        if (const auto* option = hub->controlAs<OptionButton>(original)) {
            if (option->value()) copy->setValue(true);
        }
}

}  // namespace mv
