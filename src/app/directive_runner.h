#pragma once
// Applies a scenario's directives to a running suite: host events at once, as
// the node raises them, operator actions queued behind whatever is already
// due, as a click would be. A directive that cannot be carried out (a window
// this build lacks, a disabled control) is logged as an `error` line and
// nothing else happens. On the host program itself (not the stand-in that
// wraps the simulated node) a scenario cannot raise host events: those
// directives are logged as `error` lines and skipped.
#include <string>

#include "app/scenario.h"
#include "core/event_log.h"

namespace mv {

class Control;
class Suite;

// What a control shows, as a scenario's `log` line reports it: a text (a log's
// lines, each ended by CR LF), a check box's 0/1/2, an option button's
// true/false, a slider's number.
LogValue controlValue(const Control& c);

class DirectiveRunner {
public:
    explicit DirectiveRunner(Suite& suite) : m_suite(suite) {}
    void apply(const Directive& d);

private:
    static bool isHostVerb(const std::string& verb);
    void fail(const Directive& d, const std::string& message);
    void setHost(const Directive& d);
    void operate(const Directive& d);
    void click(const Directive& d, Control& c);
    void set(const Directive& d, Control& c, const std::string& value);

    Suite& m_suite;
};

}  // namespace mv
