#include "about/about_window.h"

#include "about/project_details.h"
#include <cctype>

#include "core/dialogs.h"
#include "core/event_log.h"
#include "core/program.h"
#include "core/shell.h"

namespace mv {
namespace {

// A mail subject as it may stand in a mailto address.
std::string percentEncoded(const std::string& text) {
    static const char* hex = "0123456789ABCDEF";
    std::string out;
    for (unsigned char c : text) {
        if (std::isalnum(c) || c == '-' || c == '.' || c == '_' || c == '~') {
            out += static_cast<char>(c);
        } else {
            out += '%';
            out += hex[c >> 4];
            out += hex[c & 15];
        }
    }
    return out;
}

}  // namespace

AboutWindow::AboutWindow(Program& program) : Window(program, "about") {}

std::string AboutWindow::mailAddress() {
    return std::string("mailto:") + project::kMailAddress + "?subject=" + percentEncoded(project::kMailSubject);
}

void AboutWindow::build() {
    auto& root = make<Container>("aboutRoot", ContainerKind::Column);
    setRoot(root);
    m_name = &root.add(make<Label>("NameLabel", program().product().name));
    for (size_t i = 0; i < project::kMakerLines.size(); ++i)
        root.add(make<Label>("MakerLine" + std::to_string(i + 1), project::kMakerLines[i]));
    auto& donation = root.add(make<Container>("donationRow", ContainerKind::Row));
    m_donations = &donation.add(make<ComboBox>("DonationList"));
    donation.add(make<Button>("Donate", "<- Haga Donaci\xC3\xB3n")).onClick = [this] { donate(); };
    auto& links = root.add(make<Container>("linkRow", ContainerKind::Row));
    links.add(make<Button>("WebPage", "P\xC3\xA1gina Web")).onClick = [this] { openQuietly(project::kWebPage); };
    links.add(make<Button>("Mail", "Enviar E-mail")).onClick = [this] { openQuietly(mailAddress()); };
    root.add(make<Button>("Accept", "Aceptar")).onClick = [this] { hide(); };
}

void AboutWindow::onLoad() {
    createHostObject();
    setModuleCaption("");
    m_name->setCaption(caption());
    std::vector<std::string> items;
    for (const project::Donation& d : project::kDonations) items.push_back(d.item);
    m_donations->setItems(std::move(items));
}

void AboutWindow::donate() {
    const std::string& chosen = m_donations->text();
    for (const project::Donation& d : project::kDonations) {
        if (chosen != d.item) continue;
        openAddress(d.address);
        hide();
        return;
    }
}

void AboutWindow::openQuietly(const std::string& address) {
    const int result = program().shell().open(name(), address);
    if (!shellOpened(result))
        log().error(name(), "could not open " + address + " (shell code " + std::to_string(result) + ")");
}

int AboutWindow::openAddress(const std::string& address) {
    const int result = program().shell().open(name(), address);
    if (shellOpened(result)) return result;
    MessageRequest m{name(), program().product().name, "", DialogIcon::Exclamation, DialogButtons::OK};
    if (result == shell_result::kNoAssociation) {
        m.text = "No Association Found for HTTP Addresses. A Web Browser Should be Installed or Reinstalled.";
    } else if (result == shell_result::kFileNotFound || result == shell_result::kPathNotFound) {
        m.text = "The '" + address + "' File or Path was Not Found.";
    } else {
        m.text = "An error occurred attempting to open '" + address + "' (ShellExecute code " +
                 std::to_string(result) + ").";
        m.icon = DialogIcon::Critical;
    }
    dialogs().message(m);
    return result;
}

}  // namespace mv
