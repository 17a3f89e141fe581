#pragma once
// A scenario: what happens to the node and what the operator does, line by
// line, at given times. The whole file is checked before anything runs; a bad
// line is reported as "file:line: message".
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "core/local_time.h"

namespace mv {

class ScenarioError : public std::runtime_error {
public:
    ScenarioError(const std::string& file, int line, const std::string& message)
        : std::runtime_error(file + ":" + std::to_string(line) + ": " + message), m_line(line) {}
    int line() const { return m_line; }

private:
    int m_line;
};

struct Directive {
    int line = 0;
    int64_t atMs = 0;  // from the scenario's start
    std::string verb;
    // Arguments with quotes removed. For set and click: window, control, and
    // whether the control was given by its caption (quoted); set adds the value.
    std::vector<std::string> args;
    bool byCaption = false;
};

struct Scenario {
    LocalDateTime start;
    std::vector<Directive> directives;
    // When the run stops: the `end` line, or 1 s after the last directive.
    int64_t endMs = 0;
};

// The window names a scenario may address.
const std::vector<std::string>& scenarioWindowNames();

Scenario parseScenario(const std::string& text, const std::string& fileName);
// A directive as a scenario line reads it, without its time ("set
// hub.TEXT37 \"*ECHOTEST*\""): every text quoted, quotes and backslashes
// escaped, so parsing the line gives the directive back. Texts with a line
// break cannot be written (a scenario line holds none).
std::string formatDirective(const Directive& d);
Scenario loadScenario(const std::string& path);

}  // namespace mv
