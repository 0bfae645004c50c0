#include "mixing/mixing_run.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <new>
#include <utility>

#include "audio/modAudio.h"
#include "base/paths.h"
#include "base/verdict.h"
#include "mixing/failure_cause.h"
#include "mixing/levelled_mix.h"
#include "mixing/run_messages.h"
#include "state/product.h"
#include "state/window_patience.h"
#include "tags/mix_tag.h"

namespace melvane {

namespace {

constexpr const char* kEncoderCommand = "lame.exe --alt-preset standard - ";
// A song on a disk that hangs has no tags.
constexpr std::chrono::seconds kTagPatience{5};

class Flag {
public:
    explicit Flag(bool& flag) : flag_(flag), before_(std::exchange(flag, true)) {}
    ~Flag() { flag_ = before_; }
    Flag(const Flag&) = delete;
    Flag& operator=(const Flag&) = delete;

private:
    bool& flag_;
    bool before_;
};

std::int64_t toFrames(std::uint64_t bytes) {
    return static_cast<std::int64_t>(bytes / kBytesPerFrame);
}

RunFailure failureOf(ClaimFailure failure) {
    switch (failure) {
        case ClaimFailure::none:
            return RunFailure::none;
        case ClaimFailure::exists:
            return RunFailure::destinationExists;
        case ClaimFailure::busy:
            return RunFailure::destinationBusy;
        case ClaimFailure::notWritable:
            break;
    }
    return RunFailure::destinationNotWritable;
}

}  // namespace

MixingRun::MixingRun(const Environment& environment, MixState& state, RecordingInput& input, EffectChain& effects,
                     MidiBackground& midi)
    : with_(environment),
      run_(state.run),
      fields_(state.fields),
      tags_(state.tags),
      input_(input),
      midi_(midi),
      graph_(environment, state, effects, midi),
      capture_(
          with_.library, run_, [this] { stopRec(); }, [this](std::int64_t frames) { return publish(frames); },
          with_.doEvents) {}

void MixingRun::mi_button_Click() {
    if (run_.isMixing || busy_) return;
    const Flag busy(busy_);
    cancelled_ = abandoned_ = false;
    framesTotal_ = framesAtEnd_ = 0;
    if (!canRun()) return;
    graph_.closeLast();
    input_.SelectMixInput();
    run_.recordsSilence = !input_.anyOn();
    const CardHold hold(with_.library);
    try {
        start();
    } catch (...) {
        stopRec();
        throw;
    }
}

bool MixingRun::canRun() {
    run_.failure = RunFailure::none;
    run_.cause = 0;
    run_.decoding = DecodingFailure::none;
    run_.tagFault = TagFault::none;
    run_.tagCause = 0;
    run_.lastMixPath.clear();
    run_.partPath.clear();
    run_.loudness.reset();
    run_.missesTarget = false;
    if (!readPaths()) return false;
    // Without a song or an encoder nothing is even opened.
    if (run_.isMidiBackground && !midi_.loaded()) return refuse(RunFailure::midiUnplayable, BoxIcon::critical);
    if (!hasEncoder() && !abandoned_) run_.failure = RunFailure::encoderNotStarted;
    return run_.failure == RunFailure::none && !abandoned_;
}

bool MixingRun::readPaths() {
    run_.backgroundPath = fields_.background;
    run_.vocalPath = fields_.vocal;
    run_.destinationPath = fields_.destination;
    run_.isMidiBackground = isMidiFile(run_.backgroundPath);
    if (run_.backgroundPath.empty() || run_.vocalPath.empty() || run_.destinationPath.empty())
        return refuse(RunFailure::pathsMissing, BoxIcon::information);
    if (usesFile(run_.destinationPath)) run_.failure = RunFailure::destinationIsSource;
    return run_.failure == RunFailure::none && !abandoned_;
}

// A disk that hangs is left behind when the run is given up.
bool MixingRun::hasEncoder() {
    const Flag opening(opening_);
    return whileWanted(
               with_.doEvents, [this] { return !abandoned_; }, with_.library.encoderSearch(kEncoderCommand))
        .value_or(false);
}

bool MixingRun::usesFile(const std::string& path) {
    const Flag opening(opening_);
    const auto compare = [path, used = std::array{run_.backgroundPath, run_.vocalPath,
                                                  run_.isMidiBackground ? midi_.soundFont() : std::string()}] {
        return std::ranges::any_of(used, [&](const std::string& file) { return isSameFile(path, file); });
    };
    return whileWanted(
               with_.doEvents, [this] { return !abandoned_; }, compare)
        .value_or(false);
}

bool MixingRun::refuse(RunFailure failure, BoxIcon icon) {
    run_.failure = failure;
    with_.dialogs.tell(runMessage(with_.language, run_), kProductCaption, icon);
    return false;
}

void MixingRun::start() {
    if (!openSources()) return input_.RestoreUserInput();
    with_.doEvents();
    if (abandoned_) return;
    graph_.playFiles();
    if (!prepareDestination() || !playSong() || !bringToLoudness()) return stopRec();
    startCapture();
    run_.isMixing = run_.recordChannel != 0;
    if (run_.isMixing) graph_.applySettings();
}

bool MixingRun::openSources() {
    const Flag opening(opening_);
    const bool opened = graph_.open([this] { return !abandoned_; });
    framesTotal_ = opened ? graph_.length() : 0;
    return opened;
}

bool MixingRun::prepareDestination() {
    const Flag opening(opening_);
    auto claim = whileEventsRun(with_.doEvents,
                                [this] { return with_.destinations.claim(run_.destinationPath, run_.mayReplace); });
    run_.failure = failureOf(claim.failure);
    run_.cause = claim.cause;
    if (abandoned_ || !claim.destination) return false;
    destination_ = std::move(claim.destination);
    run_.encodePath = with_.names.shortPath(destination_->privateFile());
    run_.encoderCommandLine = kEncoderCommand + with_.names.commandLineWord(run_.encodePath);
    return true;
}

bool MixingRun::playSong() {
    bool plays = false;
    {
        const Flag opening(opening_);
        plays = graph_.playSong();
    }
    if (abandoned_) return false;
    return plays || refuse(RunFailure::midiUnplayable, BoxIcon::critical);
}

void MixingRun::measure(MeasuringProgress goOn) {
    measuring_ = std::move(goOn);
    capture_.measure();
}

// What sounds is mixed before, and the result takes its place.
bool MixingRun::bringToLoudness() {
    if (!measuring_ || !run_.targetLoudness) return true;
    const Flag opening(opening_);
    try {
        auto sound = levelledMix(with_.library, run_, graph_, double{*run_.targetLoudness}, measuring_);
        if (!sound) return false;
        graph_.playKept(std::move(sound));
        framesTotal_ = graph_.length();
        return true;
    } catch (const GivenUp&) {
        return false;
    }
}

void MixingRun::startCapture() {
    const Flag opening(opening_);
    capture_.StartMixCapture([this] { return !abandoned_; });
}

// What lost its song or voice is no mix; what was only stopped gives way to a longer one.
RunFailure MixingRun::publish(std::int64_t frames) {
    if (cancelled_) return RunFailure::none;
    const bool lost = run_.failure != RunFailure::none;
    const bool part = lost || (stoppedEarly_ && standsLonger(frames));
    if (run_.failure == RunFailure::destinationNotWritable)  // it can't be checked now
        run_.cause = whileEventsRun(with_.doEvents, [this] { return readingError(run_.encodePath); });
    writeTags();
    if (!part) run_.cause = whileEventsRun(with_.doEvents, [this] { return destination_->replace(); });
    const bool replaced = !part && run_.cause == 0;
    if (!replaced) run_.partPath = whileEventsRun(with_.doEvents, [this] { return destination_->putBeside(); });
    const std::string& kept = replaced ? run_.destinationPath : run_.partPath;
    if (!kept.empty()) run_.listenPath = kept;
    const bool well = replaced || (part && !lost && !kept.empty());
    if (well) run_.lastMixPath = kept;
    if (kept.empty() && whileEventsRun(with_.doEvents, [this] { return isFile(destination_->privateFile()); }))
        run_.partPath = destination_->privateFile();
    return well || lost ? RunFailure::none : RunFailure::destinationNotWritable;
}

// Without them the mix is whole too.
void MixingRun::writeTags() try {
    using Clock = std::chrono::steady_clock;
    const auto patient = [end = Clock::now() + kTagPatience] { return Clock::now() < end; };
    run_.tagFault = TagFault::notWritten;
    const auto tag = whileWanted(with_.doEvents, patient,
                                 [song = run_.backgroundPath, midi = run_.isMidiBackground, choice = tags_] {
                                     return makeMixTag(song, midi, choice);
                                 });
    if (!tag) return;
    run_.tagCause = tag->bytes.empty() ? 0 : whileEventsRun(with_.doEvents, [&] { return prepend(tag->bytes); });
    if (run_.tagCause == 0) run_.tagFault = tag->fault;
} catch (const std::bad_alloc&) {
    run_.tagCause = ENOMEM;
}

int MixingRun::prepend(const std::string& tag) {
    const int error = destination_->prepend(tag);
    if (error != 0) return error;
    // What is open would keep the file without them on the disk.
    with_.library.BASS_StreamFree(run_.lastMixStream);
    run_.lastMixStream = with_.library.BASS_StreamCreateFile(false, run_.encodePath.c_str(), 0, 0, 0);
    return 0;
}

// What can't be read now counts as longer.
bool MixingRun::standsLonger(std::int64_t frames) {
    return whileEventsRun(with_.doEvents, [&] {
        Handle standing = 0;
        const Verdict verdict = judge(destination_->file(), [&] {
            standing = with_.library.BASS_StreamCreateFile(false, destination_->file().c_str(), 0, 0, 0);
            return standing != 0;
        });
        if (verdict != Verdict::good) return verdict == Verdict::unknown;
        const bool longer = toFrames(with_.library.BASS_ChannelGetLength(standing)) > frames;
        with_.library.BASS_StreamFree(standing);
        return longer;
    });
}

void MixingRun::stopRec() {
    if (stopping_) return with_.library.hurryEncoder(run_.recordChannel);
    const Flag stopping(stopping_);
    const Flag busy(busy_);
    const CardHold hold(with_.library);
    abandoned_ = true;
    framesAtEnd_ = framesDone();
    if (const RunFailure lost = graph_.lostSource(); run_.isMixing && lost != RunFailure::none) run_.failure = lost;
    stoppedEarly_ = run_.isMixing && !backgroundEnded();
    if (stoppedEarly_) with_.library.hurryEncoder(run_.recordChannel);
    run_.isMixing = capture_.StopMixCapture();
    const bool unwritten =
        run_.failure == RunFailure::encoderFailed || run_.failure == RunFailure::destinationNotWritable;
    if (destination_ && unwritten && run_.cause == 0)
        run_.cause = whileEventsRun(with_.doEvents, [this] { return writingError(run_.destinationPath); });
    if (destination_) whileEventsRun(with_.doEvents, [this] { destination_.reset(); });
    graph_.close();
    input_.RestoreUserInput();
}

void MixingRun::cancel() {
    cancelled_ = true;
    stopRec();
}

std::int64_t MixingRun::framesDone() const {
    return run_.isMixing ? graph_.position() : framesAtEnd_;
}

bool MixingRun::backgroundEnded() const {
    return framesDone() >= framesTotal_ || graph_.ended();
}

double MixingRun::done() const {
    if (framesTotal_ == 0) return 0;
    return std::clamp(static_cast<double>(framesDone()) / static_cast<double>(framesTotal_), 0.0, 1.0);
}

void MixingRun::Timer1_Timer() {
    if (!run_.isMixing || busy_) return;
    const bool ended = backgroundEnded();
    if (ended) framesTotal_ = framesDone();
    graph_.applySyncOffset();
    const bool lost = graph_.lostSource() != RunFailure::none;
    if (ended || lost || !with_.library.BASS_Encode_IsActive(run_.recordChannel)) stopRec();
}

}  // namespace melvane
