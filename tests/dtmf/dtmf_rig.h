#pragma once
// The whole suite in virtual time with the DTMF control window at hand:
// typing into its fields, clicking its buttons, and counting what it asked of
// the host.
#include <memory>
#include <string>
#include <vector>

#include "dtmf/dtmf_control_window.h"
#include "support/stand_in_window.h"
#include "support/suite_rig.h"

namespace mv::test {

class DtmfRig : public SuiteRig {
protected:
    void start() {
        // The ident window restarts the DTMF delay every second nothing is
        // received; these tests drive the delay themselves, so it stays out.
        startSuite({2026, 11, 22, 10, 0, 0, 0}, "/usr/share/marrowvane/voice/",
                   [](Suite& s) { s.program().addWindow(std::make_unique<StandInWindow>(s.program(), "idents")); });
        dtmf = static_cast<DtmfControlWindow*>(suite->program().window("dtmf"));
    }
    TextBox& text(const std::string& name) { return *dtmf->controlAs<TextBox>(name); }
    CheckBox& check(const std::string& name) { return *dtmf->controlAs<CheckBox>(name); }
    Label& label(const std::string& name) { return *dtmf->controlAs<Label>(name); }
    // The operator types into a field (as a click would, through the queue).
    void type(const std::string& field, const std::string& value) {
        operate([&] { text(field).typeText(value); });
    }
    void click(const std::string& button) {
        operate([&] { dtmf->controlAs<Button>(button)->click(); });
    }
    // A DTMF string heard over the air, handled by every window.
    void hear(const std::string& digits) {
        suite->host().receiveDTMF(digits);
        run(0);
    }
    // The arguments of each `call` the DTMF control window made, in order.
    std::vector<std::vector<std::string>> calls(const std::string& call) const {
        std::vector<std::vector<std::string>> out;
        for (const auto& c : suite->host().commands())
            if (c.window == "dtmf" && c.call == call) out.push_back(c.args);
        return out;
    }
    using Args = std::vector<std::vector<std::string>>;

    DtmfControlWindow* dtmf = nullptr;
};

}  // namespace mv::test
