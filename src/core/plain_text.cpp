#include "core/plain_text.h"

namespace mv {
namespace {

// Length of the control or direction character that starts at `at`, or 0.
size_t controlLength(std::string_view s, size_t at) {
    const auto b = [&](size_t i) { return at + i < s.size() ? static_cast<unsigned char>(s[at + i]) : 0u; };
    const unsigned c = b(0);
    if ((c < 0x20 && c != '\t') || c == 0x7F) return 1;
    if (c == 0xC2 && b(1) >= 0x80 && b(1) <= 0x9F) return 2;  // C1 controls
    if (c == 0xD8 && b(1) == 0x9C) return 2;                   // U+061C arabic letter mark
    if (c == 0xE2 && b(1) == 0x80) {
        const unsigned t = b(2);
        // U+200E/F marks, U+2028/9 separators, U+202A..E embeddings and overrides
        if (t == 0x8E || t == 0x8F || (t >= 0xA8 && t <= 0xAE)) return 3;
    }
    if (c == 0xE2 && b(1) == 0x81 && b(2) >= 0xA6 && b(2) <= 0xA9) return 3;  // U+2066..9 isolates
    return 0;
}

}  // namespace

std::string withoutControlCharacters(std::string_view text, std::string_view replacement) {
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size();) {
        if (const size_t n = controlLength(text, i)) {
            out += replacement;
            i += n;
        } else {
            out += text[i++];
        }
    }
    return out;
}

}  // namespace mv
