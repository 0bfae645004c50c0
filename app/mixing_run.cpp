#include "app/mixing_run.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "app/failure_cause.h"
#include "app/run_messages.h"
#include "app/source_files.h"
#include "audio/modAudio.h"
#include "base/paths.h"
#include "base/verdict.h"
#include "state/window_patience.h"

namespace melvane {

namespace {

constexpr const char* kEncoderCommand = "lame.exe --alt-preset standard - ";

// While one lives no frame is mixed: what is set up starts on one frame.
class CardHold {
public:
    explicit CardHold(AudioLibrary& library) : library_(library) { library_.holdCard(); }
    ~CardHold() { library_.resumeCard(); }
    CardHold(const CardHold&) = delete;
    CardHold& operator=(const CardHold&) = delete;

private:
    AudioLibrary& library_;
};

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

std::int64_t toFrames(double seconds) {
    return std::llround(seconds * kSampleRate);
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
      settings_(state.settings),
      input_(input),
      effects_(effects),
      midi_(midi),
      capture_(
          with_.library, run_, [this] { stopRec(); }, [this](std::int64_t frames) { return publish(frames); },
          with_.doEvents) {}

void MixingRun::mi_button_Click() {
    if (run_.isMixing || busy_) return;
    const Flag busy(busy_);
    framesTotal_ = framesAtEnd_ = 0;
    if (!canRun()) return;
    freeLastRun();
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
    run_.lastMixPath.clear();
    run_.partPath.clear();
    if (!readPaths()) return false;
    // Without a song or an encoder nothing is even opened.
    if (run_.isMidiBackground && !midi_.loaded()) return refuse(RunFailure::midiUnplayable, BoxIcon::critical);
    if (!with_.library.encoderFound(kEncoderCommand)) run_.failure = RunFailure::encoderNotStarted;
    return run_.failure == RunFailure::none;
}

bool MixingRun::readPaths() {
    run_.backgroundPath = fields_.background;
    run_.vocalPath = fields_.vocal;
    run_.destinationPath = fields_.destination;
    run_.isMidiBackground = isMidiFile(run_.backgroundPath);
    if (run_.backgroundPath.empty() || run_.vocalPath.empty() || run_.destinationPath.empty())
        return refuse(RunFailure::pathsMissing, BoxIcon::information);
    if (usesFile(run_.destinationPath)) run_.failure = RunFailure::destinationIsSource;
    return run_.failure == RunFailure::none;
}

bool MixingRun::usesFile(const std::string& path) const {
    return isSameFile(path, run_.backgroundPath) || isSameFile(path, run_.vocalPath) ||
           (run_.isMidiBackground && isSameFile(path, midi_.soundFont()));
}

bool MixingRun::refuse(RunFailure failure, BoxIcon icon) {
    run_.failure = failure;
    with_.dialogs.tell(runMessage(with_.language, run_), kProductCaption, icon);
    return false;
}

void MixingRun::freeLastRun() {
    if (run_.isMidiBackground) {
        midi_.setTone();
    } else {
        freeChannel(run_.backgroundChannel);
        midi_.close();
    }
    freeChannel(run_.vocalChannel);
}

void MixingRun::start() {
    abandoned_ = false;
    if (!openSources()) return input_.RestoreUserInput();
    with_.doEvents();
    if (abandoned_) return;
    if (!run_.isMidiBackground) with_.library.BASS_ChannelPlay(run_.backgroundChannel, false);
    with_.library.BASS_ChannelPlay(run_.vocalChannel, false);
    with_.library.holdCardAtEndOf(run_.backgroundChannel);
    if (!prepareDestination() || !playSong()) return stopRec();
    startCapture();
    run_.isMixing = run_.recordChannel != 0;
    if (run_.isMixing) applySettings();
}

void MixingRun::applySettings() {
    effects_.PrepareEffects();
    effects_.ApplyAllEffects();
    SetBassVolume();
    effects_.applyTone();
    effects_.applyBalance();
    applyKey();
    applySyncOffset();
}

void MixingRun::applyKey() {
    if (run_.backgroundChannel != 0)
        with_.library.BASS_FX_TempoSet(run_.backgroundChannel, kTempoUnchanged, kRateUnchanged,
                                       static_cast<float>(run_.key));
    midi_.transpose(run_.key);
}

// A place on the vocal's own time, so that setting it again changes nothing.
void MixingRun::applySyncOffset() {
    if (run_.vocalChannel == 0) return;
    const auto bytes = static_cast<std::int64_t>(
        with_.library.BASS_ChannelSeconds2Bytes(run_.vocalChannel, std::abs(run_.syncOffset)));
    with_.library.setChannelOffset(run_.vocalChannel, run_.syncOffset < 0 ? -bytes : bytes);
}

bool MixingRun::openSources() {
    const Flag opening(opening_);
    if (!run_.isMidiBackground) {
        const Handle source = openFile(run_.backgroundPath, BASS_STREAM_DECODE);
        run_.backgroundChannel = with_.library.BASS_FX_TempoCreate(source, BASS_FX_FREESOURCE);
    }
    run_.vocalChannel = openFile(run_.vocalPath, BASS_SAMPLE_LOOP);
    const bool background = run_.isMidiBackground || run_.backgroundChannel != 0;
    if (!abandoned_ && background && run_.vocalChannel != 0) {
        framesTotal_ = run_.isMidiBackground ? toFrames(midi_.length())
                                             : toFrames(with_.library.BASS_ChannelGetLength(run_.backgroundChannel));
        return true;
    }
    if (!abandoned_ && run_.failure == RunFailure::none) {
        run_.failure = background ? RunFailure::vocalUnreadable : RunFailure::backgroundUnreadable;
        run_.cause = whileEventsRun(with_.doEvents,
                                    [&] { return readingError(background ? run_.vocalPath : run_.backgroundPath); });
    }
    freeChannel(run_.backgroundChannel);
    freeChannel(run_.vocalChannel);
    return false;
}

// A long file takes a while: window events run meanwhile.
Handle MixingRun::openFile(const std::string& path, std::uint32_t flags) {
    if (abandoned_) return 0;
    return whileEventsRun(
        [this] {
            with_.doEvents();
            if (abandoned_) with_.library.giveUpOpening();
        },
        [&] { return with_.library.BASS_StreamCreateFile(false, path.c_str(), 0, 0, flags); });
}

// Whatever kind of channel it is.
void MixingRun::freeChannel(std::uint32_t& channel) {
    with_.library.BASS_MusicFree(channel);
    with_.library.BASS_StreamFree(channel);
    channel = 0;
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
    if (!run_.isMidiBackground) return true;
    bool plays = false;
    {
        const Flag opening(opening_);
        plays = midi_.PlayMidi();
    }
    if (abandoned_) return false;
    return plays || refuse(RunFailure::midiUnplayable, BoxIcon::critical);
}

void MixingRun::startCapture() {
    const Flag opening(opening_);
    capture_.StartMixCapture([this] { return !abandoned_; });
}

// What lost its song or voice is no mix; what was only stopped gives way to a longer one.
RunFailure MixingRun::publish(std::int64_t frames) {
    const bool lost = run_.failure != RunFailure::none;
    const bool part = lost || (stoppedEarly_ && standsLonger(frames));
    if (run_.failure == RunFailure::destinationNotWritable)  // it can't be checked now
        run_.cause = whileEventsRun(with_.doEvents, [this] { return readingError(run_.encodePath); });
    if (!part) run_.cause = whileEventsRun(with_.doEvents, [this] { return destination_->replace(); });
    const bool replaced = !part && run_.cause == 0;
    if (!replaced) run_.partPath = whileEventsRun(with_.doEvents, [this] { return destination_->putBeside(); });
    const std::string& kept = replaced ? run_.destinationPath : run_.partPath;
    if (!kept.empty()) run_.listenPath = kept;
    const bool well = replaced || (part && !lost && !kept.empty());
    if (well) run_.lastMixPath = kept;
    if (kept.empty() && isFile(destination_->privateFile())) run_.partPath = destination_->privateFile();
    return well || lost ? RunFailure::none : RunFailure::destinationNotWritable;
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

void MixingRun::SetBassVolume() {
    if (run_.isMidiBackground)
        midi_.applyVolumeAndBalance();
    else
        SetChannelVolume(with_.library, run_.backgroundChannel, settings_.volume[0]);
    SetChannelVolume(with_.library, run_.vocalChannel, settings_.volume[1]);
}

void MixingRun::stopRec() {
    if (stopping_) return with_.library.hurryEncoder(run_.recordChannel);
    const Flag stopping(stopping_);
    const Flag busy(busy_);
    const CardHold hold(with_.library);
    abandoned_ = true;
    framesAtEnd_ = framesDone();
    if (const RunFailure lost = lostSource(); run_.isMixing && lost != RunFailure::none) run_.failure = lost;
    stoppedEarly_ = run_.isMixing && !backgroundEnded();
    if (stoppedEarly_) with_.library.hurryEncoder(run_.recordChannel);
    run_.isMixing = capture_.StopMixCapture();
    const bool unwritten =
        run_.failure == RunFailure::encoderFailed || run_.failure == RunFailure::destinationNotWritable;
    if (destination_ && unwritten && run_.cause == 0) run_.cause = writingError(run_.destinationPath);
    destination_.reset();
    for (std::uint32_t* channel : {&run_.vocalChannel, &run_.backgroundChannel}) {
        with_.library.BASS_ChannelStop(*channel);
        with_.library.BASS_MusicFree(*channel);
    }
    midi_.StopMidi();
    midi_.restoreTone();
    run_.vocalChannel = 0;
    run_.backgroundChannel = 0;
    input_.RestoreUserInput();
}

std::int64_t MixingRun::framesDone() const {
    if (!run_.isMixing) return framesAtEnd_;
    return run_.isMidiBackground ? toFrames(midi_.position())
                                 : toFrames(with_.library.BASS_ChannelGetPosition(run_.backgroundChannel));
}

// A MIDI song may fade sooner than at its full length.
bool MixingRun::backgroundEnded() const {
    return framesDone() >= framesTotal_ || (run_.isMidiBackground && !midi_.playing());
}

RunFailure MixingRun::lostSource() const {
    if (with_.library.channelFailed(run_.backgroundChannel)) return RunFailure::backgroundLost;
    if (with_.library.channelFailed(run_.vocalChannel)) return RunFailure::vocalLost;
    return RunFailure::none;
}

double MixingRun::done() const {
    if (framesTotal_ == 0) return 0;
    return std::clamp(static_cast<double>(framesDone()) / static_cast<double>(framesTotal_), 0.0, 1.0);
}

void MixingRun::Timer1_Timer() {
    if (!run_.isMixing || busy_) return;
    const bool ended = backgroundEnded();
    if (ended) framesTotal_ = framesDone();
    applySyncOffset();
    const bool lost = lostSource() != RunFailure::none;
    if (ended || lost || !with_.library.BASS_Encode_IsActive(run_.recordChannel)) stopRec();
}

}  // namespace melvane
