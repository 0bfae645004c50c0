// Work that takes a while, while the window goes on.
#pragma once

#include <chrono>
#include <future>
#include <utility>

#include "state/run_state.h"

namespace melvane {

// Does `work` on a thread of its own and lets window events run until it is done; on this thread where the system has
// none left. Returns or throws what `work` does.
template <typename Work>
auto whileEventsRun(const DoEvents& doEvents, Work work) {
    constexpr std::chrono::milliseconds kPatience{10};
    auto result = std::async(std::launch::async | std::launch::deferred, std::move(work));
    while (result.wait_for(kPatience) == std::future_status::timeout) doEvents();
    return result.get();
}

}  // namespace melvane
