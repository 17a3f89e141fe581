#include "core/transmitter.h"

namespace mv {

void Transmitter::key(const std::string& holder) { m_holders.insert(holder); }

bool Transmitter::release(const std::string& holder) {
    m_holders.erase(holder);
    return m_holders.empty();
}

}  // namespace mv
