#include "engine/waveform_scans.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <system_error>

#include "base/low_priority.h"
#include "engine/decode/open_source.h"
#include "engine/graph/peak_meter.h"

namespace melvane::engine {

namespace {

using namespace std::chrono_literals;
constexpr auto kEndPatience = 1s;
constexpr std::size_t kBlockFrames = 4096;

}  // namespace

// What a scan and its thread share.
struct WaveformScans::Work {
    Work(std::string name, int columns, std::shared_ptr<decode::DecodedFiles> decodedFiles)
        : file(std::move(name)), decoded(std::move(decodedFiles)), peaks(static_cast<std::size_t>(columns)) {}

    void run();
    void readColumns(PcmSource& source);
    float highestOf(PcmSource& source, std::int64_t frames);

    const std::string file;
    const std::shared_ptr<decode::DecodedFiles> decoded;
    std::vector<std::atomic<float>> peaks;
    std::atomic<double> progress{0};
    const std::shared_ptr<std::atomic<bool>> cancelled = std::make_shared<std::atomic<bool>>(false);
    std::atomic<bool> failed{false};
    std::atomic<bool> finished{false};

private:
    // The scan's thread only.
    std::array<float, kBlockFrames * 2> block_;
    std::int64_t total_ = 0;
    std::int64_t read_ = 0;
};

void WaveformScans::Work::run() {
    lowerPriority();
    const auto source = decode::openSource(file, cancelled, 0, decoded.get());
    failed = !source;
    if (source) readColumns(*source);
    if (source && source->failed()) failed = true;
    finished = true;
}

void WaveformScans::Work::readColumns(PcmSource& source) {
    total_ = source.frames();
    const auto columns = static_cast<std::int64_t>(peaks.size());
    float peak = 0;
    for (std::int64_t column = 0; column < columns && !*cancelled; ++column) {
        const std::int64_t end = std::max<std::int64_t>((column + 1) * total_ / columns, 1);
        if (end > read_) peak = highestOf(source, end - read_);
        peaks[static_cast<std::size_t>(column)] = std::min(peak, 1.0F);
    }
}

float WaveformScans::Work::highestOf(PcmSource& source, std::int64_t frames) {
    float highest = 0;
    while (frames > 0 && !*cancelled) {
        const auto wanted = static_cast<std::size_t>(std::min<std::int64_t>(frames, kBlockFrames));
        const std::size_t got = source.read(block_.data(), wanted);
        if (got == 0) break;
        const PeakLevels peak = peakOf(block_.data(), got);
        highest = std::max({highest, peak.left, peak.right});
        frames -= static_cast<std::int64_t>(got);
        read_ += static_cast<std::int64_t>(got);
        progress = static_cast<double>(read_) / static_cast<double>(total_);
    }
    return highest;
}

class WaveformScans::Scan : public WaveformScan {
public:
    explicit Scan(std::shared_ptr<Work> work) : work_(std::move(work)) {}
    ~Scan() override { *work_->cancelled = true; }

    double progress() const override { return work_->progress; }
    bool finished() const override { return work_->finished; }
    bool failed() const override { return work_->failed; }
    std::vector<float> peaks() const override { return {work_->peaks.begin(), work_->peaks.end()}; }

private:
    const std::shared_ptr<Work> work_;
};

std::unique_ptr<WaveformScan> WaveformScans::begin(const std::string& file, int columns) {
    forgetEnded();
    auto work = std::make_shared<Work>(file, std::max(columns, 1), decoded_);
    std::packaged_task<void()> task([work] { work->run(); });
    auto done = task.get_future();
    try {
        running_.push_back({work, std::move(done), std::thread(std::move(task))});
    } catch (const std::system_error&) {
        work->failed = work->finished = true;
    }
    return std::make_unique<Scan>(std::move(work));
}

void WaveformScans::forgetEnded() {
    std::erase_if(running_, [](Running& running) {
        if (running.done.wait_for(0s) != std::future_status::ready) return false;
        running.thread.join();
        return true;
    });
}

void WaveformScans::end() {
    for (const Running& running : running_) *running.work->cancelled = true;
    const auto limit = std::chrono::steady_clock::now() + kEndPatience;
    for (Running& running : running_) {
        if (running.done.wait_until(limit) == std::future_status::ready)
            running.thread.join();
        else
            running.thread.detach();
    }
    running_.clear();
}

}  // namespace melvane::engine
