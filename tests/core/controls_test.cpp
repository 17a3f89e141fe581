// Controls run their handlers on every real change, however it was made.
#include "core/controls.h"

#include <gtest/gtest.h>

#include <vector>

namespace mv {
namespace {

TEST(TextBoxTest, ChangeRunsOnEveryChangeIncludingNestedOnesButNotForTheSameText) {
    TextBox period("Period", "15");
    std::vector<std::string> seen;
    period.onChange = [&] {
        seen.push_back(period.text());
        if (period.text().empty()) period.setText("0");  // nested change
    };
    period.setText("15");
    EXPECT_TRUE(seen.empty());
    period.setText("");
    EXPECT_EQ(seen, (std::vector<std::string>{"", "0"}));
    EXPECT_EQ(period.text(), "0");
}

TEST(TextBoxTest, StylesFilterTypingButNotTheProgram) {
    TextBox digits("D");
    digits.setDigitsOnly(true);
    EXPECT_FALSE(digits.typeText("12a3"));
    EXPECT_EQ(digits.text(), "123");
    digits.setText("x9");  // the program may put anything there
    EXPECT_EQ(digits.text(), "x9");

    TextBox letters("L");
    letters.setUpperCase(true);
    EXPECT_TRUE(letters.typeText("k7abc"));
    EXPECT_EQ(letters.text(), "K7ABC");

    // Typed Spanish keeps its letters whole: a limit counts characters, and
    // capitals include the accented ones.
    TextBox call("C");
    call.setUpperCase(true);
    call.setMaxLength(4);
    EXPECT_FALSE(call.typeText("se\xC3\xB1or"));  // "señor"
    EXPECT_EQ(call.text(), "SE\xC3\x91O");       // "SEÑO"
    call.setText("\xC3\xB1\xC3\xB1\xC3\xB1\xC3\xB1\xC3\xB1");  // the program's text is cut whole too
    EXPECT_EQ(call.text(), "\xC3\xB1\xC3\xB1\xC3\xB1\xC3\xB1");

    TextBox shortBox("S");
    shortBox.setMaxLength(3);
    EXPECT_FALSE(shortBox.typeText("abcdef"));
    EXPECT_EQ(shortBox.text(), "abc");
    shortBox.setReadOnly(true);
    EXPECT_FALSE(shortBox.typeText("z"));
    EXPECT_EQ(shortBox.text(), "abc");
}

TEST(CheckBoxTest, ValuesAndClicks) {
    CheckBox box("C", "Activado", 0);
    int clicks = 0;
    box.onClick = [&] { ++clicks; };
    box.click();
    EXPECT_EQ(box.value(), 1);
    box.setValue(2);
    EXPECT_TRUE(box.ticked());
    box.click();  // greyed becomes clear
    EXPECT_EQ(box.value(), 0);
    box.setValue(0);  // no change, no click
    EXPECT_EQ(clicks, 3);
    box.setEnabled(false);
    box.click();
    EXPECT_EQ(box.value(), 0);
}

TEST(OptionButtonTest, SettingOneClearsTheOthersOfItsGroupOnly) {
    OptionGroup hours, type;
    OptionButton h12("OPTION1", "12 Hour", hours), h24("OPTION2", "24 Hour", hours);
    OptionButton wav("OPTIONWAV", "wav", type);
    int clicks12 = 0;
    h12.onClick = [&] { ++clicks12; };
    h24.setValue(true);
    wav.setValue(true);
    h12.setValue(true);
    EXPECT_TRUE(h12.value());
    EXPECT_FALSE(h24.value());
    EXPECT_TRUE(wav.value());
    EXPECT_EQ(hours.selected(), &h12);
    h12.setValue(true);
    EXPECT_EQ(clicks12, 1);
    h12.setValue(false);
    EXPECT_EQ(hours.selected(), nullptr);
}

TEST(SliderTest, ValuesStayInRange) {
    Slider volume("Vol", -3000, 0, 0);
    int changes = 0;
    volume.onChange = [&] { ++changes; };
    volume.setValue(-5000);
    EXPECT_EQ(volume.value(), -3000);
    volume.setValue(100);
    EXPECT_EQ(volume.value(), 0);
    Slider position("Pos", 0, 100, 80);
    position.setMax(30);
    EXPECT_EQ(position.value(), 30);
    EXPECT_EQ(changes, 2);
}

TEST(ViewListenerTest, TheViewHearsOnlyRealChanges) {
    Label ptt("PTT", "PTT OFF", kPttOffGreen);
    int repaints = 0;
    ptt.setViewListener([&](Control&) { ++repaints; });
    ptt.set("PTT OFF", kPttOffGreen);
    EXPECT_EQ(repaints, 0);
    ptt.set("PTT ON", kPttOnRed);
    EXPECT_EQ(repaints, 1);
    EXPECT_EQ(ptt.foreColor(), kPttOnRed);
    ptt.setCaption("PTT ON");
    EXPECT_EQ(repaints, 1);
}

TEST(ButtonTest, CaptionLookupKeepsTheDesignCaption) {
    Button save("btnSave", "Guardar");
    save.setCaption("Save");
    EXPECT_EQ(save.caption(), "Save");
    EXPECT_EQ(save.designCaption(), "Guardar");
    int clicks = 0;
    save.onClick = [&] { ++clicks; };
    save.setEnabled(false);
    save.click();
    EXPECT_EQ(clicks, 0);
}

TEST(TextBoxTest, EnterRunsOnlyOnAnEnabledFieldAndFocusRequestsAreCounted) {
    TextBox entry("MessageEntry");
    int sent = 0, views = 0;
    entry.onEnter = [&] { ++sent; };
    entry.setViewListener([&](Control&) { ++views; });
    entry.pressEnter();
    entry.setEnabled(false);
    entry.pressEnter();
    EXPECT_EQ(sent, 1);
    views = 0;
    entry.requestFocus();
    entry.requestFocus();
    EXPECT_EQ(entry.focusRequests(), 2u);
    EXPECT_EQ(views, 2) << "each request reaches the view, even with nothing else changed";
}

using Lines = std::vector<std::string>;
Lines linesOf(const LineLog& log) { return Lines(log.lines().begin(), log.lines().end()); }

TEST(LineLogTest, LineBreaksOfEveryKindStartLinesAndATrailingOneAddsNoEmptyLine) {
    struct Case {
        const char* text;
        Lines lines;
    } cases[] = {
        {"N0CALL>hola", {"N0CALL>hola"}},
        {"uno\r\ndos", {"uno", "dos"}},
        {"uno\rdos\ntres", {"uno", "dos", "tres"}},
        {"uno\r\n", {"uno"}},
        {"uno\r\r\ndos", {"uno", "", "dos"}},
        {"", {""}},
        {"\r\n", {""}},
    };
    for (const Case& c : cases) {
        LineLog log("log", 10);
        log.append(c.text);
        EXPECT_EQ(linesOf(log), c.lines) << c.text;
    }
    LineLog log("log", 10);
    log.append("uno\rdos");
    EXPECT_EQ(log.text(), "uno\r\ndos\r\n");
}

TEST(LineLogTest, KeepsTheNewestLinesUpToItsBoundAndCountsWhatWasAppended) {
    LineLog log("log", 3);
    int views = 0;
    log.setViewListener([&](Control&) { ++views; });
    for (int i = 1; i <= 5; ++i) log.append("line " + std::to_string(i));
    EXPECT_EQ(linesOf(log), (Lines{"line 3", "line 4", "line 5"}));
    EXPECT_EQ(log.appendedLines(), 5u);
    EXPECT_EQ(views, 5);
    log.append("six\rseven");
    EXPECT_EQ(linesOf(log), (Lines{"line 5", "six", "seven"}));
    EXPECT_EQ(log.appendedLines(), 7u);
    EXPECT_EQ(views, 6) << "one change, however many lines it brought";

    log.clear();
    EXPECT_TRUE(log.lines().empty());
    EXPECT_EQ(log.appendedLines(), 0u);
    EXPECT_EQ(log.clears(), 1u);
    log.clear();
    EXPECT_EQ(log.clears(), 1u) << "clearing an empty log changes nothing";
    EXPECT_EQ(views, 7);
}

TEST(LineLogTest, ShowsControlCharactersAsReplacementsAndCutsAnOverlongLineOnACharacterBoundary) {
    LineLog log("log", 10);
    log.append("a\x1b[2Jb\tc\x7f");
    log.append("N0CALL>\xE2\x80\xAE" "evil");  // right-to-left override
    EXPECT_EQ(linesOf(log), (Lines{"a\xEF\xBF\xBD[2Jb\tc\xEF\xBF\xBD", "N0CALL>\xEF\xBF\xBD" "evil"}));

    // A two-byte letter straddles the cut: it goes whole.
    std::string longLine(LineLog::kMaxLineBytes - 1, 'x');
    longLine += "\xC3\xB1";
    longLine += std::string(50, 'y');
    log.append(longLine);
    EXPECT_EQ(log.lines().back(), std::string(LineLog::kMaxLineBytes - 1, 'x') + "...");
}

}  // namespace
}  // namespace mv
