// Windows: the same lock file as on Linux, held with an exclusive byte-range
// lock that Windows drops when the process ends, however it ends.
#include "platform/instance_guard.h"

#include <windows.h>

#include <fstream>
#include <system_error>

namespace mv {
namespace {
// The lock covers one byte past the process number written at the start, so
// a second copy can still read who holds it.
constexpr DWORD kLockOffset = 4096;
}  // namespace

FileInstanceGuard::FileInstanceGuard(std::filesystem::path lockFile) : m_path(std::move(lockFile)) {}

FileInstanceGuard::~FileInstanceGuard() {
    if (m_handle) CloseHandle(m_handle);
}

bool FileInstanceGuard::acquire(std::string& reason) {
    std::error_code ec;
    std::filesystem::create_directories(m_path.parent_path(), ec);
    HANDLE file = CreateFileW(m_path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                              nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        // Without a lock file we cannot tell; running beats refusing to run.
        reason = "cannot open " + m_path.string() + ": " + std::system_category().message(static_cast<int>(GetLastError()));
        return true;
    }
    OVERLAPPED at{};
    at.Offset = kLockOffset;
    if (!LockFileEx(file, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &at)) {
        CloseHandle(file);
        std::string pid;
        std::ifstream(m_path) >> pid;
        reason = "Marrowvane is already running" + (pid.empty() ? std::string() : " (process " + pid + ")") +
                 " with the settings in " + m_path.parent_path().string() +
                 ". This copy leaves it alone and exits.";
        return false;
    }
    m_handle = file;
    const std::string me = std::to_string(GetCurrentProcessId()) + "\r\n";
    DWORD written = 0;
    SetFilePointer(file, 0, nullptr, FILE_BEGIN);
    if (WriteFile(file, me.data(), static_cast<DWORD>(me.size()), &written, nullptr)) SetEndOfFile(file);
    return true;
}

}  // namespace mv
