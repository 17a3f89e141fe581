#include "core/player_strip.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "core/dialogs.h"
#include "core/errors.h"
#include "core/event_log.h"
#include "core/hub_window.h"
#include "core/program.h"
#include "core/settings_store.h"

namespace mv {

std::string formatDuration(double seconds) {
    if (!std::isfinite(seconds)) return "00:00:00";
    const long long whole = static_cast<long long>(std::trunc(seconds));
    if (whole < 1) return "00:00:00";
    const long long h = whole / 3600;
    // The 25th hour still reads as "24:mm:ss", so the display runs on without
    // a jump to the cap that every longer file shows.
    if (h > 24) return "24:59:59";
    const long long m = (whole - h * 3600) / 60;
    const long long s = whole - (whole / 60) * 60;
    char buf[16];
    std::snprintf(buf, sizeof buf, "%02lld:%02lld:%02lld", h, m, s);
    return buf;
}

std::string secondsText(double seconds) {
    char buf[40];
    // Six decimals are far finer than anything a poll can see, and keep the
    // text short enough never to allocate on the 10 ms path.
    auto [end, ec] = std::to_chars(buf, buf + sizeof buf, seconds, std::chars_format::fixed, 6);
    if (ec != std::errc()) return "0";
    char* p = end;
    while (p > buf && p[-1] == '0') --p;
    if (p > buf && p[-1] == '.') --p;
    std::string text(buf, p);
    return text == "-0" ? "0" : text;
}

void restoreVolume(Slider& volume, TextBox& volSet, EventLog& log, const std::string& window,
                   const std::string& settingsFile) {
    long long wanted = 0;
    if (!setting::parseWhole(volSet.text(), wanted)) {
        log.error(window, settingsFile + ": VOLSET=\"" + volSet.text() + "\" is not a volume; using 0");
        wanted = 0;
    }
    const int value = static_cast<int>(std::clamp<long long>(wanted, volume.min(), volume.max()));
    // The slider's change handler writes the field; an unchanged slider does not run it.
    if (volume.value() == value)
        volSet.setText(std::to_string(value));
    else
        volume.setValue(value);
}

PlayerStrip::PlayerStrip(Window& window) : m_window(window) {}

PlayerStrip::~PlayerStrip() = default;

void PlayerStrip::build(WindowParts parts, Container& area, PlayerStripOptions options) {
    m_options = std::move(options);
    // Side by side, so the strip costs the window little height: the
    // horizontal sliders, the vertical speed slider, then the progress.
    auto& row = area.add(parts.make<Container>("stripRow", ContainerKind::Row));
    auto& sliders = row.add(parts.make<Container>("stripSliders", ContainerKind::Column));
    buildSliders(parts, sliders, row);
    buildProgress(parts, row.add(parts.make<Container>("stripProgress", ContainerKind::Column)));
    m_displayTimer = &parts.makeTimer("ProgressDisplay", 10, false, [this] { displayTick(); });
    if (m_options.releaseCheck) m_releaseTimer = &parts.makeTimer("EndOfPlay", 1000, true, [this] { checkRelease(); });
    m_airStop = m_window.program().addAirStop(m_window.name(), [this] { silence(); });
}

void PlayerStrip::buildSliders(WindowParts& parts, Container& area, Container& speedArea) {
    m_position = &area.add(parts.make<Slider>("PositionSlider", 0, 0, 0));
    m_position->onChange = [this] {
        if (!m_movingPosition) seek(m_position->value());
    };

    if (m_options.volumeSlider && m_options.volSet) {
        m_volume = m_options.volumeSlider;
        m_volSet = m_options.volSet;
        auto own = std::move(m_volume->onChange);
        m_volume->onChange = [this, own] {
            if (own) own();
            applyVolume();
        };
    } else {
        auto& frame = area.add(parts.make<Container>("frameVolume", ContainerKind::Frame, "Volume"));
        m_volume = &frame.add(parts.make<Slider>("VolumeSlider", -3000, 0, 0));
        m_volume->setSteps(50, 500);
        m_volume->scaleLabels = {"0%", "50%", "100%"};
        m_volSet = &frame.add(parts.make<TextBox>("VolSet", "0"));
        m_volume->onChange = [this] {
            applyVolume();
            m_volSet->setText(std::to_string(m_volume->value()));
        };
    }

    auto& balanceFrame = area.add(parts.make<Container>("frameBalance", ContainerKind::Frame, "Balance"));
    m_balance = &balanceFrame.add(parts.make<Slider>("BalanceSlider", -5000, 5000, 0));
    m_balance->setSteps(10, 100);
    m_balance->scaleLabels = {"Left", "Center", "Right"};
    m_balance->onChange = [this] {
        if (m_graph) ignoreErrors([this] { m_graph->setBalance(m_balance->value()); });
    };

    auto& speedFrame = speedArea.add(parts.make<Container>("frameSpeed", ContainerKind::Frame, "Speed"));
    m_speed = &speedFrame.add(parts.make<Slider>("SpeedSlider", 10, 200, 100, Orientation::Vertical));
    m_speed->setSteps(3, 40);
    m_speed->scaleLabels = {"200%", "100%", "<50%"};
    m_speed->onChange = [this] { applyRate(); };
}

void PlayerStrip::buildProgress(WindowParts& parts, Container& area) {
    const bool plain = m_options.progress == PlayerStripOptions::Progress::PlainSeconds;
    auto& frame = area.add(parts.make<Container>("frameProgress", ContainerKind::Frame, "Progress", 2));
    auto field = [&](const char* label, const char* name) -> TextBox& {
        frame.add(parts.make<Label>(std::string(name) + "Label", label));
        TextBox& box = frame.add(parts.make<TextBox>(name, "00:00:00"));
        box.setReadOnly(true);
        return box;
    };
    m_lengthField = &field("Lenght :", "ProgressLength");
    m_timeUsed = &field("Time Used :", "ProgressUsed");
    m_timeLeft = &field("Time Left :", "ProgressLeft");
    if (plain) {
        m_lengthDisplay = m_timeLeft;
        m_elapsedDisplay = m_timeUsed;
        return;
    }
    // Before the first load the two displays differ, so nothing reads as ended.
    auto& row = area.add(parts.make<Container>("plainDisplays", ContainerKind::Row));
    m_lengthDisplay = &row.add(parts.make<TextBox>("LengthDisplay", "0"));
    m_elapsedDisplay = &row.add(parts.make<TextBox>("ElapsedDisplay", ""));
    m_lengthDisplay->setReadOnly(true);
    m_elapsedDisplay->setReadOnly(true);
}

void PlayerStrip::release() {
    m_airStop.reset();
    cleanUp();
    m_position = m_volume = m_balance = m_speed = nullptr;
    m_volSet = m_lengthField = m_timeUsed = m_timeLeft = m_lengthDisplay = m_elapsedDisplay = nullptr;
    m_displayTimer = m_releaseTimer = nullptr;
}

void PlayerStrip::silence() {
    if (m_graph) {
        bool playing = false;
        ignoreErrors([&] { playing = m_graph->running(); });
        if (playing) {
            logMedia("stop");
            ignoreErrors([this] { m_graph->stop(); });
        }
    }
    if (m_options.ptt) m_options.ptt->showPtt(false);
}

void PlayerStrip::logMedia(const char* op) { m_window.program().log().media(m_window.name(), op, m_path); }

void PlayerStrip::showText(TextBox& box, const std::string& text) {
    if (box.text() != text) box.setText(text);
}

void PlayerStrip::cleanUp() { m_graph.reset(); }

bool PlayerStrip::loadFile(const std::string& path) {
    cleanUp();
    m_path = path;
    logMedia("render");
    try {
        auto graph = m_window.program().media().createGraph(m_window.name());
        graph->render(path);
        m_graph = std::move(graph);
    } catch (const MediaError& e) {
        renderFailed(path, e.what());
        return false;
    }
    const double length = m_graph->duration();
    m_movingPosition = true;
    m_position->setMax(static_cast<int>(std::llround(length)));
    m_movingPosition = false;
    showText(*m_lengthField, m_options.progress == PlayerStripOptions::Progress::PlainSeconds ? secondsText(length)
                                                                                           : formatDuration(length));
    showText(*m_lengthDisplay, secondsText(length));
    if (m_options.applyVolumeAndRateAtLoad) applySliders();
    wakeDisplay();
    return true;
}

void PlayerStrip::renderFailed(const std::string& path, const std::string& error) {
    cleanUp();
    m_window.program().log().error(m_window.name(), error);
    if (m_options.onRenderError) {
        m_options.onRenderError(path, error);
        return;
    }
    m_window.program().dialogs().message({m_window.name(), "Error", "Render error no rendering device found",
                                          DialogIcon::Exclamation, DialogButtons::OK});
}

bool PlayerStrip::txFile(const std::string& path) {
    if (!loadFile(path)) return false;
    playLoaded();
    return true;
}

void PlayerStrip::playLoaded() {
    showText(*m_timeUsed, "00:00:00");
    keyOn();
    run();
    seek(0);
    applyVolume();
}

void PlayerStrip::txrx() {
    if (fileEnded()) {
        keyOff();
        stop();
    } else {
        keyOn();
        run();
    }
}

void PlayerStrip::keyOn() {
    if (m_options.ptt) m_options.ptt->showPtt(true);
    ignoreErrors([this] { m_window.host().setPTT(true); });
}

void PlayerStrip::keyOff() {
    if (m_options.ptt) m_options.ptt->showPtt(false);
    ignoreErrors([this] { m_window.host().setPTT(false); });
}

bool PlayerStrip::keyed() const { return m_options.ptt && m_options.ptt->caption() == kPttOn; }

void PlayerStrip::run() {
    if (!m_graph) return;
    logMedia("run");
    ignoreErrors([this] { m_graph->run(); });
    wakeDisplay();
}

void PlayerStrip::stop() {
    if (!m_graph) return;
    logMedia("stop");
    ignoreErrors([this] { m_graph->stop(); });
    wakeDisplay();
}

void PlayerStrip::seek(double seconds) {
    if (!m_graph) return;
    // The rewind that follows every run of a freshly loaded file leaves it
    // where it stands; like a host command repeating a line's state, such a
    // seek is written only when every call is (--log-queries). An idle day's
    // talking clock makes over a thousand of them.
    double position = -1;
    ignoreErrors([&] { position = m_graph->position(); });
    constexpr double kSameSpot = 0.0005;  // half a millisecond
    if (std::abs(position - seconds) >= kSameSpot || m_window.program().log().recordsQueries()) logMedia("seek");
    ignoreErrors([&] { m_graph->setPosition(seconds); });
    wakeDisplay();
}

void PlayerStrip::applyVolume() {
    if (m_graph) ignoreErrors([this] { m_graph->setVolume(m_volume->value()); });
}

void PlayerStrip::applyRate() {
    if (m_graph) ignoreErrors([this] { m_graph->setRate(m_speed->value() / 100.0); });
}

void PlayerStrip::applySliders() {
    applyVolume();
    applyRate();
}

void PlayerStrip::wakeDisplay() {
    if (m_displayTimer && m_graph) m_displayTimer->setEnabled(true);
}

void PlayerStrip::displayTick() {
    refreshDisplays();
    // Once the graph stands still (stopped, ended, released) the displays
    // hold their last texts, exactly as a display that kept polling would.
    bool moving = false;
    if (m_graph) ignoreErrors([&] { moving = m_graph->running(); });
    if (!moving || m_elapsedDisplay->text() == m_lengthDisplay->text()) m_displayTimer->setEnabled(false);
}

void PlayerStrip::refreshDisplays() {
    if (!m_graph || !m_elapsedDisplay) return;
    // Each display is skipped when its read fails and keeps its last text.
    double position = 0, length = 0;
    const bool havePosition = ignoreErrors([&] { position = m_graph->position(); });
    const bool haveLength = ignoreErrors([&] { length = m_graph->duration(); });
    if (havePosition) {
        m_movingPosition = true;
        m_position->setValue(static_cast<int>(std::llround(position)));
        m_movingPosition = false;
        showText(*m_elapsedDisplay, secondsText(position));
    }
    if (haveLength) showText(*m_lengthDisplay, secondsText(length));
    if (m_options.progress == PlayerStripOptions::Progress::Clock) {
        if (havePosition && haveLength) showText(*m_timeLeft, formatDuration(length - position));
        if (havePosition) showText(*m_timeUsed, formatDuration(position));
    }
}

bool PlayerStrip::fileEnded() {
    if (!m_elapsedDisplay) return false;
    refreshDisplays();
    return m_elapsedDisplay->text() == m_lengthDisplay->text();
}

void PlayerStrip::endTransmission() {
    if (keyed()) keyOff();
}

void PlayerStrip::checkRelease() {
    // Only a transmission this strip keyed is ended: a file that ended long
    // ago must not unkey, every second, whatever another window puts on the air.
    if (keyed() && fileEnded()) endTransmission();
}

}  // namespace mv
