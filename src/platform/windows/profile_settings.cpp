#include "platform/windows/profile_settings.h"

#include <windows.h>

#include <system_error>
#include <vector>

#include "platform/windows/com_text.h"

namespace mv {
namespace {

namespace fs = std::filesystem;

std::string systemText(DWORD code) { return std::system_category().message(static_cast<int>(code)); }

// The profile functions' "A" forms speak the system's 8-bit code page.
std::string toCodePage(std::string_view utf8, bool& lost) {
    const std::wstring wide = com::widen(utf8);
    lost = false;
    if (wide.empty()) return {};
    BOOL usedDefault = FALSE;
    const int n = WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, wide.data(), static_cast<int>(wide.size()), nullptr,
                                      0, "?", &usedDefault);
    std::string text(static_cast<size_t>(n), '\0');
    WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, wide.data(), static_cast<int>(wide.size()), text.data(), n, "?",
                        &usedDefault);
    lost = usedDefault != FALSE;
    return text;
}

std::string fromCodePage(const char* text, size_t length) {
    if (length == 0) return {};
    const int n = MultiByteToWideChar(CP_ACP, 0, text, static_cast<int>(length), nullptr, 0);
    std::wstring wide(static_cast<size_t>(n), L'\0');
    MultiByteToWideChar(CP_ACP, 0, text, static_cast<int>(length), wide.data(), n);
    return com::narrow(wide.data(), wide.size());
}

bool isProfileBlank(char c) { return c == ' ' || c == '\t' || c == '\f' || c == '\v' || c == '\x1a'; }

// A value as it must be written so that GetPrivateProfileString gives it
// back unchanged: line breaks become blanks (a value is one line), and a
// value that the read would trim or unquote goes inside one pair of quotes.
std::string storedForm(std::string value, bool& lineBreaks) {
    lineBreaks = false;
    std::string oneLine;
    for (size_t i = 0; i < value.size(); ++i) {
        if (value[i] == '\r' || value[i] == '\n') {
            lineBreaks = true;
            if (value[i] == '\r' && i + 1 < value.size() && value[i + 1] == '\n') ++i;
            oneLine += ' ';
        } else {
            oneLine += value[i];
        }
    }
    const bool trimmed = !oneLine.empty() && (isProfileBlank(oneLine.front()) || isProfileBlank(oneLine.back()));
    const bool quoted = oneLine.size() >= 2 && (oneLine.front() == '"' || oneLine.front() == '\'') &&
                        oneLine.back() == oneLine.front();
    return trimmed || quoted ? "\"" + oneLine + "\"" : oneLine;
}

fs::path copyFor(const fs::path& path) {
    fs::path copy = path;
    copy += L".tmp";
    return copy;
}

}  // namespace

void ProfileSettings::sweepLeftovers(const fs::path& path) {
    if (!m_swept.insert(path).second) return;
    // Only this program makes that name, and only one copy of it runs on a
    // settings folder: a copy there now was left by a save that never ended.
    const fs::path copy = copyFor(path);
    const DWORD attributes = GetFileAttributesW(copy.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY)) DeleteFileW(copy.c_str());
}

SettingsSnapshot ProfileSettings::load(const fs::path& path, std::string_view section) {
    sweepLeftovers(path);
    const DWORD attributes = GetFileAttributesW(path.c_str());
    bool exists = false;
    std::string problem;
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        const DWORD error = GetLastError();
        if (error != ERROR_FILE_NOT_FOUND && error != ERROR_PATH_NOT_FOUND)
            problem = path.string() + ": " + systemText(error) + "; using the defaults";
    } else if (attributes & FILE_ATTRIBUTE_DIRECTORY) {
        problem = path.string() + ": a folder, not a settings file; using the defaults";
    } else {
        exists = true;
    }
    if (!problem.empty())
        return SettingsSnapshot::through([](std::string_view, std::string_view d, size_t) { return std::string(d); },
                                         false, problem);
    const std::string file = path.string();
    const std::string sectionName(section);
    return SettingsSnapshot::through(
        [file, sectionName](std::string_view key, std::string_view defaultValue, size_t bufferSize) {
            bool lost = false;
            const std::string keyName = toCodePage(key, lost);
            const std::string fallback = toCodePage(defaultValue, lost);
            std::vector<char> buffer(bufferSize > 0 ? bufferSize : 1, '\0');
            const DWORD n = GetPrivateProfileStringA(sectionName.c_str(), keyName.c_str(), fallback.c_str(),
                                                     buffer.data(), static_cast<DWORD>(buffer.size()), file.c_str());
            return fromCodePage(buffer.data(), n);
        },
        exists, {});
}

SettingsCommit ProfileSettings::commit(const fs::path& path, const SettingsEdit& edit) {
    SettingsCommit result;
    auto fail = [&](const std::string& what, const std::string& cause) {
        result.error = path.string() + ": " + (what.empty() ? "" : what + ": ") + cause;
        result.reason = cause;
        return result;
    };
    std::error_code ec;
    fs::create_directories(path.parent_path(), ec);
    sweepLeftovers(path);
    const DWORD attributes = GetFileAttributesW(path.c_str());
    const bool exists = attributes != INVALID_FILE_ATTRIBUTES;
    if (exists && (attributes & FILE_ATTRIBUTE_DIRECTORY)) return fail("", "a folder, not a settings file");
    // A settings file the operator made read-only stays as it is.
    if (exists && (attributes & FILE_ATTRIBUTE_READONLY)) return fail("", "the file is read-only");

    const fs::path copy = copyFor(path);
    const std::string copyName = copy.filename().string();
    auto abandon = [&](const std::string& what, DWORD error) {
        DeleteFileW(copy.c_str());
        return fail(what, systemText(error));
    };
    if (exists && !CopyFileW(path.c_str(), copy.c_str(), FALSE)) return abandon("cannot copy the file", GetLastError());
    const std::string copyFile = copy.string();
    bool sectionLost = false;
    const std::string section = toCodePage(edit.section(), sectionLost);
    for (const SettingsEdit::Change& change : edit.changes()) {
        bool lineBreaks = false;
        bool lost = false;
        const std::string value = toCodePage(storedForm(change.value, lineBreaks), lost);
        bool keyLost = false;
        const std::string key = toCodePage(change.key, keyLost);
        if (lineBreaks) result.keysWithLineBreaks.push_back(change.key);
        if (lost) result.keysWithLostCharacters.push_back(change.key);
        if (!WritePrivateProfileStringA(section.c_str(), key.c_str(), value.c_str(), copyFile.c_str()))
            return abandon("cannot write " + copyName, GetLastError());
    }
    // Out of the system's cache, onto the disk, then over the old file.
    WritePrivateProfileStringA(nullptr, nullptr, nullptr, copyFile.c_str());
    HANDLE file = CreateFileW(copy.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return abandon("cannot open " + copyName, GetLastError());
    const bool flushed = FlushFileBuffers(file);
    const DWORD flushError = GetLastError();
    CloseHandle(file);
    if (!flushed) return abandon("cannot flush " + copyName + " to disk", flushError);
    if (!MoveFileExW(copy.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
        return abandon("cannot replace the file", GetLastError());
    result.written = true;
    return result;
}

}  // namespace mv
