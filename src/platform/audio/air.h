#pragma once
// One running suite's air, assembled: the decode cache, the mixer, the media
// factory windows get their graphs from, the output device and, on request,
// the recorder. The suite builds one; tests build one on a virtual clock.
#include <functional>
#include <memory>
#include <string>

#include "platform/audio/air_graph.h"
#include "platform/audio/air_mixer.h"
#include "platform/audio/air_recorder.h"
#include "platform/audio/audio_device.h"
#include "platform/audio/decode_cache.h"

namespace mv {

class Air {
public:
    // `note` hears about the device (for the log): e.g. that none was found.
    Air(Clock& clock, const std::function<void(const std::string&)>& note = {});
    ~Air();
    Air(const Air&) = delete;
    Air& operator=(const Air&) = delete;

    AirMixer& mixer() { return m_mixer; }
    DecodeCache& cache() { return m_cache; }
    MediaFactory& media() { return m_factory; }
    AudioDevice& device() { return *m_device; }

    // Starts writing the air to a WAV file (and its ".tx" transmitter record)
    // from this moment on. Throws MediaError when it cannot.
    void startRecording(const std::string& wavPath);
    // Renders the air up to now and closes the files.
    void stopRecording();
    AirRecorder* recorder() { return m_recorder.get(); }

private:
    AirMixer m_mixer;
    DecodeCache m_cache;
    AirMediaFactory m_factory;
    std::unique_ptr<AudioDevice> m_device;
    std::unique_ptr<AirRecorder> m_recorder;
};

}  // namespace mv
