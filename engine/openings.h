// The files of a library that are being opened.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/pcm_source.h"

namespace melvane::engine {

// Any thread.
class Openings {
public:
    // Opens the file, `driftPpm` longer than it should be, on a thread of its own, so that a reader that never finishes
    // can be left behind; on the caller's where the system gives none. nullptr when there is no sound in it, or when it
    // was given up.
    std::shared_ptr<PcmSource> open(const std::string& file, double driftPpm);
    // Whoever waits in open() goes on at once.
    void giveUp();

private:
    struct Work;

    std::mutex mutex_;
    std::vector<std::shared_ptr<Work>> running_;
};

}  // namespace melvane::engine
