// What the library's file exports.
#include <exception>

#include "engine/library.h"

namespace {
constexpr std::uint32_t kVersion = 2U << 16 | 2U;  // 2.2
}

extern "C" {

__attribute__((visibility("default"))) std::uint32_t BASS_GetVersion() {
    return kVersion;
}

// nullptr when the machine lacks the means to run it. The caller deletes the library.
__attribute__((visibility("default"))) melvane::AudioLibrary* createAudioLibrary(
    const melvane::AudioLibraryOptions& options) {
    try {
        return new melvane::engine::Library(options);
    } catch (const std::exception&) {
        return nullptr;
    }
}
}
