#include "messages/history_window.h"

#include "core/local_time_label.h"

namespace mv {

HistoryWindow::HistoryWindow(Program& program) : Window(program, "history") {}

void HistoryWindow::build() {
    auto& root = make<Container>("historyRoot", ContainerKind::Column);
    setRoot(root);
    auto& buttons = make<Container>("historyButtons", ContainerKind::Row);
    m_history.build(parts(), root, "HistoryList", &buttons);
    root.add(buttons);
    Button& hideButton = buttons.add(make<Button>("btnHide", "Ocultar"));
    hideButton.onClick = [this] { hide(); };
    addLocalTimeLabel(parts(), buttons, "LocalTime", "Local Hora");
}

void HistoryWindow::onLoad() {
    createHostObject();
    setModuleCaption("       Quillasp");
}

void HistoryWindow::onConnected(const std::string& call, const std::string& name, const std::string& address) {
    m_history.record(call, name, address);
}

Window::CloseDecision HistoryWindow::onQueryClose() {
    // The list lives as long as the program runs: closing the window only
    // hides it, so it goes on recording and keeps what it has.
    hide();
    return CloseDecision::Cancel;
}

}  // namespace mv
