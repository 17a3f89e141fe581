// The countdown period timer in each of the forms the suite uses it.
#include "core/period_countdown.h"

#include <gtest/gtest.h>

#include "core/number_text.h"
#include "support/bare_program.h"

namespace mv {
namespace {

using Step = PeriodCountdownOptions::Step;
using OnEdit = PeriodCountdownOptions::OnEdit;

class PeriodCountdownTest : public ::testing::Test {
protected:
    // Builds a window holding one countdown with the given options.
    void make(PeriodCountdownOptions options, const std::string& period = "15") {
        options.timerName = "Beacon1";
        bare.window([&](test::TestWindow& w) {
            auto& root = w.make<Container>("root", ContainerKind::Column);
            w.setRoot(root);
            periodBox = &root.add(w.make<TextBox>("BeaconPeriod1", ".1"));
            seconds = &root.add(w.make<Label>("BeaconSeconds1", "15"));
            enable = &root.add(w.make<CheckBox>("StopClock1", "Usar Cada (Minutos)", 0));
            // Earlier countdowns stay alive with their windows' timers.
            all.push_back(std::make_unique<PeriodCountdown>(w.parts(), *periodBox, *seconds, enable, options,
                                                            [this] { ++fired; }));
            countdown = all.back().get();
        });
        periodBox->setText(period);
    }
    test::BareProgram bare;
    TextBox* periodBox = nullptr;
    Label* seconds = nullptr;
    CheckBox* enable = nullptr;
    std::vector<std::unique_ptr<PeriodCountdown>> all;
    PeriodCountdown* countdown = nullptr;
    int fired = 0;
};

TEST_F(PeriodCountdownTest, FiresOnTheNinehundredthTickAndEveryNinehundredAfter) {
    make({});
    enable->setValue(1);
    EXPECT_EQ(seconds->caption(), "900");
    bare.run(899 * 1000);
    EXPECT_EQ(fired, 0);
    EXPECT_EQ(seconds->caption(), "1");
    bare.run(1000);
    EXPECT_EQ(fired, 1);
    EXPECT_EQ(seconds->caption(), "900");
    bare.run(900 * 1000);
    EXPECT_EQ(fired, 2);
}

TEST_F(PeriodCountdownTest, ClearBoxPausesAndTickingResumesFromThePausedValue) {
    make({}, "1");
    enable->setValue(1);
    bare.run(20 * 1000);
    enable->setValue(0);
    bare.run(120 * 1000);
    EXPECT_EQ(seconds->caption(), "40");
    EXPECT_EQ(fired, 0);
    enable->setValue(2);  // greyed counts as on
    bare.run(40 * 1000);
    EXPECT_EQ(fired, 1);
}

TEST_F(PeriodCountdownTest, EditRestartsAtTheNewPeriodEvenWhilePaused) {
    make({});
    bare.run(5000);
    periodBox->typeText("2");
    EXPECT_EQ(seconds->caption(), "120");
    EXPECT_TRUE(countdown->tickSource().running());
}

TEST_F(PeriodCountdownTest, EmptiedZeroOrWordlessPeriodStopsAtZero) {
    for (const char* stopped : {"", "0", "00", "abc"}) {
        make({});
        enable->setValue(1);
        periodBox->setText(stopped);
        EXPECT_EQ(periodBox->text(), "0") << stopped;
        EXPECT_FALSE(countdown->tickSource().running()) << stopped;
        EXPECT_EQ(seconds->caption(), "0") << stopped;
        bare.run(5000);
        EXPECT_EQ(fired, 0) << stopped;
        periodBox->typeText("1");
        EXPECT_TRUE(countdown->tickSource().running());
        EXPECT_EQ(seconds->caption(), "60");
    }
}

TEST_F(PeriodCountdownTest, TypedNonDigitsNeverReachThePeriod) {
    make({});
    EXPECT_FALSE(periodBox->typeText("1x5"));
    EXPECT_EQ(periodBox->text(), "15");
}

TEST_F(PeriodCountdownTest, IdentFormKeepsOneMinuteButStopsItsTickWhenEmptied) {
    PeriodCountdownOptions o;
    o.emptiedPeriod = "1";
    o.zeroPeriodBecomesOneAtTick = true;
    make(o);
    periodBox->setText("");
    EXPECT_EQ(periodBox->text(), "1");
    EXPECT_FALSE(countdown->tickSource().running());
    EXPECT_EQ(seconds->caption(), "60");
    // A "0" that reaches a running tick becomes "1" there.
    countdown->tickSource().setEnabled(true);
    periodBox->onChange = nullptr;
    periodBox->setText("0");
    bare.run(1000);
    EXPECT_EQ(periodBox->text(), "1");
}

TEST_F(PeriodCountdownTest, ReopenFormShowsTheTypedTextAndCountsOnlyWhileTheBoxIsClear) {
    PeriodCountdownOptions o;
    o.editStartsOrStopsTick = false;
    o.onEdit = OnEdit::ShowPeriodText;
    o.zeroPeriodBecomesOneAtTick = true;
    o.step = [this] { return enable->value() == 0 ? Step::Count : Step::Hold; };
    make(o, "5");
    EXPECT_EQ(seconds->caption(), "5");  // the text as typed, not minutes
    seconds->setCaption("15");
    bare.run(14 * 1000);
    EXPECT_EQ(fired, 0);
    bare.run(1000);
    EXPECT_EQ(fired, 1);
    EXPECT_EQ(seconds->caption(), "300");
    enable->setValue(1);
    bare.run(10 * 1000);
    EXPECT_EQ(seconds->caption(), "300");
    periodBox->setText("");
    EXPECT_EQ(periodBox->text(), "0");
    EXPECT_TRUE(countdown->tickSource().running());
    bare.run(1000);
    EXPECT_EQ(periodBox->text(), "1");
}

TEST_F(PeriodCountdownTest, SecondsFormHoldsAtFullWhileIdleAndKeepsTheCountOnEdit) {
    bool present = false;
    PeriodCountdownOptions o;
    o.secondsPerUnit = 1;
    o.emptiedPeriod = "1";
    o.editStartsOrStopsTick = false;
    o.onEdit = OnEdit::Keep;
    o.step = [&] { return present ? Step::Count : Step::Reset; };
    make(o, "150");
    bare.run(1000);
    EXPECT_EQ(seconds->caption(), "150");
    present = true;
    bare.run(140 * 1000);
    EXPECT_EQ(seconds->caption(), "10");
    periodBox->setText("100");
    EXPECT_EQ(seconds->caption(), "10");
    bare.run(10 * 1000);
    EXPECT_EQ(fired, 1);
    EXPECT_EQ(seconds->caption(), "100");
    present = false;
    bare.run(1000);
    EXPECT_EQ(seconds->caption(), "100");
}

TEST_F(PeriodCountdownTest, SkipLeavesTheCountAndTheTestForZeroAlone) {
    bool skip = true;
    PeriodCountdownOptions o;
    o.step = [&] { return skip ? Step::Skip : Step::Count; };
    int after = 0;
    o.afterTick = [&] { ++after; };
    make(o, "1");
    seconds->setCaption("0");
    bare.run(3000);
    EXPECT_EQ(fired, 0);
    EXPECT_EQ(after, 0);
    skip = false;
    seconds->setCaption("1");
    bare.run(1000);
    EXPECT_EQ(fired, 1);
    EXPECT_EQ(after, 1);
}

TEST(NumberTextTest, SpellsAndWritesNumbersAsTheControlsHoldThem) {
    EXPECT_EQ(numberOf("15"), 15);
    EXPECT_EQ(numberOf(" 900 "), 900);
    EXPECT_EQ(numberOf("-1"), -1);
    EXPECT_EQ(numberOf("1.5"), 1.5);
    for (const char* none : {"", "abc", "1e3", "12abc", "inf", "-", ".", "1.2.3"})
        EXPECT_FALSE(numberOf(none).has_value()) << none;
    EXPECT_EQ(decimalText(900), "900");
    EXPECT_EQ(decimalText(-1), "-1");
    EXPECT_EQ(decimalText(-999999999999999.0), "-999999999999999");
    EXPECT_EQ(decimalText(1e15), "1000000000000000");
    EXPECT_EQ(decimalText(0.5), "0.5");
    EXPECT_EQ(decimalText(-0.0), "0");
    EXPECT_EQ(periodValue("00"), 0);
    EXPECT_EQ(periodValue("-3"), 0);
    EXPECT_EQ(periodValue("7"), 7);
}

}  // namespace
}  // namespace mv
