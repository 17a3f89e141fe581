#pragma once
// Keeps a second copy of the suite from driving the same node: an exclusive
// lock on a file in the settings folder, held for as long as this copy runs.
#include <filesystem>
#include <string>

#include "core/program.h"

namespace mv {

class FileInstanceGuard final : public InstanceGuard {
public:
    explicit FileInstanceGuard(std::filesystem::path lockFile);
    ~FileInstanceGuard() override;
    bool acquire(std::string& reason) override;

private:
    std::filesystem::path m_path;
#ifdef _WIN32
    void* m_handle = nullptr;
#else
    int m_fd = -1;
#endif
};

}  // namespace mv
