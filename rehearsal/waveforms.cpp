#include "rehearsal/waveforms.h"

#include <array>
#include <chrono>
#include <optional>
#include <system_error>
#include <utility>

#include "base/low_priority.h"
#include "platform/audio_library.h"

namespace melvane {

namespace {

using namespace std::chrono_literals;
constexpr auto kEndPatience = 1s;
constexpr auto kLook = 10ms;
constexpr std::size_t kBlockFrames = 4096;
constexpr std::int64_t kLongestFrames = std::int64_t{kLongestImprint} * (kSampleRate / kImprintRate);

}  // namespace

std::shared_ptr<const WaveformPyramid> Waveform::outline() const {
    const std::lock_guard lock(mutex_);
    return outline_;
}

std::shared_ptr<const Trace> Waveform::imprint(const std::function<bool(double done)>& goOn) const {
    const auto done = [this] {
        const auto outline = this->outline();
        return outline && outline->frames() > 0
                   ? static_cast<double>(outline->known()) / static_cast<double>(outline->frames())
                   : 0;
    };
    while (!finished_ && wanted_ && goOn(done())) std::this_thread::sleep_for(kLook);
    const std::lock_guard lock(mutex_);
    return imprint_;
}

bool Waveforms::fill(Waveform& waveform, PcmSource& source) {
    std::array<float, kBlockFrames * 2> block{};
    const auto outline = std::make_shared<WaveformPyramid>(source.frames());
    {
        const std::lock_guard lock(waveform.mutex_);
        waveform.outline_ = outline;
    }
    std::optional<ImprintMaker> imprint;
    if (source.frames() <= kLongestFrames) imprint.emplace();
    while (waveform.wanted_) {
        const std::size_t got = source.read(block.data(), kBlockFrames);
        outline->add(block.data(), got);
        if (imprint) imprint->add(block.data(), got);
        if (got < kBlockFrames) break;
    }
    outline->finish();
    if (!waveform.wanted_ || source.failed()) return false;
    if (imprint) {
        const auto whole = std::make_shared<Trace>(imprint->take());
        const std::lock_guard lock(waveform.mutex_);
        waveform.imprint_ = whole;
    }
    return true;
}

void Waveforms::work(Waveform& waveform, const OpenReader& open, const OutlineCache& cache, const std::string& file) {
    lowerPriority();
    const OutlineCache::Key key = OutlineCache::keyOf(file);
    if (auto kept = cache.find(key)) {
        const std::lock_guard lock(waveform.mutex_);
        waveform.outline_ = std::move(kept);
    } else {
        const auto source = open(file, [&] { return waveform.wanted_.load(); });
        const bool whole = source && fill(waveform, *source);
        waveform.failed_ = !whole;
        if (whole && key == OutlineCache::keyOf(file)) cache.keep(key, *waveform.outline_);
    }
    waveform.finished_ = true;
}

std::shared_ptr<Waveform> Waveforms::read(const std::string& file) {
    std::erase_if(readings_, [](Reading& reading) {
        if (reading.done.wait_for(0s) != std::future_status::ready) return false;
        reading.thread.join();
        return true;
    });
    std::erase_if(shared_, [](const auto& entry) { return entry.second.expired(); });
    if (const auto shared = shared_[file].lock(); shared && !shared->forgotten()) return shared;
    auto waveform = std::make_shared<Waveform>();
    shared_[file] = waveform;
    std::packaged_task<void()> task(
        [waveform, open = open_, cache = cache_, file] { work(*waveform, open, cache, file); });
    auto done = task.get_future();
    try {
        readings_.push_back({waveform, std::move(done), std::thread(std::move(task))});
    } catch (const std::system_error&) {
        waveform->failed_ = waveform->finished_ = true;
    }
    return waveform;
}

Waveforms::~Waveforms() {
    for (const Reading& reading : readings_) reading.waveform->forget();
    const auto limit = std::chrono::steady_clock::now() + kEndPatience;
    for (Reading& reading : readings_) {
        if (reading.done.wait_until(limit) == std::future_status::ready)
            reading.thread.join();
        else
            reading.thread.detach();
    }
}

}  // namespace melvane
