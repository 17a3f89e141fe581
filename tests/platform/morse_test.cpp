#include "platform/morse.h"

#include <gtest/gtest.h>

namespace mv {
namespace {

TEST(MorseTest, ParisIsFiftyDotsIncludingTheWordGap) {
    // PARIS plus the seven-dot word space that follows it is exactly 50 dots:
    // the length of "PARIS PARIS" minus one "PARIS" is one word of 50 dots.
    const int64_t one = morse::durationMs("PARIS", 20);
    const int64_t two = morse::durationMs("PARIS PARIS", 20);
    EXPECT_EQ(two - one, 50 * 60);
    EXPECT_EQ(one, 43 * 60);
}

TEST(MorseTest, GapsBetweenElementsLettersAndWords) {
    const auto els = morse::elements("E E", 12);  // dot 100 ms
    ASSERT_EQ(els.size(), 2u);
    EXPECT_EQ(els[1].startMs - (els[0].startMs + els[0].durationMs), 700);
    const auto ee = morse::elements("EE", 12);
    EXPECT_EQ(ee[1].startMs - (ee[0].startMs + ee[0].durationMs), 300);
    const auto a = morse::elements("A", 12);
    EXPECT_EQ(a[1].startMs, 200);
    EXPECT_EQ(a[1].durationMs, 300);
}

TEST(MorseTest, UnknownCharactersAndBlanksAreSkippedLowerCaseIsSent) {
    EXPECT_EQ(morse::durationMs("", 20), 0);
    EXPECT_EQ(morse::durationMs("   ", 20), 0);
    EXPECT_EQ(morse::durationMs("k", 20), morse::durationMs("K", 20));
    EXPECT_EQ(morse::durationMs("K\xC3\xB1~", 20), morse::durationMs("K", 20));
    EXPECT_EQ(morse::durationMs(" K ", 20), morse::durationMs("K", 20));
}

}  // namespace
}  // namespace mv
