#pragma once
// A second reader of settings files that follows the Windows profile functions
// step by step, built apart from the store so the two can be compared: decode
// by byte-order mark or else as the Western code page (through the C
// library's converter), split lines at CR and LF, build the list of sections
// and keys, look up the first of each, copy the value into a buffer of WCHARs.
#include <iconv.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mv::test {

// Converts with iconv; false when the input does not convert.
inline bool convert(const char* from, const char* to, std::string_view in, std::string& out) {
    iconv_t cd = ::iconv_open(to, from);
    if (cd == reinterpret_cast<iconv_t>(-1)) return false;
    out.assign(in.size() * 4 + 8, '\0');
    char* src = const_cast<char*>(in.data());
    size_t srcLeft = in.size();
    char* dst = out.data();
    size_t dstLeft = out.size();
    const size_t r = ::iconv(cd, &src, &srcLeft, &dst, &dstLeft);
    ::iconv_close(cd);
    out.resize(out.size() - dstLeft);
    return r != static_cast<size_t>(-1);
}

inline std::u16string unitsOf(std::string_view utf16le) {
    std::u16string out;
    for (size_t i = 0; i + 1 < utf16le.size(); i += 2)
        out += static_cast<char16_t>(static_cast<unsigned char>(utf16le[i]) |
                                     (static_cast<unsigned char>(utf16le[i + 1]) << 8));
    return out;
}

inline std::string bytesOf(std::u16string_view units) {
    std::string out;
    for (char16_t u : units) {
        out += static_cast<char>(u & 0xFF);
        out += static_cast<char>(u >> 8);
    }
    return out;
}

// Text as UTF-16 little-endian bytes (for writing test files).
inline std::string utf16le(std::string_view utf8) {
    std::string out;
    convert("UTF-8", "UTF-16LE", utf8, out);
    return out;
}

inline std::string utf16be(std::string_view utf8) {
    std::string out;
    convert("UTF-8", "UTF-16BE", utf8, out);
    return out;
}

// UTF-8 text in Windows-1252 bytes.
inline std::string cp1252(std::string_view utf8) {
    std::string out;
    convert("UTF-8", "WINDOWS-1252", utf8, out);
    return out;
}

class WindowsProfile {
public:
    explicit WindowsProfile(std::string_view bytes) { load(decode(bytes)); }

    // GetPrivateProfileString(section, key, default, buffer, bufferSize), as UTF-8.
    std::string get(std::string_view section, std::string_view key, std::string_view defaultValue,
                    size_t bufferSize = 256) const {
        std::u16string def = wide(defaultValue);
        while (!def.empty() && def.back() == u' ') def.pop_back();
        const std::u16string* found = find(trimmed(wide(section)), trimmed(wide(key)));
        return narrow(copyEntry(found ? *found : def, bufferSize));
    }

private:
    struct Key {
        std::u16string name;
        std::optional<std::u16string> value;
    };
    struct Section {
        std::u16string name;
        std::vector<Key> keys;
    };

    static bool space(char16_t c) { return (c >= 0x09 && c <= 0x0D) || c == 0x1A || c == 0x20; }

    static std::u16string trimmed(std::u16string s) {
        while (!s.empty() && space(s.front())) s.erase(0, 1);
        while (!s.empty() && space(s.back())) s.pop_back();
        return s;
    }

    static std::u16string wide(std::string_view utf8) {
        std::string out;
        convert("UTF-8", "UTF-16LE", utf8, out);
        return unitsOf(out);
    }

    static std::string narrow(const std::u16string& units) {
        std::string out;
        convert("UTF-16LE", "UTF-8", bytesOf(units), out);
        return out;
    }

    static std::u16string decode(std::string_view bytes) {
        if (bytes.substr(0, 3) == "\xEF\xBB\xBF") return wide(bytes.substr(3));
        if (bytes.substr(0, 2) == "\xFF\xFE") return unitsOf(bytes.substr(2));
        if (bytes.substr(0, 2) == "\xFE\xFF") {
            std::string swapped(bytes.substr(2));
            for (size_t i = 0; i + 1 < swapped.size(); i += 2) std::swap(swapped[i], swapped[i + 1]);
            return unitsOf(swapped);
        }
        // The code page one byte at a time; a byte it leaves unassigned
        // becomes the character of the same number, as Windows converts it.
        std::u16string text;
        for (char b : bytes) {
            std::string out;
            if (convert("WINDOWS-1252", "UTF-16LE", std::string_view(&b, 1), out) && out.size() == 2)
                text += unitsOf(out);
            else
                text += static_cast<char16_t>(static_cast<unsigned char>(b));
        }
        return text;
    }

    void load(const std::u16string& text) {
        m_sections.push_back({});  // keys before any header belong to no section
        size_t next = 0;
        while (next < text.size()) {
            const size_t start = next;
            while (next < text.size() && text[next] != u'\n' && text[next] != u'\r') ++next;
            size_t end = next;
            while (next < text.size() && (text[next] == u'\n' || text[next] == u'\r')) ++next;
            std::u16string line = trimmed(text.substr(start, end - start));
            if (line.empty()) continue;
            if (line[0] == u'[') {
                const size_t close = line.rfind(u']');
                if (close != std::u16string::npos && close > 0) {
                    m_sections.push_back({cString(trimmed(line.substr(1, close - 1))), {}});
                    continue;
                }
            }
            Key key;
            const size_t eq = line.find(u'=');
            if (eq == std::u16string::npos) {
                key.name = cString(line);
            } else {
                key.name = cString(trimmed(line.substr(0, eq)));
                std::u16string value = line.substr(eq + 1);
                while (!value.empty() && space(value.front())) value.erase(0, 1);
                key.value = cString(value);
            }
            m_sections.back().keys.push_back(key);
        }
    }

    static std::u16string cString(std::u16string s) {
        const size_t nul = s.find(u'\0');
        if (nul != std::u16string::npos) s.resize(nul);
        return s;
    }

    static char16_t lower(char16_t c) {
        if (c >= u'A' && c <= u'Z') return c + 32;
        if (c >= 0xC0 && c <= 0xDE && c != 0xD7) return c + 32;
        return c;
    }

    static bool same(const std::u16string& a, const std::u16string& b) {
        if (a.size() != b.size()) return false;
        for (size_t i = 0; i < a.size(); ++i)
            if (lower(a[i]) != lower(b[i])) return false;
        return true;
    }

    const std::u16string* find(const std::u16string& section, const std::u16string& key) const {
        for (const Section& s : m_sections) {
            if (s.name.empty() || !same(s.name, section)) continue;
            for (const Key& k : s.keys)
                if (same(k.name, key)) return k.value ? &*k.value : nullptr;
            return nullptr;
        }
        return nullptr;
    }

    // lstrcpynW into a buffer of `len` WCHARs, after taking one opening quote
    // off a quoted value; the last copied character goes too when the text
    // after the opening quote was not longer than the buffer.
    static std::u16string copyEntry(std::u16string value, size_t len) {
        if (len == 0) return {};
        bool quote = false;
        if (!value.empty() && (value[0] == u'\'' || value[0] == u'"') && value.size() > 1 &&
            value.back() == value[0]) {
            quote = true;
            value.erase(0, 1);
        }
        std::u16string buffer = value.substr(0, len - 1);
        if (quote && len >= value.size() && !buffer.empty()) buffer.pop_back();
        return buffer;
    }

    std::vector<Section> m_sections;
};

}  // namespace mv::test
