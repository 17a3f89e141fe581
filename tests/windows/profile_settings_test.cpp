// The Windows build's settings through the system's profile functions: a
// save is still one replace of the file with every key in it, values come
// back exactly, what the code page or a one-line value cannot hold is
// reported, and a file that must not be written is left alone.
#include "platform/windows/profile_settings.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <fstream>
#include <sstream>

#include "support/temp_dir.h"

namespace mv {
namespace {

namespace fs = std::filesystem;

std::string bytesOf(const fs::path& p) {
    std::ifstream in(p, std::ios::binary);
    std::ostringstream out;
    out << in.rdbuf();
    return out.str();
}

class ProfileSettingsTest : public ::testing::Test {
protected:
    SettingsCommit save(const std::vector<std::pair<std::string, std::string>>& keys) {
        SettingsEdit edit("Quillasp2.ini");
        for (const auto& [k, v] : keys) edit.set(k, v);
        return store.commit(edit);
    }
    fs::path file() const { return dir.path() / "Quillasp2.ini"; }

    test::TempDir dir;
    SettingsStore store{dir.path(), std::make_shared<ProfileSettings>()};
};

TEST_F(ProfileSettingsTest, ASaveWritesEveryKeyInOneReplaceAndReadsBackExactly) {
    const std::vector<std::pair<std::string, std::string>> keys = {
        {"TEXT37", "*ECHOTEST*"}, {"TEXT9", "  Hora  "}, {"TEXT10", "\"entre comillas\""}, {"TEXT11", "Señal"}, {"EMPTY", ""}};
    const SettingsCommit r = save(keys);
    ASSERT_TRUE(r.written) << r.error;
    EXPECT_EQ(store.commitCount(), 1u);
    EXPECT_FALSE(fs::exists(dir.path() / "Quillasp2.ini.tmp"));
    const SettingsSnapshot read = store.load("Quillasp2.ini");
    EXPECT_TRUE(read.exists());
    for (const auto& [k, v] : keys) EXPECT_EQ(read.value(k, "missing"), v) << k;
    EXPECT_EQ(read.value("text37", "missing"), "*ECHOTEST*") << "keys match whatever their case";
    EXPECT_EQ(read.value("TEXT37", "missing", 5), "*ECH") << "cut to the buffer";
}

TEST_F(ProfileSettingsTest, LineBreaksAndCharactersTheCodePageLacksAreReported) {
    const SettingsCommit r = save({{"TEXT9", "two\r\nlines"}, {"TEXT10", "73 ☺"}, {"TEXT11", "Conección"}});
    ASSERT_TRUE(r.written) << r.error;
    EXPECT_EQ(r.keysWithLineBreaks, std::vector<std::string>{"TEXT9"});
    EXPECT_EQ(r.keysWithLostCharacters, std::vector<std::string>{"TEXT10"});
    EXPECT_EQ(store.read("Quillasp2.ini", "TEXT9", ""), "two lines");
    EXPECT_EQ(store.read("Quillasp2.ini", "TEXT10", ""), "73 ?");
    EXPECT_EQ(store.read("Quillasp2.ini", "TEXT11", ""), "Conección");
}

TEST_F(ProfileSettingsTest, AFileThatMustNotBeWrittenIsLeftAsItWas) {
    ASSERT_TRUE(save({{"TEXT37", "original"}}).written);
    const std::string before = bytesOf(file());
    SetFileAttributesW(file().c_str(), FILE_ATTRIBUTE_READONLY);
    const SettingsCommit r = save({{"TEXT37", "changed"}});
    SetFileAttributesW(file().c_str(), FILE_ATTRIBUTE_NORMAL);
    EXPECT_FALSE(r.written);
    EXPECT_EQ(r.reason, "the file is read-only");
    EXPECT_EQ(bytesOf(file()), before);
    EXPECT_FALSE(fs::exists(dir.path() / "Quillasp2.ini.tmp"));

    fs::create_directory(dir.path() / "ostrevel.ini");
    const SettingsSnapshot folder = store.load("ostrevel.ini");
    EXPECT_FALSE(folder.problem().empty());
    EXPECT_EQ(folder.value("KEY", "default"), "default");
}

TEST_F(ProfileSettingsTest, TheCopyASaveLeftBehindIsRemovedAtTheNextLoad) {
    ASSERT_TRUE(save({{"TEXT37", "kept"}}).written);
    std::ofstream(dir.path() / "Quillasp2.ini.tmp", std::ios::binary) << "[SETTINGS]\r\nTEXT37=half a save\r\n";
    SettingsStore restarted(dir.path(), std::make_shared<ProfileSettings>());
    EXPECT_EQ(restarted.read("Quillasp2.ini", "TEXT37", ""), "kept");
    EXPECT_FALSE(fs::exists(dir.path() / "Quillasp2.ini.tmp"));
}

}  // namespace
}  // namespace mv
