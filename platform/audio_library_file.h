// The file that holds the audio library: looked for, asked for its version and opened at start-up.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/audio_library.h"

namespace melvane {

class AudioLibraryFile {
public:
    virtual ~AudioLibraryFile() = default;

    // "bass.dll" or what a library of that name is called on this platform.
    virtual std::string fileName() const = 0;
    virtual bool exists(const std::string& path) const = 0;
    // Loads the file. False when it is not a library of this kind; then version() is 0 and create() null.
    virtual bool load(const std::string& path) = 0;
    virtual std::uint32_t BASS_GetVersion() const = 0;
    // The library must not outlive this object.
    virtual std::unique_ptr<AudioLibrary> create(const AudioLibraryOptions& options) = 0;
};

}  // namespace melvane
