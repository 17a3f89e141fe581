#pragma once
// The information texts the ident window speaks: the beacon text, every set
// number of minutes and at fixed times 15 seconds past the hour, the quarters
// or the half hour, either whole ("Texto Estatico") or one line of it drawn
// at random ("Texto Aleatorio"); and a short information text spoken on request.
#include <memory>
#include <optional>
#include <string>

#include "core/local_time.h"
#include "core/period_countdown.h"
#include "core/settings_binder.h"
#include "core/window.h"

namespace mv {

class IdentWindow;
class IdentClock;

// What an empty text is replaced by before it is spoken.
inline constexpr const char* kNoInformation = "No information at this time.";
// The beacon text's design value: nine blanks and a line break.
inline constexpr const char* kBeaconTextDefault = "         \n";

// The lines of `text` that hold more than blanks, without their line breaks.
std::vector<std::string> messageLines(const std::string& text);

class InformationTexts {
public:
    explicit InformationTexts(IdentWindow& window);
    ~InformationTexts();

    // The beacon-text and information-text frames into `page`; their lengths
    // are shown each second by `clock`. Binds their options.
    void build(WindowParts parts, Container& page, IdentClock& clock, SettingsBinder& binder);

    // Each second: Beacon3 stands still while an Internet station is heard.
    void followReception(bool receiving);
    // Each second, with that second's reading: the fixed-time texts.
    void atSecond(const LocalDateTime& at);

    Timer& beaconTimer() { return m_beacon->tickSource(); }

private:
    void beaconDue();
    // The beacon text as the selected mode speaks it; none when no mode is selected.
    std::optional<std::string> beaconSpeech();
    // The text field, filled with the fallback first when empty.
    const std::string& filled(TextBox& field);
    void speakKeyed(const std::string& text);
    void speakUnkeyed(TextBox& field);

    IdentWindow& m_window;
    TextBox* m_beaconText = nullptr;
    OptionButton* m_static = nullptr;
    OptionButton* m_random = nullptr;
    CheckBox* m_onHour = nullptr;
    CheckBox* m_onQuarter = nullptr;
    CheckBox* m_onHalf = nullptr;
    TextBox* m_infoText = nullptr;
    std::unique_ptr<PeriodCountdown> m_beacon;
};

}  // namespace mv
