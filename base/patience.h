// Calls into a server of the machine that may never return, when the server has stopped answering.
#pragma once

#include <chrono>
#include <future>
#include <memory>
#include <optional>
#include <system_error>
#include <thread>

namespace melvane {

// Runs `work` on a thread of its own and returns its result, or nothing when it takes longer than `patience`. The
// thread then goes on by itself; what `work` uses must be owned by it. Nothing too when the system gives no thread.
template <typename Work>
auto withPatience(std::chrono::milliseconds patience, Work work) -> std::optional<decltype(work())> {
    auto task = std::make_shared<std::packaged_task<decltype(work())()>>(std::move(work));
    auto result = task->get_future();
    try {
        std::thread([task] { (*task)(); }).detach();
    } catch (const std::system_error&) {
        return std::nullopt;
    }
    task.reset();
    if (result.wait_for(patience) != std::future_status::ready) return std::nullopt;
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
