// Controls run their handlers on every real change, however it was made.
#include "core/controls.h"

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace mv
