#include "mixing/kept_pass.h"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>
#include <vector>

namespace melvane {

namespace {

constexpr std::uint32_t kBlockFrames = 4096;

// What is set reaches only a graph that sounds.
class Sounding {
public:
    Sounding(AudioLibrary& library, RunState& run) : library_(library), run_(run) { run_.isRehearsing = true; }
    ~Sounding() {
        run_.isRehearsing = false;
        library_.holdCard();
    }
    Sounding(const Sounding&) = delete;
    Sounding& operator=(const Sounding&) = delete;

private:
    AudioLibrary& library_;
    RunState& run_;
};

}  // namespace

std::shared_ptr<KeptMix> keepPass(AudioLibrary& library, RunState& run, MixGraph& graph, bool apart,
                                  const MeasuringProgress& goOn) {
    const Sounding sounding(library, run);
    graph.applySettings();
    const auto kept = library.keepMix(apart ? run.vocalChannel : 0);
    library.resumeCard();
    while (kept && kept->failure() == 0 && !graph.ended() && graph.lostSource() == RunFailure::none) {
        library.stepCard(kBlockFrames);
        const auto length = static_cast<double>(std::max<std::int64_t>(graph.length(), 1));
        if (!goOn(std::min(static_cast<double>(kept->frames()) / length, 1.0))) throw GivenUp();
    }
    run.failure = graph.lostSource();
    if (run.failure == RunFailure::none && (!kept || kept->failure() != 0)) run.failure = RunFailure::mixNotKept;
    return run.failure == RunFailure::none ? kept : nullptr;
}

void readThrough(PcmSource& sound, std::size_t frames, const std::function<bool()>& wanted,
                 const std::function<void(const float* samples, std::size_t frames)>& take) {
    std::vector<float> piece(frames * 2);
    while (const std::size_t got = sound.read(piece.data(), frames)) {
        take(piece.data(), got);
        if (!wanted()) throw GivenUp();
    }
    if (sound.failed()) throw std::system_error(EIO, std::generic_category());
}

}  // namespace melvane
