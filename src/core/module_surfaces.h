#pragma once
// What one module window offers the others, and nothing more: the transmit
// indicator's caption, the ident window's speech desk and the talking clock's
// start of an announcement. A module finds a surface by window name; it never
// includes another module's headers.
#include <string>
#include <string_view>

#include "core/program.h"

namespace mv {

// The suite's one speech voice, kept by the ident window. A caller sets the
// text, then either speaks it now, keyed (speakTheText), or leaves it pending
// to be spoken as soon as no window transmits.
class SpeechDesk {
public:
    virtual ~SpeechDesk() = default;
    virtual void setSpeechText(const std::string& text) = 0;
    virtual const std::string& speechText() const = 0;
    virtual void setSpeechPending(bool pending) = 0;
    virtual bool speechPending() const = 0;
    // The next keyed utterance skips the TTS delay once.
    virtual void setSkipSpeechDelay(bool skip) = 0;
    // Speaks the speech text with the transmitter keyed; returns when done.
    virtual void speakTheText() = 0;
};

// The talking clock in the hub.
class TalkingClock {
public:
    virtual ~TalkingClock() = default;
    // Starts a time announcement at once, without the busy test.
    virtual void startAnnouncement() = 0;
    // Switches the clock's once-a-second release check on or off. The DTMF
    // player keeps it off while it is on the air, since that check unkeys the
    // transmitter whenever the clock's own file has ended.
    virtual void setReleaseCheckEnabled(bool enabled) = 0;
};

// The DTMF control window's reception delay: the ident window restarts its
// countdown timer each second the node receives nothing.
class DtmfControl {
public:
    virtual ~DtmfControl() = default;
    virtual void startDelayTimer() = 0;
};

// A loaded window's surface of the given kind, or null (the window does not
// exist in this build, is not loaded, or offers no such surface).
template <class Surface>
Surface* surfaceOf(const Program& program, std::string_view windowName) {
    Window* w = program.window(windowName);
    return w && w->isLoaded() ? dynamic_cast<Surface*>(w) : nullptr;
}

// True when the named window's transmit indicator ("PTT") reads exactly
// "PTT ON". A window that does not exist or is not loaded reads as off.
bool showsPttOn(const Program& program, std::string_view windowName);

}  // namespace mv
