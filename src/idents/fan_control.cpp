#include "idents/fan_control.h"

#include "core/errors.h"
#include "core/module_surfaces.h"
#include "core/number_text.h"
#include "core/program.h"
#include "idents/ident_window.h"

namespace mv {

FanControl::FanControl(IdentWindow& window) : m_window(window) {}

FanControl::~FanControl() = default;

void FanControl::build(WindowParts parts, Container& parent, SettingsBinder& binder) {
    auto& frame = parent.add(parts.make<Container>("frameFan", ContainerKind::Frame, "DTR / RTS Control   ( Fan )"));
    m_use = &frame.add(parts.make<CheckBox>("FanCTRL", "Use Fan Control"));
    auto& lines = frame.add(parts.make<Container>("rowFanLine", ContainerKind::Row));
    OptionGroup& line = parts.makeGroup();
    m_dtr = &lines.add(parts.make<OptionButton>("UseDTR", "Use DTR", line));
    m_rts = &lines.add(parts.make<OptionButton>("UseRTS", "Use RTS", line));

    auto& runRow = frame.add(parts.make<Container>("rowFanRun", ContainerKind::Row));
    m_period = &runRow.add(parts.make<TextBox>("FanPeriod", "1"));
    m_period->setMaxLength(3);
    m_period->setToolTip("xx Minutes fan will fun after TX");
    runRow.add(parts.make<Label>("lblFanMin", "Min"));
    auto& seconds = runRow.add(parts.make<Label>("FanSeconds", "0"));
    m_onOff = &runRow.add(parts.make<Label>("FanOnOff", kFanOff, kFanOffDarkRed));

    auto& delayRow = frame.add(parts.make<Container>("rowFanDelay", ContainerKind::Row));
    m_useDelay = &delayRow.add(parts.make<CheckBox>("DelayCTRL", "Use Start Delay"));
    m_delayPeriod = &delayRow.add(parts.make<TextBox>("DelayPeriod", "10"));
    m_delayPeriod->setMaxLength(3);
    delayRow.add(parts.make<Label>("lblDelayPeriod", "Seconds Start Delay"));
    m_delaySeconds = &delayRow.add(parts.make<Label>("DelaySeconds", "10"));

    // The run: minutes, counting while "Use Fan Control" is ticked, the line
    // raised at every tick of it; a run is only ever started by StartFanRun.
    PeriodCountdownOptions run;
    run.timerName = "Fan";
    run.tickRunningAtStart = false;
    run.emptiedPeriod = "1";
    run.zeroPeriodBecomesOneAtTick = true;
    run.editStartsOrStopsTick = false;
    run.step = [this] { return runStep(); };
    m_run = std::make_unique<PeriodCountdown>(parts, *m_period, seconds, nullptr, std::move(run), [this] { runEnded(); });
    m_period->onChange = [this] {
        if (m_clearingPeriod) {
            m_run->onPeriodChanged();
            return;
        }
        if (periodValue(m_period->text()) > 0) {
            // A new length starts a run at once, like a transmission would.
            m_delaySeconds->setCaption(m_delayPeriod->text());
            startFanRun();
            m_run->onPeriodChanged();
            return;
        }
        // Cleared: the field becomes "1", the run stops and nothing starts.
        m_clearingPeriod = true;
        m_run->onPeriodChanged();
        m_clearingPeriod = false;
        runTimer().setEnabled(false);
    };

    // The start delay: seconds, counting while "Use Start Delay" is ticked.
    PeriodCountdownOptions delay;
    delay.timerName = "FanDelay";
    delay.tickRunningAtStart = false;
    delay.secondsPerUnit = 1;
    delay.emptiedPeriod = "1";
    delay.zeroPeriodBecomesOneAtTick = true;
    delay.editStartsOrStopsTick = false;
    delay.onEdit = PeriodCountdownOptions::OnEdit::ShowPeriodText;
    m_delay = std::make_unique<PeriodCountdown>(parts, *m_delayPeriod, *m_delaySeconds, m_useDelay, std::move(delay),
                                                [this] { delayEnded(); });
    m_delayPeriod->onChange = [this] {
        const bool cleared = periodValue(m_delayPeriod->text()) <= 0;
        m_delay->onPeriodChanged();
        if (cleared) delayTimer().setEnabled(false);
    };

    // Timer6: the line cannot be changed while the fan is in use.
    parts.makeTimer("Timer6", 1000, true, [this] {
        const bool free = !m_use->ticked();
        m_dtr->setEnabled(free);
        m_rts->setEnabled(free);
    });

    // The periods first: read while the fan is not yet in use, their edit
    // handlers start no run at load.
    binder.bindText("FANPERIOD", *m_period, "1");
    binder.bindText("DELAYPERIOD", *m_delayPeriod, "10");
    binder.bindCheck("FANCTRL", *m_use, "0");
    binder.bindOption("USEDTR", *m_dtr, "False");
    binder.bindOption("USERTS", *m_rts, "False");
    binder.bindCheck("DELAYCTRL", *m_useDelay, "0");
}

void FanControl::startIdle() {
    runTimer().setEnabled(false);
    delayTimer().setEnabled(false);
    m_run->secondsLabel().setCaption("0");
    m_delaySeconds->setCaption(m_delayPeriod->text());
    show(false);
}

void FanControl::startFanRun() {
    if (m_useDelay->ticked()) {
        // A delay already counting goes on where it is.
        delayTimer().setEnabled(true);
        return;
    }
    if (!m_use->ticked()) return;
    beginRun();
}

void FanControl::beginRun() {
    // The fan starts with the transmission rather than at the run's first
    // tick a second later: the line goes up at once.
    if (!runTimer().enabled()) {
        show(true);
        raiseLine();
    }
    runTimer().setEnabled(true);
    m_run->restart();
}

void FanControl::keying() {
    if (!m_use->ticked()) return;
    m_delaySeconds->setCaption(m_delayPeriod->text());
    startFanRun();
}

void FanControl::whileTransmitting() {
    if (m_use->ticked()) startFanRun();
}

PeriodCountdownOptions::Step FanControl::runStep() {
    if (!m_use->ticked()) {
        // Switched off mid-run: the count stands and the line stays down.
        show(false);
        dropLine();
        return PeriodCountdownOptions::Step::Hold;
    }
    show(true);
    raiseLine();
    return PeriodCountdownOptions::Step::Count;
}

void FanControl::runEnded() {
    runTimer().setEnabled(false);
    show(false);
    dropLine();
}

void FanControl::delayEnded() {
    delayTimer().setEnabled(false);
    // Still on the air after the delay: the transmission is long enough.
    if (m_use->ticked() && showsPttOn(m_window.program(), m_window.name())) beginRun();
}

void FanControl::raiseLine() {
    HostObject& host = m_window.host();
    if (m_dtr->value()) ignoreErrors([&] { host.setDTR(true); });
    if (m_rts->value()) ignoreErrors([&] { host.setRTS(true); });
}

void FanControl::dropLine() {
    HostObject& host = m_window.host();
    if (m_dtr->value()) ignoreErrors([&] { host.setDTR(false); });
    if (m_rts->value()) ignoreErrors([&] { host.setRTS(false); });
}

void FanControl::show(bool on) { m_onOff->set(on ? kFanOn : kFanOff, on ? kFanOnGreen : kFanOffDarkRed); }

}  // namespace mv
