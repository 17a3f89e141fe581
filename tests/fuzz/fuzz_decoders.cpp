// Any bytes as an audio file under each name the players accept: decoding
// gives sound within the size limit or a MediaError, never a crash.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "core/errors.h"
#include "platform/audio/decoders.h"
#include "support/temp_dir.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static mv::test::TempDir dir;
    if (size == 0) return 0;
    // The first byte picks the name, so one corpus reaches every decoder.
    static const char* kinds[] = {".wav", ".mp3", ".mp2", ".mid"};
    const std::string path = (dir.path() / (std::string("sound") + kinds[data[0] % 4])).string();
    {
        std::ofstream out(path, std::ios::binary | std::ios::trunc);
        out.write(reinterpret_cast<const char*>(data + 1), static_cast<std::streamsize>(size - 1));
    }
    try {
        const mv::PcmPtr pcm = mv::decodeAudioFile(path);
        if (!pcm || pcm->channels < 1 || pcm->channels > 2 || pcm->sampleRate <= 0 ||
            static_cast<int64_t>(pcm->samples.size()) > mv::kMaxDecodedSamples) {
            std::fprintf(stderr, "decoder fuzz: sound without a usable shape and no error\n");
            std::abort();
        }
    } catch (const mv::MediaError&) {
    }
    return 0;
}
