// A thread that does one piece of work at a time beside its owner's; where the system gives none, the owner does it.
#pragma once

#include <atomic>
#include <functional>
#include <semaphore>
#include <system_error>
#include <thread>

namespace melvane::engine {

class Worker {
public:
    // `work` is run once for each start().
    explicit Worker(std::function<void()> work) : work_(std::move(work)) {
        try {
            thread_ = std::thread([this] { run(); });
        } catch (const std::system_error&) {
        }
    }
    ~Worker() {
        if (!thread_.joinable()) return;
        quit_ = true;
        wanted_.release();
        thread_.join();
    }
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    void start() { wanted_.release(); }
    // Returns when the work of the last start() is done.
    void wait() {
        if (thread_.joinable())
            done_.acquire();
        else
            work_();
    }

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
