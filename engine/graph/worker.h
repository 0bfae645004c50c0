// A thread that does one piece of work at a time beside its owner's.
#pragma once

#include <atomic>
#include <functional>
#include <semaphore>
#include <thread>

namespace melvane::engine {

class Worker {
public:
    // `work` is run once for each start().
    explicit Worker(std::function<void()> work) : work_(std::move(work)), thread_([this] { run(); }) {}
    ~Worker() {
        quit_ = true;
        wanted_.release();
        thread_.join();
    }
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    void start() { wanted_.release(); }
    // Returns when the work of the last start() is done.
    void wait() { done_.acquire(); }

private:
    void run() {
        for (wanted_.acquire(); !quit_; wanted_.acquire()) {
            work_();
            done_.release();
        }
    }

    const std::function<void()> work_;
    std::binary_semaphore wanted_{0};
    std::binary_semaphore done_{0};
    std::atomic<bool> quit_{false};
    std::thread thread_;
};

}  // namespace melvane::engine
