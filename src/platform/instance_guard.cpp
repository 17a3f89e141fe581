#include "platform/instance_guard.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <system_error>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace mv {

FileInstanceGuard::FileInstanceGuard(std::filesystem::path lockFile) : m_path(std::move(lockFile)) {}

FileInstanceGuard::~FileInstanceGuard() {
    if (m_fd >= 0) ::close(m_fd);  // the kernel drops the lock with the descriptor
}

bool FileInstanceGuard::acquire(std::string& reason) {
    std::error_code ec;
    std::filesystem::create_directories(m_path.parent_path(), ec);
    m_fd = ::open(m_path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    if (m_fd < 0) {
        // Without a lock file we cannot tell; running beats refusing to run.
        reason = "cannot open " + m_path.string() + ": " + std::strerror(errno);
        return true;
    }
    if (::flock(m_fd, LOCK_EX | LOCK_NB) != 0) {
        std::string pid;
        std::ifstream(m_path) >> pid;
        reason = "Marrowvane is already running" + (pid.empty() ? std::string() : " (process " + pid + ")") +
                 " with the settings in " + m_path.parent_path().string() +
                 ". This copy leaves it alone and exits.";
        ::close(m_fd);
        m_fd = -1;
        return false;
    }
    const std::string me = std::to_string(::getpid()) + "\n";
    if (::ftruncate(m_fd, 0) == 0) {
        [[maybe_unused]] const ssize_t n = ::pwrite(m_fd, me.data(), me.size(), 0);
    }
    return true;
}

}  // namespace mv
