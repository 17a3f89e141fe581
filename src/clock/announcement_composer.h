#pragma once
// Composes the spoken time from the word files of a voice folder and chains
// them: each file plays to its end before the next starts, the transmitter
// stays keyed for the whole announcement and is released after it.
//
// The chain works on the player's two displays: when the file in the graph
// has ended (elapsed reads what length reads), the sequence poll plays the
// step in NextStep again; that reload finds the displays still equal, which
// moves NextStep on, and the next test of the same tick plays the following
// step at once, before the reload is heard.
#include <string>

#include "core/controls.h"

namespace mv {

class PlayerStrip;
class Timer;

// What the composer reads and does outside itself.
struct ComposerContext {
    PlayerStrip& player;
    CheckBox& words;        // CHECK1 "Hr / Min"
    CheckBox& prefix;       // CHECK2 "Bell 1 - 2 or Preamble"
    OptionButton& bell1;    // OPTION5
    OptionButton& bell2;    // OPTION6
    CheckBox& ampm;         // AMPM
    TextBox& hh;
    TextBox& mm;
    TextBox& amPm;
    TextBox& fileLocation;  // folder in use
    OptionButton& wav;      // OPTIONWAV: files in use are .wav
    std::function<int()> currentHour;
    std::function<void(bool)> setPollEnabled;
    std::function<bool()> pollEnabled;
    // The voice files could not be played: fall back to voice 1 and tell the operator.
    std::function<void(const std::string& path, const std::string& error)> voiceFilesMissing;
};

class AnnouncementComposer {
public:
    explicit AnnouncementComposer(ComposerContext context) : m_ctx(std::move(context)) {}

    // 11 when the prefix (bell or greeting) is on, else 1.
    int startValue() const;
    // LoadFile: loads the prefix and/or the file of Step. False when a file
    // could not be loaded (the announcement has then been abandoned).
    bool loadFile();
    // PlayNext: the next file of a running announcement, keyed and run.
    void playNext();
    // The 1 ms sequence poll.
    void pollSequence();
    // The 1000 ms release check: unkeys once the last file has ended.
    void checkRelease();
    // Whether an announcement still holds the transmitter between its files:
    // only while its poll is running can another file follow. A file played
    // with the poll off (the strip's "Play") is the last one, whatever Step
    // it came from, so its end releases the transmitter.
    bool holdsTheAir() const;
    // Volume and rate from the sliders onto the current graph (errors ignored).
    void applySliders();

    int step() const { return m_step; }
    int nextStep() const { return m_nextStep; }
    bool sequenceActive() const { return m_sequenceActive; }
    void setStep(int step) { m_step = step; }
    void setNextStep(int step) { m_nextStep = step; }
    void setSequenceActive(bool active) { m_sequenceActive = active; }
    const std::string& fileName() const { return m_fileName; }

    // The greeting for an hour of the day (0..23).
    static const char* greetingFor(int hour);

private:
    // The play block: key, load, and note in NextStep when the file "has ended".
    void playBlock(const std::string& name, int nextIfEnded);
    std::string pathOf(const std::string& name) const;
    std::string prefixFile(bool blankWhenOff) const;
    void loadStepFile(int step);
    void abandon(const std::string& error);
    // Ends the chain: the poll off, the transmitter released, Step and
    // NextStep set for a clean start.
    void endChain();

    ComposerContext m_ctx;
    int m_step = 0;  // 0: no step (also "empty" at start-up)
    int m_nextStep = 0;
    bool m_sequenceActive = false;
    std::string m_fileName;
    bool m_failed = false;
};

}  // namespace mv
