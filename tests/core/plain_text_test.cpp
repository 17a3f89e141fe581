// What a chat line may hold that must never be interpreted when it is shown
// or spoken, and what must pass untouched.
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
        {"cut\xE2\x80", "cut\xE2\x80"},                 // a truncated sequence is left to the UTF-8 handling
    };
    for (const Case& c : cases) EXPECT_EQ(withoutControlCharacters(c.in, "#"), c.out) << c.in;
    EXPECT_EQ(withoutControlCharacters(std::string("a\0b", 3), " "), "a b");
}

}  // namespace
}  // namespace mv
