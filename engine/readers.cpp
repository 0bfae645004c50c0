#include "engine/readers.h"

#include <atomic>
#include <chrono>
#include <future>
#include <system_error>
#include <thread>
#include <utility>

#include "engine/decode/open_source.h"
#include "engine/graph/tempo_source.h"

namespace melvane::engine {

// On a thread of its own, so that a file that never opens can be left behind.
std::unique_ptr<PcmSource> openReader(const std::string& file, std::shared_ptr<decode::DecodedFiles> decoded,
                                      const std::function<bool()>& wanted) {
    const auto cancelled = std::make_shared<std::atomic<bool>>(false);
    const auto opening = std::make_shared<std::packaged_task<std::unique_ptr<PcmSource>()>>(
        [file, cancelled, decoded = std::move(decoded)] {
            return decode::openSource(file, cancelled, 0, decoded.get());
        });
    auto opened = opening->get_future();
    try {
        std::thread([opening] { (*opening)(); }).detach();
    } catch (const std::system_error&) {
        (*opening)();
    }
    while (opened.wait_for(std::chrono::milliseconds(10)) != std::future_status::ready) {
        if (wanted()) continue;
        *cancelled = true;
        return nullptr;
    }
    return opened.get();
}

std::unique_ptr<PcmSource> inKey(std::unique_ptr<PcmSource> source, double semitones) {
    if (!source || semitones == 0) return source;
    auto shifted = std::make_unique<TempoSource>(std::move(source));
    shifted->setPitch(static_cast<float>(semitones));
    return shifted;
}

}  // namespace melvane::engine
