#include "core/settings_store.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <system_error>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

namespace mv {
namespace {

bool isBlank(char c) { return c == ' ' || c == '\t'; }

std::string_view trim(std::string_view s) {
    while (!s.empty() && (isBlank(s.front()) || s.front() == '\r')) s.remove_prefix(1);
    while (!s.empty() && (isBlank(s.back()) || s.back() == '\r')) s.remove_suffix(1);
    return s;
}

bool equalsNoCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (std::tolower(static_cast<unsigned char>(a[i])) != std::tolower(static_cast<unsigned char>(b[i])))
            return false;
    return true;
}

std::vector<std::string> readLines(const std::filesystem::path& path, bool& exists) {
    std::vector<std::string> lines;
    std::ifstream in(path, std::ios::binary);
    exists = static_cast<bool>(in);
    if (!in) return lines;
    std::string line;
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        lines.push_back(line);
    }
    return lines;
}

// The section header's name, if the line is one.
bool sectionName(std::string_view line, std::string_view& name) {
    line = trim(line);
    if (line.size() < 2 || line.front() != '[') return false;
    const size_t close = line.find(']');
    if (close == std::string_view::npos) return false;
    name = trim(line.substr(1, close - 1));
    return true;
}

// Key and raw value of a "key=value" line.
bool keyValue(std::string_view line, std::string_view& key, std::string_view& value) {
    const std::string_view t = trim(line);
    if (t.empty() || t.front() == ';') return false;
    const size_t eq = line.find('=');
    if (eq == std::string_view::npos) return false;
    key = trim(line.substr(0, eq));
    value = line.substr(eq + 1);
    return !key.empty();
}

// Surrounding blanks go, then one pair of matching enclosing quotes.
std::string_view unquote(std::string_view value) {
    value = trim(value);
    if (value.size() >= 2 && (value.front() == '"' || value.front() == '\'') && value.back() == value.front())
        value = value.substr(1, value.size() - 2);
    return value;
}

// Cut to at most `count` characters, never inside a UTF-8 sequence.
std::string cutCharacters(std::string_view s, size_t count) {
    size_t chars = 0;
    size_t i = 0;
    while (i < s.size()) {
        if (chars == count) break;
        const auto c = static_cast<unsigned char>(s[i]);
        size_t len = c < 0x80 ? 1 : (c >> 5) == 0x6 ? 2 : (c >> 4) == 0xE ? 3 : (c >> 3) == 0x1E ? 4 : 1;
        if (i + len > s.size()) len = s.size() - i;
        i += len;
        ++chars;
    }
    return std::string(s.substr(0, i));
}

std::string encodeValue(std::string_view value, bool& replaced) {
    std::string v;
    v.reserve(value.size());
    replaced = false;
    for (size_t i = 0; i < value.size(); ++i) {
        const char c = value[i];
        if (c == '\r' || c == '\n') {
            replaced = true;
            if (c == '\r' && i + 1 < value.size() && value[i + 1] == '\n') ++i;
            v += ' ';
        } else {
            v += c;
        }
    }
    // Quote a value that the read rules would otherwise change: leading or
    // trailing blanks, or a value that itself looks quoted.
    const bool needsQuotes = !v.empty() && (isBlank(v.front()) || isBlank(v.back()) ||
                                            (v.size() >= 2 && (v.front() == '"' || v.front() == '\'') &&
                                             v.back() == v.front()));
    return needsQuotes ? "\"" + v + "\"" : v;
}

bool writeAtomically(const std::filesystem::path& path, const std::string& content, std::string& error) {
    const std::filesystem::path tmp = path.string() + ".tmp";
    const int fd = ::open(tmp.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0) {
        error = "cannot create " + tmp.string() + ": " + std::strerror(errno);
        return false;
    }
    size_t done = 0;
    while (done < content.size()) {
        const ssize_t n = ::write(fd, content.data() + done, content.size() - done);
        if (n < 0) {
            if (errno == EINTR) continue;
            error = "cannot write " + tmp.string() + ": " + std::strerror(errno);
            ::close(fd);
            ::unlink(tmp.c_str());
            return false;
        }
        done += static_cast<size_t>(n);
    }
    if (::fsync(fd) != 0 || ::close(fd) != 0) {
        error = "cannot flush " + tmp.string() + ": " + std::strerror(errno);
        ::unlink(tmp.c_str());
        return false;
    }
    if (::rename(tmp.c_str(), path.c_str()) != 0) {
        error = "cannot replace " + path.string() + ": " + std::strerror(errno);
        ::unlink(tmp.c_str());
        return false;
    }
    return true;
}

}  // namespace

SettingsStore::SettingsStore(std::filesystem::path folder) : m_folder(std::move(folder)) {}

std::filesystem::path SettingsStore::pathOf(std::string_view fileName) const {
    // Only the bare name counts: every module's file lives in the one folder.
    return m_folder / std::filesystem::path(std::string(fileName)).filename();
}

std::string SettingsStore::read(std::string_view fileName, std::string_view key, std::string_view defaultValue,
                                size_t bufferSize, std::string_view section) const {
    const size_t limit = bufferSize > 0 ? bufferSize - 1 : 0;
    bool exists = false;
    const std::vector<std::string> lines = readLines(pathOf(fileName), exists);
    bool inSection = false;
    for (const std::string& line : lines) {
        std::string_view name;
        if (sectionName(line, name)) {
            inSection = equalsNoCase(name, section);
            continue;
        }
        std::string_view k, v;
        if (inSection && keyValue(line, k, v) && equalsNoCase(k, key)) return cutCharacters(unquote(v), limit);
    }
    return cutCharacters(unquote(defaultValue), limit);
}

SettingsStore::WriteResult SettingsStore::write(std::string_view fileName, std::string_view key,
                                                std::string_view value, std::string_view section) {
    WriteResult result;
    std::error_code ec;
    std::filesystem::create_directories(m_folder, ec);
    const std::filesystem::path path = pathOf(fileName);
    bool exists = false;
    std::vector<std::string> lines = readLines(path, exists);

    const std::string newLine = std::string(key) + "=" + encodeValue(value, result.lineBreaksReplaced);
    bool inSection = false;
    bool sectionFound = false;
    size_t insertAt = lines.size();
    bool replaced = false;
    for (size_t i = 0; i < lines.size(); ++i) {
        std::string_view name;
        if (sectionName(lines[i], name)) {
            if (inSection) break;  // end of our section
            inSection = equalsNoCase(name, section);
            if (inSection) {
                sectionFound = true;
                insertAt = i + 1;
            }
            continue;
        }
        if (!inSection) continue;
        std::string_view k, v;
        if (keyValue(lines[i], k, v) && equalsNoCase(k, key)) {
            lines[i] = std::string(k) + "=" + encodeValue(value, result.lineBreaksReplaced);
            replaced = true;
            break;
        }
        if (!trim(lines[i]).empty()) insertAt = i + 1;
    }
    if (!replaced) {
        if (sectionFound) {
            lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(insertAt), newLine);
        } else {
            lines.push_back("[" + std::string(section) + "]");
            lines.push_back(newLine);
        }
    }
    std::string content;
    for (const std::string& l : lines) content += l + "\r\n";
    result.written = writeAtomically(path, content, result.error);
    return result;
}

namespace setting {

bool parseWhole(std::string_view text, long long& value) {
    const std::string s(trim(text));
    if (s.empty()) return false;
    errno = 0;
    char* end = nullptr;
    const long long v = std::strtoll(s.c_str(), &end, 10);
    if (errno != 0 || end == s.c_str() || *end != '\0') return false;
    value = v;
    return true;
}

bool parseCheck(std::string_view text, int& value) {
    long long v = 0;
    if (!parseWhole(text, v) || v < 0 || v > 2) return false;
    value = static_cast<int>(v);
    return true;
}

bool parseOption(std::string_view text, bool& value) {
    const std::string_view t = trim(text);
    if (equalsNoCase(t, "true")) {
        value = true;
        return true;
    }
    if (equalsNoCase(t, "false")) {
        value = false;
        return true;
    }
    const std::string s(t);
    if (s.empty()) return false;
    char* end = nullptr;
    const double d = std::strtod(s.c_str(), &end);
    if (end == s.c_str() || *end != '\0' || std::isnan(d)) return false;
    value = d != 0.0;
    return true;
}

bool parsePosition(std::string_view text, float& value) {
    const std::string s(trim(text));
    if (s.empty()) return false;
    char* end = nullptr;
    const float f = std::strtof(s.c_str(), &end);
    if (end == s.c_str() || *end != '\0' || !std::isfinite(f)) return false;
    value = f;
    return true;
}

std::string optionText(bool value) { return value ? "True" : "False"; }

std::string positionText(float value) {
    if (value == std::floor(value) && std::fabs(value) < 1e9f) return std::to_string(static_cast<long long>(value));
    char buf[32];
    std::snprintf(buf, sizeof buf, "%g", static_cast<double>(value));
    return buf;
}

}  // namespace setting
}  // namespace mv
