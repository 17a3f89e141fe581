#include "platform/audio/air_graph.h"

#include <cmath>
#include <mutex>

#include "core/errors.h"

namespace mv {

AirGraph::AirGraph(AirMixer& mixer, DecodeCache& cache) : m_mixer(mixer), m_cache(cache) {
    m_mixer.addSource(m_voice);
}

AirGraph::~AirGraph() { m_mixer.removeSource(m_voice); }

template <class F>
auto AirGraph::change(F&& f) const {
    std::lock_guard lock(m_mixer.mutex());
    m_mixer.catchUpLocked();
    return f();
}

void AirGraph::requireFile() const {
    if (!m_voice.loaded()) throw MediaError("the media graph has no file rendered");
}

void AirGraph::render(const std::string& path) {
    // Decoding happens outside the lock: a playing device must not wait for it.
    PcmPtr pcm;
    try {
        pcm = m_cache.load(path);
    } catch (const MediaError&) {
        change([this] { m_voice.unload(); });
        throw;
    }
    change([&] { m_voice.load(std::move(pcm)); });
}

void AirGraph::run() {
    change([this] {
        requireFile();
        m_voice.setRunning(true);
    });
}

void AirGraph::stop() {
    change([this] {
        requireFile();
        m_voice.setRunning(false);
    });
}

bool AirGraph::running() const {
    return change([this] { return m_voice.running(); });
}

double AirGraph::duration() const {
    return change([this] {
        requireFile();
        return m_voice.durationSeconds();
    });
}

double AirGraph::position() const {
    return change([this] {
        requireFile();
        return m_voice.positionSeconds();
    });
}

void AirGraph::setPosition(double seconds) {
    if (!std::isfinite(seconds)) throw MediaError("position is not a number");
    change([&] {
        requireFile();
        m_voice.setPositionSeconds(seconds);
    });
}

void AirGraph::setRate(double rate) {
    if (!(rate >= 0.1 - 1e-9 && rate <= 2.0 + 1e-9)) throw MediaError("rate outside 0.1 to 2.0");
    change([&] {
        requireFile();
        m_voice.setRate(rate);
    });
}

void AirGraph::setVolume(int hundredthsDb) {
    if (hundredthsDb < -10000 || hundredthsDb > 0) throw MediaError("volume outside -10000 to 0");
    change([&] {
        requireFile();
        m_voice.setVolume(hundredthsDb);
    });
}

void AirGraph::setBalance(int hundredthsDb) {
    if (hundredthsDb < -10000 || hundredthsDb > 10000) throw MediaError("balance outside -10000 to 10000");
    change([&] {
        requireFile();
        m_voice.setBalance(hundredthsDb);
    });
}

std::unique_ptr<MediaGraph> AirMediaFactory::createGraph(const std::string&) {
    return std::make_unique<AirGraph>(m_mixer, m_cache);
}

}  // namespace mv
