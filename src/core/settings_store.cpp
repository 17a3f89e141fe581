#include "core/settings_store.h"

#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <system_error>

#ifndef _WIN32
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace mv {
namespace {

namespace fs = std::filesystem;

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

std::string describe(const fs::path& path, const fs::path& target) {
    if (path == target) return path.string();
    return path.string() + " (a link to " + target.string() + ")";
}

// The file calls below are the store's own INI code's; the Windows build
// reads and writes through the system's profile functions instead.
#ifndef _WIN32

// Far beyond any real settings file; a path that points at something this big
// (a disk image, a log) is refused rather than read into memory.
constexpr off_t kLargestSettingsFile = 4 * 1024 * 1024;
constexpr int kMostLinks = 40;

std::string errnoText(int e) { return std::strerror(e); }

const char* kindOf(mode_t mode) {
    if (S_ISDIR(mode)) return "a folder";
    if (S_ISFIFO(mode)) return "a named pipe (FIFO)";
    if (S_ISCHR(mode)) return "a character device";
    if (S_ISBLK(mode)) return "a block device";
    if (S_ISSOCK(mode)) return "a socket";
    return "not a plain file";
}

// The file a settings path stands for: the path itself or, through a chain
// of symbolic links, the file at its end, which need not exist yet. Saving
// replaces that file, so the operator's link (to a folder that is backed up,
// say) keeps working.
bool followLinks(const fs::path& path, fs::path& target, std::string& reason) {
    fs::path p = path;
    for (int hop = 0; hop <= kMostLinks; ++hop) {
        struct stat st {};
        if (::lstat(p.c_str(), &st) != 0) {
            target = p;
            if (errno == ENOENT) return true;
            reason = errnoText(errno);
            return false;
        }
        if (!S_ISLNK(st.st_mode)) {
            target = p;
            return true;
        }
        std::error_code ec;
        const fs::path link = fs::read_symlink(p, ec);
        if (ec) {
            target = p;
            reason = ec.message();
            return false;
        }
        p = link.is_absolute() ? link : p.parent_path() / link;
    }
    target = p;
    reason = errnoText(ELOOP);
    return false;
}

struct FileRead {
    enum class State { Missing, Read, Refused } state = State::Missing;
    std::string bytes;
    std::string reason;  // why it was refused
    mode_t mode = 0;
};

// Reads a settings file without ever waiting: anything but a plain file is
// refused from its type alone, before it is opened, and the open itself
// cannot block should the file be swapped for a FIFO in between.
FileRead readFile(const fs::path& target) {
    FileRead r;
    auto refuse = [&r](std::string reason) {
        r.state = FileRead::State::Refused;
        r.reason = std::move(reason);
        return r;
    };
    struct stat st {};
    if (::stat(target.c_str(), &st) != 0) {
        if (errno == ENOENT) return r;
        return refuse(errnoText(errno));
    }
    if (!S_ISREG(st.st_mode)) return refuse(std::string(kindOf(st.st_mode)) + ", not a settings file");
    if (st.st_size > kLargestSettingsFile)
        return refuse("too large for a settings file (" + std::to_string(st.st_size) + " bytes)");
    const int fd = ::open(target.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (fd < 0) return refuse(errnoText(errno));
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        ::close(fd);
        return refuse("not a plain file");
    }
    char buffer[8192];
    for (;;) {
        const ssize_t n = ::read(fd, buffer, sizeof buffer);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) {
            const int e = errno;
            ::close(fd);
            return refuse(errnoText(e));
        }
        if (n == 0) break;
        r.bytes.append(buffer, static_cast<size_t>(n));
        if (r.bytes.size() > static_cast<size_t>(kLargestSettingsFile)) {
            ::close(fd);
            return refuse("too large for a settings file");
        }
    }
    ::close(fd);
    r.state = FileRead::State::Read;
    r.mode = st.st_mode;
    return r;
}

fs::path temporaryFor(const fs::path& target) { return fs::path(target.string() + ".tmp"); }

// Replaces `target` with `content` so that a crash at any moment leaves
// either the old file or the new one: the new text goes to a temporary file
// in the same folder, reaches the disk, and is renamed over the old file;
// then the folder itself is flushed so the rename is on disk too. On failure
// the temporary file is removed and the old file is untouched.
bool replaceFile(const fs::path& target, const std::string& content, const mode_t* keepMode, std::string& what,
                 std::string& cause) {
    const fs::path tmp = temporaryFor(target);
    const std::string tmpName = tmp.filename().string();
    auto failWith = [&](std::string action, int e) {
        what = std::move(action);
        cause = errnoText(e);
        return false;
    };
    struct stat st {};
    if (::lstat(tmp.c_str(), &st) == 0 && !S_ISDIR(st.st_mode)) ::unlink(tmp.c_str());
    const int fd = ::open(tmp.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
    if (fd < 0) return failWith("cannot create " + tmpName, errno);
    auto abandon = [&](std::string action, int e) {
        ::close(fd);
        ::unlink(tmp.c_str());
        return failWith(std::move(action), e);
    };
    size_t done = 0;
    while (done < content.size()) {
        const ssize_t n = ::write(fd, content.data() + done, content.size() - done);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) return abandon("cannot write " + tmpName, errno);
        done += static_cast<size_t>(n);
    }
    // The replacement keeps the old file's permissions.
    if (keepMode) (void)::fchmod(fd, *keepMode & 07777);
    if (::fsync(fd) != 0) return abandon("cannot flush " + tmpName + " to disk", errno);
    if (::close(fd) != 0) {
        const int e = errno;
        ::unlink(tmp.c_str());
        return failWith("cannot close " + tmpName, e);
    }
    if (::rename(tmp.c_str(), target.c_str()) != 0) {
        const int e = errno;
        ::unlink(tmp.c_str());
        return failWith("cannot replace the file", e);
    }
    // Some file systems cannot flush a folder; the file itself is complete
    // either way, so this is not a failure of the save.
    const fs::path folder = target.has_parent_path() ? target.parent_path() : fs::path(".");
    const int dir = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (dir >= 0) {
        (void)::fsync(dir);
        ::close(dir);
    }
    return true;
}
#endif

}  // namespace

SettingsSnapshot SettingsSnapshot::through(Lookup lookup, bool exists, std::string problem) {
    SettingsSnapshot snapshot;
    snapshot.m_lookup = std::move(lookup);
    snapshot.m_exists = exists;
    snapshot.m_problem = std::move(problem);
    return snapshot;
}

std::string SettingsSnapshot::value(std::string_view key, std::string_view defaultValue, size_t bufferSize) const {
    if (m_lookup) return m_lookup(key, defaultValue, bufferSize);
    return m_text.value(m_section, key, defaultValue, bufferSize);
}

SettingsEdit::SettingsEdit(std::string fileName, std::string section)
    : m_fileName(std::move(fileName)), m_section(std::move(section)) {}

void SettingsEdit::set(std::string key, std::string value) { m_changes.push_back({std::move(key), std::move(value)}); }

SettingsStore::SettingsStore(std::filesystem::path folder, std::shared_ptr<SystemProfiles> profiles)
    : m_folder(std::move(folder)), m_profiles(std::move(profiles)) {}

std::filesystem::path SettingsStore::pathOf(std::string_view fileName) const {
    // Only the bare name counts: every module's file lives in the one folder.
    return m_folder / std::filesystem::path(std::string(fileName)).filename();
}

void SettingsStore::sweepFolderLeftovers() const {
#ifndef _WIN32
    std::error_code ec;
    for (fs::directory_iterator it(m_folder, ec), end; !ec && it != end; it.increment(ec)) {
        const std::string name = it->path().filename().string();
        const std::string_view suffix = ".ini.tmp";
        if (name.size() > suffix.size() && name.compare(name.size() - suffix.size(), suffix.size(), suffix) == 0)
            sweepLeftovers(it->path().parent_path() / name.substr(0, name.size() - 4));
    }
#endif
}

void SettingsStore::sweepLeftovers(const std::filesystem::path& target) const {
#ifdef _WIN32
    (void)target;
#else
    if (!m_swept.insert(target.string()).second) return;
    // Only this program makes that name, and only one copy of it runs on a
    // settings folder: a file there now was left by a save that never ended.
    const fs::path tmp = temporaryFor(target);
    struct stat st {};
    if (::lstat(tmp.c_str(), &st) == 0 && S_ISREG(st.st_mode)) ::unlink(tmp.c_str());
#endif
}

SettingsSnapshot SettingsStore::load(std::string_view fileName, std::string_view section) const {
    const fs::path path = pathOf(fileName);
    if (m_profiles) return m_profiles->load(path, section);
    SettingsSnapshot snapshot;
    snapshot.m_section = section;
#ifdef _WIN32
    snapshot.m_problem = path.string() + ": this build has no profile functions to read it with; using the defaults";
#else
    try {
        fs::path target;
        std::string reason;
        if (!followLinks(path, target, reason)) {
            snapshot.m_problem = describe(path, target) + ": " + reason + "; using the defaults";
            return snapshot;
        }
        sweepLeftovers(target);
        const FileRead file = readFile(target);
        if (file.state == FileRead::State::Refused) {
            snapshot.m_problem = describe(path, target) + ": " + file.reason + "; using the defaults";
        } else if (file.state == FileRead::State::Read) {
            snapshot.m_text = SettingsText(file.bytes);
            snapshot.m_exists = true;
        }
    } catch (const std::exception& e) {
        snapshot.m_problem = path.string() + ": " + e.what() + "; using the defaults";
    }
#endif
    return snapshot;
}

std::string SettingsStore::read(std::string_view fileName, std::string_view key, std::string_view defaultValue,
                                size_t bufferSize, std::string_view section) const {
    return load(fileName, section).value(key, defaultValue, bufferSize);
}

SettingsCommit SettingsStore::commit(const SettingsEdit& edit) {
    if (m_profiles) {
        const SettingsCommit done = m_profiles->commit(pathOf(edit.fileName()), edit);
        if (done.written) ++m_commits;
        return done;
    }
    SettingsCommit result;
    const fs::path path = pathOf(edit.fileName());
    fs::path target = path;
    auto fail = [&](const std::string& what, const std::string& cause) {
        result.error = describe(path, target) + ": " + (what.empty() ? "" : what + ": ") + cause;
        result.reason = cause;
        return result;
    };
#ifdef _WIN32
    return fail("", "this build has no profile functions to write it with");
#else
    try {
        std::error_code ec;
        fs::create_directories(m_folder, ec);
        std::string reason;
        if (!followLinks(path, target, reason)) return fail("", reason);
        sweepLeftovers(target);
        const FileRead file = readFile(target);
        const bool exists = file.state == FileRead::State::Read;
        if (file.state == FileRead::State::Refused) return fail("", file.reason);
        // A settings file the operator made read-only stays as it is.
        if (exists && ((file.mode & 0222) == 0 || ::access(target.c_str(), W_OK) != 0))
            return fail("", (file.mode & 0222) == 0 ? "the file is read-only" : errnoText(errno));

        SettingsText text = exists && !file.bytes.empty() ? SettingsText(file.bytes) : SettingsText();
        for (const SettingsEdit::Change& change : edit.changes()) {
            const SettingsText::SetResult set = text.set(edit.section(), change.key, change.value);
            if (set.lineBreaksReplaced) result.keysWithLineBreaks.push_back(change.key);
            if (set.charactersReplaced) result.keysWithLostCharacters.push_back(change.key);
        }
        std::string what;
        std::string cause;
        if (!replaceFile(target, text.bytes(), exists ? &file.mode : nullptr, what, cause)) return fail(what, cause);
        result.written = true;
        ++m_commits;
    } catch (const std::exception& e) {
        return fail("", e.what());
    }
    return result;
#endif
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
