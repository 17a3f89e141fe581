#pragma once
// Text that arrives from outside (chat, station names, DTMF strings, settings
// files, file names) is shown, spoken and logged as plain text: whatever bytes
// came in, what leaves is valid UTF-8 (a byte that is not part of a
// well-formed character becomes U+FFFD), and nothing in it may move the
// cursor, reverse the reading direction or start a new line behind the
// window's back.
#include <string>
#include <string_view>

namespace mv {

// U+FFFD, what a log shows in place of a character it will not interpret.
inline constexpr std::string_view kReplacementCharacter = "\xEF\xBF\xBD";

// `text` with every control character (C0 but tab, DEL, C1), every
// text-direction mark or override and the Unicode line and paragraph
// separators replaced by `replacement`, and every malformed byte sequence by
// U+FFFD. Line breaks count as control characters here; a caller that keeps
// lines splits them first.
std::string withoutControlCharacters(std::string_view text, std::string_view replacement);

// `text` as the event log and the host console show it: malformed sequences
// become U+FFFD and the characters above (tab included) are written as
// escapes, \n, \r, \t or \u followed by four hex digits, so one odd byte can
// neither stop a JSON reader nor break a console line. The console shows
// exactly the text a reader of the log file sees between the quotes.
std::string safeText(std::string_view text);
// The same, appended to `out`; with `forJson`, `"` and `\` are escaped too,
// so the result can stand between the quotes of a JSON string.
void appendSafeText(std::string& out, std::string_view text, bool forJson);

}  // namespace mv
