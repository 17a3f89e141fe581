#pragma once
// The courtesy window's channel indicators: their exact texts and background
// colours. The window's own parts read the texts back as the channel's state
// ("RX NO": no RF user; "IP TX OFF": no Internet audio), so they live here once.
#include "core/controls.h"
#include "core/host_link.h"

namespace mv::courtesy {

inline constexpr Rgb kOrange{255, 192, 128};
inline constexpr Rgb kCyan{128, 255, 255};
inline constexpr Rgb kRed{255, 0, 0};
inline constexpr Rgb kLightGreen{128, 255, 128};

inline constexpr const char* kRxYes = "RX YES";
inline constexpr const char* kRxNo = "RX NO";
inline constexpr const char* kIpTxOn = "IP TX ON";
inline constexpr const char* kIpTxOff = "IP TX OFF";
inline constexpr const char* kIdentOn = "Ident ON";
inline constexpr const char* kIdentOff = "Ident OFF";

// Text and background in one go; nothing is repainted when neither changes.
inline void indicate(Label& label, const char* text, Rgb back) {
    label.setCaption(text);
    label.setBackColor(back);
}

// PTT from the host's transmitter, whoever keyed it.
inline void showTransmitter(Label& ptt, HostObject& host) {
    const bool on = host.isTransmitting();
    indicate(ptt, on ? kPttOn : kPttOff, on ? kRed : kLightGreen);
}

// Who is on the channel, as the indicators show it.
struct ChannelPresence {
    const Label& rfUser;
    const Label& internet;
    bool rfUserPresent() const { return rfUser.caption() != kRxNo; }
    bool internetPresent() const { return internet.caption() != kIpTxOff; }
    bool quiet() const { return !rfUserPresent() && !internetPresent(); }
};

}  // namespace mv::courtesy
