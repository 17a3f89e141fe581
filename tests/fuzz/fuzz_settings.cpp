// Any bytes as a settings file: reading never fails, and a save changes only
// the keys it was given. Keys of other sections and the untouched keys of the
// SETTINGS section read the same afterwards, and the saved keys read back
// as written.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "core/settings_store.h"
#include "support/temp_dir.h"

namespace {

// Every save flushes the file and its folder to disk; on a memory file system
// that costs nothing, so the fuzzer tries inputs instead of waiting for disks.
std::filesystem::path folder() {
    static const std::filesystem::path dir = [] {
        if (std::filesystem::is_directory("/dev/shm")) setenv("TMPDIR", "/dev/shm", 1);
        static mv::test::TempDir made;
        return made.path();
    }();
    return dir;
}

void require(bool ok, const char* what) {
    if (!ok) {
        std::fprintf(stderr, "settings fuzz: %s\n", what);
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    mv::SettingsStore store(folder());
    const std::string name = "Quillasp2.ini";
    {
        std::ofstream out(store.pathOf(name), std::ios::binary | std::ios::trunc);
        out.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    }
    // Keys the fuzzer learns from the comparisons below.
    const char* probes[] = {"HORA", "Pitido", "B"};
    const mv::SettingsSnapshot before = store.load(name);
    const mv::SettingsSnapshot otherBefore = store.load(name, "OTHER");
    std::string kept[3], keptOther[3];
    for (int i = 0; i < 3; ++i) {
        kept[i] = before.value(probes[i], "<none>");
        keptOther[i] = otherBefore.value(probes[i], "<none>");
    }

    mv::SettingsEdit edit(name);
    edit.set("A", "Señal 7");
    edit.set("NUEVA", "\"entre comillas\" ; no es comentario");
    const mv::SettingsCommit commit = store.commit(edit);
    const mv::SettingsSnapshot after = store.load(name);
    const mv::SettingsSnapshot otherAfter = store.load(name, "OTHER");
    if (commit.written) {
        require(after.value("A", "") == "Señal 7", "a saved key reads back changed");
        require(after.value("NUEVA", "") == "\"entre comillas\" ; no es comentario" ||
                    after.value("NUEVA", "") == "entre comillas\" ; no es comentario",
                "a saved value with quotes reads back changed");
        // An empty file has no encoding of its own yet: it gets a new file's.
        require(after.encoding() == before.encoding() || size == 0, "a save changed the file's encoding");
    } else {
        require(!commit.error.empty(), "a save that wrote nothing says why");
    }
    for (int i = 0; i < 3; ++i) {
        require(after.value(probes[i], "<none>") == kept[i], "a key the save did not own changed");
        require(otherAfter.value(probes[i], "<none>") == keptOther[i], "another section's key changed");
    }
    return 0;
}
