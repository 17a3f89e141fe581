#pragma once
// The media graph windows play through: renders a file by path (decoded once,
// through the cache), plays it onto the air mixer with the graph units windows
// use, and goes silent the moment it is released.
#include <memory>
#include <string>

#include "core/media.h"
#include "platform/audio/air_mixer.h"
#include "platform/audio/decode_cache.h"
#include "platform/audio/pcm_voice.h"

namespace mv {

class AirGraph final : public MediaGraph {
public:
    AirGraph(AirMixer& mixer, DecodeCache& cache);
    ~AirGraph() override;

    void render(const std::string& path) override;
    void run() override;
    void stop() override;
    double duration() const override;
    double position() const override;
    void setPosition(double seconds) override;
    void setRate(double rate) override;
    void setVolume(int hundredthsDb) override;
    void setBalance(int hundredthsDb) override;

    bool running() const override;

private:
    // Runs a change with the air brought up to now first, under the mixer's lock.
    template <class F>
    auto change(F&& f) const;
    void requireFile() const;

    AirMixer& m_mixer;
    DecodeCache& m_cache;
    PcmVoice m_voice;
};

class AirMediaFactory final : public MediaFactory {
public:
    AirMediaFactory(AirMixer& mixer, DecodeCache& cache) : m_mixer(mixer), m_cache(cache) {}
    std::unique_ptr<MediaGraph> createGraph(const std::string& windowName) override;

private:
    AirMixer& m_mixer;
    DecodeCache& m_cache;
};

}  // namespace mv
