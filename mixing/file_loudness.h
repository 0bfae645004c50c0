// Measures how loud a file is beside the windows.
#pragma once

#include <atomic>
#include <future>
#include <memory>
#include <optional>
#include <string>

#include "platform/audio_library.h"
#include "state/loudness.h"

namespace melvane {

// Used on one thread.
class FileLoudness {
public:
    // `library` outlives it.
    explicit FileLoudness(AudioLibrary& library) : library_(library) {}
    // Gives up; waits for a moment at most.
    ~FileLoudness();
    FileLoudness(const FileLoudness&) = delete;
    FileLoudness& operator=(const FileLoudness&) = delete;

    // What was being measured is given up.
    void start(const std::string& file);
    void giveUp();
    bool going() const { return result_.valid(); }
    // Once, when it is done: nothing when the file can't be read to its end.
    std::optional<Loudness> ended();

private:
    AudioLibrary& library_;
    std::shared_ptr<std::atomic<bool>> wanted_ = std::make_shared<std::atomic<bool>>(true);
    std::future<std::optional<Loudness>> result_;
};

}  // namespace melvane
