#include "idents/connection_announcer.h"

#include "core/hub_window.h"
#include "core/program.h"
#include "idents/ident_window.h"
#include "idents/speech_engine.h"
#include "idents/spoken_time.h"
#include "idents/station_ident.h"

namespace mv {
namespace {

bool endsWith(const std::string& s, const std::string& tail) {
    return s.size() >= tail.size() && s.compare(s.size() - tail.size(), tail.size(), tail) == 0;
}

}  // namespace

std::optional<std::string> stationAnnouncement(const std::string& call, bool connected,
                                                const std::string& specialName, const std::string& specialSpoken,
                                                const std::function<std::string(const char*)>& phrase) {
    if (endsWith(call, "*")) {
        // The known conference is said by its spoken name, once; any other
        // conference, or the known one without a spoken name, is spelled.
        const bool special = call == specialName && !specialSpoken.empty();
        return phrase("THE") + " " + (special ? specialSpoken : splitCall(call)) + "  " +
               phrase(connected ? "CONFERENCEHASCONNECTED" : "CONFERENCEHASDISCONNECTED");
    }
    const size_t dash = call.find('-');
    if (dash == std::string::npos)
        return splitCall(call) + " , " + phrase(connected ? "CONNECTED" : "DISCONNECTED");
    // A link or repeater is spelled up to and including its first "-".
    const std::string spelled = splitCall(call.substr(0, dash + 1));
    if (endsWith(call, "-L")) return spelled + " : " + phrase(connected ? "LINKCONNECTED" : "LINKDISCONNECTED");
    if (endsWith(call, "-R"))
        return spelled + " : " + phrase(connected ? "REPEATERCONNECTED" : "REPEATERDISCONNECTED");
    return std::nullopt;
}

ConnectionAnnouncer::ConnectionAnnouncer(IdentWindow& window, SpokenTime& time) : m_window(window), m_time(time) {}

void ConnectionAnnouncer::build(WindowParts parts, Container& options, Container& history, SettingsBinder& binder) {
    auto& frame = options.add(parts.make<Container>("frameConnections", ContainerKind::Frame, "Estaciones"));
    m_addTime = &frame.add(parts.make<CheckBox>("AddTime", "Agregar Hora TTS"));
    m_addTime->setToolTip("Announce time with Station Connect / Disconnect");
    auto& names = frame.add(parts.make<Container>("gridSpecialConference", ContainerKind::Grid, "", 2));
    names.add(parts.make<Label>("lblSpecialConference", "Conferencia"));
    m_specialName = &names.add(parts.make<TextBox>("SpecialConference", kDefaultConference));
    m_specialName->setToolTip("Conferencia que se anuncia por su nombre");
    names.add(parts.make<Label>("lblSpecialSpoken", "Se dice"));
    m_specialSpoken = &names.add(parts.make<TextBox>("SpecialConferenceSpoken", kSpecialConferenceSpoken));
    m_specialSpoken->setToolTip("Como se pronuncia esa conferencia");

    m_history.build(parts, history, "CallHistory");

    binder.bindCheck("ADDTIME", *m_addTime, "0");
    binder.bindText("SPECIALCONFERENCE", *m_specialName, kDefaultConference);
    binder.bindText("SPECIALCONFERENCESPOKEN", *m_specialSpoken, kSpecialConferenceSpoken);
}

void ConnectionAnnouncer::onConnected(const std::string& call, const std::string& name, const std::string& address) {
    // The history takes every connect, whatever the switches.
    m_history.record(call, name, address);
    announce(call, true);
}

void ConnectionAnnouncer::onDisconnected(const std::string& call) { announce(call, false); }

void ConnectionAnnouncer::announce(const std::string& call, bool connected) {
    const Window* hub = m_window.program().window("hub");
    const CheckBox* master = hub ? hub->controlAs<CheckBox>("CONDISC") : nullptr;
    if (!master || !master->ticked()) return;
    SpeechEngine& speech = m_window.speech();
    const auto text = stationAnnouncement(call, connected, m_specialName->text(), m_specialSpoken->text(),
                                          [&](const char* key) { return speech.phrase(key); });
    if (!text) return;
    speech.setText(*text);
    speech.speakTheText();
    if (m_addTime->ticked()) m_time.theTimeBit();
}

}  // namespace mv
