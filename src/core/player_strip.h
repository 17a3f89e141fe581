#pragma once
// The player every sound-playing window carries: one media graph at a time,
// the strip of position, volume, balance and speed sliders, the progress
// displays, the end-of-file test and the keying discipline around playing onto
// the air. The clock, the DTMF player and the courtesy module differ only in
// the options they build it with.
#include <functional>
#include <memory>
#include <string>

#include "core/media.h"
#include "core/program.h"
#include "core/window.h"

namespace mv {

// Seconds as the progress fields show them: "hh:mm:ss", "00:00:00" under one
// second, "24:59:59" beyond a day.
std::string formatDuration(double seconds);
// Seconds as plain decimal text, the form the end-of-file test compares: at
// most six decimals, no trailing zeros ("2.5", "3", "0.000125").
std::string secondsText(double seconds);

// At load, the volume slider takes the whole number its settings field holds
// (clamped to the slider), and the field shows what the slider took. A field
// that spells no whole number gives full volume and an `error` line.
void restoreVolume(Slider& volume, TextBox& volSet, EventLog& log, const std::string& window,
                   const std::string& settingsFile);

struct PlayerStripOptions {
    enum class Progress {
        // "Lenght :", "Time Used :", "Time Left :" as "hh:mm:ss" beside two
        // plain displays of length and elapsed seconds (DTMF player, courtesy).
        Clock,
        // The fields themselves are the plain displays: "Time Left :" holds
        // the length, "Time Used :" the elapsed seconds, "Lenght :" the length
        // set at load (the talking clock).
        PlainSeconds,
    };
    Progress progress = Progress::Clock;

    // The window's transmit indicator ("PTT ON" red / "PTT OFF" green).
    Label* ptt = nullptr;
    // Controls the window already has that the strip drives instead of making
    // its own (the hub keeps its volume slider and VOLSET on another tab).
    Slider* volumeSlider = nullptr;
    TextBox* volSet = nullptr;

    // Re-apply the volume and speed sliders to every freshly loaded graph
    // (the clock); otherwise a new graph plays at full rate and centre balance
    // until a slider moves, and the volume is set when a file is played.
    bool applyVolumeAndRateAtLoad = false;

    // The 1000 ms end-of-play check: once the file has ended, ends the
    // transmission this strip keyed (see endTransmission). Off for windows
    // that release otherwise.
    bool releaseCheck = true;

    // What a failed load tells the operator; by default the "Render error"
    // message box. Called after the graph has been released.
    std::function<void(const std::string& path, const std::string& error)> onRenderError;
};

class PlayerStrip {
public:
    explicit PlayerStrip(Window& window);
    ~PlayerStrip();
    PlayerStrip(const PlayerStrip&) = delete;
    PlayerStrip& operator=(const PlayerStrip&) = delete;

    // From the window's build(): makes the controls inside `area` and the
    // timers. Controls die with the window's at unload; call release() then.
    void build(WindowParts parts, Container& area, PlayerStripOptions options);
    // The window unloads: the graph goes and the controls are forgotten.
    void release();
    // The program is ending: a playing graph stops at once and the indicator
    // reads "PTT OFF"; the program releases the transmitter itself next.
    void silence();

    // LoadFile: CleanUp, a new graph, render, position slider maximum, length
    // displays. False (after the render-error handler) when it cannot render.
    bool loadFile(const std::string& path);
    // CleanUp: releases the graph, which silences it.
    void cleanUp();
    // TXFile: load, "Time Used" reset, PTT on, run from position 0 at the
    // volume slider's value. A file that will not load keys nothing.
    bool txFile(const std::string& path);
    // The keyed part of TXFile for a graph that is already loaded.
    void playLoaded();
    // TXRX: unkey and stop when the file has ended, otherwise key and run.
    void txrx();

    void keyOn();
    void keyOff();
    // True while this strip's indicator reads "PTT ON".
    bool keyed() const;
    // This strip's part on the air is over (its file ended, was stopped or
    // went): releases what it keyed; the transmitter stays up while another
    // window still holds it. Does nothing unkeyed.
    void endTransmission();

    // The volume and speed sliders onto the graph now (errors ignored).
    void applySliders();
    // Graph calls with errors ignored, as the local player buttons make them.
    void run();
    void stop();
    void seek(double seconds);

    // The end-of-file test: true when the elapsed display reads exactly what
    // the length display reads. With a graph loaded both are refreshed from it
    // first, so the test sees the end the moment the graph reaches it.
    bool fileEnded();
    // The 10 ms progress display, callable directly (tests, the clock's poll).
    void refreshDisplays();
    // The 1000 ms end-of-play check.
    void checkRelease();

    bool hasGraph() const { return static_cast<bool>(m_graph); }
    MediaGraph* graph() { return m_graph.get(); }
    const std::string& path() const { return m_path; }

    Slider& positionSlider() { return *m_position; }
    Slider& volumeSlider() { return *m_volume; }
    TextBox& volSet() { return *m_volSet; }
    Slider& balanceSlider() { return *m_balance; }
    Slider& speedSlider() { return *m_speed; }
    TextBox& lengthDisplay() { return *m_lengthDisplay; }
    TextBox& elapsedDisplay() { return *m_elapsedDisplay; }
    TextBox& lengthField() { return *m_lengthField; }
    TextBox& timeUsedField() { return *m_timeUsed; }
    TextBox& timeLeftField() { return *m_timeLeft; }

private:
    void buildSliders(WindowParts& parts, Container& area, Container& speedArea);
    void buildProgress(WindowParts& parts, Container& area);
    void logMedia(const char* op);
    // The 10 ms display runs only while something can move the position, so
    // an idle strip costs no wake-ups at all.
    void wakeDisplay();
    void displayTick();
    void showText(TextBox& box, const std::string& text);
    void applyVolume();
    void applyRate();
    void renderFailed(const std::string& path, const std::string& error);

    Window& m_window;
    PlayerStripOptions m_options;
    std::unique_ptr<MediaGraph> m_graph;
    std::string m_path;
    bool m_movingPosition = false;  // the display, not the operator, is moving the slider

    Slider* m_position = nullptr;
    Slider* m_volume = nullptr;
    TextBox* m_volSet = nullptr;
    Slider* m_balance = nullptr;
    Slider* m_speed = nullptr;
    TextBox* m_lengthField = nullptr;
    TextBox* m_timeUsed = nullptr;
    TextBox* m_timeLeft = nullptr;
    TextBox* m_lengthDisplay = nullptr;
    TextBox* m_elapsedDisplay = nullptr;
    Timer* m_displayTimer = nullptr;
    Timer* m_releaseTimer = nullptr;
    // The strip's place in the program's end, from build() to release().
    AirStop m_airStop;
};

}  // namespace mv
