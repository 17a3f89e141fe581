#include "core/settings_text.h"

#include <algorithm>
#include <array>

namespace mv {
namespace {

using Text = std::u32string;
constexpr char32_t kReplacement = 0xFFFD;

// What the profile functions skip around names, values and headers: space,
// tab, the line-end controls (vertical tab and form feed among them) and
// Ctrl-Z, the old end-of-file mark some files still carry.
bool isBlank(char32_t c) { return (c >= 0x09 && c <= 0x0D) || c == 0x1A || c == 0x20; }

bool isLineEnd(char32_t c) { return c == '\r' || c == '\n'; }

// Windows stops a name or a value at a NUL (a damaged file can hold one).
Text cutAtNul(Text s) {
    const size_t nul = s.find(U'\0');
    if (nul != Text::npos) s.resize(nul);
    return s;
}

Text trimmed(const Text& s, size_t begin, size_t end) {
    while (begin < end && isBlank(s[begin])) ++begin;
    while (end > begin && isBlank(s[end - 1])) --end;
    return s.substr(begin, end - begin);
}

// Section and key names compare without regard to case, as Windows compares
// them: ASCII and the Latin-1 letters, and the few others that fold to ASCII.
char32_t folded(char32_t c) {
    if (c >= 'A' && c <= 'Z') return c + 32;
    if (c >= 0xC0 && c <= 0xDE && c != 0xD7) return c + 32;
    if (c == 0x130) return 'i';
    if (c == 0x212A) return 'k';
    if (c == 0x212B) return 0xE5;
    return c;
}

bool sameName(const Text& a, const Text& b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (folded(a[i]) != folded(b[i])) return false;
    return true;
}

// --- encodings -------------------------------------------------------------

// Windows-1252 bytes 0x80..0x9F; the five bytes the code page leaves unassigned
// map to the C1 controls of the same number, as Windows maps them, so every
// byte survives a read and a write.
constexpr std::array<char16_t, 32> kCp1252High = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

char32_t from1252(unsigned char b) { return b >= 0x80 && b < 0xA0 ? kCp1252High[b - 0x80] : b; }

bool to1252(char32_t c, char& out) {
    if (c < 0x80 || (c >= 0xA0 && c <= 0xFF)) {
        out = static_cast<char>(c);
        return true;
    }
    for (size_t i = 0; i < kCp1252High.size(); ++i)
        if (kCp1252High[i] == c) {
            out = static_cast<char>(0x80 + i);
            return true;
        }
    return false;
}

// Decodes UTF-8. In strict mode a malformed sequence (overlong, a surrogate,
// beyond U+10FFFF, cut short) makes the whole text invalid; otherwise each
// bad byte becomes U+FFFD.
bool decodeUtf8(std::string_view s, Text& out, bool strict) {
    out.clear();
    out.reserve(s.size());
    size_t i = 0;
    while (i < s.size()) {
        const auto b0 = static_cast<unsigned char>(s[i]);
        if (b0 < 0x80) {
            out += b0;
            ++i;
            continue;
        }
        size_t len = 0;
        char32_t c = 0;
        char32_t min = 0;
        if (b0 >= 0xC2 && b0 <= 0xDF) len = 2, c = b0 & 0x1F, min = 0x80;
        else if (b0 >= 0xE0 && b0 <= 0xEF) len = 3, c = b0 & 0x0F, min = 0x800;
        else if (b0 >= 0xF0 && b0 <= 0xF4) len = 4, c = b0 & 0x07, min = 0x10000;
        bool ok = len > 0 && i + len <= s.size();
        for (size_t k = 1; ok && k < len; ++k) {
            const auto b = static_cast<unsigned char>(s[i + k]);
            ok = (b & 0xC0) == 0x80;
            c = (c << 6) | (b & 0x3F);
        }
        ok = ok && c >= min && c <= 0x10FFFF && !(c >= 0xD800 && c <= 0xDFFF);
        if (!ok) {
            if (strict) return false;
            out += kReplacement;
            ++i;
            continue;
        }
        out += c;
        i += len;
    }
    return true;
}

void appendUtf8(std::string& out, char32_t c) {
    if (c >= 0xD800 && c <= 0xDFFF) c = kReplacement;  // a lone UTF-16 surrogate
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | (c >> 6));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        out += static_cast<char>(0xE0 | (c >> 12));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (c >> 18));
        out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
}

std::string toUtf8(const Text& text) {
    std::string out;
    out.reserve(text.size());
    for (char32_t c : text) appendUtf8(out, c);
    return out;
}

Text fromUtf8(std::string_view s) {
    Text t;
    decodeUtf8(s, t, false);
    return t;
}

Text trimmedName(std::string_view name) {
    const Text t = fromUtf8(name);
    return trimmed(t, 0, t.size());
}

char16_t unitAt(std::string_view s, size_t i, bool bigEndian) {
    const auto a = static_cast<unsigned char>(s[i]);
    const auto b = static_cast<unsigned char>(s[i + 1]);
    return static_cast<char16_t>(bigEndian ? (a << 8) | b : (b << 8) | a);
}

// Decodes whole UTF-16 units; a surrogate without its partner is kept as it is.
Text decodeUtf16(std::string_view s, bool bigEndian) {
    Text out;
    out.reserve(s.size() / 2);
    for (size_t i = 0; i + 1 < s.size(); i += 2) {
        const char16_t u = unitAt(s, i, bigEndian);
        if (u >= 0xD800 && u <= 0xDBFF && i + 3 < s.size()) {
            const char16_t low = unitAt(s, i + 2, bigEndian);
            if (low >= 0xDC00 && low <= 0xDFFF) {
                out += 0x10000 + ((static_cast<char32_t>(u) - 0xD800) << 10) + (low - 0xDC00);
                i += 2;
                continue;
            }
        }
        out += u;
    }
    return out;
}

void appendUnit(std::string& out, char16_t u, bool bigEndian) {
    const char hi = static_cast<char>(u >> 8);
    const char lo = static_cast<char>(u & 0xFF);
    out += bigEndian ? hi : lo;
    out += bigEndian ? lo : hi;
}

// Copies a value the way GetPrivateProfileString does: one pair of enclosing
// quotes comes off, then at most bufferSize - 1 characters are kept. Windows
// drops the last kept character whenever the text after the opening quote
// is no longer than the buffer, even when the cut already took the closing
// quote away; the same value must read the same here.
Text copyEntry(Text value, size_t bufferSize) {
    if (bufferSize == 0) return {};
    bool quoted = false;
    if (value.size() >= 2 && (value.front() == '"' || value.front() == '\'') && value.back() == value.front()) {
        quoted = true;
        value.erase(0, 1);
    }
    const size_t afterQuote = value.size();
    value.resize(std::min(value.size(), bufferSize - 1));
    if (quoted && bufferSize >= afterQuote && !value.empty()) value.pop_back();
    return value;
}

bool needsQuotes(const Text& v) {
    if (v.empty()) return false;
    if (isBlank(v.front()) || isBlank(v.back())) return true;
    return v.size() >= 2 && (v.front() == '"' || v.front() == '\'') && v.back() == v.front();
}

}  // namespace

const char* encodingName(TextEncoding encoding) {
    switch (encoding) {
        case TextEncoding::Utf8: return "UTF-8";
        case TextEncoding::Utf8Bom: return "UTF-8 with byte-order mark";
        case TextEncoding::Windows1252: return "Windows-1252";
        case TextEncoding::Utf16Le: return "UTF-16 little-endian";
        case TextEncoding::Utf16Be: return "UTF-16 big-endian";
    }
    return "?";
}

SettingsText::SettingsText() : m_encoding(TextEncoding::Utf8Bom), m_bom("\xEF\xBB\xBF") {}

SettingsText::SettingsText(std::string_view bytes) {
    // A byte-order mark decides, as it does for Windows. Without one, a file
    // that is valid UTF-8 was written on this side; anything else comes from
    // the original program, in Windows' Western code page.
    std::string_view body = bytes;
    Text scratch;
    if (bytes.substr(0, 3) == "\xEF\xBB\xBF") {
        m_encoding = TextEncoding::Utf8Bom;
        m_bom = bytes.substr(0, 3);
    } else if (bytes.substr(0, 2) == "\xFF\xFE") {
        m_encoding = TextEncoding::Utf16Le;
        m_bom = bytes.substr(0, 2);
    } else if (bytes.substr(0, 2) == "\xFE\xFF") {
        m_encoding = TextEncoding::Utf16Be;
        m_bom = bytes.substr(0, 2);
    } else {
        m_encoding = decodeUtf8(bytes, scratch, true) ? TextEncoding::Utf8 : TextEncoding::Windows1252;
    }
    body.remove_prefix(m_bom.size());
    split(body);
    // Lines added later end the way this file's first line ends (CR LF, LF,
    // or a lone CR); a file without any line end gets CR LF.
    for (const Line& line : m_lines)
        if (!line.end.empty()) {
            m_eol = line.end.substr(0, line.end.compare(0, 2, U"\r\n") == 0 ? 2 : 1);
            break;
        }
}

void SettingsText::split(std::string_view body) {
    const bool wide = m_encoding == TextEncoding::Utf16Le || m_encoding == TextEncoding::Utf16Be;
    const bool bigEndian = m_encoding == TextEncoding::Utf16Be;
    if (wide && body.size() % 2 != 0) {
        m_tail = body.substr(body.size() - 1);
        body.remove_suffix(1);
    }
    const size_t unit = wide ? 2 : 1;
    auto at = [&](size_t i) -> char32_t { return wide ? unitAt(body, i, bigEndian) : static_cast<unsigned char>(body[i]); };
    size_t start = 0;
    while (start < body.size()) {
        size_t contentEnd = start;
        while (contentEnd < body.size() && !isLineEnd(at(contentEnd))) contentEnd += unit;
        size_t next = contentEnd;
        Line line;
        while (next < body.size() && isLineEnd(at(next))) {
            line.end += at(next);
            next += unit;
        }
        line.raw = body.substr(start, contentEnd - start);
        line.text = decode(line.raw);
        parse(line);
        m_lines.push_back(std::move(line));
        start = next;
    }
}

void SettingsText::parse(Line& line) {
    const Text& t = line.text;
    size_t begin = 0;
    size_t end = t.size();
    while (begin < end && isBlank(t[begin])) ++begin;
    while (end > begin && isBlank(t[end - 1])) --end;
    line.kind = LineKind::Blank;
    line.name.clear();
    line.value.clear();
    line.hasValue = false;
    if (begin == end) return;
    if (t[begin] == '[') {
        // The name runs to the last ']' of the line: "[SETTINGS]]" names
        // "SETTINGS]", and a header with no ']' at all is an ordinary line.
        const size_t close = t.rfind(']', end - 1);
        if (close != Text::npos && close > begin) {
            line.kind = LineKind::Header;
            line.name = cutAtNul(trimmed(t, begin + 1, close));
            return;
        }
    }
    line.kind = LineKind::Entry;
    const size_t eq = t.find('=', begin);
    if (eq == Text::npos || eq >= end) {
        // A bare "KEY" is the key with no value: it hides any later KEY=value.
        line.name = cutAtNul(t.substr(begin, end - begin));
        return;
    }
    line.name = cutAtNul(trimmed(t, begin, eq));
    line.hasValue = true;
    size_t valueBegin = eq + 1;
    while (valueBegin < end && isBlank(t[valueBegin])) ++valueBegin;
    line.value = cutAtNul(t.substr(valueBegin, end - valueBegin));
}

bool SettingsText::findSection(const Text& name, size_t& header, size_t& end) const {
    // Only the first section of a name counts; a second one, anywhere in the
    // file and in any letter case, is never read.
    for (size_t i = 0; i < m_lines.size(); ++i) {
        const Line& l = m_lines[i];
        if (l.kind != LineKind::Header || l.name.empty() || !sameName(l.name, name)) continue;
        header = i;
        end = i + 1;
        while (end < m_lines.size() && m_lines[end].kind != LineKind::Header) ++end;
        return true;
    }
    return false;
}

const SettingsText::Line* SettingsText::findEntry(const Text& section, const Text& key) const {
    size_t header = 0;
    size_t end = 0;
    if (!findSection(section, header, end)) return nullptr;
    for (size_t i = header + 1; i < end; ++i)
        if (m_lines[i].kind == LineKind::Entry && sameName(m_lines[i].name, key)) return &m_lines[i];
    return nullptr;
}

std::string SettingsText::value(std::string_view section, std::string_view key, std::string_view defaultValue,
                                size_t bufferSize) const {
    const Line* entry = findEntry(trimmedName(section), trimmedName(key));
    if (entry && entry->hasValue) return toUtf8(copyEntry(entry->value, bufferSize));
    // Windows takes trailing spaces (only spaces) off the default first.
    Text fallback = fromUtf8(defaultValue);
    while (!fallback.empty() && fallback.back() == ' ') fallback.pop_back();
    return toUtf8(copyEntry(std::move(fallback), bufferSize));
}

Text SettingsText::decode(std::string_view raw) const {
    Text text;
    switch (m_encoding) {
        case TextEncoding::Windows1252:
            for (char c : raw) text += from1252(static_cast<unsigned char>(c));
            break;
        case TextEncoding::Utf16Le:
        case TextEncoding::Utf16Be: text = decodeUtf16(raw, m_encoding == TextEncoding::Utf16Be); break;
        default: decodeUtf8(raw, text, false); break;
    }
    return text;
}

std::string SettingsText::encode(const Text& text, bool& replaced) const {
    std::string out;
    out.reserve(text.size());
    switch (m_encoding) {
        case TextEncoding::Windows1252:
            for (char32_t c : text) {
                char b = '?';
                if (!to1252(c, b)) replaced = true;
                out += b;
            }
            break;
        case TextEncoding::Utf16Le:
        case TextEncoding::Utf16Be: {
            const bool bigEndian = m_encoding == TextEncoding::Utf16Be;
            for (char32_t c : text) {
                if (c >= 0x10000) {
                    appendUnit(out, static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10)), bigEndian);
                    appendUnit(out, static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF)), bigEndian);
                } else {
                    appendUnit(out, static_cast<char16_t>(c), bigEndian);
                }
            }
            break;
        }
        default:
            for (char32_t c : text) appendUtf8(out, c);
            break;
    }
    return out;
}

SettingsText::Line SettingsText::makeLine(const Text& content, Text end, bool& replaced) const {
    Line line;
    line.raw = encode(content, replaced);
    // Read back from the bytes, so the line says what the file will say
    // (a character the encoding could not hold is '?' here too).
    line.text = decode(line.raw);
    line.end = std::move(end);
    parse(line);
    return line;
}

SettingsText::SetResult SettingsText::set(std::string_view section, std::string_view key, std::string_view value) {
    SetResult result;
    // A value can never start a line of its own: a line break becomes a blank
    // (CR LF one blank), and so does a NUL, which would end it for Windows.
    Text v;
    const Text decoded = fromUtf8(value);
    for (size_t i = 0; i < decoded.size(); ++i) {
        const char32_t c = decoded[i];
        if (isLineEnd(c) || c == 0) {
            result.lineBreaksReplaced = result.lineBreaksReplaced || c != 0;
            if (c == '\r' && i + 1 < decoded.size() && decoded[i + 1] == '\n') ++i;
            v += ' ';
        } else {
            v += c;
        }
    }
    // Quotes keep what the read would otherwise change: blanks at either end,
    // or a value that itself looks quoted. Windows reads it back the same.
    if (needsQuotes(v)) v = U"\"" + v + U"\"";

    const Text sectionName = trimmedName(section);
    const Text keyName = trimmedName(key);
    const Text entry = keyName + U"=" + v;
    size_t header = 0;
    size_t end = 0;
    if (!findSection(sectionName, header, end)) {
        if (!m_lines.empty() && m_lines.back().end.empty()) m_lines.back().end = m_eol;
        m_lines.push_back(makeLine(U"[" + sectionName + U"]", m_eol, result.charactersReplaced));
        m_lines.push_back(makeLine(entry, m_eol, result.charactersReplaced));
        return result;
    }
    size_t after = header;
    for (size_t i = header + 1; i < end; ++i) {
        Line& line = m_lines[i];
        if (line.kind == LineKind::Entry && sameName(line.name, keyName)) {
            // Rewritten in place, under the file's own spelling of the key and
            // with the line's own ending.
            line = makeLine(line.name + U"=" + v, line.end, result.charactersReplaced);
            return result;
        }
        if (line.kind != LineKind::Blank) after = i;
    }
    // A new key goes right after the section's last line with something on
    // it; the blank lines that followed that line now follow the new one.
    Line& last = m_lines[after];
    Text rest;
    if (last.end.empty()) {
        last.end = m_eol;
    } else {
        const size_t first = last.end.compare(0, 2, U"\r\n") == 0 ? 2 : 1;
        rest = last.end.substr(first);
        last.end.resize(first);
    }
    m_lines.insert(m_lines.begin() + static_cast<std::ptrdiff_t>(after + 1),
                   makeLine(entry, m_eol + rest, result.charactersReplaced));
    return result;
}

std::string SettingsText::bytes() const {
    std::string out = m_bom;
    bool unused = false;
    for (const Line& line : m_lines) out += line.raw + encode(line.end, unused);
    out += m_tail;
    return out;
}

}  // namespace mv
