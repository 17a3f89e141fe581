// The log file under logrotate: moved away, then reopened under its name.
#include "app/log_file.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "support/read_text.h"
#include "support/temp_dir.h"

namespace mv {
namespace {

TEST(LogFile, AReopenAfterARotationWritesToAFreshFileAndLosesNothing) {
    test::TempDir dir;
    const std::string path = (dir.path() / "marrowvane.jsonl").string();
    {
        std::ofstream(path) << "from an earlier run\n";
    }
    LogFile log;
    ASSERT_TRUE(log.open(path, true));
    log.stream() << "one\n" << std::flush;
    EXPECT_EQ(test::readText(path), "one\n") << "a headless run starts its own log afresh";

    std::filesystem::rename(path, path + ".1");
    log.stream() << "two\n" << std::flush;  // still the moved file, until told
    ASSERT_TRUE(log.reopen());
    log.stream() << "three\n" << std::flush;
    EXPECT_EQ(test::readText(path + ".1"), "one\ntwo\n");
    EXPECT_EQ(test::readText(path), "three\n");

    // Told again without a rotation, it appends to what is there.
    ASSERT_TRUE(log.reopen());
    log.stream() << "four\n" << std::flush;
    EXPECT_EQ(test::readText(path), "three\nfour\n");
}

TEST(LogFile, AReopenThatCannotOpenKeepsWritingWhereItWas) {
    test::TempDir dir;
    const auto folder = dir.path() / "logs";
    std::filesystem::create_directories(folder);
    const std::string path = (folder / "marrowvane.jsonl").string();
    LogFile log;
    ASSERT_TRUE(log.open(path, false));
    log.stream() << "one\n" << std::flush;
    std::filesystem::rename(folder, dir.path() / "moved");
    EXPECT_FALSE(log.reopen());
    log.stream() << "two\n" << std::flush;
    EXPECT_TRUE(log.stream().good());
    EXPECT_EQ(test::readText(dir.path() / "moved" / "marrowvane.jsonl"), "one\ntwo\n");
}

}  // namespace
}  // namespace mv
