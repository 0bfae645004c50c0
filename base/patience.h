// Calls into a server of the machine that may never return, when the server has stopped answering.
#pragma once

#include <algorithm>
#include <chrono>
#include <future>
#include <memory>
#include <optional>
#include <stop_token>
#include <system_error>
#include <thread>

namespace melvane {

// Runs `work` on a thread of its own and returns its result, or nothing when it takes longer than `patience` or is
// given up. The thread then goes on by itself; what `work` uses must be owned by it. Nothing too when the system gives
// no thread.
template <typename Work>
auto withPatience(std::chrono::milliseconds patience, Work work, const std::stop_token& givenUp = {})
    -> std::optional<decltype(work())> {
    using Clock = std::chrono::steady_clock;
    constexpr std::chrono::milliseconds kLook{10};
    auto task = std::make_shared<std::packaged_task<decltype(work())()>>(std::move(work));
    auto result = task->get_future();
    try {
        std::thread([task] { (*task)(); }).detach();
    } catch (const std::system_error&) {
        return std::nullopt;
    }
    task.reset();
    const auto end = Clock::now() + patience;
    while (result.wait_until(std::min(end, Clock::now() + kLook)) != std::future_status::ready)
        if (givenUp.stop_requested() || Clock::now() >= end) return std::nullopt;
    return result.get();
}

// Destroys what `owned` points to, without waiting longer than `patience`.
template <typename T>
void closeWithPatience(std::chrono::milliseconds patience, std::unique_ptr<T> owned) {
    if (!owned) return;
    withPatience(patience, [shared = std::shared_ptr<T>(std::move(owned))]() mutable {
        shared.reset();
        return true;
    });
}

}  // namespace melvane
