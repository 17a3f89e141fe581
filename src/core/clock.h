#pragma once
// The two clocks every timer and time text reads: a monotonic millisecond tick
// and the local wall clock that goes with it. VirtualClock only moves when the
// scheduler advances it, so scenarios and tests run in exact, repeatable time.
#include <cstdint>

#include "core/local_time.h"

namespace mv {

class Clock {
public:
    virtual ~Clock() = default;
    virtual int64_t monotonicMs() const = 0;
    // The local wall-clock reading that corresponds to a monotonic reading.
    virtual LocalDateTime localTimeAt(int64_t monotonicMs) const = 0;
    virtual bool isVirtual() const = 0;
    // Virtual clocks jump; real clocks ignore this (time passes by itself).
    virtual void advanceTo(int64_t monotonicMs) = 0;
};

class VirtualClock final : public Clock {
public:
    explicit VirtualClock(const LocalDateTime& start) : m_startNaiveMs(start.toNaiveMs()) {}
    int64_t monotonicMs() const override { return m_now; }
    LocalDateTime localTimeAt(int64_t mono) const override {
        return LocalDateTime::fromNaiveMs(m_startNaiveMs + mono);
    }
    bool isVirtual() const override { return true; }
    void advanceTo(int64_t mono) override {
        if (mono > m_now) m_now = mono;
    }
    void advanceBy(int64_t ms) { advanceTo(m_now + ms); }

private:
    int64_t m_startNaiveMs;
    int64_t m_now = 0;
};

class RealClock final : public Clock {
public:
    RealClock();
    int64_t monotonicMs() const override;
    LocalDateTime localTimeAt(int64_t mono) const override;
    bool isVirtual() const override { return false; }
    void advanceTo(int64_t) override {}

private:
    int64_t m_originNs;
};

}  // namespace mv
