// A mix of a job beside the windows: with a library and a mixer of its own, on its own thread, unheard and as fast as
// the processor allows. Used on the user-interface thread.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <future>
#include <memory>
#include <optional>

#include "app/headless_mix.h"
#include "job/job.h"

namespace melvane {

class FastMix {
public:
    // The workshop's destinations are not to be used while a mix is going on.
    FastMix(const Workshop& workshop, const modLang& language) : workshop_(workshop), language_(language) {}
    // Cancels and waits.
    ~FastMix();

    // Begins one that may replace what stands at its destination. Only one at a time.
    void start(const Job& job);
    // Nothing of it is left, soon; until then it is going on.
    void cancel() { progress_->wanted = false; }
    bool going() const { return work_.valid(); }
    bool cancelled() const { return !progress_->wanted; }
    // How it ended, once, when it is over. Throws what ended it.
    std::optional<RunState> ended();

    // In frames, of this mix or the last one; 0 before its length is known.
    std::int64_t framesDone() const { return progress_->done; }
    std::int64_t framesTotal() const { return progress_->total; }
    double done() const;  // 0..1
    // How far one of its files is decoded while they are being opened, 0..1.
    double decoded() const { return progress_->decoded; }
    // At the speed that it had until now; nothing while that can't be told.
    std::optional<std::chrono::seconds> left() const;

private:
    struct Progress {
        std::atomic<bool> wanted = true;
        std::atomic<std::int64_t> done = 0;
        std::atomic<std::int64_t> total = 0;
        std::atomic<double> decoded = 0;
    };

    static RunState mix(const Workshop& workshop, modLang language, const Job& job, Progress& progress);

    const Workshop workshop_;
    const modLang& language_;
    std::shared_ptr<Progress> progress_ = std::make_shared<Progress>();
    std::chrono::steady_clock::time_point begun_{};
    std::future<RunState> work_;
};

// Makes the result of one run that of another, as the window tells it.
void takeResult(RunState& run, const RunState& result);

}  // namespace melvane
