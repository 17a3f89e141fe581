// Opening addresses with the desktop: the shell's result codes for what
// cannot be opened, and a handled address opened and logged.
#include "gui/qt_shell.h"

#include <gtest/gtest.h>

#include <QDesktopServices>
#include <QTextBrowser>
#include <fstream>
#include <sstream>

#include "core/event_log.h"
#include "gui_rig.h"
#include "support/temp_dir.h"

namespace mv {
namespace {

TEST(QtShellTest, AMissingFileOrFolderIsReportedBeforeAnythingIsStarted) {
    test::qtApp();
    test::TempDir dir;
    std::ostringstream text;
    EventLog log;
    log.setStream(&text);
    QtShell shell(log);
    EXPECT_EQ(shell.open("about", (dir.path() / "manual.pdf").string()), shell_result::kFileNotFound);
    EXPECT_EQ(shell.open("about", (dir.path() / "gone" / "manual.pdf").string()), shell_result::kPathNotFound);
    EXPECT_NE(text.str().find("\"kind\":\"shell\",\"window\":\"about\",\"op\":\"open\""), std::string::npos);
    EXPECT_NE(text.str().find("\"result\":3,\"executed\":false"), std::string::npos);
}

TEST(QtShellTest, AnAddressTheDesktopHandlesIsOpened) {
    test::qtApp();
    EventLog log;
    QtShell shell(log);
    // Stands in for the browser: the desktop hands it every "mvtest:" address.
    QTextBrowser handler;
    QDesktopServices::setUrlHandler(QStringLiteral("mvtest"), &handler, "setSource");
    const int result = shell.open("about", "mvtest:donar?importe=30.00");
    QDesktopServices::unsetUrlHandler(QStringLiteral("mvtest"));
    EXPECT_TRUE(shellOpened(result));
    EXPECT_EQ(handler.source().toString().toStdString(), "mvtest:donar?importe=30.00");
}

}  // namespace
}  // namespace mv
