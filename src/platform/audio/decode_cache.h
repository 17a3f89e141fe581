#pragma once
// Decoded sound kept by path, modification time and size: an unchanged file
// is decoded once however often it plays, and a file replaced on disk is
// decoded afresh at its next play. Old entries go when the cache grows past
// its budget, least recently used first.
#include <cstdint>
#include <filesystem>
#include <functional>
#include <list>
#include <string>
#include <unordered_map>

#include "platform/audio/pcm.h"

namespace mv {

class DecodeCache {
public:
    using Decoder = std::function<PcmPtr(const std::string& path)>;
    explicit DecodeCache(Decoder decoder, size_t budgetBytes = size_t{512} << 20);
    DecodeCache();

    // Throws MediaError when the path is not a readable file or does not decode.
    PcmPtr load(const std::string& path);

    uint64_t decodes() const { return m_decodes; }
    size_t entries() const { return m_entries.size(); }
    size_t bytes() const { return m_bytes; }

private:
    struct Entry {
        std::string path;
        std::filesystem::file_time_type modified;
        uintmax_t size;
        PcmPtr pcm;
    };
    void evict();

    Decoder m_decoder;
    size_t m_budget;
    size_t m_bytes = 0;
    uint64_t m_decodes = 0;
    std::list<Entry> m_entries;  // most recently used first
    std::unordered_map<std::string, std::list<Entry>::iterator> m_byPath;
};

}  // namespace mv
