// The busy policy: a host that asks to be called later is called again for
// up to 15 minutes and then given up on; a call it refuses outright is not
// retried; and a host that keeps a call pending gets one notice a call once
// the same 15 minutes are up.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/windows/busy_message_filter.h"

namespace mv::com {
namespace {

constexpr DWORD kGiveUp = static_cast<DWORD>(-1);

TEST(BusyMessageFilter, RetriesABusyHostForFifteenMinutesAndNoLonger) {
    struct Case {
        DWORD elapsedMs;
        DWORD rejectType;
        bool retried;
    };
    for (const Case& c : std::vector<Case>{{0, SERVERCALL_RETRYLATER, true},
                                           {899999, SERVERCALL_RETRYLATER, true},
                                           {900000, SERVERCALL_RETRYLATER, false},
                                           {0, SERVERCALL_REJECTED, false}}) {
        SCOPED_TRACE(std::to_string(c.elapsedMs) + " ms, reject type " + std::to_string(c.rejectType));
        BusyMessageFilter* filter = new BusyMessageFilter();
        const DWORD delay = filter->RetryRejectedCall(nullptr, c.elapsedMs, c.rejectType);
        filter->Release();
        if (c.retried) {
            // At least 100 ms: a smaller answer means "at once", a busy loop.
            EXPECT_NE(delay, kGiveUp);
            EXPECT_GE(delay, 100u);
        } else {
            EXPECT_EQ(delay, kGiveUp);
        }
    }
}

TEST(BusyMessageFilter, AHostThatDoesNotAnswerIsNoticedOncePerPendingCall) {
    std::vector<std::string> notices;
    BusyMessageFilter* filter = new BusyMessageFilter([&](const std::string& n) { notices.push_back(n); });
    for (DWORD elapsed : {1000u, 899999u}) EXPECT_EQ(filter->MessagePending(nullptr, elapsed, PENDINGTYPE_TOPLEVEL), DWORD{PENDINGMSG_WAITDEFPROCESS});
    EXPECT_TRUE(notices.empty());
    filter->MessagePending(nullptr, 900000, PENDINGTYPE_TOPLEVEL);
    filter->MessagePending(nullptr, 960000, PENDINGTYPE_TOPLEVEL);
    ASSERT_EQ(notices.size(), 1u);
    EXPECT_EQ(notices[0], "the host has not answered a call for 15 minutes");
    // The next call starts its own count.
    filter->MessagePending(nullptr, 20, PENDINGTYPE_TOPLEVEL);
    filter->MessagePending(nullptr, 900001, PENDINGTYPE_TOPLEVEL);
    EXPECT_EQ(notices.size(), 2u);
    filter->Release();
}

}  // namespace
}  // namespace mv::com
