#pragma once
// The media back end as a window sees it: one graph per load that renders one
// file by path and plays it onto the air. Units: seconds for time, hundredths
// of a decibel for volume (-3000..0) and balance (-5000..5000), rate 0.1..2.0.
#include <memory>
#include <string>

namespace mv {

class MediaGraph {
public:
    virtual ~MediaGraph() = default;
    // Throws MediaError when the file cannot be rendered.
    virtual void render(const std::string& path) = 0;
    virtual void run() = 0;
    virtual void stop() = 0;
    // Between run and stop (a graph at the end of its file may still say so).
    virtual bool running() const = 0;
    virtual double duration() const = 0;
    virtual double position() const = 0;
    virtual void setPosition(double seconds) = 0;
    virtual void setRate(double rate) = 0;
    virtual void setVolume(int hundredthsDb) = 0;
    virtual void setBalance(int hundredthsDb) = 0;
};

class MediaFactory {
public:
    virtual ~MediaFactory() = default;
    // A new, empty graph owned by the named window. Releasing it silences it.
    virtual std::unique_ptr<MediaGraph> createGraph(const std::string& windowName) = 0;
};

}  // namespace mv
