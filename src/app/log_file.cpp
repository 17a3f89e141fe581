#include "app/log_file.h"

namespace mv {

bool LogFile::open(const std::string& path, bool truncate) {
    m_path = path;
    m_file.open(path, std::ios::binary | (truncate ? std::ios::trunc : std::ios::app));
    return static_cast<bool>(m_file);
}

bool LogFile::reopen() {
    std::ofstream next(m_path, std::ios::binary | std::ios::app);
    if (!next) return false;
    m_file.flush();
    m_file.swap(next);
    return true;
}

}  // namespace mv
