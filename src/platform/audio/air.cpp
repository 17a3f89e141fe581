#include "platform/audio/air.h"

namespace mv {

Air::Air(Clock& clock, const std::function<void(const std::string&)>& note)
    : m_mixer(clock), m_factory(m_mixer, m_cache), m_device(openAudioDevice(m_mixer, clock.isVirtual(), note)) {}

Air::~Air() {
    stopRecording();
    m_device.reset();
}

void Air::startRecording(const std::string& wavPath) {
    stopRecording();
    auto recorder = std::make_unique<AirRecorder>(wavPath);
    m_mixer.setTap(recorder.get());
    m_recorder = std::move(recorder);
}

void Air::stopRecording() {
    if (!m_recorder) return;
    m_mixer.setTap(nullptr);  // renders up to now into the recorder first
    m_recorder->close();
    m_recorder.reset();
}

}  // namespace mv
