#include "app/directive_runner.h"

#include "app/suite.h"
#include "core/controls.h"
#include "core/settings_store.h"

namespace mv {

LogValue controlValue(const Control& c) {
    if (auto* t = dynamic_cast<const TextBox*>(&c)) return t->text();
    if (auto* cb = dynamic_cast<const CheckBox*>(&c)) return static_cast<int64_t>(cb->value());
    if (auto* ob = dynamic_cast<const OptionButton*>(&c)) return ob->value();
    if (auto* s = dynamic_cast<const Slider*>(&c)) return static_cast<int64_t>(s->value());
    if (auto* combo = dynamic_cast<const ComboBox*>(&c)) return combo->text();
    if (auto* lines = dynamic_cast<const LineLog*>(&c)) return lines->text();
    return c.caption();
}

void DirectiveRunner::apply(const Directive& d) {
    SimulatedHost& host = m_suite.host();
    const auto on = [&] { return d.args[0] == "on"; };
    if (isHostVerb(d.verb) && !m_suite.hostDrivesWindows())
        return m_suite.log().error("", "line " + std::to_string(d.line) + ": the host program's events cannot be raised by a scenario; \"" + d.verb + "\" is skipped");
    if (d.verb == "carrier") host.setCarrier(on());
    else if (d.verb == "rx") host.setReceiving(on());
    else if (d.verb == "busy") host.setBusy(on());
    else if (d.verb == "dtmf") host.receiveDTMF(d.args[0]);
    else if (d.verb == "connect") host.stationConnects(d.args[0], d.args[1], d.args[2]);
    else if (d.verb == "disconnect") host.stationDisconnects(d.args[0]);
    else if (d.verb == "chat") host.receiveChat(d.args[0]);
    else if (d.verb == "host-closing") host.closing();
    else if (d.verb == "answer") m_suite.scriptedDialogs().queueAnswer(d.args[0]);
    else {
        // Operator actions queue like a click would, behind what is already due.
        const Directive copy = d;
        m_suite.scheduler().post([this, copy] { operate(copy); });
    }
}

bool DirectiveRunner::isHostVerb(const std::string& verb) {
    for (const char* v : {"carrier", "rx", "busy", "dtmf", "connect", "disconnect", "chat", "host-closing"})
        if (verb == v) return true;
    return false;
}

void DirectiveRunner::fail(const Directive& d, const std::string& message) {
    m_suite.log().error(d.args.empty() ? "" : d.args[0], "line " + std::to_string(d.line) + ": " + message);
}

void DirectiveRunner::setHost(const Directive& d) {
    SimulatedHost& host = m_suite.host();
    const std::string& key = d.args[1];
    const std::string& value = d.args[2];
    long long n = 0;
    if (key == "callsign") host.callsign = value;
    else if ((key == "cwwpm" || key == "cwspeed") && setting::parseWhole(value, n) && n >= 5 && n <= 60) host.cwWpm = static_cast<int>(n);
    else if (key == "cwpitch" && setting::parseWhole(value, n) && n >= 200 && n <= 3000) host.cwPitchHz = static_cast<double>(n);
    else fail(d, "host has no setting \"" + key + "\" taking \"" + value + "\"");
}

void DirectiveRunner::operate(const Directive& d) {
    Program& program = m_suite.program();
    if (d.verb == "set" && d.args[0] == "host") return setHost(d);
    Window* w = program.window(d.args[0]);
    if (!w) return fail(d, "this build has no window \"" + d.args[0] + "\"");
    if (d.verb == "show") return w->show();
    if (d.verb == "hide") return w->hide();
    if (d.verb == "close") {
        w->closeBox();
        return;
    }
    if (!w->isLoaded()) return fail(d, "window \"" + d.args[0] + "\" is not loaded");
    Control* c = d.byCaption ? w->findByCaption(d.args[1]) : w->control(d.args[1]);
    if (!c) return fail(d, "window \"" + d.args[0] + "\" has no control " + (d.byCaption ? "captioned \"" : "\"") + d.args[1] + "\"");
    if (d.verb == "click") return click(d, *c);
    if (d.verb == "log") return m_suite.log().value(w->name(), c->name(), controlValue(*c));
    set(d, *c, d.args[2]);
}

void DirectiveRunner::click(const Directive& d, Control& c) {
    if (!c.enabled()) return fail(d, "\"" + d.args[1] + "\" is disabled; the click did nothing");
    if (auto* b = dynamic_cast<Button*>(&c)) b->click();
    else if (auto* cb = dynamic_cast<CheckBox*>(&c)) cb->click();
    else if (auto* ob = dynamic_cast<OptionButton*>(&c)) ob->click();
    else fail(d, "\"" + d.args[1] + "\" cannot be clicked");
}

void DirectiveRunner::set(const Directive& d, Control& c, const std::string& value) {
    if (!c.enabled()) return fail(d, "\"" + d.args[1] + "\" is disabled; nothing was set");
    long long n = 0;
    bool b = false;
    if (auto* t = dynamic_cast<TextBox*>(&c)) {
        if (!t->typeText(value)) fail(d, "\"" + d.args[1] + "\" refused some of the typed characters");
    } else if (auto* cb = dynamic_cast<CheckBox*>(&c)) {
        int v = 0;
        if (!setting::parseCheck(value, v)) return fail(d, "a check box takes 0, 1 or 2");
        cb->setValue(v);
    } else if (auto* ob = dynamic_cast<OptionButton*>(&c)) {
        if (!setting::parseOption(value, b)) return fail(d, "an option button takes True or False");
        ob->setValue(b);
    } else if (auto* s = dynamic_cast<Slider*>(&c)) {
        if (!setting::parseWhole(value, n)) return fail(d, "a slider takes a whole number");
        s->setValue(static_cast<int>(n));
    } else if (auto* combo = dynamic_cast<ComboBox*>(&c)) {
        combo->setText(value);
    } else {
        fail(d, "\"" + d.args[1] + "\" cannot be set");
    }
}

}  // namespace mv
