#pragma once
// The event log's file. It can be reopened under the same name while the
// suite runs (SIGUSR1), so logrotate can move a week's log away and the
// suite goes on writing into a fresh file, without a restart.
#include <fstream>
#include <string>

namespace mv {

class LogFile {
public:
    // Opens `path`, emptied first (a headless run's own log) or appended to.
    bool open(const std::string& path, bool truncate);
    std::ostream& stream() { return m_file; }
    const std::string& path() const { return m_path; }
    // Opens the name again for appending. When that fails the old file stays
    // in use and false is returned, so nothing is lost either way.
    bool reopen();

private:
    std::string m_path;
    std::ofstream m_file;
};

}  // namespace mv
