#include "messages/messages_window.h"

#include "core/dialogs.h"
#include "core/errors.h"
#include "core/event_log.h"
#include "core/local_time_label.h"
#include "core/module_surfaces.h"
#include "core/plain_text.h"
#include "core/program.h"

namespace mv {
namespace {

// Each value is read through a 265-character buffer: at most 264 come back.
constexpr size_t kMessagesReadBuffer = 265;
constexpr int kFilterWords = 8;

}  // namespace

MessagesWindow::MessagesWindow(Program& program)
    : Window(program, "messages"), m_binder(kMessagesSettingsFile, kMessagesReadBuffer, "messages") {}

void MessagesWindow::build() {
    m_filterWords.clear();
    auto& root = make<Container>("messagesRoot", ContainerKind::Column);
    setRoot(root);
    m_log = &root.add(make<LineLog>("MessageLog", kLogLines));

    auto& entryFrame = root.add(make<Container>("frameEntry", ContainerKind::Frame, "Teclee el Mensaje a Enviar"));
    auto& entryRow = entryFrame.add(make<Container>("entryRow", ContainerKind::Row));
    m_entry = &entryRow.add(make<TextBox>("MessageEntry"));
    m_entry->onEnter = [this] { sendEntry(); };
    Button& send = entryRow.add(make<Button>("btnSend", "Envia"));
    send.onClick = [this] { sendEntry(); };

    auto& boxes = root.add(make<Container>("timeBoxes", ContainerKind::Row));
    m_sendTime = &boxes.add(make<CheckBox>("CHECK1", "Enviar Hora ajunto al Texto", 1));
    m_receiveTime = &boxes.add(make<CheckBox>("CHECK2", "Hora en Reseccion Texto", 1));

    auto& filterFrame = root.add(make<Container>("frameFilter", ContainerKind::Frame,
                                                 "Filtro Texto              Filtro Texto - Palabras Mal Sonantes "));
    auto& filterGrid = filterFrame.add(make<Container>("filterGrid", ContainerKind::Grid, "", 4));
    for (int i = 1; i <= kFilterWords; ++i)
        m_filterWords.push_back(&filterGrid.add(make<TextBox>("FILTERTEXT" + std::to_string(i))));

    auto& buttons = root.add(make<Container>("messagesButtons", ContainerKind::Row));
    Button& clear = buttons.add(make<Button>("btnClear", "Borrar"));
    clear.onClick = [this] { m_log->clear(); };
    Button& save = buttons.add(make<Button>("btnSave", "Salvar"));
    save.onClick = [this] { saveData(); };
    setSaveButton(save);
    Button& hideButton = buttons.add(make<Button>("btnHide", "Ocultar"));
    hideButton.onClick = [this] { hide(); };
    addLocalTimeLabel(parts(), buttons, "LocalTime", "Local Hora");

    // Written, like they are read, in this order.
    m_binder = SettingsBinder(kMessagesSettingsFile, kMessagesReadBuffer, name());
    bindWindowPosition(m_binder, "300");
    m_binder.bindCheck("CHECK1", *m_sendTime, "1");
    m_binder.bindCheck("CHECK2", *m_receiveTime, "1");
    for (int i = 0; i < kFilterWords; ++i)
        m_binder.bindText("FILTERTEXT" + std::to_string(i + 1), *m_filterWords[static_cast<size_t>(i)], "");
}

void MessagesWindow::onLoad() {
    createHostObject();
    m_ownCall = setModuleCaption("   Text Messages");
    m_binder.load(settings(), log());
}

void MessagesWindow::saveData() { saveSettings(m_binder); }

std::string MessagesWindow::hourMinute() { return scheduler().wallNow().timeText().substr(0, 5); }

bool MessagesWindow::filtered(const std::string& text, const std::vector<std::string>& words) {
    // Only the first place a word stands counts, and the very first character
    // does not: an empty word, or one that opens the text, hides nothing.
    auto foundAfterFirst = [&](const std::string& word) {
        const size_t at = text.find(word);
        return at != std::string::npos && at > 0;
    };
    if (foundAfterFirst(".list")) return true;
    for (const std::string& word : words)
        if (foundAfterFirst(word)) return true;
    return false;
}

void MessagesWindow::onChatTextReceived(const std::string& text) {
    // Read aloud first, whatever the filter decides below.
    readAloud(text);
    if (text.find("/ver/") != std::string::npos)
        // A host that will not send still leaves the message to be shown (the
        // failure is in the log).
        ignoreErrors([this] { host().sendChatText(program().product().versionReply()); });

    std::vector<std::string> words;
    words.reserve(m_filterWords.size());
    for (const TextBox* w : m_filterWords) words.push_back(w->text());
    if (filtered(text, words)) return;

    // "N0CALL>hola" at 14:05 becomes "N0CALL> (14:05)>hola". A text without a
    // '>' has no sender part: it keeps its whole text after the stamp,
    // " (14:05)>hola", so nothing of it is lost.
    const size_t p = text.find('>');
    const std::string sender = p == std::string::npos ? std::string() : text.substr(0, p + 1);
    const std::string rest = p == std::string::npos ? ">" + text : text.substr(p);
    m_stampedIncoming = sender + " (" + hourMinute() + ")" + rest;
    // The log splits the text at its line breaks (a carriage return alone
    // included) and follows the newest line.
    m_log->append(m_receiveTime->value() == 1 ? m_stampedIncoming : text);
}

void MessagesWindow::readAloud(const std::string& text) {
    // Until the ident window is loaded there is no one to read it.
    SpeechDesk* desk = surfaceOf<SpeechDesk>(program(), "idents");
    if (!desk) return;
    const auto* sayText = program().window("idents")->controlAs<CheckBox>("SayText");
    if (!sayText || sayText->value() != 1) return;
    // Spoken as plain words: line breaks and control characters become blanks.
    desk->setSpeechText("Message from  " + withoutControlCharacters(text, " "));
    desk->setSpeechPending(true);
}

std::string MessagesWindow::ownCallsign() {
    ignoreErrors([this] { m_ownCall = host().stationInfo().callsign; });
    return m_ownCall;
}

void MessagesWindow::sendEntry() {
    const std::string entry = m_entry->text();
    std::string outgoing = entry;
    if (m_sendTime->value() == 1) {
        m_stampedOutgoing = "(" + hourMinute() + ") >" + entry;
        outgoing = m_stampedOutgoing;
    }
    try {
        host().sendChatText(outgoing);
    } catch (const HostError& e) {
        // The operator pressed the button: say so, and keep what was typed so
        // it can be sent again.
        dialogs().message({name(), "Ostrevel", "No se pudo enviar el mensaje: " + std::string(e.what()),
                           DialogIcon::Exclamation, DialogButtons::OK});
        return;
    }
    m_log->append(ownCallsign() + "> " + outgoing);
    m_entry->setText("");
    m_entry->requestFocus();
}

void MessagesWindow::onClosing() { program().end("host closing"); }

Window::CloseDecision MessagesWindow::onQueryClose() {
    const DialogAnswer answer =
        dialogs().message({name(), "Exit Program", "Quit Ostrevel - Are You Sure ? Remember To Save Any Changes  ",
                           DialogIcon::Question, DialogButtons::YesNo});
    if (answer != DialogAnswer::Yes) return CloseDecision::Cancel;
    program().end("quit");
}

}  // namespace mv
