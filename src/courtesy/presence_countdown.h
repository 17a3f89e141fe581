#pragma once
// The courtesy window's countdowns that follow one side of the channel (the
// time-outs and the long-transmission counters): each counts while its side
// holds the channel and its box is ticked, holds while the box is clear, and
// stands at the full period while its side is quiet. Editing the period only
// puts an emptied or zero field back to "1"; the count takes the new period
// when next it restarts.
#include <functional>

#include "core/controls.h"
#include "core/period_countdown.h"

namespace mv::courtesy {

inline PeriodCountdownOptions::Step presenceStep(bool present, const CheckBox& counts) {
    using Step = PeriodCountdownOptions::Step;
    if (!present) return Step::Reset;
    return counts.value() != 0 ? Step::Count : Step::Hold;
}

inline PeriodCountdownOptions presenceCountdownOptions(const char* timerName, int secondsPerUnit,
                                                       std::function<PeriodCountdownOptions::Step()> step) {
    PeriodCountdownOptions o;
    o.timerName = timerName;
    o.secondsPerUnit = secondsPerUnit;
    o.emptiedPeriod = "1";
    o.editStartsOrStopsTick = false;
    o.onEdit = PeriodCountdownOptions::OnEdit::Keep;
    o.zeroPeriodBecomesOneAtTick = true;
    o.step = std::move(step);
    return o;
}

}  // namespace mv::courtesy
