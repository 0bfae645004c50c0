// The file of an audio library that makes no sound.
#pragma once

#include <memory>
#include <set>
#include <string>

#include "platform/audio_library_file.h"
#include "tests/fake_audio_library.h"

namespace melvane::test {

class FakeLibraryFile : public AudioLibraryFile {
public:
    std::set<std::string> files = {"/program/lib"};  // that there are
    std::uint32_t version = 0x00020002;
    std::string loaded;
    // Null once it was handed out; further ones are as they come.
    std::unique_ptr<FakeAudioLibrary> first = std::make_unique<FakeAudioLibrary>();

    std::string fileName() const override { return "lib"; }
    bool exists(const std::string& path) const override { return files.contains(path); }
    bool load(const std::string& path) override {
        loaded = path;
        return true;
    }
    std::uint32_t BASS_GetVersion() const override { return version; }
    std::unique_ptr<AudioLibrary> create(const AudioLibraryOptions&) override {
        return first ? std::move(first) : std::make_unique<FakeAudioLibrary>();
    }
};

}  // namespace melvane::test
