// The kerchunk filter and the end-of-over letters, in both the courtesy
// window's form and the ident window's, against the simulated node.
#include "core/kerchunker.h"

#include <gtest/gtest.h>

#include <memory>

#include "core/dialogs.h"
#include "core/event_log.h"
#include "core/program.h"
#include "core/settings_store.h"
#include "platform/simulated_host.h"
#include "support/temp_dir.h"

namespace mv {
namespace {

using BadPeriod = KerchunkerOptions::BadPeriod;

// A window that holds one filter and sends its letters in Morse.
class FilterWindow final : public Window {
public:
    FilterWindow(Program& program, KerchunkerOptions options, std::string waitText, std::string hangText)
        : Window(program, "filter"), m_options(std::move(options)), m_wait(std::move(waitText)), m_hang(std::move(hangText)) {}

    std::unique_ptr<Kerchunker> filter;
    TextBox* wait = nullptr;
    TextBox* hang = nullptr;
    Label* ok = nullptr;

    void onCarrierDetect(bool on) override { filter->carrierDetect(on); }
    void onRX(bool on) override {
        if (!on) filter->internetAudioEnded();
    }

protected:
    void build() override {
        auto& root = make<Container>("root", ContainerKind::Column);
        setRoot(root);
        wait = &root.add(make<TextBox>("KerchunkWait", m_wait));
        hang = &root.add(make<TextBox>("HangTime", m_hang));
        ok = &root.add(make<Label>("OK2Kerchunk", "No"));
        filter = std::make_unique<Kerchunker>(
            parts(), *wait, *hang, *ok, m_options, [this] { host().sendCW(0, "K"); },
            [this] { host().sendCW(0, "I"); });
    }
    void onLoad() override {
        createHostObject();
        filter->applyPeriods();
    }

private:
    KerchunkerOptions m_options;
    std::string m_wait, m_hang;
};

// A program on the simulated node, in virtual time, holding one filter window.
struct FilterBench {
    FilterBench()
        : clock(LocalDateTime{2026, 11, 23, 10, 0, 0, 0}), scheduler(clock), host(scheduler, log),
          settings(dir.path()), dialogs(log), program(Services{scheduler, host, settings, dialogs, log, nullptr}) {}

    FilterWindow& open(KerchunkerOptions options = {}, std::string wait = "5000", std::string hang = "500") {
        auto& w = static_cast<FilterWindow&>(
            program.addWindow(std::make_unique<FilterWindow>(program, std::move(options), wait, hang)));
        w.load();
        window = &w;
        return w;
    }
    // Runs to `ms` after the test began.
    void at(int64_t ms) { scheduler.runUntil(ms); }
    void carrier(int64_t fromMs, int64_t toMs) {
        at(fromMs);
        host.setCarrier(true);
        at(toMs);
        host.setCarrier(false);
    }
    // When each letter was sent, in ms from the test's start.
    std::vector<std::pair<int64_t, std::string>> letters() const {
        std::vector<std::pair<int64_t, std::string>> out;
        for (const auto& c : host.commands())
            if (c.call == "SendCW") out.push_back({c.timeMs, c.args.at(1)});
        return out;
    }

    test::TempDir dir;
    VirtualClock clock;
    Scheduler scheduler;
    EventLog log;
    SimulatedHost host;
    SettingsStore settings;
    ScriptedDialogs dialogs;
    Program program;
    FilterWindow* window = nullptr;
};

class KerchunkerTest : public ::testing::Test, public FilterBench {};

TEST_F(KerchunkerTest, OnlyACarrierStillUpWhenTheWaitEndsEarnsTheLetterWithinAHangTimeOfItsDrop) {
    struct Case {
        const char* what;
        int64_t holdMs;
        bool earns;
    };
    for (const Case& c : {Case{"held 6 s", 6000, true}, Case{"held 4 s", 4000, false},
                          Case{"held exactly to the wait's tick", 5001, true}, Case{"gone at the tick", 4999, false}}) {
        SCOPED_TRACE(c.what);
        FilterBench fresh;
        fresh.open();
        fresh.carrier(1000, 1000 + c.holdMs);
        fresh.at(1000 + c.holdMs + 2000);
        const auto sent = fresh.letters();
        if (!c.earns) {
            EXPECT_TRUE(sent.empty());
            EXPECT_EQ(fresh.window->ok->caption(), "No");
            continue;
        }
        ASSERT_EQ(sent.size(), 1u);
        EXPECT_EQ(sent[0].second, "K");
        const int64_t afterDrop = sent[0].first - (1000 + c.holdMs);
        EXPECT_GE(afterDrop, 0);
        EXPECT_LE(afterDrop, 500);
        EXPECT_EQ(fresh.window->ok->caption(), "No");
        EXPECT_FALSE(fresh.window->filter->pollTimer().running());
    }
}

TEST_F(KerchunkerTest, TheWaitCountsFromTheFirstCarrierAndIsNotRestartedByALaterOne) {
    open();
    carrier(0, 1000);
    at(3000);
    host.setCarrier(true);
    at(4999);
    EXPECT_EQ(window->ok->caption(), "No");
    at(5000);
    EXPECT_EQ(window->ok->caption(), "Yes") << "accepted at the tick 5 s after the first carrier";
    at(9000);
    host.setCarrier(false);
    at(10000);
    EXPECT_EQ(letters().size(), 1u);
}

TEST_F(KerchunkerTest, AKerchunkLeavesThePollIdleAndEachAcceptedOverGetsOneLetter) {
    open();
    carrier(0, 5500);
    at(7000);
    carrier(8000, 9000);  // a kerchunk: the carrier-off event starts the poll
    at(12000);
    EXPECT_TRUE(window->filter->pollTimer().running()) << "idle until the next accepted over ends";
    EXPECT_EQ(letters().size(), 1u);
    carrier(20000, 27000);
    at(29000);
    EXPECT_EQ(letters().size(), 2u);
    EXPECT_EQ(window->ok->caption(), "No");
}

TEST_F(KerchunkerTest, AStoppedPollStartedByTheCarrierDropSendsOneFullHangTimeLater) {
    open({}, "5000", "2000");
    at(100);
    host.setCarrier(true);
    at(5200);
    // Accepted; the poll's first tick falls 2 s after acceptance. Stop it so
    // the drop finds it stopped, as it is when the operator clears it.
    ASSERT_TRUE(window->filter->accepted());
    window->filter->pollTimer().setEnabled(false);
    host.setCarrier(false);
    at(5200 + 1999);
    EXPECT_TRUE(letters().empty());
    at(5200 + 2000);
    EXPECT_EQ(letters().size(), 1u);
}

TEST_F(KerchunkerTest, APeriodFieldWithoutAUsablePeriodLeavesTheOldOneInForce) {
    open();
    for (const char* bad : {"", "0", "65536", "abc", "-5"}) {
        window->wait->setText(bad);
        EXPECT_EQ(window->filter->filterTimer().interval(), 5000) << '"' << bad << '"';
    }
    window->wait->setText("65535");
    EXPECT_EQ(window->filter->filterTimer().interval(), 65535);
    window->hang->setText("250");
    EXPECT_EQ(window->filter->pollTimer().interval(), 250);
    EXPECT_TRUE(window->wait->digitsOnly());
}

TEST_F(KerchunkerTest, TheInternetLetterFollowsTheEndOfInternetAudioAtOnce) {
    open();
    host.setReceiving(true);
    at(3000);
    host.setReceiving(false);
    at(3000);
    ASSERT_EQ(letters().size(), 1u);
    EXPECT_EQ(letters()[0], (std::pair<int64_t, std::string>{3000, "I"}));
}

// The ident window's copy.
KerchunkerOptions identForm(bool& silenced, bool& useId) {
    KerchunkerOptions o;
    o.kerchunkWaitMs = 3000;
    o.runningFromLoad = true;
    o.badPeriod = BadPeriod::ZeroStops;
    o.silenced = [&] { return silenced; };
    o.lettersEnabled = [&] { return useId; };
    o.internetLetterWithheldUnderCarrier = true;
    return o;
}

TEST_F(KerchunkerTest, IdentFormTicksFromLoadAndItsFirstFilterTickFindsNoCarrier) {
    bool silenced = false, useId = true;
    open(identForm(silenced, useId), "3000", "500");
    EXPECT_TRUE(window->filter->filterTimer().running());
    EXPECT_TRUE(window->filter->pollTimer().running());
    at(3000);
    EXPECT_FALSE(window->filter->filterTimer().running());
    carrier(4000, 8000);  // held 4 s against a 3 s wait
    at(9000);
    ASSERT_EQ(letters().size(), 1u);
    EXPECT_EQ(letters()[0].second, "K");
}

TEST_F(KerchunkerTest, IdentFormSilencedDoesNothingAndKeepsItsFilterRunning) {
    bool silenced = true, useId = true;
    open(identForm(silenced, useId), "3000", "500");
    carrier(500, 6000);
    host.setReceiving(true);
    host.setReceiving(false);
    at(10000);
    EXPECT_TRUE(letters().empty());
    EXPECT_TRUE(window->filter->filterTimer().running()) << "a silenced tick leaves the filter running";
    EXPECT_EQ(window->ok->caption(), "No");
}

TEST_F(KerchunkerTest, IdentFormHoldsAnAcceptedOverUntilUseIdIsTickedAgain) {
    bool silenced = false, useId = true;
    open(identForm(silenced, useId), "3000", "500");
    at(3000);
    carrier(4000, 9000);
    useId = false;
    at(8000);
    EXPECT_EQ(window->ok->caption(), "Yes");
    at(15000);
    EXPECT_TRUE(letters().empty());
    EXPECT_TRUE(window->filter->pollTimer().running());
    useId = true;
    at(15500);
    EXPECT_EQ(letters().size(), 1u);
}

TEST_F(KerchunkerTest, IdentFormWithholdsTheInternetLetterUnderALocalCarrier) {
    bool silenced = false, useId = true;
    open(identForm(silenced, useId), "3000", "500");
    host.setCarrier(true);
    host.setReceiving(true);
    host.setReceiving(false);
    at(100);
    EXPECT_TRUE(letters().empty());
    useId = false;
    host.setCarrier(false);
    host.setReceiving(true);
    host.setReceiving(false);
    at(200);
    EXPECT_TRUE(letters().empty()) << "Use ID off";
    useId = true;
    host.setReceiving(true);
    host.setReceiving(false);
    at(300);
    EXPECT_EQ(letters().size(), 1u);
}

TEST_F(KerchunkerTest, IdentFormEmptiedPeriodBecomesZeroAndStopsTheTimer) {
    bool silenced = false, useId = true;
    open(identForm(silenced, useId), "3000", "500");
    window->wait->setText("");
    EXPECT_EQ(window->wait->text(), "0");
    EXPECT_FALSE(window->filter->filterTimer().running());
    carrier(1000, 9000);
    at(12000);
    EXPECT_TRUE(letters().empty()) << "no over is ever accepted with a wait of 0";
    window->wait->setText("70000");
    EXPECT_EQ(window->filter->filterTimer().interval(), 0);
}

}  // namespace
}  // namespace mv
