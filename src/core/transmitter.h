#pragma once
// The node's one transmitter, shared by every window that puts sound on the
// air. Each window keys it for its own part and releases only that part: the
// line drops when the last window that keyed it lets go, so one window's
// release never cuts another's sound, and none leaves the air up for another.
#include <set>
#include <string>

namespace mv {

class Transmitter {
public:
    // `holder` keys: counted before the host is told, so a key the host
    // refuses is still let go by the holder's release.
    void key(const std::string& holder);
    // `holder`'s part is over. True when the line may drop now: no other
    // window holds it. A window that holds nothing may re-state an idle
    // transmitter (a release check), but never takes down another's keying.
    bool release(const std::string& holder);
    bool held() const { return !m_holders.empty(); }
    bool heldBy(const std::string& holder) const { return m_holders.count(holder) != 0; }
    // The program's end takes the air down, whoever holds it.
    void clear() { m_holders.clear(); }

private:
    std::set<std::string> m_holders;
};

}  // namespace mv
