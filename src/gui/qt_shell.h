#pragma once
// Opens addresses with the desktop's own handler (the browser for a web page,
// the mail program for a mailto address, the associated program for a file)
// and answers with a shell result code: a file or folder that does not exist
// gives "not found", an address nothing on the desktop will take gives "no
// association". Every request goes to the event log.
#include "core/shell.h"

namespace mv {

class EventLog;

class QtShell final : public Shell {
public:
    explicit QtShell(EventLog& log) : m_log(log) {}
    int open(const std::string& window, const std::string& address) override;

private:
    EventLog& m_log;
};

}  // namespace mv
