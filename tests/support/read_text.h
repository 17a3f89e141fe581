#pragma once
// The whole of a file as bytes ("" when it cannot be read).
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace mv::test {

inline std::string readText(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

}  // namespace mv::test
