// How host failures are folded: the first of a call written, repeats within
// a minute counted, the count written with the next line about that call.
#include "core/failure_fold.h"

#include <gtest/gtest.h>

namespace mv {
namespace {

TEST(FailureFoldTest, RepeatsWithinAMinuteAreCountedAndWrittenWithTheNextLine) {
    FailureFold fold;
    EXPECT_EQ(fold.failed("IsBusy", "", "down", 0), "IsBusy: down");
    for (int64_t t = 100; t < 60'000; t += 100) EXPECT_FALSE(fold.failed("IsBusy", "", "down", t));
    EXPECT_EQ(fold.failed("IsBusy", "", "down", 60'000), "IsBusy: down (failed 599 more times since the last line about it)");
    EXPECT_FALSE(fold.failed("IsBusy", "", "down", 60'100));
    // Another call is folded on its own; another failure of the same call is
    // news at once, with what was counted of the old one.
    EXPECT_EQ(fold.failed("SetPTT", "", "down", 60'100), "SetPTT: down");
    EXPECT_EQ(fold.failed("IsBusy", "", "refused", 60'200), "IsBusy: refused (failed 1 more time with \"down\" since the last line about it)");
    EXPECT_FALSE(fold.failed("IsBusy", "", "refused", 60'300));
    // The same call about something else is news too: a connect to one
    // station failing does not hide a connect to another.
    EXPECT_EQ(fold.failed("Connect", "111", "down", 0), "Connect: down");
    EXPECT_EQ(fold.failed("Connect", "222", "down", 0), "Connect: down");
    EXPECT_FALSE(fold.failed("Connect", "111", "down", 100));
}

TEST(FailureFoldTest, AnAnswerAfterTheQuietMinuteWritesWhatWasCountedAndStartsAfresh) {
    FailureFold fold;
    EXPECT_TRUE(fold.quiet());
    fold.failed("IsBusy", "", "down", 0);
    fold.failed("IsBusy", "", "down", 500);
    EXPECT_FALSE(fold.quiet());
    // A sporadic fault: answers in between do not start the count afresh, so
    // a call failing now and then is also written once a minute.
    EXPECT_FALSE(fold.succeeded("IsBusy", "", 30'000));
    EXPECT_FALSE(fold.failed("IsBusy", "", "down", 40'000));
    EXPECT_EQ(fold.succeeded("IsBusy", "", 61'000), "IsBusy: answers again, after failing 2 more times with \"down\" since the last line about it");
    EXPECT_TRUE(fold.quiet());
    EXPECT_EQ(fold.failed("IsBusy", "", "down", 62'000), "IsBusy: down");
    // Nothing counted since the last line: the answer needs no line.
    EXPECT_FALSE(fold.succeeded("IsBusy", "", 130'000));
    EXPECT_TRUE(fold.quiet());
    EXPECT_FALSE(fold.succeeded("Never", "", 0));
}

}  // namespace
}  // namespace mv
