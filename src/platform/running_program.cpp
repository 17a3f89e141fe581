#include "platform/running_program.h"

#ifdef _WIN32
#include <windows.h>
#endif

namespace mv {

std::filesystem::path runningProgramPath() {
#ifdef _WIN32
    std::wstring buffer(MAX_PATH, L'\0');
    for (;;) {
        const DWORD n = GetModuleFileNameW(nullptr, buffer.data(), static_cast<DWORD>(buffer.size()));
        if (n == 0) return {};
        if (n < buffer.size()) return std::filesystem::path(buffer.substr(0, n));
        buffer.resize(buffer.size() * 2);
    }
#else
    std::error_code ec;
    std::filesystem::path exe = std::filesystem::read_symlink("/proc/self/exe", ec);
    return ec ? std::filesystem::path() : exe;
#endif
}

}  // namespace mv
