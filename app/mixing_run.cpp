#include "app/mixing_run.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <future>
#include <utility>

#include "app/source_files.h"
#include "audio/modAudio.h"
#include "base/paths.h"

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

// Puts a file there that holds one empty line. False when that cannot be written, or something else than a file
// has that name.
bool createFile(const std::string& path) {
    std::error_code error;
    if (std::filesystem::exists(toPath(path), error) && !isFile(path)) return false;
    std::ofstream file(toPath(path), std::ios::binary | std::ios::trunc);
    file << "\r\n";
    file.close();
    return file.good();
}

}  // namespace

MixingRun::MixingRun(const MixingParts& parts)
    : with_(parts),
      library_(parts.library),
      run_(parts.run),
      midi_(parts.midi),
      capture_(
          library_, run_, [this] { stopRec(); }, parts.doEvents) {}

void MixingRun::mi_button_Click() {
    if (run_.isMixing || busy_) return;
    const Flag busy(busy_);
    run_.failure = RunFailure::none;
    run_.lastMixPath.clear();
    framesTotal_ = framesAtEnd_ = 0;
    progressWidth_ = 0;
    if (!readPaths()) return;
    run_.isMidiBackground = isMidiFile(run_.backgroundPath);
    if (!canRun()) return;
    if (run_.isMidiBackground)
        midi_.setTone();
    else
        freeBackground();
    freeChannel(run_.vocalChannel);
    with_.input.SelectMixInput();
    run_.recordsSilence = !with_.input.anyOn();
    const CardHold hold(library_);
    try {
        start();
    } catch (...) {
        stopRec();
        throw;
    }
}

// An older mix is not emptied for want of an encoder or of a song.
bool MixingRun::canRun() {
    if (run_.isMidiBackground && !midi_.playback.loaded()) {
        midiFailed();
        return false;
    }
    if (isFile(run_.destinationPath) && !library_.encoderFound(kEncoderCommand))
        run_.failure = RunFailure::encoderNotStarted;
    return run_.failure == RunFailure::none;
}

void MixingRun::midiFailed() {
    run_.failure = RunFailure::midiUnplayable;
    with_.dialogs.messageBox(with_.language.lang(LangEntry::midiPlayFailed), kProductCaption, BoxIcon::critical,
                             BoxButtons::ok);
}

void MixingRun::freeBackground() {
    freeChannel(run_.backgroundChannel);
    midi_.close();
}

void MixingRun::start() {
    abandoned_ = false;
    if (!openSources()) return with_.input.RestoreUserInput();
    with_.doEvents();
    if (abandoned_) return;
    if (!run_.isMidiBackground) library_.BASS_ChannelPlay(run_.backgroundChannel, false);
    library_.BASS_ChannelPlay(run_.vocalChannel, false);
    library_.holdCardAtEndOf(run_.backgroundChannel);
    if (!prepareDestination()) return endWith(RunFailure::destinationNotWritable);
    if (run_.isMidiBackground && !midi_.playback.PlayMidi()) {
        midiFailed();
        return stopRec();
    }
    capture_.StartMixCapture();
    run_.isMixing = run_.recordChannel != 0;
    if (run_.isMixing) applySettings();
}

void MixingRun::applySettings() {
    with_.effects.PrepareEffects();
    with_.effects.ApplyAllEffects();
    SetBassVolume();
    with_.effects.applyTone();
    with_.effects.applyBalance();
    applyKey();
    applySyncOffset();
}

void MixingRun::applyKey() {
    if (run_.backgroundChannel != 0)
        library_.BASS_FX_TempoSet(run_.backgroundChannel, kTempoUnchanged, kRateUnchanged,
                                  static_cast<float>(run_.key));
    midi_.channels.transpose(run_.key);
}

// A place on the vocal's own time, so that setting it again changes nothing.
void MixingRun::applySyncOffset() {
    if (run_.vocalChannel == 0) return;
    const auto bytes =
        static_cast<std::int64_t>(library_.BASS_ChannelSeconds2Bytes(run_.vocalChannel, std::abs(run_.syncOffset)));
    library_.setChannelOffset(run_.vocalChannel, run_.syncOffset < 0 ? -bytes : bytes);
}

bool MixingRun::readPaths() {
    run_.backgroundPath = with_.fields.background;
    run_.vocalPath = with_.fields.vocal;
    run_.destinationPath = with_.fields.destination;
    if (run_.backgroundPath.empty() || run_.vocalPath.empty() || run_.destinationPath.empty()) {
        run_.failure = RunFailure::pathsMissing;
        with_.dialogs.messageBox(with_.language.lang(LangEntry::pathsMissing), kProductCaption, BoxIcon::information,
                                 BoxButtons::ok);
    } else if (isSameFile(run_.destinationPath, run_.backgroundPath) ||
               isSameFile(run_.destinationPath, run_.vocalPath)) {
        run_.failure = RunFailure::destinationIsSource;
    }
    return run_.failure == RunFailure::none;
}

bool MixingRun::openSources() {
    if (!run_.isMidiBackground) {
        const Handle source = openFile(run_.backgroundPath, BASS_STREAM_DECODE);
        run_.backgroundChannel = library_.BASS_FX_TempoCreate(source, BASS_FX_FREESOURCE);
    }
    run_.vocalChannel = openFile(run_.vocalPath, BASS_SAMPLE_LOOP);
    const bool background = run_.isMidiBackground || run_.backgroundChannel != 0;
    if (!abandoned_ && background && run_.vocalChannel != 0) {
        framesTotal_ = run_.isMidiBackground ? toFrames(midi_.playback.length())
                                             : toFrames(library_.BASS_ChannelGetLength(run_.backgroundChannel));
        return true;
    }
    if (!abandoned_) run_.failure = background ? RunFailure::vocalUnreadable : RunFailure::backgroundUnreadable;
    freeChannel(run_.backgroundChannel);
    freeChannel(run_.vocalChannel);
    return false;
}

// A long file takes a while: window events run meanwhile.
Handle MixingRun::openFile(const std::string& path, std::uint32_t flags) {
    constexpr std::chrono::milliseconds kPatience{10};
    auto opening = std::async(std::launch::async, [this, path, flags] {
        return library_.BASS_StreamCreateFile(false, path.c_str(), 0, 0, flags);
    });
    while (opening.wait_for(kPatience) != std::future_status::ready) with_.doEvents();
    return opening.get();
}

// Whatever kind of channel it is.
void MixingRun::freeChannel(std::uint32_t& channel) {
    library_.BASS_MusicFree(channel);
    library_.BASS_StreamFree(channel);
    channel = 0;
}

void MixingRun::endWith(RunFailure failure) {
    run_.failure = failure;
    stopRec();
}

bool MixingRun::prepareDestination() {
    if (!createFile(run_.destinationPath)) return false;
    run_.encodePath = with_.names.shortPath(run_.destinationPath);
    run_.encoderCommandLine = kEncoderCommand + with_.names.commandLineWord(run_.encodePath);
    return true;
}

void MixingRun::SetBassVolume() {
    if (run_.isMidiBackground)
        midi_.applyVolumeAndBalance();
    else
        SetChannelVolume(library_, run_.backgroundChannel, with_.settings.volume[0]);
    SetChannelVolume(library_, run_.vocalChannel, with_.settings.volume[1]);
}

void MixingRun::stopRec() {
    if (stopping_) return;
    const Flag stopping(stopping_);
    const Flag busy(busy_);
    const CardHold hold(library_);
    abandoned_ = true;
    framesAtEnd_ = framesDone();
    run_.isMixing = capture_.StopMixCapture();
    for (std::uint32_t* channel : {&run_.vocalChannel, &run_.backgroundChannel}) {
        library_.BASS_ChannelStop(*channel);
        library_.BASS_MusicFree(*channel);
    }
    midi_.playback.StopMidi();
    midi_.restoreTone();
    run_.vocalChannel = 0;
    run_.backgroundChannel = 0;
    with_.input.RestoreUserInput();
}

std::int64_t MixingRun::framesDone() const {
    if (!run_.isMixing) return framesAtEnd_;
    return run_.isMidiBackground ? toFrames(midi_.playback.position())
                                 : toFrames(library_.BASS_ChannelGetPosition(run_.backgroundChannel));
}

// A MIDI song may fade sooner than at its full length.
bool MixingRun::backgroundEnded() const {
    return framesDone() >= framesTotal_ || (run_.isMidiBackground && !midi_.playback.playing());
}

void MixingRun::Timer1_Timer() {
    if (!run_.isMixing || busy_) return;
    const bool ended = backgroundEnded();
    if (ended) framesTotal_ = framesDone();
    const double done = static_cast<double>(framesDone()) / static_cast<double>(framesTotal_);
    progressWidth_ = ended ? kProgressWidth : std::clamp(static_cast<int>(done * kProgressWidth), 0, kProgressWidth);
    applySyncOffset();
    if (progressWidth_ == kProgressWidth || !library_.BASS_Encode_IsActive(run_.recordChannel)) stopRec();
}

}  // namespace melvane
