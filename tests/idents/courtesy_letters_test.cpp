// The ident window's own courtesy letters, in virtual time: the kerchunk
// filter in front of the RF letter, the Internet letter held back under a
// local carrier, and silence mode.
#include "idents/courtesy_letters.h"

#include <gtest/gtest.h>

#include "idents/idents_rig.h"

namespace mv {
namespace {

class CourtesyLettersTest : public test::IdentsRig {
protected:
    void carrier(int64_t ms) {
        suite->host().setCarrier(true);
        run(ms);
        suite->host().setCarrier(false);
    }
    std::vector<std::string> lettersSent() const {
        std::vector<std::string> out;
        for (const auto& c : calls("SendCW")) out.push_back(c.args.at(1));
        return out;
    }
};

TEST_F(CourtesyLettersTest, AFourSecondCarrierEarnsOneKAfterItDropsAndATwoSecondOneNothing) {
    start();
    set("UseCT", "1");
    carrier(4000);
    const int64_t droppedMs = suite->scheduler().now();
    run(2000);
    ASSERT_EQ(lettersSent(), (std::vector<std::string>{"K"}));
    EXPECT_LE(calls("SendCW")[0].timeMs - droppedMs, 500) << "at the first poll after the drop";
    EXPECT_EQ(label("OK2Kerchunk").caption(), "No");

    carrier(2000);
    run(5000);
    EXPECT_EQ(lettersSent().size(), 1u) << "a kerchunk earns nothing";
}

TEST_F(CourtesyLettersTest, TheInternetLetterFollowsAnOverUnlessTheLocalCarrierIsUp) {
    start();
    set("UseCT", "1");
    set("IPCourtesy", "R");
    suite->host().setReceiving(true);
    run(3000);
    suite->host().setReceiving(false);
    run(100);
    EXPECT_EQ(lettersSent(), (std::vector<std::string>{"R"}));

    suite->host().setReceiving(true);
    run(1000);
    suite->host().setCarrier(true);
    run(100);
    suite->host().setReceiving(false);
    run(100);
    EXPECT_EQ(lettersSent().size(), 1u);
    suite->host().setCarrier(false);
    run(5000);
    EXPECT_EQ(lettersSent().size(), 1u) << "the short carrier was a kerchunk";
}

TEST_F(CourtesyLettersTest, SilenceModeSilencesBothLettersAndAnAcceptedOverWaitsForUseId) {
    start();
    set("UseCT", "1");
    set("Check1", "1");
    carrier(4000);
    suite->host().setReceiving(true);
    run(1000);
    EXPECT_FALSE(idents->channelBusyFlag()) << "in silence Internet reception is not followed";
    suite->host().setReceiving(false);
    run(3000);
    EXPECT_TRUE(lettersSent().empty());

    set("Check1", "0");
    suite->host().setCarrier(true);
    run(3500);
    EXPECT_EQ(label("OK2Kerchunk").caption(), "Yes");
    set("UseCT", "0");
    suite->host().setCarrier(false);
    run(3000);
    EXPECT_TRUE(lettersSent().empty());
    set("UseCT", "1");
    run(600);
    EXPECT_EQ(lettersSent(), (std::vector<std::string>{"K"}));

    // A hang time of "0" never polls: no RF letter at all.
    set("HangTime", "");
    EXPECT_EQ(text("HangTime").text(), "0");
    carrier(4000);
    run(3000);
    EXPECT_EQ(lettersSent().size(), 1u);
}

}  // namespace
}  // namespace mv
