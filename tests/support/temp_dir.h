#pragma once
// A fresh folder under the system temp folder, removed with everything in it.
#include <atomic>
#include <filesystem>
#include <string>

#include <unistd.h>

namespace mv::test {

class TempDir {
public:
    TempDir() {
        static std::atomic<int> counter{0};
        m_path = std::filesystem::temp_directory_path() /
                 ("mv-test-" + std::to_string(::getpid()) + "-" + std::to_string(counter++));
        std::filesystem::remove_all(m_path);
        std::filesystem::create_directories(m_path);
    }
    ~TempDir() {
        std::error_code ec;
        std::filesystem::remove_all(m_path, ec);
    }
    const std::filesystem::path& path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

}  // namespace mv::test
