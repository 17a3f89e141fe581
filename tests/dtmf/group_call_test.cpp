// The two station groups of the DTMF control window, connected and
// disconnected as a whole from their "Pruebe" buttons.
#include "dtmf/group_call.h"

#include <gtest/gtest.h>

#include "dtmf_rig.h"

namespace mv {
namespace {

class GroupCallTest : public test::DtmfRig {};

TEST_F(GroupCallTest, ConnectGroupSkipsConnectedMembersAndUpperCasesTheRest) {
    start();
    type("GROUPCALL1", "1111");
    type("GROUPCALL9", "w1aw-l");
    suite->host().stationConnects("1111", "", "");
    run(0);
    click("Group1Connect");
    // Asked about as typed, connected upper-cased.
    EXPECT_EQ(calls("IsConnectedTo"), (Args{{"1111"}, {"w1aw-l"}}));
    EXPECT_EQ(calls("Connect"), (Args{{"W1AW-L", "true"}}));
}

TEST_F(GroupCallTest, MembersAreVisitedInTheGroupsOwnOrder) {
    start();
    // Group 1 is GROUPCALL1, 2, 3, 9 and 10, whatever order they were filled in.
    const std::pair<const char*, const char*> filled[] = {
        {"GROUPCALL10", "ten"}, {"GROUPCALL9", "99"}, {"GROUPCALL3", "93"}, {"GROUPCALL1", "91"}};
    for (const auto& [key, station] : filled) type(key, station);
    click("Group1Connect");
    EXPECT_EQ(calls("Connect"), (Args{{"91", "true"}, {"93", "true"}, {"99", "true"}, {"TEN", "true"}}));
    run(1000);
    click("Group1Disconnect");
    EXPECT_EQ(calls("Disconnect"), (Args{{"91"}, {"93"}, {"99"}, {"TEN"}}));
    EXPECT_TRUE(suite->host().stations().empty());
}

TEST_F(GroupCallTest, DisconnectGroupLeavesUnconnectedMembersAlone) {
    start();
    type("GROUPCALL4", "444");
    type("GROUPCALL7", "ea4xyz");
    suite->host().stationConnects("EA4XYZ", "", "");
    run(0);
    click("Group2Disconnect");
    EXPECT_EQ(calls("Disconnect"), (Args{{"EA4XYZ"}}));
}

TEST_F(GroupCallTest, AnEmptyGroupCallsNothing) {
    start();
    type("GROUPCALL1", "1111");  // group 1's; group 2 stays empty
    const size_t before = suite->host().commands().size();
    click("Group2Connect");
    click("Group2Disconnect");
    EXPECT_EQ(suite->host().commands().size(), before);
}

TEST_F(GroupCallTest, AFailingConnectLeavesTheOtherMembersToBeTried) {
    start();
    type("GROUPCALL4", "444");
    type("GROUPCALL5", "555");
    type("GROUPCALL8", "k1abc");
    suite->host().setFailing("Connect", true);
    click("Group2Connect");
    EXPECT_EQ(calls("Connect"), (Args{{"444", "true"}, {"555", "true"}, {"K1ABC", "true"}}));
    EXPECT_FALSE(suite->program().ended());
}

}  // namespace
}  // namespace mv
