#include "engine/openings.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <system_error>
#include <thread>
#include <utility>

#include "engine/decode/open_source.h"

namespace melvane::engine {

namespace {

using namespace std::chrono_literals;
constexpr auto kEndPatience = 1s;

}  // namespace

// What an opening and its thread share.
struct Openings::Work {
    Work(std::string name, double drift, std::shared_ptr<decode::DecodedFiles> decodedFiles)
        : file(std::move(name)), driftPpm(drift), decoded(std::move(decodedFiles)) {}

    void run();

    const std::string file;
    const double driftPpm;
    const std::shared_ptr<decode::DecodedFiles> decoded;
    const std::shared_ptr<std::atomic<bool>> cancelled = std::make_shared<std::atomic<bool>>(false);
    std::atomic<bool> over{false};  // opened or given up
    std::mutex mutex;
    std::shared_ptr<PcmSource> source;
};

void Openings::Work::run() {
    std::shared_ptr<PcmSource> opened = decode::openSource(file, cancelled, driftPpm, decoded.get());
    {
        const std::lock_guard lock(mutex);
        if (!*cancelled) source = std::move(opened);
    }
    over = true;
    over.notify_all();
}

void Openings::start(const std::shared_ptr<Work>& work) {
    const auto count = [](Threads& threads, int more) {
        const std::lock_guard lock(threads.mutex);
        threads.count += more;
        threads.ended.notify_all();
    };
    count(*threads_, 1);
    try {
        std::thread([work, count, threads = threads_] {
            work->run();
            count(*threads, -1);
        }).detach();
    } catch (const std::system_error&) {
        work->run();
        count(*threads_, -1);
    }
}

std::shared_ptr<PcmSource> Openings::open(const std::string& file, double driftPpm) {
    const auto work = std::make_shared<Work>(file, driftPpm, decoded_);
    {
        const std::lock_guard lock(mutex_);
        running_.push_back(work);
    }
    start(work);
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

void Openings::end() {
    giveUp();
    std::unique_lock lock(threads_->mutex);
    threads_->ended.wait_for(lock, kEndPatience, [this] { return threads_->count == 0; });
}

}  // namespace melvane::engine
