#pragma once
// Opening an address (a web page, a mail address, a document) with whatever
// the desktop associates with it. The answer is a result code as the desktop
// shell gives it, so a caller can tell "nothing handles this kind of address"
// from "no such file" from any other failure.
#include <string>

namespace mv {

class EventLog;

namespace shell_result {
inline constexpr int kFileNotFound = 2;
inline constexpr int kPathNotFound = 3;
inline constexpr int kNoAssociation = 31;
// Every code from here up means the address was opened.
inline constexpr int kFirstSuccess = 33;
// What an implementation answers when it opened the address.
inline constexpr int kOpened = 42;
}  // namespace shell_result

inline bool shellOpened(int result) { return result >= shell_result::kFirstSuccess; }

class Shell {
public:
    virtual ~Shell() = default;
    // Opens `address` for `window` (the window that asked, for the log).
    virtual int open(const std::string& window, const std::string& address) = 0;
};

// A shell that opens nothing: it records each request in the event log and
// answers with a result chosen beforehand (opened, unless a test says
// otherwise). Headless runs and tests use it, so a scenario never starts a
// browser or a mail program.
class LoggingShell final : public Shell {
public:
    explicit LoggingShell(EventLog& log) : m_log(log) {}
    int open(const std::string& window, const std::string& address) override;
    void setResult(int result) { m_result = result; }

private:
    EventLog& m_log;
    int m_result = shell_result::kOpened;
};

}  // namespace mv
