#include "core/speech.h"

#include <algorithm>
#include <cmath>

namespace mv {

double speechSpeedFactor(int rate) {
    const int r = std::clamp(rate, -10, 10);
    return std::pow(3.0, r / 10.0);
}

double speechGain(int volume) { return std::clamp(volume, 0, kSpeechVolumeMax) / static_cast<double>(kSpeechVolumeMax); }

}  // namespace mv
