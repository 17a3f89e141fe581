#include "platform/audio/fluidsynth_library.h"

#include <dlfcn.h>

#include <mutex>

#include "core/errors.h"

namespace mv {
namespace {

template <class F>
void find(void* handle, const std::string& fileName, F& function, const char* name) {
    function = reinterpret_cast<F>(::dlsym(handle, name));
    if (!function) throw MediaError("the MIDI synthesiser " + fileName + " has no " + name);
}

}  // namespace

std::unique_ptr<FluidSynthLibrary> FluidSynthLibrary::open(const std::string& fileName) {
    void* handle = ::dlopen(fileName.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!handle) {
        const char* why = ::dlerror();
        throw MediaError("the MIDI synthesiser cannot be loaded: " + std::string(why ? why : fileName));
    }
    auto lib = std::make_unique<FluidSynthLibrary>();
    try {
        find(handle, fileName, lib->setLogFunction, "fluid_set_log_function");
        find(handle, fileName, lib->isMidiFile, "fluid_is_midifile");
        find(handle, fileName, lib->newSettings, "new_fluid_settings");
        find(handle, fileName, lib->deleteSettings, "delete_fluid_settings");
        find(handle, fileName, lib->settingsSetNum, "fluid_settings_setnum");
        find(handle, fileName, lib->settingsSetInt, "fluid_settings_setint");
        find(handle, fileName, lib->settingsSetStr, "fluid_settings_setstr");
        find(handle, fileName, lib->newSynth, "new_fluid_synth");
        find(handle, fileName, lib->deleteSynth, "delete_fluid_synth");
        find(handle, fileName, lib->synthSfLoad, "fluid_synth_sfload");
        find(handle, fileName, lib->synthWriteFloat, "fluid_synth_write_float");
        find(handle, fileName, lib->newPlayer, "new_fluid_player");
        find(handle, fileName, lib->deletePlayer, "delete_fluid_player");
        find(handle, fileName, lib->playerAdd, "fluid_player_add");
        find(handle, fileName, lib->playerPlay, "fluid_player_play");
        find(handle, fileName, lib->playerStatus, "fluid_player_get_status");
        find(handle, fileName, lib->playerTotalTicks, "fluid_player_get_total_ticks");
        find(handle, fileName, lib->playerCurrentTick, "fluid_player_get_current_tick");
    } catch (...) {
        ::dlclose(handle);
        throw;
    }
    // The library's own messages would go to the operator's terminal; what
    // goes wrong reaches the log as the MediaError of the file concerned.
    for (int level = FLUID_PANIC; level <= FLUID_DBG; ++level) lib->setLogFunction(level, nullptr, nullptr);
    return lib;
}

const FluidSynthLibrary& FluidSynthLibrary::get() {
    static std::mutex mutex;
    static std::unique_ptr<FluidSynthLibrary> opened;
    std::lock_guard lock(mutex);
    if (!opened) opened = open(MV_FLUIDSYNTH_SONAME);
    return *opened;
}

}  // namespace mv
