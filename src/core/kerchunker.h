#pragma once
// The end-of-over letters and the kerchunk filter in front of the RF one: a
// local carrier earns the RF letter only if it is still up a set delay after
// it appeared, and the letter follows its drop at the next tick of the
// hang-time poll; an Internet station's audio earns the Internet letter as
// soon as it ends. The courtesy window and the ident window each carry one;
// they differ only in the options below.
#include <functional>
#include <string>

#include "core/controls.h"
#include "core/window.h"

namespace mv {

// A courtesy letter is a short end-of-over mark ("K", "I", "KN", "73"): the
// host keys the transmitter for as long as its Morse lasts, and nothing in the
// suite can stop Morse the host has begun, so every letter field, in either
// window, holds at most this many characters (about five seconds of Morse at
// 20 WPM at the worst).
inline constexpr int kCourtesyLetterMaxLength = 4;

struct KerchunkerOptions {
    // Periods the two timers have before the fields are applied at load.
    int kerchunkWaitMs = 5000;
    int hangTimeMs = 500;
    // Both timers tick from the window's load instead of waiting for the
    // first carrier event (the first filter tick then comes one period after
    // load and finds no carrier).
    bool runningFromLoad = false;

    // What an edit of a period field that gives no usable period does.
    enum class BadPeriod {
        // A field holding no whole number from 1 to 65535 leaves the timer's
        // period as it was, so an operator halfway through typing a new value
        // never switches the filter off.
        KeepOld,
        // An emptied field becomes "0" and a period of 0 stops the timer from
        // ticking at all (no over accepted, or no RF letter ever sent); a
        // number above 65535 or no number at all still leaves the old period.
        ZeroStops,
    };
    BadPeriod badPeriod = BadPeriod::KeepOld;

    // The letters' own switch, asked before the carrier is: while it is off
    // the filter accepts nothing, an accepted over waits for it at the poll,
    // and no Internet letter goes out. Null: the letter senders decide.
    std::function<bool()> lettersEnabled;
    // While this is true the two timers tick without doing anything and the
    // end of Internet audio earns nothing (the ident window's "Disable
    // Announcements"). Null: never.
    std::function<bool()> silenced;
    // No Internet letter while a local RF user holds the carrier.
    bool internetLetterWithheldUnderCarrier = false;
    // Run first in each tick of either timer (the ident window restates the
    // host wait policy there).
    std::function<void()> beforeTick;
};

class Kerchunker {
public:
    static constexpr const char* kAccepted = "Yes";
    static constexpr const char* kNotAccepted = "No";

    // `ok2Kerchunk` is the label that holds the filter's state ("No"/"Yes").
    // The letter senders are the window's own: a Morse letter, or a tone.
    Kerchunker(WindowParts parts, TextBox& kerchunkWait, TextBox& hangTime, Label& ok2Kerchunk,
               KerchunkerOptions options, std::function<void()> sendRfLetter,
               std::function<void()> sendInternetLetter);
    Kerchunker(const Kerchunker&) = delete;
    Kerchunker& operator=(const Kerchunker&) = delete;

    // Both periods from the fields as they stand (the window's load, after
    // its settings are read).
    void applyPeriods();
    // The host's CarrierDetect event: on starts the filter, off starts the
    // poll. Nothing else: both timers ask the host for the live carrier.
    void carrierDetect(bool on);
    // The host's RX event with false: an Internet station's audio ended.
    void internetAudioEnded();

    bool accepted() const { return m_ok.caption() == kAccepted; }
    Timer& filterTimer() { return *m_kerchunker; }
    Timer& pollTimer() { return *m_kickBack; }

private:
    void filterTick();
    void pollTick();
    void applyPeriod(TextBox& field, Timer& timer);
    bool silenced() const { return m_options.silenced && m_options.silenced(); }
    bool lettersEnabled() const { return !m_options.lettersEnabled || m_options.lettersEnabled(); }
    bool carrier();

    Window& m_window;
    TextBox& m_kerchunkWait;
    TextBox& m_hangTime;
    Label& m_ok;
    KerchunkerOptions m_options;
    std::function<void()> m_sendRfLetter;
    std::function<void()> m_sendInternetLetter;
    Timer* m_kerchunker = nullptr;
    Timer* m_kickBack = nullptr;
};

}  // namespace mv
