#include "dtmf/dtmf_delay.h"

#include "core/errors.h"
#include "core/number_text.h"
#include "core/program.h"

namespace mv {

DtmfDelay::DtmfDelay(WindowParts parts, TextBox& seconds, CheckBox& useDelay, Label& countdown, Label& indicator)
    : m_window(parts.window()), m_seconds(seconds), m_useDelay(useDelay), m_countdown(countdown), m_indicator(indicator) {
    m_timer = &parts.makeTimer("DTMFDelay", 1000, true, [this] { onTick(); });
    m_seconds.setDigitsOnly(true);
    m_seconds.onChange = [this] { onSecondsChanged(); };
}

void DtmfDelay::onSecondsChanged() {
    m_seconds.setDigitsOnly(true);
    // "00" (or a hand-edited text that spells no number) is treated like an
    // emptied field, so the countdown can always meet "0".
    if (periodValue(m_seconds.text()) <= 0) {
        // Runs this handler again for "0"; this run has the last word.
        m_seconds.setText("0");
        m_timer->setEnabled(false);
    } else {
        m_timer->setEnabled(true);
    }
    m_countdown.setCaption(m_seconds.text());
}

void DtmfDelay::start() { m_timer->setEnabled(true); }

void DtmfDelay::onTick() {
    m_window.program().scheduler().processPendingEvents();
    bool receiving = false;
    // A failing query is in the log already; this second is simply skipped.
    if (!ignoreErrors([&] { receiving = m_window.host().isReceiving(); })) return;
    if (!receiving) {
        m_indicator.setCaption(kNoSignal);
        m_countdown.setCaption(m_seconds.text());
    } else {
        m_indicator.setCaption(kSignalReceived);
    }
    if (m_useDelay.value() == 1 && m_indicator.caption() == kSignalReceived) {
        // An allowance that spells no number (left empty) never runs out:
        // the count holds instead of running on below zero.
        if (const std::optional<double> left = numberOf(m_countdown.caption()))
            m_countdown.setCaption(decimalText(*left - 1));
    }
    if (ranOut()) m_timer->setEnabled(false);
}

}  // namespace mv
