// The settings store against Windows' own profile functions. One program,
// built for Linux and for Windows:
//   settings_differential write DIR            makes the case files; saves DIR/linux-written.ini
//   settings_differential read DIR OUT         saves DIR/windows-written.ini, then answers every
//                                              query through this build's store (Windows:
//                                              GetPrivateProfileStringA) into OUT
//   settings_differential compare DIR WINDOWS  answers them here and compares
// scripts/test-windows.sh runs the Windows side under Wine. Every difference
// must be fixed, or be one of the known ones below, where Windows itself
// behaves in a way the store deliberately does not follow.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "core/settings_store.h"
#include "platform/settings_folder.h"

namespace {

namespace fs = std::filesystem;
using mv::SettingsEdit;
using mv::SettingsStore;

struct FileCase {
    std::string name;
    std::string bytes;
};

struct Query {
    std::string id;
    std::string file;
    std::string section;
    std::string key;
    std::string fallback;
    size_t buffer;
};

// Differences where the store keeps to its own reading on purpose: the
// query, and why Windows answers otherwise.
const std::map<std::string, std::string> kKnownDifferences = {
    {"utf8-plain.accent",
     "a file without a byte-order mark is Windows-1252 to Windows; the store reads valid UTF-8 as UTF-8, so "
     "a file written by the Linux program keeps its accents"},
    {"utf8-plain.cut",
     "the same file: Windows counts bytes of the 8-bit code page, the store whole UTF-8 characters"},
};

std::string hex(const std::string& s) {
    static const char* digits = "0123456789abcdef";
    std::string out;
    for (unsigned char c : s) {
        out += digits[c >> 4];
        out += digits[c & 15];
    }
    return out.empty() ? "-" : out;
}

std::string unhex(const std::string& s) {
    if (s == "-") return {};
    std::string out;
    for (size_t i = 0; i + 1 < s.size(); i += 2) out += static_cast<char>(std::stoi(s.substr(i, 2), nullptr, 16));
    return out;
}

// What a reader sees of a text: printable ASCII as it is, the rest escaped.
std::string shown(const std::string& s) {
    std::string out = "\"";
    for (unsigned char c : s) {
        if (c >= 0x20 && c < 0x7f && c != '"' && c != '\\') {
            out += static_cast<char>(c);
        } else {
            char buf[8];
            std::snprintf(buf, sizeof buf, "\\x%02x", c);
            out += buf;
        }
    }
    return out + "\"";
}

std::vector<FileCase> caseFiles() {
    const std::string longValue(300, 'x');
    return {
        {"case.ini", "[settings]\r\nCheck1=1\r\nMiXeD=two\r\n[OTHER]\r\nCHECK1=other\r\n"},
        {"quotes.ini",
         "[SETTINGS]\r\nDOUBLE=\"quoted\"\r\nSINGLE='single'\r\nOPEN=\"unbalanced\r\nCLOSE=unbalanced\"\r\n"
         "EMPTYQ=\"\"\r\nINNER=\"a\"b\"\r\nPADDED=\" padded \"\r\nMIXED='mixed\"\r\nONE=\"\r\n"
         "OUTSIDE=  \"spaced\"  \r\n"},
        {"blanks.ini",
         "[SETTINGS]\r\n  SPACED  =  v  \r\nTABS=\tv\t\r\nEMPTY=\r\nFEED=\fv\f\r\nINSIDE=a  b\r\n"
         "My Key=with blank\r\n\tINDENTED=yes\r\n"},
        {"long.ini", "[SETTINGS]\r\nLONG=" + longValue + "\r\nSHORT=abc\r\n"},
        {"duplicates.ini",
         "[SETTINGS]\r\nK=first\r\nK=second\r\nBARE\r\nBARE=after\r\n[settings]\r\nLATER=hidden\r\n"
         "[SETTINGS]\r\nLATER2=hidden\r\nK=third\r\n"},
        {"headers.ini",
         "[ SETTINGS ]\r\nSPACED=1\r\n[SETTINGS]]\r\nDOUBLE=2\r\n[SETTINGS\r\nUNCLOSED=3\r\n"},
        {"lf.ini", "[SETTINGS]\nA=lf\nB=two\n"},
        {"cr.ini", "[SETTINGS]\rA=cr\rB=two\r"},
        {"nolast.ini", "[SETTINGS]\r\nA=1\r\nLAST=end"},
        {"midcr.ini", "[SETTINGS]\r\nA=one\rB=two\r\n"},
        {"comments.ini",
         "; a comment\r\n[SETTINGS]\r\n;K1=commented\r\n#K2=hash\r\n  ;K3=indented\r\nK4=v ;trailing\r\n"
         "K5=v # hash\r\n"},
        {"oddkeys.ini", "[SETTINGS]\r\n=novalue\r\nK==double\r\nEQ=a=b\r\n"},
        {"cp1252.ini", "[SETTINGS]\r\nACCENT=Conecci\xf3n Se\xf1\x61l\r\n"},
        {"utf8-bom.ini", "\xef\xbb\xbf[SETTINGS]\r\nACCENT=Conecci\xc3\xb3n\r\n"},
        {"utf8-plain.ini", "[SETTINGS]\r\nACCENT=Conecci\xc3\xb3n\r\nCUT=\xc3\xb3\xc3\xb3\xc3\xb3\r\n"},
        {"utf16.ini",
         std::string("\xff\xfe[\0S\0E\0T\0T\0I\0N\0G\0S\0]\0\r\0\n\0K\0=\0v\0\xf3\0\r\0\n\0", 38)},
        {"empty.ini", ""},
        {"nosection.ini", "K=outside\r\n"},
    };
}

std::vector<Query> caseQueries() {
    const std::string s = "SETTINGS";
    std::vector<Query> q = {
        {"case.check1", "case.ini", s, "CHECK1", "d", 256},
        {"case.mixed", "case.ini", s, "mixed", "d", 256},
        {"case.section", "case.ini", "other", "check1", "d", 256},
        {"quotes.double", "quotes.ini", s, "DOUBLE", "d", 256},
        {"quotes.single", "quotes.ini", s, "SINGLE", "d", 256},
        {"quotes.open", "quotes.ini", s, "OPEN", "d", 256},
        {"quotes.close", "quotes.ini", s, "CLOSE", "d", 256},
        {"quotes.empty", "quotes.ini", s, "EMPTYQ", "d", 256},
        {"quotes.inner", "quotes.ini", s, "INNER", "d", 256},
        {"quotes.padded", "quotes.ini", s, "PADDED", "d", 256},
        {"quotes.mixed", "quotes.ini", s, "MIXED", "d", 256},
        {"quotes.one", "quotes.ini", s, "ONE", "d", 256},
        {"quotes.outside", "quotes.ini", s, "OUTSIDE", "d", 256},
        {"quotes.cut", "quotes.ini", s, "DOUBLE", "d", 4},
        {"blanks.spaced", "blanks.ini", s, "SPACED", "d", 256},
        {"blanks.tabs", "blanks.ini", s, "TABS", "d", 256},
        {"blanks.empty", "blanks.ini", s, "EMPTY", "d", 256},
        {"blanks.feed", "blanks.ini", s, "FEED", "d", 256},
        {"blanks.inside", "blanks.ini", s, "INSIDE", "d", 256},
        {"blanks.keyblank", "blanks.ini", s, "My Key", "d", 256},
        {"blanks.indented", "blanks.ini", s, "INDENTED", "d", 256},
        {"blanks.padkey", "blanks.ini", s, " SPACED ", "d", 256},
        {"long.256", "long.ini", s, "LONG", "d", 256},
        {"long.250", "long.ini", s, "LONG", "d", 250},
        {"long.265", "long.ini", s, "LONG", "d", 265},
        {"long.1", "long.ini", s, "SHORT", "d", 1},
        {"long.2", "long.ini", s, "SHORT", "d", 2},
        {"long.exact", "long.ini", s, "SHORT", "d", 4},
        {"long.default", "long.ini", s, "MISSING", "defaultvalue", 5},
        {"dup.key", "duplicates.ini", s, "K", "d", 256},
        {"dup.bare", "duplicates.ini", s, "BARE", "d", 256},
        {"dup.later", "duplicates.ini", s, "LATER", "d", 256},
        {"dup.later2", "duplicates.ini", s, "LATER2", "d", 256},
        {"headers.spaced", "headers.ini", s, "SPACED", "d", 256},
        {"headers.double", "headers.ini", s, "DOUBLE", "d", 256},
        {"headers.doublename", "headers.ini", "SETTINGS]", "DOUBLE", "d", 256},
        {"headers.unclosed", "headers.ini", s, "UNCLOSED", "d", 256},
        {"lf.a", "lf.ini", s, "A", "d", 256},
        {"lf.b", "lf.ini", s, "B", "d", 256},
        {"cr.a", "cr.ini", s, "A", "d", 256},
        {"cr.b", "cr.ini", s, "B", "d", 256},
        {"nolast.last", "nolast.ini", s, "LAST", "d", 256},
        {"midcr.a", "midcr.ini", s, "A", "d", 256},
        {"midcr.b", "midcr.ini", s, "B", "d", 256},
        {"comments.k1", "comments.ini", s, "K1", "d", 256},
        {"comments.semikey", "comments.ini", s, ";K1", "d", 256},
        {"comments.k2", "comments.ini", s, "#K2", "d", 256},
        {"comments.k3", "comments.ini", s, "K3", "d", 256},
        {"comments.k4", "comments.ini", s, "K4", "d", 256},
        {"comments.k5", "comments.ini", s, "K5", "d", 256},
        {"oddkeys.k", "oddkeys.ini", s, "K", "d", 256},
        {"oddkeys.eq", "oddkeys.ini", s, "EQ", "d", 256},
        {"cp1252.accent", "cp1252.ini", s, "ACCENT", "d", 256},
        {"cp1252.cut", "cp1252.ini", s, "ACCENT", "d", 9},
        {"utf8-bom.accent", "utf8-bom.ini", s, "ACCENT", "d", 256},
        {"utf8-plain.accent", "utf8-plain.ini", s, "ACCENT", "d", 256},
        {"utf8-plain.cut", "utf8-plain.ini", s, "CUT", "d", 3},
        {"utf16.k", "utf16.ini", s, "K", "d", 256},
        {"empty.k", "empty.ini", s, "K", "d", 256},
        {"nosection.k", "nosection.ini", s, "K", "d", 256},
        {"missing.file", "missing.ini", s, "K", "fallback", 256},
        {"missing.blankdefault", "missing.ini", s, "K", "  padded default  ", 256},
        {"missing.quoteddefault", "missing.ini", s, "K", "\"quoted\"", 256},
    };
    return q;
}

// Values every store must give back exactly after saving them itself, and
// that the other system must read the same from that file.
std::vector<std::pair<std::string, std::string>> savedValues() {
    return {
        {"PLAIN", "plain"},
        {"EMPTY", ""},
        {"LEADING", "  leading"},
        {"TRAILING", "trailing  "},
        {"QUOTED", "\"quoted\""},
        {"SINGLEQ", "'single'"},
        {"HALFQ", "\"half"},
        {"INNERQ", "a \"b\" c"},
        {"EQUALS", "a=b=c"},
        {"SEMI", ";not a comment"},
        {"ACCENT", "Conecci\xc3\xb3n Se\xc3\xb1\x61l"},
        {"LONG", std::string(254, 'y')},
        {"TABS", "\ttab\t"},
    };
}

const char* kSystem =
#ifdef _WIN32
    "windows";
#else
    "linux";
#endif

// Saves the values, in one save, into this system's own file.
bool save(const fs::path& dir) {
    SettingsStore store(dir, mv::systemProfiles());
    SettingsEdit edit(std::string(kSystem) + "-written.ini");
    for (const auto& [k, v] : savedValues()) edit.set(k, v);
    const mv::SettingsCommit saved = store.commit(edit);
    if (!saved.written) std::cerr << kSystem << " could not save: " << saved.error << '\n';
    return saved.written;
}

// Answers every query, and reads what both systems saved, through this
// build's store.
std::map<std::string, std::string> answers(const fs::path& dir) {
    SettingsStore store(dir, mv::systemProfiles());
    std::map<std::string, std::string> result;
    for (const Query& q : caseQueries())
        result[q.id] = store.read(q.file, q.key, q.fallback, q.buffer, q.section);
    for (const char* system : {"linux", "windows"})
        for (const auto& [k, v] : savedValues())
            result[std::string("saved.") + system + "." + k] = store.read(std::string(system) + "-written.ini", k, "missing", 256);
    return result;
}

int write(const fs::path& dir) {
    fs::create_directories(dir);
    for (const FileCase& f : caseFiles()) std::ofstream(dir / f.name, std::ios::binary) << f.bytes;
    return save(dir) ? 0 : 1;
}

int read(const fs::path& dir, const fs::path& out) {
    if (!save(dir)) return 1;
    std::ofstream file(out, std::ios::binary);
    for (const auto& [id, value] : answers(dir)) file << id << '\t' << hex(value) << '\n';
    return file ? 0 : 1;
}

int compare(const fs::path& dir, const fs::path& windowsAnswers) {
    std::map<std::string, std::string> answered;
    std::ifstream in(windowsAnswers, std::ios::binary);
    std::string line;
    while (std::getline(in, line)) {
        const size_t tab = line.find('\t');
        if (tab != std::string::npos) answered[line.substr(0, tab)] = unhex(line.substr(tab + 1));
    }
    const std::map<std::string, std::string> windows = std::move(answered);
    const std::map<std::string, std::string> here = answers(dir);
    int failures = 0;
    int known = 0;
    for (const auto& [id, value] : here) {
        const auto w = windows.find(id);
        if (w == windows.end()) {
            std::cerr << id << ": no answer from Windows\n";
            ++failures;
            continue;
        }
        const bool differs = w->second != value;
        const auto reason = kKnownDifferences.find(id);
        if (differs && reason != kKnownDifferences.end()) {
            ++known;
            std::cout << id << ": differs as known: " << reason->second << "\n    store " << shown(value)
                      << "\n    Windows " << shown(w->second) << '\n';
        } else if (differs) {
            ++failures;
            std::cerr << id << ": the store reads " << shown(value) << ", Windows reads " << shown(w->second) << '\n';
        } else if (reason != kKnownDifferences.end()) {
            ++failures;
            std::cerr << id << ": listed as a known difference, but both now read " << shown(value) << '\n';
        }
    }
    // What either system saved, either system reads back exactly.
    for (const auto& [k, v] : savedValues())
        for (const char* writer : {"linux", "windows"})
            for (const std::map<std::string, std::string>* reader : {&here, &windows}) {
                const auto got = reader->find(std::string("saved.") + writer + "." + k);
                if (got != reader->end() && got->second != v) {
                    ++failures;
                    std::cerr << (reader == &here ? "linux" : "windows") << " reads " << k << " saved by " << writer
                              << " as " << shown(got->second) << ", not " << shown(v) << '\n';
                }
            }
    std::cout << here.size() << " answers compared, " << known << " known differences, " << failures
              << " unexpected\n";
    return failures == 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string command = argc > 1 ? argv[1] : "";
    if (command == "write" && argc == 3) return write(argv[2]);
    if (command == "read" && argc == 4) return read(argv[2], argv[3]);
    if (command == "compare" && argc == 4) return compare(argv[2], argv[3]);
    std::cerr << "usage: settings_differential write DIR | read DIR OUT | compare DIR WINDOWS-ANSWERS\n";
    return 2;
}
