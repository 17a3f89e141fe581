#pragma once
// Where the air goes. A PortAudio device pulls the mix in real time; with no
// sound card, or in virtual time, the clock drives the mixer instead (a null
// device, or the virtual device a headless scenario renders through), so
// positions and recordings come out the same with or without hardware.
#include <functional>
#include <memory>
#include <string>

#include "platform/audio/air_mixer.h"

namespace mv {

class AudioDevice {
public:
    virtual ~AudioDevice() = default;
    virtual std::string description() const = 0;
    // True when the mixer follows the clock rather than a device's reads.
    virtual bool clockDriven() const = 0;
    // Time from a source starting to its first sample leaving the device.
    virtual double outputLatencyMs() const = 0;
};

// Virtual time, or real time with no device: the air follows the clock.
class ClockDrivenDevice final : public AudioDevice {
public:
    enum class Kind { Virtual, Null };
    explicit ClockDrivenDevice(Kind kind) : m_kind(kind) {}
    std::string description() const override;
    bool clockDriven() const override { return true; }
    // The air is rendered up to the very millisecond a source starts.
    double outputLatencyMs() const override { return 0.0; }

private:
    Kind m_kind;
};

// Opens the default output with PortAudio and lets it pull from the mixer.
// Null, with `why` filled in, when the machine has no usable output.
std::unique_ptr<AudioDevice> openPortAudioDevice(AirMixer& mixer, std::string& why);

// The device for this run: the virtual device in virtual time; otherwise
// PortAudio, or a null device (told through `note`) when none opens.
std::unique_ptr<AudioDevice> openAudioDevice(AirMixer& mixer, bool virtualTime,
                                             const std::function<void(const std::string&)>& note);

}  // namespace mv
