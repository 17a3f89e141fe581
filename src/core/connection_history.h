#pragma once
// The list of stations that have connected, as the history window and the
// ident window both keep it: one line per connect, newest last, at most
// kLines lines, in its captioned frame with the "Borrar" button that empties
// it. The owning window passes each connect in; the list stamps it.
#include <string>

#include "core/local_time.h"
#include "core/window.h"

namespace mv {

class ConnectionHistory {
public:
    // Lines kept: weeks of ordinary traffic, and a flood of connects cannot
    // grow the program's memory.
    static constexpr size_t kLines = 2000;

    // One connect as the list shows it: " 2:05 PM -- N0CALL -- Juan --
    // 10.0.0.7" (12-hour clock, no leading zero, 12:30 AM just after
    // midnight, 12:00 PM at noon). The three texts go in as the host gave them.
    static std::string lineFor(const LocalDateTime& at, const std::string& call, const std::string& name,
                               const std::string& address);

    // From the window's build(): the frame and the list, a LineLog named
    // `listName`, go into `area`; the "Borrar" button into `buttons`, or
    // below the list when there is none. The controls live and die with the
    // window's own.
    void build(WindowParts parts, Container& area, const std::string& listName, Container* buttons = nullptr);

    // A station connected: adds its line, stamped with the local time now.
    void record(const std::string& call, const std::string& name, const std::string& address);

    const LineLog& list() const { return *m_list; }

private:
    Scheduler* m_scheduler = nullptr;
    LineLog* m_list = nullptr;
};

}  // namespace mv
