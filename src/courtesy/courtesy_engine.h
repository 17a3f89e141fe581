#pragma once
// The courtesy signal that marks the end of every over: a Morse letter the
// host sends, or a tone file played keyed through the window's own player;
// the switch that enables it (by box or DTMF code), its test buttons, and the
// tone player with its 1 ms watch, which keys the transmitter while a tone
// plays and releases it once, when the tone ends or is stopped.
#include <string>

#include "core/kerchunker.h"
#include "core/player_strip.h"
#include "core/window.h"

namespace mv {

class CourtesyEngine {
public:
    explicit CourtesyEngine(Window& window);
    CourtesyEngine(const CourtesyEngine&) = delete;
    CourtesyEngine& operator=(const CourtesyEngine&) = delete;

    // From the window's build(): the courtesy frame into `settingsArea`, the
    // player group into `playerArea`. `ptt` and `ident` are the window's
    // indicators; the watch drives both while a tone plays.
    void build(WindowParts parts, Container& settingsArea, Container& playerArea, Label& ptt, Label& ident);
    // After the settings are read: sliders from "VOLSET" and "SPEEDSET", the
    // player's displays at "0" (so nothing reads as playing).
    void afterSettingsLoaded();
    // The window unloads: the player goes silent and its graph is released.
    void release();

    // "Enabled": the "Activado" box reads exactly 1.
    bool enabled() const;
    // The courtesy that follows an accepted RF over / an Internet station's
    // audio; started by the node, never by the operator, so a tone that
    // cannot be played is logged rather than asked about.
    void sendRFCourtesy();
    void sendInternetCourtesy();
    // The DTMF switch: the "Abrir" code ticks "Activado", then the "Cerrar"
    // code clears it.
    void dtmfSwitch(const std::string& digits);

    // A tone is playing onto the air and holds the transmitter.
    bool toneOnAir() const { return m_toneOnAir; }
    PlayerStrip& player() { return m_player; }

private:
    enum class Caller { Operator, Node };
    // ToneSelector: 1 the RF tone, 2 the Internet tone, 0 before the first.
    void playTone(int selector, Caller caller);
    // TXFile: load the selected tone afresh and play it keyed.
    bool txFile(Caller caller);
    // LoadFile: the tone field that ToneSelector names, into the player.
    bool loadFile(bool reload, Caller caller);
    TextBox* selectedToneField() const;
    void chooseToneFile(TextBox& field);
    void noFileChosen();
    void sendLetter(const TextBox& letter);

    void stopButton();
    void resumeButton();
    void startWatch();
    void watchTick();
    // The tone is over (ended, stopped or gone): one unkey, and the watch rests.
    void releaseTone();
    void refreshIdent();

    Window& m_window;
    PlayerStrip m_player;
    int m_toneSelector = 0;
    std::string m_loadedFile;
    bool m_toneOnAir = false;
    Caller m_loadCaller = Caller::Operator;

    CheckBox* m_enabled = nullptr;
    OptionButton* m_cw = nullptr;
    TextBox* m_rfLetter = nullptr;
    TextBox* m_ipLetter = nullptr;
    TextBox* m_rfTone = nullptr;
    TextBox* m_ipTone = nullptr;
    TextBox* m_openCode = nullptr;
    TextBox* m_closeCode = nullptr;
    TextBox* m_fileName = nullptr;
    TextBox* m_speedSet = nullptr;
    Label* m_ptt = nullptr;
    Label* m_ident = nullptr;
    Timer* m_watch = nullptr;
};

}  // namespace mv
