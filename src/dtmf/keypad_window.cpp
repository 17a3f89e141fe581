#include "dtmf/keypad_window.h"

#include "core/errors.h"
#include "core/program.h"

namespace mv {
namespace {

// A control name for each key: Key1 ... KeyD, KeyStar, KeyHash.
std::string keyName(char key) {
    if (key == '*') return "KeyStar";
    if (key == '#') return "KeyHash";
    return std::string("Key") + key;
}

}  // namespace

const char* const KeypadWindow::kKeys[16] = {"1", "2", "3", "A", "4", "5", "6", "B",
                                             "7", "8", "9", "C", "*", "0", "#", "D"};

KeypadWindow::KeypadWindow(Program& program) : Window(program, "keypad") {}

void KeypadWindow::build() {
    auto& root = make<Container>("keypadRoot", ContainerKind::Column);
    setRoot(root);
    auto& frame = root.add(make<Container>("frameDtmf", ContainerKind::Frame, "DTMF"));
    m_text = &frame.add(make<TextBox>("DTMFText"));
    m_transmit = &root.add(make<CheckBox>("TXDTMF", "TX DTMF", 0));
    auto& keys = root.add(make<Container>("keyGrid", ContainerKind::Grid, "", 4));
    for (const char* key : kKeys) {
        const char k = key[0];
        keys.add(make<Button>(keyName(k), key)).onClick = [this, k] { press(k); };
    }
    auto& buttons = root.add(make<Container>("keypadButtons", ContainerKind::Row));
    buttons.add(make<Button>("Clear", "Borrar")).onClick = [this] { m_text->setText(""); };
    // A host call that fails is in the log already; the field keeps its text.
    buttons.add(make<Button>("Accept", "Aceptar")).onClick = [this] {
        ignoreErrors([this] { host().executeDTMF(m_text->text()); });
    };
    buttons.add(make<Button>("Exit", "Salir")).onClick = [this] { hide(); };
}

void KeypadWindow::onLoad() {
    createHostObject();
    setModuleCaption("");
    host().setPTT(false);
}

void KeypadWindow::press(char key) {
    // The character is added whether or not it is sent.
    m_text->setText(m_text->text() + key);
    if (m_transmit->value() == 1) ignoreErrors([&] { host().transmitDTMF(std::string(1, key)); });
}

}  // namespace mv
