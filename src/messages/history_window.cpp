#include "messages/history_window.h"

#include "core/connection_line.h"
#include "core/local_time_label.h"
#include "core/program.h"

namespace mv {

HistoryWindow::HistoryWindow(Program& program) : Window(program, "history") {}

void HistoryWindow::build() {
    auto& root = make<Container>("historyRoot", ContainerKind::Column);
    setRoot(root);
    auto& frame = root.add(make<Container>(
        "frameHistory", ContainerKind::Frame,
        "Historial de Conecciones          ( Hora - Indicativol - Nombre - IP Direcci\xC3\xB3n  )"));
    m_list = &frame.add(make<LineLog>("HistoryList", kListLines));

    auto& buttons = root.add(make<Container>("historyButtons", ContainerKind::Row));
    Button& clear = buttons.add(make<Button>("btnClear", "Borrar"));
    clear.setToolTip("Clear the Call History");
    clear.onClick = [this] { m_list->clear(); };
    Button& hideButton = buttons.add(make<Button>("btnHide", "Ocultar"));
    hideButton.onClick = [this] { hide(); };
    addLocalTimeLabel(parts(), buttons, "LocalTime", "Local Hora");
}

void HistoryWindow::onLoad() {
    createHostObject();
    setModuleCaption("       Quillasp");
}

void HistoryWindow::onConnected(const std::string& call, const std::string& name, const std::string& address) {
    m_list->append(connectionLine(scheduler().wallNow(), call, name, address));
}

Window::CloseDecision HistoryWindow::onQueryClose() {
    // The list lives as long as the program runs: closing the window only
    // hides it, so it goes on recording and keeps what it has.
    hide();
    return CloseDecision::Cancel;
}

}  // namespace mv
