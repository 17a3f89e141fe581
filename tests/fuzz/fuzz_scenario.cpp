// Any text as a scenario: it is either accepted, with its directives in time
// order inside the run, or refused with "file:line: message".
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <regex>
#include <string>

#include "app/scenario.h"

namespace {

void require(bool ok, const std::string& what) {
    if (!ok) {
        std::fprintf(stderr, "scenario fuzz: %s\n", what.c_str());
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    try {
        const mv::Scenario s = mv::parseScenario(text, "fuzz.scn");
        int64_t last = 0;
        int lastLine = 0;
        for (const mv::Directive& d : s.directives) {
            require(d.atMs >= last, "directives out of time order");
            require(d.line > lastLine, "directives out of line order");
            require(d.atMs <= s.endMs, "a directive after the end of the run");
            last = d.atMs;
            lastLine = d.line;
        }
    } catch (const mv::ScenarioError& e) {
        static const std::regex form(R"(fuzz\.scn:[1-9][0-9]*: .+)");
        require(std::regex_match(std::string(e.what()), form), std::string("badly formed refusal: ") + e.what());
        require(e.line() >= 1, "a refusal without a line");
    }
    return 0;
}
