#pragma once
// Turns an audio file into Pcm: libsndfile for everything it reads (wav, mp2,
// mp3, flac, ogg...), FluidSynth with a General MIDI soundfont for ".mid".
// Anything that is not sound we can play in full ends in a MediaError that
// names the file and the reason; nothing here crashes on a bad file.
#include <string>

#include "platform/audio/pcm.h"

namespace mv {

// Decodes by content for sampled formats and by the ".mid"/".midi" name for
// MIDI (a MIDI file under another name is refused by libsndfile, and a
// non-MIDI file named ".mid" by FluidSynth). Throws MediaError.
PcmPtr decodeAudioFile(const std::string& path);

// The General MIDI soundfont MIDI files are rendered with; empty when none is
// installed. MARROWVANE_SOUNDFONT overrides the Debian locations.
std::string defaultSoundFont();

// Longest sound we agree to hold in memory, in samples; a corrupt header that
// claims more is refused instead of exhausting memory.
inline constexpr int64_t kMaxDecodedSamples = int64_t{48000} * 2 * 60 * 60;

}  // namespace mv
