#pragma once
// The air: everything that would go out over the radio, mixed into one stereo
// stream at 48 kHz. Sources (each window's media graph, later the speech
// voice) and the host's Morse and DTMF tone bursts are summed here; a tap (the
// recorder) sees every frame with the transmitter state that went with it.
//
// Two ways time moves. Clock-driven (virtual time, or real time with no sound
// card): the air is rendered lazily up to the clock's "now" whenever something
// is about to change and whenever a position is read, so every millisecond is
// rendered exactly once without any 1 ms timer. Pull-driven (a real device):
// the device's callback pulls frames and positions follow what it consumed.
#include <cstdint>
#include <mutex>
#include <vector>

#include "core/clock.h"

namespace mv {

inline constexpr int kAirRate = 48000;
inline constexpr int kAirFramesPerMs = kAirRate / 1000;

// Something that puts sound on the air. Called with the mixer's lock held.
class AirSource {
public:
    virtual ~AirSource() = default;
    // False when rendering would add nothing and move nothing (stopped,
    // nothing loaded, played out); the mixer then skips it.
    virtual bool audible() const = 0;
    // Adds `frames` interleaved stereo frames into `out`, or, when `out` is
    // null (nobody listens), only moves on by that many frames.
    virtual void render(float* out, int64_t frames) = 0;
};

// Something that listens to the air as it goes out (the recorder).
class AirTap {
public:
    virtual ~AirTap() = default;
    // `keyed`: whether the transmitter was keyed for all of these frames.
    virtual void air(const float* stereo, int64_t frames, bool keyed) = 0;
    // `frames` frames of silence (nothing playing, no tone): by default
    // handed to air() as zeros; a tap that only measures can take it in one step.
    virtual void silence(int64_t frames, bool keyed);
};

class AirMixer {
public:
    explicit AirMixer(Clock& clock);
    AirMixer(const AirMixer&) = delete;
    AirMixer& operator=(const AirMixer&) = delete;

    // Held by anyone changing a source, so a pulling device never sees half a change.
    std::mutex& mutex() { return m_mutex; }

    // Brings the air up to the clock's now (clock-driven only). Call with the
    // lock held before changing anything a source plays.
    void catchUpLocked();
    void catchUp() {
        std::lock_guard lock(m_mutex);
        catchUpLocked();
    }

    void addSource(AirSource& source);
    // Renders up to now first, so a released source is heard until this moment and never after.
    void removeSource(AirSource& source);

    // A tone burst of the host (Morse: one frequency; DTMF: a pair). Times are
    // the clock's monotonic ms; a burst already under way starts at once.
    void addTone(int64_t startMs, int64_t durationMs, double frequency1, double frequency2);
    // The transmitter as the host now has it: keyed by PTT, and by the host
    // itself until `toneKeyedUntilMs` while it sends tones.
    void setTransmitter(bool pttKeyed, int64_t toneKeyedUntilMs);

    void setTap(AirTap* tap);

    // A real device takes over: from now on frames leave only through pull().
    void setPullDriven(bool pull);
    bool pullDriven() const { return m_pull; }
    // The device's callback: renders the next `frames` frames into `out`.
    void pull(float* out, int64_t frames);

    // Frames rendered since the mixer was made, and the clock time they reach.
    int64_t renderedFrames() const { return m_frame; }
    bool transmitterKeyedNow() const;

private:
    struct Tone {
        int64_t startFrame;
        int64_t endFrame;
        double frequency1;
        double frequency2;
    };
    void renderLocked(int64_t frames, float* out);
    void renderBlock(int64_t frames, float* out);
    void mixTones(float* out, int64_t frames);
    // True when nothing plays and no tone sounds in the next `frames` frames.
    bool quietFor(int64_t frames) const;
    int64_t frameAtMs(int64_t ms) const;

    Clock& m_clock;
    std::mutex m_mutex;
    bool m_pull = false;
    int64_t m_frame = 0;    // frames rendered so far
    int64_t m_originMs;     // clock time of frame 0
    std::vector<AirSource*> m_sources;
    std::vector<Tone> m_tones;
    bool m_ptt = false;
    int64_t m_toneKeyedUntilFrame = 0;
    AirTap* m_tap = nullptr;
    std::vector<float> m_scratch;
};

}  // namespace mv
