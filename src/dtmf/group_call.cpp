#include "dtmf/group_call.h"

#include <cctype>

#include "core/errors.h"

namespace mv {

namespace {
constexpr int kLastDigitsOnlyMember = 6;
}

std::string upperStation(const std::string& station) {
    std::string upper = station;
    for (char& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return upper;
}

GroupCall::GroupCall(WindowParts parts, Container& parent, int groupNumber, std::vector<int> memberNumbers)
    : m_window(parts.window()), m_caption("Grupo " + std::to_string(groupNumber)) {
    const std::string n = std::to_string(groupNumber);
    auto& frame = parent.add(parts.make<Container>("frameGroup" + n, ContainerKind::Frame, m_caption));
    frame.add(parts.make<Label>("lblGroup" + n + "Stations", "Indicativo"));
    for (int member : memberNumbers) {
        TextBox& field = frame.add(parts.make<TextBox>("GROUPCALL" + std::to_string(member)));
        field.setDigitsOnly(member <= kLastDigitsOnlyMember);
        m_members.push_back(&field);
    }
    auto& codes = frame.add(parts.make<Container>("group" + n + "Codes", ContainerKind::Grid, "", 3));
    codes.add(parts.make<Label>("lblGroup" + n + "Connect", "Conecte"));
    m_connectCode = &codes.add(parts.make<TextBox>("DTMFGROUP" + n + "CONNECT"));
    Button& connect = codes.add(parts.make<Button>("Group" + n + "Connect", "Pruebe"));
    codes.add(parts.make<Label>("lblGroup" + n + "Disconnect", "Desconecte"));
    m_disconnectCode = &codes.add(parts.make<TextBox>("DTMFGROUP" + n + "DISC"));
    Button& disconnect = codes.add(parts.make<Button>("Group" + n + "Disconnect", "Pruebe"));
    connect.onClick = [this] { connectGroup(); };
    disconnect.onClick = [this] { disconnectGroup(); };
}

void GroupCall::forEachMember(const std::function<void(HostObject&, const std::string&)>& act) {
    for (TextBox* member : m_members) {
        const std::string station = member->text();
        if (station.empty()) continue;
        ignoreErrors([&] { act(m_window.host(), station); });
    }
}

void GroupCall::connectGroup() {
    forEachMember([](HostObject& host, const std::string& station) {
        if (!host.isConnectedTo(station)) host.connect(upperStation(station), true);
    });
}

void GroupCall::disconnectGroup() {
    forEachMember([](HostObject& host, const std::string& station) {
        if (host.isConnectedTo(station)) host.disconnect(upperStation(station));
    });
}

}  // namespace mv
