#pragma once
// The ident window's text editor: a scratch text the operator can hear
// (unkeyed, nothing goes on the air) or save as a wave file to play later
// from any audio slot. The one place in the module where a speech failure is
// shown in a dialog, because the operator pressed the button.
#include <string>

#include "core/window.h"

namespace mv {

class IdentWindow;

class SpeechEditor {
public:
    explicit SpeechEditor(IdentWindow& window);
    void build(WindowParts parts, Container& page);

    // "Reproducir".
    void play();

private:
    // SaveSpeechToWave: asks for a file and speaks the text into it. A
    // cancelled dialog or a failed write ends it quietly (the log says why).
    void saveSpeechToWave();

    IdentWindow& m_window;
    TextBox* m_text = nullptr;
    CheckBox* m_saveToWave = nullptr;
};

}  // namespace mv
