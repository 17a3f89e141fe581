#include "core/connection_history.h"

#include <cstdio>

#include "core/plain_text.h"
#include "core/program.h"

namespace mv {

std::string ConnectionHistory::lineFor(const LocalDateTime& at, const std::string& call, const std::string& name,
                                       const std::string& address) {
    const int hour12 = at.hour % 12 == 0 ? 12 : at.hour % 12;
    char time[16];
    std::snprintf(time, sizeof time, " %d:%02d %s", hour12, at.minute, at.hour < 12 ? "AM" : "PM");
    return std::string(time) + " -- " + call + " -- " + name + " -- " + address;
}

void ConnectionHistory::build(WindowParts parts, Container& area, const std::string& listName, Container* buttons) {
    m_scheduler = &parts.window().program().scheduler();
    auto& frame = area.add(parts.make<Container>(
        listName + "Frame", ContainerKind::Frame,
        "Historial de Conecciones          ( Hora - Indicativol - Nombre - IP Direcci\xC3\xB3n  )"));
    m_list = &frame.add(parts.make<LineLog>(listName, kLines));
    Button& clear = (buttons ? *buttons : frame).add(parts.make<Button>(listName + "Clear", "Borrar"));
    clear.setToolTip("Clear the Call History");
    clear.onClick = [list = m_list] { list->clear(); };
}

void ConnectionHistory::record(const std::string& call, const std::string& name, const std::string& address) {
    // Each connect is one line: a line break in a name or address is shown
    // as the log shows any other control character, not as a second line.
    m_list->append(withoutControlCharacters(lineFor(m_scheduler->wallNow(), call, name, address),
                                            kReplacementCharacter));
}

}  // namespace mv
