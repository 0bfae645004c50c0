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

void FastMix::start(const Job& job) {
    progress_ = std::make_shared<Progress>();
    begun_ = std::chrono::steady_clock::now();
    try {
        work_ = std::async(std::launch::async, [workshop = workshop_, language = language_, job, progress = progress_] {
            return mix(workshop, language, job, *progress);
        });
    } catch (const std::system_error&) {
        std::promise<RunState> refused;
        RunState run;
        run.failure = RunFailure::noThread;
        refused.set_value(run);
        work_ = refused.get_future();
    }
}

RunState FastMix::mix(const Workshop& workshop, modLang language, const Job& job, Progress& progress) {
    const AudioLibraryOptions options{CardClock::stepped, HeadlessMix::kBlockFrames, workshop.names.programDirectory()};
    const StartResult start = startAudioLibrary(workshop.libraryFile, workshop.names, options);
    if (!start.library) {
        RunState run;
        run.failure = RunFailure::captureNotStarted;
        return run;
    }
    const Instruments instruments = workshop.createMusic(*start.library);
    HeadlessMix headless(
        *start.library, instruments, workshop.names, workshop.destinations, language,
        [&progress] { return progress.wanted.load(); }, HeadlessMix::Unwanted::leaveNothing);
    headless.waiting = [&] { progress.decoded = headless.decoded().value_or(0); };
    headless.mixer().Form_Load(nullptr);
    headless.take(job);
    headless.mix([&progress](std::int64_t done, std::int64_t total) {
        progress.done = done;
        progress.total = total;
    });
    return headless.mixer().run();
}

std::optional<RunState> FastMix::ended() {
    if (!work_.valid() || !isReady(work_)) return std::nullopt;
    return std::exchange(work_, {}).get();
}

double FastMix::done() const {
    const auto total = static_cast<double>(framesTotal());
    return total > 0 ? std::clamp(static_cast<double>(framesDone()) / total, 0.0, 1.0) : 0;
}

std::optional<std::chrono::seconds> FastMix::left() const {
    constexpr double kSurely = 0.02;
    const double share = done();
    if (share < kSurely) return std::nullopt;
    const auto spent = std::chrono::steady_clock::now() - begun_;
    return std::chrono::ceil<std::chrono::seconds>(spent * ((1 - share) / share));
}

void takeResult(RunState& run, const RunState& result) {
    run.backgroundPath = result.backgroundPath;
    run.vocalPath = result.vocalPath;
    run.destinationPath = result.destinationPath;
    run.lastMixPath = result.lastMixPath;
    run.partPath = result.partPath;
    if (!result.listenPath.empty()) run.listenPath = result.listenPath;
    run.recordsSilence = result.recordsSilence;
    run.failure = result.failure;
    run.cause = result.cause;
    run.decoding = result.decoding;
    run.tagFault = result.tagFault;
    run.tagCause = result.tagCause;
}

}  // namespace melvane
