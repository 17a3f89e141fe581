#include "core/plain_text.h"

#include <cstdint>
#include <cstdio>

namespace mv {
namespace {

// One character read from `s` at `at`: its code point and how many bytes it
// took. A malformed sequence reads as U+FFFD over the longest start that was
// well-formed so far (at least one byte), so the byte that broke it is read
// afresh; overlong forms, surrogates and code points past U+10FFFF are
// malformed.
struct Character {
    uint32_t codePoint;
    size_t length;
    bool wellFormed;
};

Character readCharacter(std::string_view s, size_t at) {
    const auto byte = [&](size_t i) { return static_cast<unsigned char>(s[at + i]); };
    const unsigned char lead = byte(0);
    if (lead < 0x80) return {lead, 1, true};
    size_t length = 0;
    unsigned char low = 0x80, high = 0xBF;
    uint32_t codePoint = 0;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
        codePoint = lead & 0x1Fu;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        codePoint = lead & 0x0Fu;
        if (lead == 0xE0) low = 0xA0;
        if (lead == 0xED) high = 0x9F;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        codePoint = lead & 0x07u;
        if (lead == 0xF0) low = 0x90;
        if (lead == 0xF4) high = 0x8F;
    } else {
        return {0xFFFD, 1, false};
    }
    for (size_t i = 1; i < length; ++i) {
        if (at + i >= s.size()) return {0xFFFD, i, false};
        const unsigned char next = byte(i);
        if (next < (i == 1 ? low : 0x80) || next > (i == 1 ? high : 0xBF)) return {0xFFFD, i, false};
        codePoint = (codePoint << 6) | (next & 0x3Fu);
    }
    return {codePoint, length, true};
}

bool isControl(uint32_t c) {
    return (c < 0x20 && c != '\t') || c == 0x7F || (c >= 0x80 && c <= 0x9F)  // C0 but tab, DEL, C1
           || c == 0x061C                                                    // arabic letter mark
           || c == 0x200E || c == 0x200F                                     // direction marks
           || (c >= 0x2028 && c <= 0x202E)                                   // separators, embeddings, overrides
           || (c >= 0x2066 && c <= 0x2069);                                  // isolates
}

void appendEscape(std::string& out, uint32_t c) {
    switch (c) {
        case '\n': out += "\\n"; return;
        case '\r': out += "\\r"; return;
        case '\t': out += "\\t"; return;
        default: {
            char buf[8];
            std::snprintf(buf, sizeof buf, "\\u%04x", static_cast<unsigned>(c));
            out += buf;
        }
    }
}

}  // namespace

std::string withoutControlCharacters(std::string_view text, std::string_view replacement) {
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size();) {
        const Character c = readCharacter(text, i);
        if (!c.wellFormed)
            out += kReplacementCharacter;
        else if (isControl(c.codePoint))
            out += replacement;
        else
            out.append(text.substr(i, c.length));
        i += c.length;
    }
    return out;
}

void appendSafeText(std::string& out, std::string_view text, bool forJson) {
    for (size_t i = 0; i < text.size();) {
        const Character c = readCharacter(text, i);
        if (!c.wellFormed) {
            out += kReplacementCharacter;
        } else if (isControl(c.codePoint) || c.codePoint == '\t') {
            appendEscape(out, c.codePoint);
        } else if (forJson && (c.codePoint == '"' || c.codePoint == '\\')) {
            out += '\\';
            out += static_cast<char>(c.codePoint);
        } else {
            out.append(text.substr(i, c.length));
        }
        i += c.length;
    }
}

std::string safeText(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    appendSafeText(out, text, false);
    return out;
}

}  // namespace mv
