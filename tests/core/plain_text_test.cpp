// What a chat line may hold that must never be interpreted when it is shown,
// spoken or logged, and what must pass untouched.
#include "core/plain_text.h"

#include <gtest/gtest.h>

namespace mv {
namespace {

TEST(PlainTextTest, ReplacesControlAndDirectionCharactersAndKeepsEverythingElse) {
    struct Case {
        const char* in;
        const char* out;
    } cases[] = {
        {"hola que tal", "hola que tal"},
        {"tab\tstays", "tab\tstays"},
        {"Espa\xC3\xB1" "a \xE2\x82\xAC \xF0\x9F\x93\xBB", "Espa\xC3\xB1" "a \xE2\x82\xAC \xF0\x9F\x93\xBB"},
        {"bell\x07 nul", "bell# nul"},
        {"uno\r\ndos", "uno##dos"},
        {"del\x7f", "del#"},
        {"c1\xC2\x85next", "c1#next"},                  // NEL
        {"\xC2\xA0nbsp", "\xC2\xA0nbsp"},               // a no-break space is text
        {"rlo\xE2\x80\xAEx", "rlo#x"},                  // U+202E
        {"mark\xE2\x80\x8F", "mark#"},                  // U+200F
        {"sep\xE2\x80\xA8par\xE2\x80\xA9", "sep#par#"}, // U+2028, U+2029
        {"iso\xE2\x81\xA6x\xE2\x81\xA9", "iso#x#"},     // U+2066, U+2069
        {"dash\xE2\x80\x94ok", "dash\xE2\x80\x94ok"},   // U+2014 is text
        {"alm\xD8\x9C", "alm#"},                        // U+061C
        {"cut\xE2\x80", "cut\xEF\xBF\xBD"},            // a truncated sequence: one U+FFFD
    };
    for (const Case& c : cases) EXPECT_EQ(withoutControlCharacters(c.in, "#"), c.out) << c.in;
    EXPECT_EQ(withoutControlCharacters(std::string("a\0b", 3), " "), "a b");
}

TEST(PlainTextTest, MalformedBytesBecomeOneReplacementPerBrokenStart) {
    const std::string r(kReplacementCharacter);
    struct Case {
        std::string in;
        std::string out;
    } cases[] = {
        {"\xFF\xFE", r + r},                               // a UTF-16 byte-order mark pasted in
        {"caf\xE9 con leche", "caf" + r + " con leche"},     // Windows-1252 é
        {"caf\xC3\xA9", "caf\xC3\xA9"},                     // the same é in UTF-8
        {"\xE2\x82" "A", r + "A"},                          // cut short, then a letter read afresh
        {"\xC0\xAF", r + r},                               // overlong '/'
        {"\xED\xA0\x80", r + r + r},                        // a surrogate half
        {"\xF4\x90\x80\x80", r + r + r + r},                 // past U+10FFFF
        {"\xF0\x9F\x93\xBB radio", "\xF0\x9F\x93\xBB radio"}, // four bytes, well formed
        {"\x80lone", r + "lone"},                            // a continuation byte on its own
    };
    for (const Case& c : cases) {
        EXPECT_EQ(withoutControlCharacters(c.in, "#"), c.out) << c.in;
        EXPECT_EQ(safeText(c.in), c.out) << c.in;
    }
}

TEST(PlainTextTest, TheLogsFormEscapesControlsAndQuotesOnlyForJson) {
    EXPECT_EQ(safeText("line\none\ttab\r"), "line\\none\\ttab\\r");
    EXPECT_EQ(safeText(std::string("nul\0bell\x07", 9)), "nul\\u0000bell\\u0007");
    EXPECT_EQ(safeText("rlo\xE2\x80\xAEx del\x7f nel\xC2\x85"), "rlo\\u202ex del\\u007f nel\\u0085");
    EXPECT_EQ(safeText("say \"hi\" \\o/"), "say \"hi\" \\o/");
    std::string json;
    appendSafeText(json, "say \"hi\" \\o/\xFF", true);
    EXPECT_EQ(json, "say \\\"hi\\\" \\\\o/" + std::string(kReplacementCharacter));
}

}  // namespace
}  // namespace mv
