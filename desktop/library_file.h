// The audio library as a shared library file of the desktop's systems.
#pragma once

#include <memory>
#include <string>

#include "platform/audio_library_file.h"

namespace melvane {

class LibraryFile : public AudioLibraryFile {
public:
    std::string fileName() const override;
    bool exists(const std::string& path) const override;
    // Paths are UTF-8. A file once loaded stays in the process until it ends.
    bool load(const std::string& path) override;
    // Both only answer for the last load.
    std::uint32_t BASS_GetVersion() const override;
    std::unique_ptr<AudioLibrary> create(const AudioLibraryOptions& options) override;

private:
    BASS_GetVersionFunction getVersion_ = nullptr;
    CreateAudioLibraryFunction create_ = nullptr;
};

}  // namespace melvane
