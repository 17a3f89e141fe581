#include "core/period_countdown.h"

#include <cmath>

#include "core/number_text.h"
#include "core/program.h"

namespace mv {

PeriodCountdown::PeriodCountdown(WindowParts parts, TextBox& period, Label& secondsLeft, CheckBox* enable,
                                 PeriodCountdownOptions options, std::function<void()> action)
    : m_scheduler(parts.window().program().scheduler()),
      m_period(period),
      m_secondsLeft(secondsLeft),
      m_enable(enable),
      m_options(std::move(options)),
      m_action(std::move(action)) {
    m_timer = &parts.makeTimer(m_options.timerName, 1000, m_options.tickRunningAtStart, [this] { onTick(); });
    m_period.setDigitsOnly(true);
    m_period.onChange = [this] { onPeriodChanged(); };
}

long long PeriodCountdown::fullSeconds() const {
    const double period = periodValue(m_period.text());
    if (period <= 0) return 0;
    // A fractional period from a hand-edited file is rounded to whole seconds,
    // never below one, so the count always meets "0" on its way down.
    const long long seconds = std::llround(period * m_options.secondsPerUnit);
    return seconds < 1 ? 1 : seconds;
}

void PeriodCountdown::restart() { m_secondsLeft.setCaption(decimalText(static_cast<double>(fullSeconds()))); }

void PeriodCountdown::onPeriodChanged() {
    m_period.setDigitsOnly(true);
    const bool zero = periodValue(m_period.text()) <= 0;
    if (zero) {
        // Runs this handler again for the new text; what follows here has
        // the last word on the tick source.
        m_period.setText(m_options.emptiedPeriod);
    }
    if (m_options.editStartsOrStopsTick) m_timer->setEnabled(!zero);
    switch (m_options.onEdit) {
        case PeriodCountdownOptions::OnEdit::RestartFull: restart(); break;
        case PeriodCountdownOptions::OnEdit::ShowPeriodText: m_secondsLeft.setCaption(m_period.text()); break;
        case PeriodCountdownOptions::OnEdit::Keep: break;
    }
}

void PeriodCountdown::onTick() {
    if (m_options.letPendingEventsRunFirst) m_scheduler.processPendingEvents();
    if (m_options.beforeTick) m_options.beforeTick();
    if (m_options.zeroPeriodBecomesOneAtTick && m_period.text() == "0") m_period.setText("1");

    using Step = PeriodCountdownOptions::Step;
    const Step step = m_options.step ? m_options.step() : (m_enable && m_enable->value() != 0 ? Step::Count : Step::Hold);
    if (step == Step::Skip) return;
    if (step == Step::Reset) {
        restart();
    } else if (step == Step::Count) {
        const std::optional<double> left = numberOf(m_secondsLeft.caption());
        // A label that spells no number starts again from the whole period.
        if (left)
            m_secondsLeft.setCaption(decimalText(*left - 1));
        else
            restart();
    }
    if (reachedZero()) {
        restart();
        // A stopped period (zero) never fires, however the tick was started.
        if (fullSeconds() > 0 && m_action) m_action();
    }
    if (m_options.afterTick) m_options.afterTick();
}

}  // namespace mv
