#include "engine/openings.h"

#include <algorithm>
#include <atomic>
#include <system_error>
#include <thread>
#include <utility>

#include "engine/decode/open_source.h"

namespace melvane::engine {

// What an opening and its thread share.
struct Openings::Work {
    void run(const std::string& file, double driftPpm);

    const std::shared_ptr<std::atomic<bool>> cancelled = std::make_shared<std::atomic<bool>>(false);
    std::atomic<bool> over{false};  // opened or given up
    std::mutex mutex;
    std::shared_ptr<PcmSource> source;
};

void Openings::Work::run(const std::string& file, double driftPpm) {
    std::shared_ptr<PcmSource> opened = decode::openSource(file, cancelled, driftPpm);
    {
        const std::lock_guard lock(mutex);
        if (!*cancelled) source = std::move(opened);
    }
    over = true;
    over.notify_all();
}

std::shared_ptr<PcmSource> Openings::open(const std::string& file, double driftPpm) {
    const auto work = std::make_shared<Work>();
    {
        const std::lock_guard lock(mutex_);
        running_.push_back(work);
    }
    try {
        std::thread([work, file, driftPpm] { work->run(file, driftPpm); }).detach();
    } catch (const std::system_error&) {
        work->run(file, driftPpm);
    }
    work->over.wait(false);
    {
        const std::lock_guard lock(mutex_);
        std::erase(running_, work);
    }
    const std::lock_guard lock(work->mutex);
    return std::move(work->source);
}

void Openings::giveUp() {
    const std::lock_guard lock(mutex_);
    for (const auto& work : running_) {
        {
            const std::lock_guard workLock(work->mutex);
            *work->cancelled = true;
            work->source.reset();
        }
        work->over = true;
        work->over.notify_all();
    }
}

}  // namespace melvane::engine
