// The connection list both the history and the ident window keep: its line's
// 12-hour time at the turns of the day, the stamp, its bound and its button.
#include "core/connection_history.h"

#include <gtest/gtest.h>

#include "support/bare_program.h"

namespace mv {
namespace {

using Lines = std::vector<std::string>;

TEST(ConnectionHistoryTest, TwelveHourTimeWithoutLeadingZeroAndTheFieldsAsGiven) {
    struct Case {
        int hour, minute;
        const char* time;
    } cases[] = {
        {0, 0, " 12:00 AM"}, {0, 30, " 12:30 AM"}, {1, 5, " 1:05 AM"},  {11, 59, " 11:59 AM"},
        {12, 0, " 12:00 PM"}, {12, 59, " 12:59 PM"}, {14, 5, " 2:05 PM"}, {23, 59, " 11:59 PM"},
    };
    for (const Case& c : cases) {
        const LocalDateTime at{2026, 11, 22, c.hour, c.minute, 42, 0};
        EXPECT_EQ(ConnectionHistory::lineFor(at, "N0CALL", "Juan", "10.0.0.7"),
                  std::string(c.time) + " -- N0CALL -- Juan -- 10.0.0.7")
            << c.hour << ":" << c.minute;
    }
    EXPECT_EQ(ConnectionHistory::lineFor({2026, 11, 22, 14, 5, 0, 0}, "EA4XYZ-L", "", ""), " 2:05 PM -- EA4XYZ-L --  -- ");
}

class ConnectionHistoryListTest : public ::testing::Test {
protected:
    // A window with the list in its column and, when asked, the button in a row of its own.
    void open(bool withButtonRow) {
        window = &bare.window([&](test::TestWindow& w) {
            auto& root = w.make<Container>("root", ContainerKind::Column);
            w.setRoot(root);
            Container* row = withButtonRow ? &w.make<Container>("row", ContainerKind::Row) : nullptr;
            history.build(w.parts(), root, "CallHistory", row);
            if (row) root.add(*row);
        });
    }
    Lines lines() const { return Lines(history.list().lines().begin(), history.list().lines().end()); }
    Button& borrar() const { return *static_cast<Button*>(window->findByCaption("Borrar")); }

    test::BareProgram bare{{2026, 11, 23, 23, 59, 30, 0}};
    ConnectionHistory history;
    test::TestWindow* window = nullptr;
};

TEST_F(ConnectionHistoryListTest, StampsEachConnectWithTheTimeNowOneLineEachAndBorrarEmptiesIt) {
    open(false);
    ASSERT_EQ(window->controlAs<LineLog>("CallHistory"), &history.list());
    EXPECT_EQ(borrar().parent(), history.list().parent()) << "without a row the button stands under the list";
    EXPECT_EQ(borrar().toolTip(), "Clear the Call History");

    history.record("N0CALL", "Juan", "10.0.0.7");
    bare.run(31000);
    // What a host hands over goes in as it came, but cannot open a second line.
    history.record("EA4XYZ-L", "Juan\r\nPedro", "<b>10.0.0.8</b>");
    EXPECT_EQ(lines(), (Lines{" 11:59 PM -- N0CALL -- Juan -- 10.0.0.7",
                              " 12:00 AM -- EA4XYZ-L -- Juan\xEF\xBF\xBD\xEF\xBF\xBDPedro -- <b>10.0.0.8</b>"}));

    borrar().click();
    EXPECT_TRUE(lines().empty());
    history.record("K1ABC", "Ann", "10.0.0.9");
    EXPECT_EQ(lines().size(), 1u);
}

TEST_F(ConnectionHistoryListTest, KeepsItsNewestLinesOnlyAndPutsBorrarInTheOwnersRow) {
    open(true);
    EXPECT_EQ(borrar().parent(), window->control("row"));
    for (size_t i = 1; i <= ConnectionHistory::kLines + 3; ++i) history.record("C" + std::to_string(i), "n", "a");
    ASSERT_EQ(lines().size(), ConnectionHistory::kLines);
    EXPECT_EQ(lines().front(), " 11:59 PM -- C4 -- n -- a");
    EXPECT_EQ(lines().back(), " 11:59 PM -- C" + std::to_string(ConnectionHistory::kLines + 3) + " -- n -- a");
}

}  // namespace
}  // namespace mv
