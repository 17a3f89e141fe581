#pragma once
// The reminder to stations that talk too long: a transmission that lasts the
// allowed number of seconds makes the message fall due, and a few seconds
// after that station stops it goes out, as chat text to Internet stations and
// spoken by the ident window's voice to RF users. Each side is counted only
// when its box is ticked; a station talking through several periods still
// gets one message.
#include <memory>
#include <string>

#include "core/period_countdown.h"
#include "core/window.h"
#include "courtesy/indicators.h"

namespace mv {

class LongTransmissionMessage {
public:
    explicit LongTransmissionMessage(Window& window);
    LongTransmissionMessage(const LongTransmissionMessage&) = delete;
    LongTransmissionMessage& operator=(const LongTransmissionMessage&) = delete;

    // From the window's build(): the message group into `area`.
    void build(WindowParts parts, Container& area, const courtesy::ChannelPresence& presence);
    void release();
    // At load: nothing is due.
    void clearPending();
    // Once a second (the window's Timer2): holds each side's message timer
    // stopped while its side holds the channel and starts it once it is quiet.
    void arm();
    // The RF side counts no more while the window lives (after an RF time-out).
    void stopRfCounter();

    bool internetPending() const { return m_internetPending; }
    bool rfPending() const { return m_rfPending; }
    PeriodCountdown& internetCounter() { return *m_internetCounter; }
    PeriodCountdown& rfCounter() { return *m_rfCounter; }
    Timer& internetSender() { return *m_internetSender; }
    Timer& rfSender() { return *m_rfSender; }

private:
    void sendChat();
    void speak();
    // The message spoken keyed by the ident window's voice, now.
    void speakMessage();
    void test();
    // The message timer's period from "Segundos Retardo".
    void setDelay(Timer& sender);

    Window& m_window;
    const courtesy::ChannelPresence* m_presence = nullptr;
    std::unique_ptr<PeriodCountdown> m_internetCounter;  // Timer4
    std::unique_ptr<PeriodCountdown> m_rfCounter;        // Timer6
    Timer* m_internetSender = nullptr;                   // Timer7
    Timer* m_rfSender = nullptr;                         // Timer8
    TextBox* m_message = nullptr;                        // TEXT6
    TextBox* m_delay = nullptr;                          // TEXT8
    CheckBox* m_countInternet = nullptr;                 // CHECK2
    CheckBox* m_countRf = nullptr;                       // CHECK3
    bool m_internetPending = false;
    bool m_rfPending = false;
};

}  // namespace mv
