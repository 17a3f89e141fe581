#pragma once
// The DTMF keypad: sixteen keys that add their character to a string and,
// with "TX DTMF" ticked, send that tone on the air at once; "Aceptar" hands
// the whole string to the host to act on as if it had been received.
#include "core/window.h"

namespace mv {

class KeypadWindow final : public Window {
public:
    explicit KeypadWindow(Program& program);

    // The key captions, row by row, four to a row.
    static const char* const kKeys[16];
    // A key press: adds `key` to the field and transmits it when "TX DTMF" is ticked.
    void press(char key);

protected:
    void build() override;
    void onLoad() override;

private:
    TextBox* m_text = nullptr;
    CheckBox* m_transmit = nullptr;
};

}  // namespace mv
