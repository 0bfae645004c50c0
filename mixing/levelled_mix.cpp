#include "mixing/levelled_mix.h"

#include <algorithm>
#include <cmath>
#include <system_error>

#include "audio/modAudio.h"
#include "loudness/gain_search.h"
#include "loudness/loudness_meter.h"

namespace melvane {

namespace {

constexpr std::size_t kBlock = kSampleRate / 100;  // 10 ms
constexpr double kNotable = 0.1;                   // dB

float linear(double decibels) {
    return static_cast<float>(std::pow(10, decibels / 20));
}

double takenDb(float reduction) {
    return -20 * std::log10(1 - double{reduction});
}

// Of what was kept. What is asked may take seconds, and is given up meanwhile.
class Measuring {
public:
    Measuring(AudioLibrary& library, const KeptMix& kept, std::function<bool()> wanted)
        : library_(library), kept_(kept), wanted_(std::move(wanted)) {}

    double lufs(float rest, float voice) const {
        LoudnessMeter meter(LoudnessMeter::Scope::integrated);
        readThrough(*kept_.read(rest, voice), kPiece, wanted_,
                    [&](auto* piece, auto frames) { meter.add(piece, frames); });
        return meter.result().lufs;
    }

    GainTrial limitedWith(double gainDb) const {
        const auto sound = limited(linear(gainDb), 0);
        LoudnessMeter meter(LoudnessMeter::Scope::integrated);
        readThrough(*sound, kPiece, wanted_, [&](auto* piece, auto frames) { meter.add(piece, frames); });
        return {meter.result().lufs, takenDb(sound->takeReduction())};
    }

    double limitedShare(double songDb, double voiceDb) const {
        const auto sound = limited(linear(songDb), linear(voiceDb));
        std::int64_t blocks = 0;
        std::int64_t touched = 0;
        readThrough(*sound, kBlock, wanted_, [&](auto*, auto) {
            ++blocks;
            touched += takenDb(sound->takeReduction()) > kNotable ? 1 : 0;
        });
        return blocks == 0 ? 0 : static_cast<double>(touched) / static_cast<double>(blocks);
    }

    std::unique_ptr<LimitedSound> limited(float rest, float voice) const {
        return library_.limited(kept_.read(rest, voice));
    }

private:
    static constexpr std::size_t kPiece = 4096;

    AudioLibrary& library_;
    const KeptMix& kept_;
    const std::function<bool()> wanted_;
};

// The pass is most of the work.
constexpr double kPassShare = 0.8;

MeasuringProgress ofPass(const MeasuringProgress& goOn) {
    return [&goOn](double done) { return goOn(done * kPassShare); };
}

std::function<bool()> behindPass(const MeasuringProgress& goOn) {
    return [&goOn] { return goOn(kPassShare); };
}

double volumeDb(int volume) {
    constexpr double kFull = 100;
    return 20 * std::log10(volume / kFull);
}

LevelMatch match(AudioLibrary& library, const MixState& state, const KeptMix& kept, const MeasuringProgress& goOn) {
    const Measuring measuring(library, kept, behindPass(goOn));
    const auto& volume = state.settings.volume;
    return matchLevels({{volume[0], volume[1]}, double{state.run.voiceTrim}},
                       {[&](double gain) { return measuring.lufs(linear(gain), 0); },
                        [&](double gain) { return measuring.lufs(0, linear(gain)); },
                        [&](double song, double voice) { return measuring.limitedShare(song, voice); },
                        state.run.isMidiBackground ? MidiBackground::volumeDecibels : volumeDb, volumeDb});
}

bool play(MixGraph& graph, const RunState& run, const MidiBackground& midi, const MeasuringProgress& goOn) {
    if (run.isMidiBackground && !midi.loaded()) return false;
    graph.closeLast();
    if (!graph.open([&] { return goOn(0); })) return false;
    graph.playFiles();
    return graph.playSong();
}

// Closes what it has opened, and lets the card go.
class Opened {
public:
    Opened(AudioLibrary& library, MixGraph& graph) : hold_(library), graph_(graph) {}
    ~Opened() { graph_.close(); }
    Opened(const Opened&) = delete;
    Opened& operator=(const Opened&) = delete;

private:
    const CardHold hold_;
    MixGraph& graph_;
};

}  // namespace

std::unique_ptr<PcmSource> levelledMix(AudioLibrary& library, RunState& run, MixGraph& graph, double lufs,
                                       const MeasuringProgress& goOn) {
    const auto kept = keepPass(library, run, graph, false, ofPass(goOn));
    if (!kept) return nullptr;
    try {
        const Measuring measuring(library, *kept, behindPass(goOn));
        const GainFound found = findGain(lufs, [&](double gainDb) { return measuring.limitedWith(gainDb); });
        run.missesTarget = !found.reached;
        return measuring.limited(linear(found.gainDb), 0);
    } catch (const std::system_error&) {
        run.failure = RunFailure::mixNotKept;
        return nullptr;
    }
}

std::optional<LevelMatch> findLevels(AudioLibrary& library, MixState& state, MixGraph& graph, MidiBackground& midi,
                                     const MeasuringProgress& goOn) {
    RunState& run = state.run;
    run.failure = RunFailure::none;
    run.backgroundPath = state.fields.background;
    run.vocalPath = state.fields.vocal;
    run.isMidiBackground = isMidiFile(run.backgroundPath);
    if (run.backgroundPath.empty() || run.vocalPath.empty()) run.failure = RunFailure::pathsMissing;
    if (run.failure != RunFailure::none) return std::nullopt;
    const Opened opened(library, graph);
    try {
        if (!play(graph, run, midi, goOn)) {
            if (run.failure == RunFailure::none && goOn(0)) run.failure = RunFailure::midiUnplayable;
            return std::nullopt;
        }
        const auto kept = keepPass(library, run, graph, true, ofPass(goOn));
        return kept ? std::optional(match(library, state, *kept, goOn)) : std::nullopt;
    } catch (const GivenUp&) {
        return std::nullopt;
    } catch (const std::system_error&) {
        run.failure = RunFailure::mixNotKept;
        return std::nullopt;
    }
}

}  // namespace melvane
