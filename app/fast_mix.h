// A mix of a job beside the windows, or the levels that fit it: with a library and a mixer of its own, on its own
// thread, unheard and as fast as the processor allows. Used on the user-interface thread.
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

    enum class Task { mix, matchLevels };
    struct Result {
        RunState run;
        std::optional<LevelMatch> levels;  // of the task that looks for them, unless it failed or was cancelled
    };

    // Begins one that may replace what stands at its destination, or changes nothing. Only one at a time.
    void start(const Job& job, Task task = Task::mix);
    // Of the one that goes on, or of the last.
    Task task() const { return task_; }
    // Nothing of it is left, soon; until then it is going on.
    void cancel() { progress_->wanted = false; }
    bool going() const { return work_.valid(); }
    bool cancelled() const { return !progress_->wanted; }
    // How it ended, once, when it is over. Throws what ended it.
    std::optional<Result> ended();

    // In frames, of this mix or the last one; 0 before its length is known.
    std::int64_t framesDone() const { return progress_->done; }
    std::int64_t framesTotal() const { return progress_->total; }
    double done() const;  // 0..1
    // How far one of its files is decoded while they are being opened, 0..1.
    double decoded() const { return progress_->decoded; }
    // How much was measured of what comes before a mix, or of the levels, 0..1; nothing when that is over.
    std::optional<double> measured() const;
    // At the speed that it had until now; nothing while that can't be told.
    std::optional<std::chrono::seconds> left() const;

private:
    struct Progress {
        std::atomic<bool> wanted = true;
        std::atomic<std::int64_t> done = 0;
        std::atomic<std::int64_t> total = 0;
        std::atomic<double> decoded = 0;
        std::atomic<double> measured = 0;
        std::atomic<std::chrono::steady_clock::time_point> begun{};  // the mix itself
    };

    static Result work(const Workshop& workshop, modLang language, const Job& job, Task task, Progress& progress);

    const Workshop workshop_;
    const modLang& language_;
    std::shared_ptr<Progress> progress_ = std::make_shared<Progress>();
    Task task_ = Task::mix;
    std::future<Result> work_;
};

// Makes the result of one run that of another, as the window tells it, or only what it failed of.
void takeFailure(RunState& run, const RunState& result);
void takeResult(RunState& run, const RunState& result);

}  // namespace melvane
