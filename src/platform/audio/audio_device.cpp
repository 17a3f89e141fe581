#include "platform/audio/audio_device.h"

namespace mv {

std::string ClockDrivenDevice::description() const {
    return m_kind == Kind::Virtual ? "virtual air (rendered in virtual time)" : "null device (no sound output)";
}

std::unique_ptr<AudioDevice> openAudioDevice(AirMixer& mixer, bool virtualTime,
                                             const std::function<void(const std::string&)>& note) {
    if (virtualTime) return std::make_unique<ClockDrivenDevice>(ClockDrivenDevice::Kind::Virtual);
    std::string why;
    if (auto device = openPortAudioDevice(mixer, why)) return device;
    if (note) note("no audio output device (" + why + "); the air is rendered to a null device and can still be recorded");
    return std::make_unique<ClockDrivenDevice>(ClockDrivenDevice::Kind::Null);
}

}  // namespace mv
