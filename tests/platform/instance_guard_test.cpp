#include "platform/instance_guard.h"

#include <gtest/gtest.h>

#include "support/temp_dir.h"

namespace mv {
namespace {

TEST(InstanceGuardTest, OnlyOneHolderAtATimeAndTheLockGoesWithIt) {
    test::TempDir dir;
    const auto lock = dir.path() / "sub" / "marrowvane.lock";
    std::string why;
    auto first = std::make_unique<FileInstanceGuard>(lock);
    ASSERT_TRUE(first->acquire(why));
    FileInstanceGuard second(lock);
    EXPECT_FALSE(second.acquire(why));
    EXPECT_NE(why.find("already running"), std::string::npos);
    first.reset();
    FileInstanceGuard third(lock);
    EXPECT_TRUE(third.acquire(why));
}

}  // namespace
}  // namespace mv
