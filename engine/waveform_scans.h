// The scans of a library, each on a thread of its own.
#pragma once

#include <future>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "engine/decode/decoded_files.h"
#include "platform/audio_library.h"

namespace melvane::engine {

// Used on the user-interface thread.
class WaveformScans {
public:
    explicit WaveformScans(std::shared_ptr<decode::DecodedFiles> decoded) : decoded_(std::move(decoded)) {}
    ~WaveformScans() { end(); }
    WaveformScans(const WaveformScans&) = delete;
    WaveformScans& operator=(const WaveformScans&) = delete;

    std::unique_ptr<WaveformScan> begin(const std::string& file, int columns);
    // Ends them all; what a file keeps busy for longer than a second goes on by itself.
    void end();

private:
    struct Work;
    class Scan;
    struct Running {
        std::shared_ptr<Work> work;
        std::future<void> done;
        std::thread thread;
    };

    void forgetEnded();

    const std::shared_ptr<decode::DecodedFiles> decoded_;
    std::vector<Running> running_;
};

}  // namespace melvane::engine
