// The files of a library that are being opened.
#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "engine/decode/decoded_files.h"
#include "platform/pcm_source.h"

namespace melvane::engine {

// Any thread.
class Openings {
public:
    explicit Openings(std::shared_ptr<decode::DecodedFiles> decoded) : decoded_(std::move(decoded)) {}
    ~Openings() { end(); }
    Openings(const Openings&) = delete;
    Openings& operator=(const Openings&) = delete;

    // Opens the file, `driftPpm` longer than it should be, on a thread of its own, so that a reader that never finishes
    // can be left behind; on the caller's where the system gives none. nullptr when there is no sound in it, or when it
    // was given up.
    std::shared_ptr<PcmSource> open(const std::string& file, double driftPpm);
    // Whoever waits in open() goes on at once.
    void giveUp();
    // Gives up what is left; what a file keeps busy for longer than a second goes on by itself.
    void end();

private:
    struct Work;
    // The threads, also those that nobody waits for any more.
    struct Threads {
        std::mutex mutex;
        std::condition_variable ended;
        int count = 0;
    };

    void start(const std::shared_ptr<Work>& work);

    const std::shared_ptr<decode::DecodedFiles> decoded_;
    const std::shared_ptr<Threads> threads_ = std::make_shared<Threads>();
    std::mutex mutex_;
    std::vector<std::shared_ptr<Work>> running_;
};

}  // namespace melvane::engine
