#pragma once
// Text that arrives from the network (chat, station names) is shown and spoken
// as plain text: nothing in it may move the cursor, reverse the reading
// direction or start a new line behind the window's back.
#include <string>
#include <string_view>

namespace mv {

// U+FFFD, what a log shows in place of a character it will not interpret.
inline constexpr std::string_view kReplacementCharacter = "\xEF\xBF\xBD";

// `text` with every control character (C0 but tab, DEL, C1), every
// text-direction mark or override and the Unicode line and paragraph
// separators replaced by `replacement`. Line breaks count as control
// characters here; a caller that keeps lines splits them first.
std::string withoutControlCharacters(std::string_view text, std::string_view replacement);

}  // namespace mv
