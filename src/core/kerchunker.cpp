#include "core/kerchunker.h"

#include "core/errors.h"
#include "core/settings_store.h"

namespace mv {
namespace {
constexpr long long kLongestPeriodMs = 65535;
}

Kerchunker::Kerchunker(WindowParts parts, TextBox& kerchunkWait, TextBox& hangTime, Label& ok2Kerchunk,
                       KerchunkerOptions options, std::function<void()> sendRfLetter,
                       std::function<void()> sendInternetLetter)
    : m_window(parts.window()),
      m_kerchunkWait(kerchunkWait),
      m_hangTime(hangTime),
      m_ok(ok2Kerchunk),
      m_options(std::move(options)),
      m_sendRfLetter(std::move(sendRfLetter)),
      m_sendInternetLetter(std::move(sendInternetLetter)) {
    m_kerchunker = &parts.makeTimer("Kerchunker", m_options.kerchunkWaitMs, m_options.runningFromLoad,
                                    [this] { filterTick(); });
    m_kickBack = &parts.makeTimer("KickBackCheck", m_options.hangTimeMs, m_options.runningFromLoad,
                                  [this] { pollTick(); });
    m_ok.setCaption(kNotAccepted);
    m_kerchunkWait.setDigitsOnly(true);
    m_hangTime.setDigitsOnly(true);
    m_kerchunkWait.onChange = [this] { applyPeriod(m_kerchunkWait, *m_kerchunker); };
    m_hangTime.onChange = [this] { applyPeriod(m_hangTime, *m_kickBack); };
}

void Kerchunker::applyPeriods() {
    applyPeriod(m_kerchunkWait, *m_kerchunker);
    applyPeriod(m_hangTime, *m_kickBack);
}

void Kerchunker::applyPeriod(TextBox& field, Timer& timer) {
    field.setDigitsOnly(true);
    if (m_options.badPeriod == KerchunkerOptions::BadPeriod::ZeroStops && field.text().empty()) {
        field.setText("0");  // runs this again for "0"
        return;
    }
    long long ms = 0;
    if (!setting::parseWhole(field.text(), ms) || ms < 0 || ms > kLongestPeriodMs) return;
    if (ms == 0 && m_options.badPeriod == KerchunkerOptions::BadPeriod::KeepOld) return;
    // A field set to the period already in force leaves a running timer's
    // schedule alone.
    if (timer.interval() != ms) timer.setInterval(static_cast<int>(ms));
}

bool Kerchunker::carrier() { return m_window.host().isCarrierDetected(); }

void Kerchunker::carrierDetect(bool on) {
    // A carrier that comes back while the filter runs does not restart it:
    // the delay counts from the first carrier-on that found it stopped.
    (on ? m_kerchunker : m_kickBack)->setEnabled(true);
}

void Kerchunker::filterTick() {
    if (m_options.beforeTick) m_options.beforeTick();
    if (silenced()) return;
    m_kerchunker->setEnabled(false);
    // A carrier gone by now was a kerchunk: it earns nothing.
    if (!lettersEnabled() || !carrier()) return;
    m_ok.setCaption(kAccepted);
    m_kickBack->setEnabled(true);
}

void Kerchunker::pollTick() {
    if (m_options.beforeTick) m_options.beforeTick();
    if (silenced() || carrier() || !lettersEnabled() || !accepted()) return;
    m_kickBack->setEnabled(false);
    // The over has ended whether or not its letter gets out: a letter the host
    // refuses is logged by the call itself, and the filter is ready for the
    // next over all the same.
    ignoreErrors(m_sendRfLetter);
    m_ok.setCaption(kNotAccepted);
}

void Kerchunker::internetAudioEnded() {
    if (silenced() || !lettersEnabled()) return;
    if (m_options.internetLetterWithheldUnderCarrier && carrier()) return;
    m_sendInternetLetter();
}

}  // namespace mv
