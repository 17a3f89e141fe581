// The Windows build has no sound output and no air recorder yet: the air is
// rendered against the clock as on a Linux machine without a sound card, and
// asking for a recording says plainly that this build cannot make one.
#include "core/errors.h"
#include "platform/audio/air_recorder.h"
#include "platform/audio/audio_device.h"

namespace mv {

std::unique_ptr<AudioDevice> openPortAudioDevice(AirMixer&, std::string& why) {
    why = "this Windows build has no sound output yet";
    return nullptr;
}

AirRecorder::AirRecorder(const std::string& wavPath) : m_wavPath(wavPath) {
    throw MediaError("cannot record to \"" + wavPath + "\": this Windows build cannot record the air yet");
}

AirRecorder::~AirRecorder() = default;
void AirRecorder::air(const float*, int64_t, bool) {}
void AirRecorder::close() {}

}  // namespace mv
