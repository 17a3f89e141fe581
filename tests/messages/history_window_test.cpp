// The connection history window in virtual time: loaded hidden at start-up,
// one line per connect from the host, kept however the window is hidden or
// closed. The list itself is tested with its class in core.
#include "messages/history_window.h"

#include <gtest/gtest.h>

#include "app/suite.h"
#include "support/suite_rig.h"

namespace mv {
namespace {

using Lines = std::vector<std::string>;

class HistoryTest : public test::SuiteRig {
protected:
    void start(LocalDateTime at = {2026, 11, 22, 14, 4, 58, 0}) {
        startSuite(at, "/usr/share/marrowvane/voice/");
        window = suite->program().window("history");
    }
    void connect(const std::string& call, const std::string& name, const std::string& address) {
        suite->host().stationConnects(call, name, address);
        run(0);
    }
    Lines lines() const {
        const auto& l = window->controlAs<LineLog>("HistoryList")->lines();
        return Lines(l.begin(), l.end());
    }
    void click(const char* caption) {
        operate([&] { static_cast<Button*>(window->findByCaption(caption))->click(); });
    }

    Window* window = nullptr;
};

TEST_F(HistoryTest, RecordsFromStartUpHiddenOneLinePerConnect) {
    start();
    ASSERT_TRUE(window->isLoaded());
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(window->caption(), "Marrowvane    N0CALL   v1.0.0       Quillasp");
    EXPECT_EQ(window->controlAs<Label>("LocalTime")->caption(), "14:04:58");

    run(2000);
    EXPECT_EQ(window->controlAs<Label>("LocalTime")->caption(), "14:05:00");
    connect("N0CALL", "Juan", "10.0.0.7");
    run(30000);
    connect("EA4XYZ-L", "", "");
    suite->host().stationDisconnects("N0CALL");
    run(0);
    EXPECT_EQ(lines(), (Lines{" 2:05 PM -- N0CALL -- Juan -- 10.0.0.7", " 2:05 PM -- EA4XYZ-L --  -- "}))
        << "two connects in one minute share the time; a disconnect is not listed";
}

TEST_F(HistoryTest, HidingOrClosingKeepsTheListAndBorrarEmptiesIt) {
    start();
    connect("N0CALL", "Juan", "10.0.0.7");
    operate([&] { static_cast<Button*>(suite->program().window("hub")->findByCaption("Historial"))->click(); });
    EXPECT_TRUE(window->isVisible());
    click("Ocultar");
    EXPECT_FALSE(window->isVisible());

    operate([&] { window->closeBox(); });
    EXPECT_TRUE(window->isLoaded()) << "the close box only hides the list";
    EXPECT_FALSE(window->isVisible());
    connect("K1ABC", "Ann", "10.0.0.8");
    EXPECT_EQ(lines().size(), 2u);

    click("Borrar");
    EXPECT_TRUE(lines().empty());
    connect("K1ABC", "Ann", "10.0.0.8");
    EXPECT_EQ(lines().size(), 1u);
}

}  // namespace
}  // namespace mv
