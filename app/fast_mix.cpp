#include "app/fast_mix.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "app/start_checks.h"
#include "state/window_patience.h"

namespace melvane {

FastMix::~FastMix() {
    cancel();
    if (work_.valid()) work_.wait();
}

void FastMix::start(const Job& job, Task task) {
    progress_ = std::make_shared<Progress>();
    task_ = task;
    try {
        work_ = std::async(std::launch::async,
                           [workshop = workshop_, language = language_, job, task, progress = progress_] {
                               return work(workshop, language, job, task, *progress);
                           });
    } catch (const std::system_error&) {
        std::promise<Result> refused;
        Result result;
        result.run.failure = RunFailure::noThread;
        refused.set_value(result);
        work_ = refused.get_future();
    }
}

FastMix::Result FastMix::work(const Workshop& workshop, modLang language, const Job& job, Task task,
                              Progress& progress) {
    const AudioLibraryOptions options{CardClock::stepped, HeadlessMix::kBlockFrames, workshop.names.programDirectory()};
    const StartResult start = startAudioLibrary(workshop.libraryFile, workshop.names, options);
    Result result;
    result.run.failure = RunFailure::captureNotStarted;
    if (!start.library) return result;
    const Instruments instruments = workshop.createMusic(*start.library);
    HeadlessMix headless(
        *start.library, instruments, workshop.names, workshop.destinations, language,
        [&progress] { return progress.wanted.load(); }, HeadlessMix::Unwanted::leaveNothing);
    headless.waiting = [&] { progress.decoded = headless.decoded().value_or(0); };
    headless.measuring = [&progress](double done) { progress.measured = done; };
    headless.mixer().Form_Load(nullptr);
    headless.take(job);
    if (task == Task::matchLevels) {
        result.levels = headless.findLevels();
        progress.measured = 1;
    } else {
        headless.mix([&progress](std::int64_t done, std::int64_t total) {
            if (progress.total == 0) progress.begun = std::chrono::steady_clock::now();
            progress.done = done;
            progress.total = total;
        });
    }
    result.run = headless.mixer().run();
    return result;
}

std::optional<FastMix::Result> FastMix::ended() {
    if (!work_.valid() || !isReady(work_)) return std::nullopt;
    return std::exchange(work_, {}).get();
}

std::optional<double> FastMix::measured() const {
    const double measured = progress_->measured;
    return framesTotal() == 0 && measured > 0 ? std::optional(measured) : std::nullopt;
}

double FastMix::done() const {
    if (const auto share = measured()) return *share;
    const auto total = static_cast<double>(framesTotal());
    return total > 0 ? std::clamp(static_cast<double>(framesDone()) / total, 0.0, 1.0) : 0;
}

std::optional<std::chrono::seconds> FastMix::left() const {
    constexpr double kSurely = 0.02;
    const double share = done();
    if (share < kSurely) return std::nullopt;
    const auto spent = std::chrono::steady_clock::now() - progress_->begun.load();
    return std::chrono::ceil<std::chrono::seconds>(spent * ((1 - share) / share));
}

void takeFailure(RunState& run, const RunState& result) {
    run.backgroundPath = result.backgroundPath;
    run.vocalPath = result.vocalPath;
    run.failure = result.failure;
    run.cause = result.cause;
    run.decoding = result.decoding;
}

void takeResult(RunState& run, const RunState& result) {
    takeFailure(run, result);
    run.destinationPath = result.destinationPath;
    run.lastMixPath = result.lastMixPath;
    run.partPath = result.partPath;
    if (!result.listenPath.empty()) run.listenPath = result.listenPath;
    run.loudness = result.loudness;
    run.missesTarget = result.missesTarget;
    run.recordsSilence = result.recordsSilence;
    run.tagFault = result.tagFault;
    run.tagCause = result.tagCause;
}

}  // namespace melvane
