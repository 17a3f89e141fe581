#include "core/shell.h"

#include "core/event_log.h"

namespace mv {

int LoggingShell::open(const std::string& window, const std::string& address) {
    m_log.shellOpen(window, address, m_result, false);
    return m_result;
}

}  // namespace mv
