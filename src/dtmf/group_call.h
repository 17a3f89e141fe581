#pragma once
// One station group of the DTMF control window ("Grupo 1", "Grupo 2"): its
// five member fields in the order the operations visit them, its connect and
// disconnect codes and their two "Pruebe" buttons. ConnectGroup connects each
// member not yet connected; DisconnectGroup disconnects each member that is.
#include <functional>
#include <string>
#include <vector>

#include "core/window.h"

namespace mv {

class GroupCall {
public:
    // Builds the group's frame into `parent`. `memberNumbers` are the numbers
    // of its GROUPCALLn fields in visiting order; fields 1 to 6 hold node
    // numbers and take digits only.
    GroupCall(WindowParts parts, Container& parent, int groupNumber, std::vector<int> memberNumbers);
    GroupCall(const GroupCall&) = delete;
    GroupCall& operator=(const GroupCall&) = delete;

    // Back to back within one handler, in member order, without waiting for
    // a connection to complete; the host is asked about each member just
    // before its command. A member whose host call fails is skipped (the
    // failure is in the log) and the rest are still tried.
    void connectGroup();
    void disconnectGroup();

    const std::string& caption() const { return m_caption; }
    const std::string& connectCode() const { return m_connectCode->text(); }
    const std::string& disconnectCode() const { return m_disconnectCode->text(); }

private:
    // Each member with a station, in order; a member whose host call fails
    // is skipped.
    void forEachMember(const std::function<void(HostObject&, const std::string&)>& act);

    Window& m_window;
    std::string m_caption;
    std::vector<TextBox*> m_members;
    TextBox* m_connectCode = nullptr;
    TextBox* m_disconnectCode = nullptr;
};

// Station names are connected and disconnected upper-cased (node numbers
// are unchanged by it).
std::string upperStation(const std::string& station);

}  // namespace mv
