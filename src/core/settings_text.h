#pragma once
// The text of one settings file, read the way the Windows profile functions
// read it: the encoding found from the bytes (and kept when written back),
// lines split and parsed as Windows parses them, a key's value taken from the
// first matching section and the first matching key. An edit rewrites only
// the lines of the keys it sets; every other line stays byte for byte.
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace mv {

// How a settings file's characters are stored.
enum class TextEncoding {
    Utf8,         // valid UTF-8 without a byte-order mark (plain ASCII is this too)
    Utf8Bom,      // UTF-8 behind a byte-order mark, as Windows' editors save it
    Windows1252,  // anything that is not valid UTF-8: the original program's files
    Utf16Le,      // UTF-16 behind its byte-order mark
    Utf16Be,
};
const char* encodingName(TextEncoding encoding);

class SettingsText {
public:
    // A file that does not exist yet. It will be UTF-8 behind a byte-order
    // mark, so that Windows, which takes a file without one for its 8-bit
    // code page, reads accented values the same; lines end in CR LF.
    SettingsText();
    // A file's bytes as found on disk.
    explicit SettingsText(std::string_view bytes);

    TextEncoding encoding() const { return m_encoding; }

    // What GetPrivateProfileString returns for `key` in the first section
    // named `section`: at most bufferSize - 1 characters of the value (a
    // character being a byte in Windows-1252), with surrounding blanks and
    // one pair of enclosing quotes taken off; the default when the key is
    // missing or stands on a line without '='. The result is UTF-8.
    std::string value(std::string_view section, std::string_view key, std::string_view defaultValue,
                      size_t bufferSize) const;

    struct SetResult {
        bool lineBreaksReplaced = false;  // a line break in the value became a blank
        bool charactersReplaced = false;  // a character this file's encoding cannot hold became '?'
    };
    // Gives `key` (UTF-8) in the first section named `section` the value
    // `value`, so that both Windows and value() read it back exactly: the
    // key's line is rewritten in place, or a new line goes at the end of the
    // section, or the section is added at the end of the file.
    SetResult set(std::string_view section, std::string_view key, std::string_view value);

    // The file's bytes.
    std::string bytes() const;

private:
    enum class LineKind { Blank, Header, Entry };
    // One line as Windows splits a file: its content up to the first CR or
    // LF, and the run of CRs and LFs after it (blank lines fold into it).
    struct Line {
        std::string raw;        // the content's bytes as in the file
        std::u32string text;    // the content, decoded
        std::u32string end;     // the CRs and LFs after it
        LineKind kind = LineKind::Blank;
        std::u32string name;    // section name, or key name
        bool hasValue = false;  // an entry with '='
        std::u32string value;   // an entry's value, blanks around it taken off
    };

    void split(std::string_view body);
    static void parse(Line& line);
    Line makeLine(const std::u32string& content, std::u32string end, bool& replaced) const;
    // The first section named `name`: its header's index and the index of the
    // line after its last one. False when there is none.
    bool findSection(const std::u32string& name, size_t& header, size_t& end) const;
    const Line* findEntry(const std::u32string& section, const std::u32string& key) const;
    std::u32string decode(std::string_view raw) const;
    std::string encode(const std::u32string& text, bool& replaced) const;

    TextEncoding m_encoding = TextEncoding::Utf8Bom;
    std::string m_bom;
    std::vector<Line> m_lines;
    std::string m_tail;            // an odd last byte of a UTF-16 file, kept as it was
    std::u32string m_eol = U"\r\n";  // how the file's lines end, for the lines added to it
};

}  // namespace mv
