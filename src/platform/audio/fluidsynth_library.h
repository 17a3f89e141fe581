#pragma once
// The MIDI synthesiser library, opened when the first MIDI file is rendered
// rather than linked: it brings some twenty libraries of its own (SDL,
// PulseAudio, GLib, readline...), about 2 MB that a node playing no MIDI file
// would carry for nothing. Once open it stays open for the run.
#include <fluidsynth.h>

#include <memory>
#include <string>

namespace mv {

struct FluidSynthLibrary {
    // Opens the library by its file name and finds every function below.
    // Throws MediaError naming the library and what the system said.
    static std::unique_ptr<FluidSynthLibrary> open(const std::string& fileName);
    // The one the suite was built against, opened on first use (and tried
    // again on the next MIDI file while it cannot be). Throws MediaError.
    static const FluidSynthLibrary& get();

    decltype(&::fluid_set_log_function) setLogFunction = nullptr;
    decltype(&::fluid_is_midifile) isMidiFile = nullptr;
    decltype(&::new_fluid_settings) newSettings = nullptr;
    decltype(&::delete_fluid_settings) deleteSettings = nullptr;
    decltype(&::fluid_settings_setnum) settingsSetNum = nullptr;
    decltype(&::fluid_settings_setint) settingsSetInt = nullptr;
    decltype(&::fluid_settings_setstr) settingsSetStr = nullptr;
    decltype(&::new_fluid_synth) newSynth = nullptr;
    decltype(&::delete_fluid_synth) deleteSynth = nullptr;
    decltype(&::fluid_synth_sfload) synthSfLoad = nullptr;
    decltype(&::fluid_synth_write_float) synthWriteFloat = nullptr;
    decltype(&::new_fluid_player) newPlayer = nullptr;
    decltype(&::delete_fluid_player) deletePlayer = nullptr;
    decltype(&::fluid_player_add) playerAdd = nullptr;
    decltype(&::fluid_player_play) playerPlay = nullptr;
    decltype(&::fluid_player_get_status) playerStatus = nullptr;
    decltype(&::fluid_player_get_total_ticks) playerTotalTicks = nullptr;
    decltype(&::fluid_player_get_current_tick) playerCurrentTick = nullptr;
};

}  // namespace mv
