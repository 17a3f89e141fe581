// Settings files behave like the classic profile functions, and never lose a line.
#include "core/settings_store.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "support/read_text.h"
#include "support/temp_dir.h"

namespace mv {
namespace {

void spit(const std::filesystem::path& p, const std::string& text) {
    std::ofstream out(p, std::ios::binary);
    out << text;
}

class SettingsStoreTest : public ::testing::Test {
protected:
    test::TempDir dir;
    SettingsStore store{dir.path()};
};

TEST_F(SettingsStoreTest, MissingFileSectionOrKeyGivesTheDefault) {
    EXPECT_EQ(store.read("none.ini", "KEY", "dflt"), "dflt");
    spit(dir.path() / "a.ini", "[OTHER]\r\nKEY=x\r\n");
    EXPECT_EQ(store.read("a.ini", "KEY", "dflt"), "dflt");
    spit(dir.path() / "a.ini", "[SETTINGS]\r\nELSE=x\r\n");
    EXPECT_EQ(store.read("a.ini", "KEY", "dflt"), "dflt");
}

TEST_F(SettingsStoreTest, SectionAndKeyMatchWithoutRegardToCase) {
    spit(dir.path() / "a.ini", "[settings]\nCheck1 = 1\n");
    EXPECT_EQ(store.read("a.ini", "CHECK1", "0"), "1");
    store.write("a.ini", "CHECK1", "0");
    EXPECT_EQ(store.read("a.ini", "check1", "9"), "0");
    // The key was replaced, not added a second time.
    EXPECT_EQ(test::readText(dir.path() / "a.ini"), "[settings]\r\nCheck1=0\r\n");
}

TEST_F(SettingsStoreTest, ReadsAreCutToOneLessThanTheBuffer) {
    const std::string longValue(300, 'x');
    store.write("a.ini", "K", longValue);
    EXPECT_EQ(store.read("a.ini", "K", "", 256).size(), 255u);
    EXPECT_EQ(store.read("a.ini", "K", "", 250).size(), 249u);
    EXPECT_EQ(store.read("a.ini", "MISSING", longValue, 265).size(), 264u);
    // A multi-byte character is never split.
    store.write("a.ini", "U", std::string(254, 'a') + "\xC3\xB1" + "b");
    EXPECT_EQ(store.read("a.ini", "U", "", 256), std::string(254, 'a') + "\xC3\xB1");
}

TEST_F(SettingsStoreTest, BlanksAndQuotesRoundTrip) {
    for (const std::string value : {"  leading", "trailing  ", " both ", "\"quoted\"", "'single'", "", "a = b",
                                    "C:\\Program Files\\Marrowvane\\", "Example -->> C:\\YourFiles\\ "}) {
        store.write("a.ini", "V", value);
        EXPECT_EQ(store.read("a.ini", "V", "dflt"), value) << "value [" << value << "]";
    }
    // Hand-written values lose surrounding blanks and one pair of quotes.
    spit(dir.path() / "b.ini", "[SETTINGS]\nA=  spaced  \nB=\"in quotes\"\nC=\"\"twice\"\"\n");
    EXPECT_EQ(store.read("b.ini", "A", ""), "spaced");
    EXPECT_EQ(store.read("b.ini", "B", ""), "in quotes");
    EXPECT_EQ(store.read("b.ini", "C", ""), "\"twice\"");
}

TEST_F(SettingsStoreTest, AValueCannotInjectALine) {
    const auto r = store.write("a.ini", "TEXT", "one\r\n[EVIL]\nX=1");
    EXPECT_TRUE(r.written);
    EXPECT_TRUE(r.lineBreaksReplaced);
    EXPECT_EQ(store.read("a.ini", "TEXT", ""), "one [EVIL] X=1");
    EXPECT_EQ(store.read("a.ini", "X", "none", 256, "EVIL"), "none");
}

TEST_F(SettingsStoreTest, WritesKeepEveryOtherLineAndCreateWhatIsMissing) {
    spit(dir.path() / "a.ini",
         "; operator's note\n[OTHER]\nK=keep\n\n[SETTINGS]\nFIRST=1\nUNKNOWN=stays\n\n[TAIL]\nZ=9\n");
    store.write("a.ini", "FIRST", "2");
    store.write("a.ini", "NEW", "n");
    EXPECT_EQ(test::readText(dir.path() / "a.ini"),
              "; operator's note\r\n[OTHER]\r\nK=keep\r\n\r\n[SETTINGS]\r\nFIRST=2\r\nUNKNOWN=stays\r\nNEW=n\r\n\r\n"
              "[TAIL]\r\nZ=9\r\n");
    store.write("fresh.ini", "K", "v");
    EXPECT_EQ(test::readText(dir.path() / "fresh.ini"), "[SETTINGS]\r\nK=v\r\n");
    // No temporary file is left behind.
    for (const auto& e : std::filesystem::directory_iterator(dir.path()))
        EXPECT_EQ(e.path().extension(), ".ini") << e.path();
}

TEST_F(SettingsStoreTest, OnlyTheBareNameCountsSoEveryModuleSharesOneFolder) {
    store.write("../elsewhere/x.ini", "K", "v");
    EXPECT_TRUE(std::filesystem::exists(dir.path() / "x.ini"));
    EXPECT_EQ(store.read("x.ini", "K", ""), "v");
}

TEST_F(SettingsStoreTest, AFailedWriteLeavesTheFileIntactAndSaysWhy) {
    store.write("a.ini", "K", "original");
    // The temporary file's name is taken by a folder, so the new file cannot be made.
    std::filesystem::create_directory(dir.path() / "a.ini.tmp");
    const auto r = store.write("a.ini", "K", "changed");
    EXPECT_FALSE(r.written);
    EXPECT_FALSE(r.error.empty());
    EXPECT_EQ(store.read("a.ini", "K", ""), "original");
}

TEST(SettingConversions, ControlKindsConvertOrRefuse) {
    int check = -1;
    EXPECT_TRUE(setting::parseCheck("1", check));
    EXPECT_EQ(check, 1);
    EXPECT_TRUE(setting::parseCheck(" 2 ", check));
    EXPECT_EQ(check, 2);
    for (const char* bad : {"abc", "", "3", "-1", "1.5", "1x"}) EXPECT_FALSE(setting::parseCheck(bad, check)) << bad;

    bool option = false;
    for (const auto& [text, want] : std::vector<std::pair<const char*, bool>>{
             {"True", true}, {"false", false}, {"TRUE", true}, {"1", true}, {"0", false}, {"-1", true}, {"2.5", true}})
    {
        ASSERT_TRUE(setting::parseOption(text, option)) << text;
        EXPECT_EQ(option, want) << text;
    }
    for (const char* bad : {"yes", "", "maybe", "1a"}) EXPECT_FALSE(setting::parseOption(bad, option)) << bad;

    float pos = 0;
    EXPECT_TRUE(setting::parsePosition("1234.5", pos));
    EXPECT_FLOAT_EQ(pos, 1234.5f);
    EXPECT_FALSE(setting::parsePosition("left", pos));
    EXPECT_EQ(setting::positionText(300.0f), "300");
    EXPECT_EQ(setting::positionText(1234.5f), "1234.5");
}

}  // namespace
}  // namespace mv
