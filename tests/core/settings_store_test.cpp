// Settings files on disk: one save is one replace of the file, a failed save
// leaves the old file as it was, links are written through, and anything but
// a plain file is refused without being opened.
#include "core/settings_store.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fstream>

#include <sys/resource.h>
#include <sys/stat.h>

#include "support/read_text.h"
#include "support/temp_dir.h"

namespace mv {
namespace {

namespace fs = std::filesystem;

void spit(const fs::path& p, const std::string& text) {
    std::ofstream out(p, std::ios::binary);
    out << text;
}

std::vector<std::string> namesIn(const fs::path& folder) {
    std::vector<std::string> names;
    for (const auto& e : fs::directory_iterator(folder)) names.push_back(e.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

class SettingsStoreTest : public ::testing::Test {
protected:
    SettingsCommit save(const std::string& file, const std::vector<std::pair<std::string, std::string>>& keys) {
        SettingsEdit edit(file);
        for (const auto& [k, v] : keys) edit.set(k, v);
        return store.commit(edit);
    }
    fs::path folder() const { return dir.path() / "settings"; }

    test::TempDir dir;
    SettingsStore store{dir.path() / "settings"};
};

TEST_F(SettingsStoreTest, MissingFileSectionOrKeyGivesTheDefault) {
    EXPECT_EQ(store.read("none.ini", "KEY", "dflt"), "dflt");
    EXPECT_FALSE(store.load("none.ini").exists());
    EXPECT_TRUE(store.load("none.ini").problem().empty()) << "a missing file is not a problem";
    fs::create_directories(folder());
    spit(folder() / "a.ini", "[OTHER]\r\nKEY=x\r\n");
    EXPECT_EQ(store.read("a.ini", "KEY", "dflt"), "dflt");
    spit(folder() / "a.ini", "[SETTINGS]\r\nELSE=x\r\n");
    EXPECT_EQ(store.read("a.ini", "KEY", "dflt"), "dflt");
    EXPECT_EQ(store.read("a.ini", "ELSE", "dflt", 1), "");
}

TEST_F(SettingsStoreTest, AnEditOfManyKeysIsOneReplaceOfTheFile) {
    std::vector<std::pair<std::string, std::string>> keys;
    for (int i = 0; i < 71; ++i) keys.emplace_back("KEY" + std::to_string(i), "value " + std::to_string(i));
    const SettingsCommit r = save("Quillasp2.ini", keys);
    ASSERT_TRUE(r.written) << r.error;
    EXPECT_EQ(store.commitCount(), 1u);
    const SettingsSnapshot file = store.load("Quillasp2.ini");
    for (const auto& [k, v] : keys) EXPECT_EQ(file.value(k, "missing"), v);
    EXPECT_EQ(namesIn(folder()), std::vector<std::string>{"Quillasp2.ini"}) << "no temporary file is left";

    keys[70].second = "changed";
    ASSERT_TRUE(save("Quillasp2.ini", keys).written);
    EXPECT_EQ(store.commitCount(), 2u);
    EXPECT_EQ(store.read("Quillasp2.ini", "key70", ""), "changed");
}

TEST_F(SettingsStoreTest, AFailedSaveLeavesTheFileAsItWasAndSaysWhy) {
    ASSERT_TRUE(save("a.ini", {{"K", "original"}}).written);
    const std::string before = test::readText(folder() / "a.ini");

    // The temporary file's name is taken by a folder: nothing can be created.
    fs::create_directory(folder() / "a.ini.tmp");
    SettingsCommit r = save("a.ini", {{"K", "changed"}});
    EXPECT_FALSE(r.written);
    EXPECT_NE(r.error.find((folder() / "a.ini").string()), std::string::npos) << r.error;
    EXPECT_NE(r.error.find("a.ini.tmp"), std::string::npos) << r.error;
    EXPECT_EQ(r.reason, "File exists");
    fs::remove(folder() / "a.ini.tmp");

    // A file the operator made read-only is left alone, even by root.
    fs::permissions(folder() / "a.ini", fs::perms::owner_read | fs::perms::group_read);
    r = save("a.ini", {{"K", "changed"}});
    EXPECT_FALSE(r.written);
    EXPECT_EQ(r.reason, "the file is read-only");
    fs::permissions(folder() / "a.ini", fs::perms::owner_read | fs::perms::owner_write);

    // The disk fills up in the middle of writing the new text.
    std::string big(4096, 'x');
    struct rlimit old {};
    ::getrlimit(RLIMIT_FSIZE, &old);
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    struct rlimit small = old;
    small.rlim_cur = 1024;
    ::setrlimit(RLIMIT_FSIZE, &small);
    r = save("a.ini", {{"K", big}});
    ::setrlimit(RLIMIT_FSIZE, &old);
    std::signal(SIGXFSZ, oldHandler);
    EXPECT_FALSE(r.written);
    EXPECT_EQ(r.reason, "File too large") << r.error;

    EXPECT_EQ(test::readText(folder() / "a.ini"), before);
    EXPECT_EQ(namesIn(folder()), std::vector<std::string>{"a.ini"});
    EXPECT_EQ(store.commitCount(), 1u) << "only the first save replaced the file";
}

TEST_F(SettingsStoreTest, TheReplacementKeepsTheFilesPermissions) {
    ASSERT_TRUE(save("a.ini", {{"K", "1"}}).written);
    fs::permissions(folder() / "a.ini", fs::perms::owner_read | fs::perms::owner_write);
    ASSERT_TRUE(save("a.ini", {{"K", "2"}}).written);
    EXPECT_EQ(fs::status(folder() / "a.ini").permissions() & fs::perms::all,
              fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(SettingsStoreTest, ALinkIsWrittenThroughToTheFileItPointsAt) {
    const fs::path backup = dir.path() / "backup";
    fs::create_directories(backup);
    fs::create_directories(folder());
    spit(backup / "real.ini", "; kept in the backed-up folder\n[SETTINGS]\nK=old\n");
    fs::create_symlink("../backup/real.ini", folder() / "Quillasp2.ini");

    EXPECT_EQ(store.read("Quillasp2.ini", "K", ""), "old");
    ASSERT_TRUE(save("Quillasp2.ini", {{"K", "new"}}).written);
    EXPECT_TRUE(fs::is_symlink(folder() / "Quillasp2.ini")) << "the operator's link still stands";
    EXPECT_EQ(test::readText(backup / "real.ini"), "; kept in the backed-up folder\n[SETTINGS]\nK=new\n");
    EXPECT_EQ(namesIn(backup), std::vector<std::string>{"real.ini"});

    // A link to a file not made yet: the file is made where the link points.
    fs::create_symlink(backup / "later.ini", folder() / "b.ini");
    ASSERT_TRUE(save("b.ini", {{"K", "v"}}).written);
    EXPECT_TRUE(fs::is_symlink(folder() / "b.ini"));
    EXPECT_EQ(store.read("b.ini", "K", ""), "v");
    EXPECT_TRUE(fs::is_regular_file(backup / "later.ini"));

    // Links that go round in a circle lead nowhere: said, and nothing written.
    fs::create_symlink("loop2.ini", folder() / "loop1.ini");
    fs::create_symlink("loop1.ini", folder() / "loop2.ini");
    const SettingsCommit r = save("loop1.ini", {{"K", "v"}});
    EXPECT_FALSE(r.written);
    EXPECT_FALSE(r.error.empty());
    EXPECT_FALSE(store.load("loop1.ini").problem().empty());
}

TEST_F(SettingsStoreTest, WhatIsNotAPlainFileIsNeitherReadNorWritten) {
    fs::create_directories(folder());
    // A FIFO would hang a read that waited for a writer; this test would never end.
    ASSERT_EQ(::mkfifo((folder() / "fifo.ini").c_str(), 0644), 0);
    fs::create_directory(folder() / "folder.ini");
    // A device behind a link: /dev/zero would read forever.
    fs::create_symlink("/dev/zero", folder() / "device.ini");

    for (const char* name : {"fifo.ini", "folder.ini", "device.ini"}) {
        const SettingsSnapshot file = store.load(name);
        EXPECT_EQ(file.value("K", "dflt"), "dflt") << name;
        EXPECT_NE(file.problem().find((folder() / name).string()), std::string::npos) << file.problem();
        EXPECT_NE(file.problem().find("not a settings file"), std::string::npos) << file.problem();
    }
    EXPECT_NE(store.load("fifo.ini").problem().find("FIFO"), std::string::npos);
    EXPECT_NE(store.load("device.ini").problem().find("/dev/zero"), std::string::npos) << "the link's target is named";

    for (const char* name : {"fifo.ini", "folder.ini"}) {
        const SettingsCommit r = save(name, {{"K", "v"}});
        EXPECT_FALSE(r.written) << name;
        EXPECT_NE(r.error.find("not a settings file"), std::string::npos) << r.error;
    }
    EXPECT_TRUE(fs::is_fifo(folder() / "fifo.ini"));
    EXPECT_TRUE(fs::is_empty(folder() / "folder.ini"));
    EXPECT_EQ(store.commitCount(), 0u);
}

TEST_F(SettingsStoreTest, ATemporaryFileLeftByACrashIsRemovedAtTheNextStart) {
    fs::create_directories(folder());
    spit(folder() / "a.ini", "[SETTINGS]\r\nK=complete\r\n");
    spit(folder() / "a.ini.tmp", "[SETTINGS]\r\nK=half wri");
    SettingsStore restarted(folder());
    EXPECT_EQ(restarted.load("a.ini").value("K", ""), "complete");
    EXPECT_EQ(namesIn(folder()), std::vector<std::string>{"a.ini"});
}

TEST_F(SettingsStoreTest, AFolderSweepClearsEveryLeftoverSaveAndNothingElse) {
    fs::create_directories(folder());
    spit(folder() / "a.ini", "[SETTINGS]\r\nK=complete\r\n");
    spit(folder() / "a.ini.tmp", "[SETTINGS]\r\nK=half wri");
    spit(folder() / "never-loaded.ini.tmp", "[SETTINGS]\r\nK=half");
    spit(folder() / "notes.tmp", "the operator's own");
    spit(folder() / ".ini.tmp", "no settings file has an empty name");
    fs::create_directory(folder() / "dir.ini.tmp");
    SettingsStore restarted(folder());
    restarted.sweepFolderLeftovers();
    EXPECT_EQ(namesIn(folder()), (std::vector<std::string>{".ini.tmp", "a.ini", "dir.ini.tmp", "notes.tmp"}));
    EXPECT_EQ(restarted.load("a.ini").value("K", ""), "complete");
}

TEST_F(SettingsStoreTest, OnlyTheBareNameCountsSoEveryModuleSharesOneFolder) {
    ASSERT_TRUE(save("../elsewhere/x.ini", {{"K", "v"}}).written);
    EXPECT_TRUE(fs::exists(folder() / "x.ini"));
    EXPECT_EQ(store.read("x.ini", "K", ""), "v");
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
