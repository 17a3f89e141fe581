#include <portaudio.h>

#include <fcntl.h>
#include <unistd.h>

#include "platform/audio/audio_device.h"

namespace mv {
namespace {

// While PortAudio probes the sound system, ALSA prints dozens of lines about
// every card it does not find. The outcome reaches the log as one clear line,
// so the probe's own chatter is kept off the operator's terminal.
class QuietStderr {
public:
    QuietStderr() : m_saved(::dup(STDERR_FILENO)) {
        const int null = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
        if (null >= 0) {
            ::dup2(null, STDERR_FILENO);
            ::close(null);
        }
    }
    ~QuietStderr() {
        if (m_saved < 0) return;
        ::dup2(m_saved, STDERR_FILENO);
        ::close(m_saved);
    }
    QuietStderr(const QuietStderr&) = delete;
    QuietStderr& operator=(const QuietStderr&) = delete;

private:
    int m_saved;
};

// Small buffers: a started graph must be heard within a few tens of ms.
constexpr unsigned long kFramesPerBuffer = 256;

class PortAudioDevice final : public AudioDevice {
public:
    explicit PortAudioDevice(AirMixer& mixer) : m_mixer(mixer) {}
    ~PortAudioDevice() override {
        if (m_stream) {
            Pa_StopStream(m_stream);
            Pa_CloseStream(m_stream);
        }
        m_mixer.setPullDriven(false);
        if (m_initialised) Pa_Terminate();
    }

    bool open(std::string& why) {
        const QuietStderr quiet;
        PaError err = Pa_Initialize();
        if (err != paNoError) {
            why = Pa_GetErrorText(err);
            return false;
        }
        m_initialised = true;
        const PaDeviceIndex device = Pa_GetDefaultOutputDevice();
        if (device == paNoDevice) {
            why = "no default output device";
            return false;
        }
        const PaDeviceInfo* info = Pa_GetDeviceInfo(device);
        PaStreamParameters out{};
        out.device = device;
        out.channelCount = 2;
        out.sampleFormat = paFloat32;
        out.suggestedLatency = info ? info->defaultLowOutputLatency : 0.02;
        m_mixer.setPullDriven(true);
        err = Pa_OpenStream(&m_stream, nullptr, &out, kAirRate, kFramesPerBuffer, paNoFlag, &PortAudioDevice::callback, this);
        if (err == paNoError) err = Pa_StartStream(m_stream);
        if (err != paNoError) {
            m_mixer.setPullDriven(false);
            if (m_stream) Pa_CloseStream(m_stream);
            m_stream = nullptr;
            why = Pa_GetErrorText(err);
            return false;
        }
        m_name = info ? info->name : "default output";
        if (const PaStreamInfo* si = Pa_GetStreamInfo(m_stream)) m_latencyMs = si->outputLatency * 1000.0;
        return true;
    }

    std::string description() const override { return "PortAudio: " + m_name; }
    bool clockDriven() const override { return false; }
    double outputLatencyMs() const override { return m_latencyMs + 1000.0 * kFramesPerBuffer / kAirRate; }

private:
    static int callback(const void*, void* output, unsigned long frames, const PaStreamCallbackTimeInfo*,
                        PaStreamCallbackFlags, void* self) {
        static_cast<PortAudioDevice*>(self)->m_mixer.pull(static_cast<float*>(output), static_cast<int64_t>(frames));
        return paContinue;
    }

    AirMixer& m_mixer;
    PaStream* m_stream = nullptr;
    bool m_initialised = false;
    std::string m_name;
    double m_latencyMs = 0;
};

}  // namespace

std::unique_ptr<AudioDevice> openPortAudioDevice(AirMixer& mixer, std::string& why) {
    auto device = std::make_unique<PortAudioDevice>(mixer);
    if (!device->open(why)) return nullptr;
    return device;
}

}  // namespace mv
