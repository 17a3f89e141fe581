#pragma once
// Puts the player window's files on the air: chooses the static or a random
// row (PlaySelection), loads a row's file (LoadFile) and plays it keyed
// (TXFile) through the window's player strip, and keeps the hub's release
// check off while this window is on the air. It knows who asked: the operator
// gets dialogs; a DTMF code or a beacon gets `error` lines and plays nothing,
// since an unattended node has no one to answer a dialog.
#include <string>

#include "core/dialogs.h"
#include "core/player_strip.h"
#include "player/file_rows.h"

namespace mv {

enum class PlayTrigger { Operator, Unattended };

class SelectionPlayer {
public:
    explicit SelectionPlayer(Window& window);

    struct Controls {
        FileRows& rows;
        TextBox& maxRand;           // MaxRand: a random play draws among rows 1 to this
        OptionButton& staticMode;   // StopClock2 "Estatico"
        Label& ptt;                 // the window's transmit indicator
    };
    // From the window's build(): the strip inside `stripArea`, and the mirror.
    void build(WindowParts parts, Container& stripArea, Controls controls);
    // The window unloads: the graph goes, and the hub's check is given back.
    void release();

    // PlaySelection: the static row, or a random one.
    void playSelection(PlayTrigger trigger);
    void playStaticSlot(PlayTrigger trigger);
    void playRandomSlot(PlayTrigger trigger);
    // A row's play button (and each pick): the row becomes the selected one
    // and its file is played afresh, keyed.
    void playRow(int row, PlayTrigger trigger);
    // TXFile: plays the selected row keyed. True when it went on the air;
    // a play that fails keys nothing.
    bool txFile(PlayTrigger trigger);
    // LoadFile(ReLoad): the selected row's file into a new graph. True when a
    // graph is ready to play (freshly loaded, or kept when not reloading).
    bool loadFile(bool reload, PlayTrigger trigger);

    // "Buscar" of a row: its field emptied, a file chosen and loaded, not played.
    void browse(int row);
    // The local player: none of these keys the transmitter.
    void localPlay();
    void localStop();
    void localResume();
    // "File": reloads the selected row's file, not played.
    void reloadSelected();

    int selectedSlot() const { return m_selectedSlot; }
    const std::string& currentFile() const { return m_currentFile; }
    int randomPick() const { return m_randomPick; }
    PlayerStrip& strip() { return m_strip; }

    static constexpr const char* kRenderError = "Render error no rendering device found";
    static constexpr const char* kFileFilter = "*.wav, *.mp2, *.mp3, *.mid|*.wav;*.mp2;*.mp3;*.mid";

private:
    bool hubOnAir() const;
    // Tells the operator in a dialog, or the log when no one is there.
    void complain(PlayTrigger trigger, const std::string& dialogText, DialogIcon icon, const std::string& logText);
    // The range MaxRand gives (1..20), after writing back a value out of range.
    int settleMaxRand();
    // The 1 ms mirror of this window's indicator onto the hub's release check.
    void mirrorPtt();
    void startMirror();

    Window& m_window;
    PlayerStrip m_strip;
    FileRows* m_rows = nullptr;
    TextBox* m_maxRand = nullptr;
    OptionButton* m_staticMode = nullptr;
    Label* m_ptt = nullptr;
    Timer* m_mirror = nullptr;
    // Who asked for the load in progress (its render error goes to them).
    PlayTrigger m_loading = PlayTrigger::Operator;

    std::string m_currentFile;  // CurrentFile: empty when the next play loads afresh
    int m_selectedSlot = 0;     // SelectedSlot: 0 until a row is played or browsed
    int m_randomPick = 0;       // RandomPick
};

}  // namespace mv
