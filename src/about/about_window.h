#pragma once
// The About box: the program's name and version, the maker's details, a
// donation choice that opens its payment page, buttons for the project's web
// page and e-mail, and the suite's routine for opening an address through the
// desktop and telling the operator why it could not be opened.
#include <string>

#include "core/window.h"

namespace mv {

class AboutWindow final : public Window {
public:
    explicit AboutWindow(Program& program);

    // OpenAddress: opens `address` with the desktop; when that fails, says
    // why in a message. Returns the shell's result code.
    int openAddress(const std::string& address);

    // The e-mail button's address: mailto with the project's subject.
    static std::string mailAddress();

protected:
    void build() override;
    void onLoad() override;

private:
    void donate();
    // The web and e-mail buttons report no failure to the operator; the log has it.
    void openQuietly(const std::string& address);

    Label* m_name = nullptr;
    ComboBox* m_donations = nullptr;
};

}  // namespace mv
