#include "platform/audio/decode_cache.h"

#include "core/errors.h"
#include "platform/audio/decoders.h"

namespace mv {

DecodeCache::DecodeCache(Decoder decoder, size_t budgetBytes)
    : m_decoder(std::move(decoder)), m_budget(budgetBytes) {}

DecodeCache::DecodeCache() : DecodeCache(decodeAudioFile) {}

PcmPtr DecodeCache::load(const std::string& path) {
    namespace fs = std::filesystem;
    std::error_code ec;
    const fs::file_status status = fs::status(path, ec);
    if (ec || !fs::exists(status)) throw MediaError("cannot render \"" + path + "\": no such file");
    if (!fs::is_regular_file(status)) throw MediaError("cannot render \"" + path + "\": not a file");
    const auto modified = fs::last_write_time(path, ec);
    const uintmax_t size = ec ? 0 : fs::file_size(path, ec);
    if (ec) throw MediaError("cannot render \"" + path + "\": " + ec.message());

    if (auto it = m_byPath.find(path); it != m_byPath.end()) {
        Entry& e = *it->second;
        if (e.modified == modified && e.size == size) {
            m_entries.splice(m_entries.begin(), m_entries, it->second);
            return e.pcm;
        }
        m_bytes -= e.pcm->samples.size() * sizeof(float);
        m_entries.erase(it->second);
        m_byPath.erase(it);
    }

    PcmPtr pcm = m_decoder(path);
    ++m_decodes;
    m_entries.push_front({path, modified, size, pcm});
    m_byPath[path] = m_entries.begin();
    m_bytes += pcm->samples.size() * sizeof(float);
    evict();
    return pcm;
}

void DecodeCache::evict() {
    // The entry just added stays even when it alone is over budget.
    while (m_bytes > m_budget && m_entries.size() > 1) {
        const Entry& last = m_entries.back();
        m_bytes -= last.pcm->samples.size() * sizeof(float);
        m_byPath.erase(last.path);
        m_entries.pop_back();
    }
}

}  // namespace mv
