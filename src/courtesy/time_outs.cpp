#include "courtesy/time_outs.h"

#include "core/errors.h"
#include "courtesy/presence_countdown.h"

namespace mv {

using namespace courtesy;
using Step = PeriodCountdownOptions::Step;

TimeOuts::TimeOuts(Window& window) : m_window(window) {}

void TimeOuts::build(WindowParts parts, Container& indicatorRow, Container& area, const ChannelPresence& presence,
                     std::function<void()> rfTimedOut) {
    m_presence = &presence;
    m_rfTimedOut = std::move(rfTimedOut);

    m_label = &indicatorRow.add(parts.make<Label>("TimeOutLabel", "Funcionamiento"));
    m_label->setBackColor(kLightGreen);

    struct Side {
        TextBox* period;
        CheckBox* counts;
        Label* seconds;
        CheckBox* disconnects;
    };
    auto side = [&](const char* frameName, const char* caption, const char* periodKey, const char* countsKey,
                    const char* secondsName, const char* disconnectsKey, const char* disconnectsCaption) {
        auto& outer = area.add(parts.make<Container>(frameName, ContainerKind::Frame, caption));
        auto& frame = outer.add(parts.make<Container>(std::string(frameName) + "Grid", ContainerKind::Grid, "", 2));
        frame.add(parts.make<Label>(std::string("lbl") + periodKey, "Tiempo para Excluir la Estacion (Minutos)"));
        Side s{};
        s.period = &frame.add(parts.make<TextBox>(periodKey, "5"));
        s.counts = &frame.add(parts.make<CheckBox>(countsKey, "Tiempo en           Minutos", 0));
        s.counts->setToolTip("Auto Mute enable");
        frame.add(parts.make<Label>(std::string("gap") + countsKey, ""));
        frame.add(parts.make<Label>(std::string("lbl") + secondsName, "Retardo"));
        s.seconds = &frame.add(parts.make<Label>(secondsName, "600"));
        s.seconds->setToolTip("Seconds before Mute");
        s.disconnects = &frame.add(parts.make<CheckBox>(disconnectsKey, disconnectsCaption, 0));
        return s;
    };
    const Side rf = side("frameTimeOutRF", "Desconeccion Automatico RF", "BEACONPERIOD2", "CHECK4", "RFCountdown",
                         "CHECK6", "Desconectar Todo via RF");
    const Side ip = side("frameTimeOutIP", "Desconeccion Automatico IP", "BEACONPERIOD3", "CHECK7", "IPCountdown",
                         "CHECK5", "Desconectar Todo via IP");
    m_rfCounts = rf.counts;
    m_rfDisconnects = rf.disconnects;
    m_internetCounts = ip.counts;
    m_internetDisconnects = ip.disconnects;

    // The minute form, each side holding the other's countdown while it holds
    // the channel. Each tick runs on its own, in turn with the other side's,
    // so the two never pause each other at once.
    auto options = [](const char* timerName, std::function<Step()> rule) {
        PeriodCountdownOptions o = presenceCountdownOptions(timerName, 60, std::move(rule));
        o.letPendingEventsRunFirst = false;
        return o;
    };
    m_rf = std::make_unique<PeriodCountdown>(
        parts, *rf.period, *rf.seconds, nullptr,
        options("TimeOutTimer", [this] { return step(m_presence->rfUserPresent(), *m_rfCounts, *m_internet); }),
        [this] { rfTimeOut(); });
    m_internet = std::make_unique<PeriodCountdown>(
        parts, *ip.period, *ip.seconds, nullptr,
        options("Timer9", [this] { return step(m_presence->internetPresent(), *m_internetCounts, *m_rf); }),
        [this] { internetTimeOut(); });
    m_quietWatch = &parts.makeTimer("Timer10", 1, false, [this] { quietTick(); });
}

void TimeOuts::release() {
    m_rf.reset();
    m_internet.reset();
    m_quietWatch = nullptr;
}

Step TimeOuts::step(bool present, const CheckBox& counts, PeriodCountdown& other) {
    // The other side pauses while this one holds the channel and runs again
    // once it is quiet.
    other.tickSource().setEnabled(!present);
    return presenceStep(present, counts);
}

// A host action or disconnect that fails is logged by the call itself; the
// steps after it still run, so a refused action never keeps a station that
// timed out on the node.
void TimeOuts::performAction() {
    ignoreErrors([this] { m_window.host().performAction(7); });
}

void TimeOuts::disconnectAll() {
    ignoreErrors([this] { m_window.host().disconnectAll(); });
}

void TimeOuts::rfTimeOut() {
    m_quietWatch->setEnabled(true);
    performAction();
    if (m_rfTimedOut) m_rfTimedOut();
}

void TimeOuts::internetTimeOut() {
    performAction();
    performAction();
    if (m_internetDisconnects->value() != 1) return;
    performAction();
    performAction();
    disconnectAll();
}

void TimeOuts::quietTick() {
    if (!m_presence->quiet()) {
        indicate(*m_label, "DESCANSO", kRed);
        return;
    }
    indicate(*m_label, "Funcionamiento", kLightGreen);
    m_quietWatch->setEnabled(false);
    performAction();
    performAction();
    if (m_rfDisconnects->value() == 1) disconnectAll();
}

}  // namespace mv
