#include "player/selection_player.h"

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "core/event_log.h"
#include "core/module_surfaces.h"
#include "core/number_text.h"
#include "core/program.h"

namespace mv {

SelectionPlayer::SelectionPlayer(Window& window) : m_window(window), m_strip(window) {}

void SelectionPlayer::build(WindowParts parts, Container& stripArea, Controls controls) {
    m_rows = &controls.rows;
    m_maxRand = &controls.maxRand;
    m_staticMode = &controls.staticMode;
    m_ptt = &controls.ptt;
    // A window loaded again starts as it did the first time: nothing chosen.
    m_currentFile.clear();
    m_selectedSlot = 0;
    m_randomPick = 0;

    PlayerStripOptions o;
    o.progress = PlayerStripOptions::Progress::Clock;
    o.ptt = m_ptt;
    o.onRenderError = [this](const std::string&, const std::string&) {
        // The strip has logged what failed. The transmitter goes before any
        // dialog: a dialog can wait a long time for its answer.
        m_strip.endTransmission();
        if (m_loading == PlayTrigger::Operator)
            m_window.program().dialogs().message(
                {m_window.name(), "Error", kRenderError, DialogIcon::Exclamation, DialogButtons::OK});
    };
    m_strip.build(parts, stripArea, std::move(o));
    m_mirror = &parts.makeTimer("PttMirror", 1, false, [this] { mirrorPtt(); });
}

void SelectionPlayer::release() {
    if (m_mirror) {
        m_strip.endTransmission();
        if (auto* clock = surfaceOf<TalkingClock>(m_window.program(), "hub")) clock->setReleaseCheckEnabled(true);
    }
    m_strip.release();
    m_mirror = nullptr;
    m_rows = nullptr;
    m_maxRand = nullptr;
    m_staticMode = nullptr;
    m_ptt = nullptr;
}

bool SelectionPlayer::hubOnAir() const { return showsPttOn(m_window.program(), "hub"); }

void SelectionPlayer::complain(PlayTrigger trigger, const std::string& dialogText, DialogIcon icon,
                               const std::string& logText) {
    if (trigger == PlayTrigger::Unattended) {
        m_window.program().log().error(m_window.name(), logText);
        return;
    }
    m_window.program().dialogs().message({m_window.name(), "Error", dialogText, icon, DialogButtons::OK});
}

int SelectionPlayer::settleMaxRand() {
    // "0", an emptied field and text that spells no number all mean row 1 only.
    const std::optional<double> n = numberOf(m_maxRand->text());
    if (!n || *n < 1)
        m_maxRand->setText("1");
    else if (*n > FileRows::kCount)
        m_maxRand->setText(std::to_string(FileRows::kCount));
    const double range = numberOf(m_maxRand->text()).value_or(1);
    // A fraction ("2.5", from a hand-edited file) draws among the whole rows below it.
    return std::clamp(static_cast<int>(std::floor(range)), 1, FileRows::kCount);
}

void SelectionPlayer::playSelection(PlayTrigger trigger) {
    settleMaxRand();
    if (m_staticMode->value())
        playStaticSlot(trigger);
    else
        playRandomSlot(trigger);
}

void SelectionPlayer::playStaticSlot(PlayTrigger trigger) {
    for (int row = 1; row <= FileRows::kCount; ++row) {
        if (m_rows->mark(row).value()) {
            playRow(row, trigger);
            return;
        }
    }
}

void SelectionPlayer::playRandomSlot(PlayTrigger trigger) {
    m_randomPick = m_window.program().randomBetween(1, settleMaxRand());
    // The pick stays marked, so it is also the static choice from now on.
    m_rows->mark(m_randomPick).setValue(true);
    playRow(m_randomPick, trigger);
}

void SelectionPlayer::playRow(int row, PlayTrigger trigger) {
    m_selectedSlot = row;
    m_currentFile.clear();
    txFile(trigger);
}

bool SelectionPlayer::txFile(PlayTrigger trigger) {
    // While the hub's clock speaks this play is dropped, not kept for later.
    if (hubOnAir()) return false;
    m_currentFile.clear();
    // A file that cannot be played keys nothing: the transmitter is keyed only
    // for a graph that will run to its end and be released there.
    if (!loadFile(false, trigger)) return false;
    m_strip.playLoaded();
    startMirror();
    return true;
}

bool SelectionPlayer::loadFile(bool reload, PlayTrigger trigger) {
    if (hubOnAir()) {
        m_strip.cleanUp();
        m_strip.endTransmission();
        complain(trigger, kRenderError, DialogIcon::Exclamation, "the hub is on the air; nothing was loaded");
        return false;
    }
    // Before any row is played or browsed there is nothing to load.
    if (m_selectedSlot < 1) return false;
    const int row = m_selectedSlot;
    TextBox& field = m_rows->file(row);
    if (!reload && !m_currentFile.empty()) return m_strip.hasGraph();

    std::string path = field.text();
    if (path.empty() && trigger == PlayTrigger::Operator)
        path = m_window.program().dialogs().openFile({m_window.name(), "", kFileFilter, path}).value_or("");
    std::error_code ec;
    if (path.empty() || !std::filesystem::is_regular_file(path, ec)) {
        const std::string rowText = "row " + std::to_string(row) + " (" + FileRows::fileKey(row) + ")";
        complain(trigger, FileRows::selectFileMessage(row), DialogIcon::Information,
                 path.empty() ? rowText + " has no file; nothing was played"
                              : rowText + ": no such file \"" + path + "\"; nothing was played");
        return false;
    }
    field.setText(path);
    m_currentFile = path;
    m_loading = trigger;
    return m_strip.loadFile(path);
}

void SelectionPlayer::browse(int row) {
    m_selectedSlot = row;
    m_rows->file(row).setText("");
    reloadSelected();
}

void SelectionPlayer::reloadSelected() {
    // A graph that was on the air has now been replaced by one that is not
    // running and will never reach its end, so nothing else would release.
    if (loadFile(true, PlayTrigger::Operator)) m_strip.endTransmission();
}

void SelectionPlayer::localPlay() {
    if (!loadFile(false, PlayTrigger::Operator)) return;
    m_strip.seek(0);
    m_strip.run();
}

void SelectionPlayer::localStop() {
    m_strip.stop();
    // A file stopped half-way never reaches its end: stopping what is on the
    // air takes it off the air.
    m_strip.endTransmission();
}

void SelectionPlayer::localResume() { m_strip.run(); }

void SelectionPlayer::mirrorPtt() {
    const bool onAir = m_strip.keyed();
    if (auto* clock = surfaceOf<TalkingClock>(m_window.program(), "hub")) clock->setReleaseCheckEnabled(!onAir);
    // Off the air, the hub's check is back on and there is nothing left to mirror.
    if (!onAir) m_mirror->setEnabled(false);
}

void SelectionPlayer::startMirror() {
    mirrorPtt();
    m_mirror->setEnabled(true);
}

}  // namespace mv
