// The About box: name and version, the donation choice and the project's
// addresses, opened through the shell, with the operator told why an address
// could not be opened.
#include "about/about_window.h"

#include <gtest/gtest.h>

#include "about/project_details.h"
#include "support/suite_rig.h"

namespace mv {
namespace {

// Keeps every message asked for, with its icon, and answers OK.
class RecordingDialogs final : public Dialogs {
public:
    DialogAnswer message(const MessageRequest& r) override {
        messages.push_back(r);
        return DialogAnswer::OK;
    }
    std::optional<std::string> openFile(const FileRequest&) override { return std::nullopt; }
    std::optional<std::string> saveFile(const FileRequest&) override { return std::nullopt; }
    std::vector<MessageRequest> messages;
};

class AboutTest : public test::SuiteRig {
protected:
    void start() {
        startSuite({2026, 11, 22, 10, 0, 0, 0}, "/usr/share/marrowvane/voice/");
        suite->dialogs().setTarget(dialogs);
        about = static_cast<AboutWindow*>(suite->program().window("about"));
        operate([&] { static_cast<Button*>(suite->program().window("hub")->findByCaption("Abortar"))->click(); });
    }
    void click(const std::string& caption) {
        operate([&] { static_cast<Button*>(about->findByCaption(caption))->click(); });
    }
    ComboBox& donations() { return *about->controlAs<ComboBox>("DonationList"); }
    // The shell's log line for an address: what was asked and that nothing was started.
    std::string shellLine(const std::string& address, int result) const {
        return "\"kind\":\"shell\",\"window\":\"about\",\"op\":\"open\",\"address\":\"" + address +
               "\",\"result\":" + std::to_string(result) + ",\"executed\":false}";
    }

    RecordingDialogs dialogs;
    AboutWindow* about = nullptr;
};

TEST_F(AboutTest, NamesTheProgramAndOffersFiveDonations) {
    start();
    EXPECT_TRUE(about->isVisible());
    EXPECT_EQ(about->caption(), "Marrowvane    N0CALL   v1.0.0");
    EXPECT_EQ(about->controlAs<Label>("NameLabel")->caption(), about->caption());
    EXPECT_EQ(donations().items(),
              (std::vector<std::string>{"Donaci\xC3\xB3n: $10.00", "Donaci\xC3\xB3n: $20.00", "Donaci\xC3\xB3n: $30.00",
                                        "Donaci\xC3\xB3n: $40.00", "Donaci\xC3\xB3n: $50.00"}));
    EXPECT_EQ(donations().text(), "");
}

TEST_F(AboutTest, ADonationOpensItsOwnPaymentPageAndClosesTheBox) {
    start();
    click("<- Haga Donaci\xC3\xB3n");
    EXPECT_EQ(logCount("\"kind\":\"shell\""), 0u) << "nothing chosen, nothing happens";
    EXPECT_TRUE(about->isVisible());
    operate([&] { donations().setText("Donaci\xC3\xB3n: $30.00"); });
    click("<- Haga Donaci\xC3\xB3n");
    EXPECT_EQ(logCount(shellLine(project::kDonations[2].address, 42)), 1u);
    EXPECT_EQ(logCount("\"kind\":\"shell\""), 1u);
    EXPECT_FALSE(about->isVisible());
    EXPECT_EQ(donations().text(), "Donaci\xC3\xB3n: $30.00");
}

TEST_F(AboutTest, EachFailureOfOpenAddressHasItsOwnMessage) {
    start();
    struct Case {
        int code;
        std::string text;
        DialogIcon icon;
    };
    const std::string address = "C:\\Docs\\manual.pdf";
    const Case cases[] = {
        {31, "No Association Found for HTTP Addresses. A Web Browser Should be Installed or Reinstalled.",
         DialogIcon::Exclamation},
        {2, "The 'C:\\Docs\\manual.pdf' File or Path was Not Found.", DialogIcon::Exclamation},
        {3, "The 'C:\\Docs\\manual.pdf' File or Path was Not Found.", DialogIcon::Exclamation},
        {5, "An error occurred attempting to open 'C:\\Docs\\manual.pdf' (ShellExecute code 5).",
         DialogIcon::Critical},
        {32, "An error occurred attempting to open 'C:\\Docs\\manual.pdf' (ShellExecute code 32).",
         DialogIcon::Critical},
    };
    for (const Case& c : cases) {
        suite->loggingShell().setResult(c.code);
        dialogs.messages.clear();
        EXPECT_EQ(about->openAddress(address), c.code);
        ASSERT_EQ(dialogs.messages.size(), 1u) << c.code;
        EXPECT_EQ(dialogs.messages[0].text, c.text);
        EXPECT_EQ(dialogs.messages[0].icon, c.icon) << c.code;
        EXPECT_EQ(dialogs.messages[0].buttons, DialogButtons::OK);
    }
    suite->loggingShell().setResult(33);
    dialogs.messages.clear();
    EXPECT_EQ(about->openAddress(address), 33);
    EXPECT_TRUE(dialogs.messages.empty());
}

TEST_F(AboutTest, WebAndMailButtonsOpenTheProjectsAddressesAndReportNothing) {
    start();
    suite->loggingShell().setResult(31);
    click("P\xC3\xA1gina Web");
    click("Enviar E-mail");
    EXPECT_TRUE(dialogs.messages.empty());
    EXPECT_EQ(logCount(shellLine("https://marrowvane.example.org/", 31)), 1u);
    EXPECT_EQ(logCount(shellLine("mailto:marrowvane@example.org?subject=Marrowvane%20-%20comentarios", 31)), 1u);
    EXPECT_EQ(logCount("\"kind\":\"error\",\"window\":\"about\""), 2u);
    click("Aceptar");
    EXPECT_FALSE(about->isVisible());
}

}  // namespace
}  // namespace mv
