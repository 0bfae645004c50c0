// Work that takes a while, while the window goes on.
#pragma once

#include <chrono>
#include <future>
#include <memory>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

#include "state/run_state.h"

namespace melvane {

// Whether the result is there, or is made when it is asked for.
template <typename Result>
bool isReady(const std::future<Result>& result, std::chrono::milliseconds patience = {}) {
    return result.wait_for(patience) != std::future_status::timeout;
}

// Does `work` on a thread of its own; on this thread where the system has none left. Whoever lets go of the result does
// not wait: `work` owns what it uses.
template <typename Work>
auto beside(Work work) -> std::future<decltype(work())> {
    // What it owns is gone when the result is there.
    auto task = std::make_shared<std::packaged_task<decltype(work())()>>(
        [work = std::make_unique<Work>(std::move(work))]() mutable {
            const auto owner = std::move(work);
            return (*owner)();
        });
    auto result = task->get_future();
    try {
        std::thread([task] { (*task)(); }).detach();
    } catch (const std::system_error&) {
        (*task)();
    }
    return result;
}

inline constexpr std::chrono::milliseconds kEventPatience{10};

// Does `work` on a thread of its own and lets window events run until it is done; on this thread where the system has
// none left. Returns or throws what `work` does.
template <typename Work>
auto whileEventsRun(const DoEvents& doEvents, Work work) {
    // Not handed over: where no thread could be started, what it owns would be lost.
    auto result = std::async(std::launch::async | std::launch::deferred, [&work] { return work(); });
    while (!isReady(result, kEventPatience)) doEvents();
    return result.get();
}

// The same for work that may hang. It is left behind, with nothing for a result, when `wanted` has become false.
template <typename Wanted, typename Work>
auto whileWanted(const DoEvents& doEvents, Wanted wanted, Work work) -> std::optional<decltype(work())> {
    auto result = beside(std::move(work));
    while (wanted() && !isReady(result, kEventPatience)) doEvents();
    if (!wanted()) return std::nullopt;
    return result.get();
}

}  // namespace melvane
