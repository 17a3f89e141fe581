#pragma once
// Plays one Pcm onto the air: run and stop, a position in the sound's own
// seconds, a playing rate (by resampling, so pitch follows the rate), volume
// and balance in hundredths of a decibel. A media graph is one of these; the
// speech voice can be another. Every method expects the mixer's lock held.
#include <cstdint>

#include "platform/audio/air_mixer.h"
#include "platform/audio/pcm.h"

namespace mv {

class PcmVoice final : public AirSource {
public:
    // Loads a sound, stopped, at its start. Rate, volume and balance stay.
    void load(PcmPtr pcm);
    void unload();
    bool loaded() const { return static_cast<bool>(m_pcm); }
    const Pcm* pcm() const { return m_pcm.get(); }

    void setRunning(bool running) { m_running = running; }
    bool running() const { return m_running; }
    bool ended() const { return m_pcm && m_cursor >= static_cast<double>(m_pcm->frames()); }

    double durationSeconds() const { return m_pcm ? m_pcm->seconds() : 0.0; }
    // Exactly durationSeconds() once the sound has played out or been sought past its end.
    double positionSeconds() const;
    void setPositionSeconds(double seconds);

    void setRate(double rate);
    void setVolume(int hundredthsDb);
    void setBalance(int hundredthsDb);
    float gainLeft() const { return m_gainLeft; }
    float gainRight() const { return m_gainRight; }

    bool audible() const override { return m_running && m_pcm && !ended(); }
    void render(float* out, int64_t frames) override;

private:
    void updateStep();
    void updateGains();

    PcmPtr m_pcm;
    double m_cursor = 0;  // in the sound's frames
    double m_step = 1;    // sound frames per air frame
    double m_rate = 1;
    int m_volume = 0;
    int m_balance = 0;
    float m_gainLeft = 1;
    float m_gainRight = 1;
    bool m_running = false;
};

// Hundredths of a decibel to a linear gain: 10^(v/2000).
double gainFromHundredthsDb(int hundredthsDb);

}  // namespace mv
