#include "app/mixing_run.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <utility>

#include "app/source_files.h"
#include "audio/modAudio.h"
#include "state/text_path.h"

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

bool isFile(const std::string& path) {
    std::error_code error;
    return std::filesystem::is_regular_file(toPath(path), error);
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

MixingRun::MixingRun(AudioLibrary& library, RunState& run, const PathFields& fields, const Settings& settings,
                     RecordingInput& input, EffectChain& effects, const modLang& language, Dialogs& dialogs,
                     const FileNames& names, DoEvents doEvents)
    : library_(library),
      run_(run),
      fields_(fields),
      settings_(settings),
      input_(input),
      effects_(effects),
      language_(language),
      dialogs_(dialogs),
      names_(names),
      doEvents_(doEvents),
      capture_(
          library, run, [this] { stopRec(); }, std::move(doEvents)) {}

void MixingRun::mi_button_Click() {
    if (run_.isMixing || busy_) return;
    const Flag busy(busy_);
    run_.failure = RunFailure::none;
    run_.lastMixPath.clear();
    framesTotal_ = framesAtEnd_ = 0;
    progressWidth_ = 0;
    if (!readPaths()) return;
    run_.isMidiBackground = isMidiFile(run_.backgroundPath);
    if (run_.isMidiBackground) {
        run_.failure = RunFailure::midiUnplayable;
        dialogs_.messageBox(language_.lang(33), kProductCaption, BoxIcon::critical, BoxButtons::ok);
        return;
    }
    // An older mix is not emptied for want of an encoder.
    if (isFile(run_.destinationPath) && !library_.encoderFound(kEncoderCommand)) {
        run_.failure = RunFailure::encoderNotStarted;
        return;
    }
    freeChannel(run_.backgroundChannel);
    freeChannel(run_.vocalChannel);
    input_.SelectMixInput();
    run_.recordsSilence = !input_.anyOn();
    const CardHold hold(library_);
    try {
        start();
    } catch (...) {
        stopRec();
        throw;
    }
}

void MixingRun::start() {
    if (!openSources()) return input_.RestoreUserInput();
    doEvents_();
    library_.BASS_ChannelPlay(run_.backgroundChannel, false);
    library_.BASS_ChannelPlay(run_.vocalChannel, false);
    library_.holdCardAtEndOf(run_.backgroundChannel);
    if (!prepareDestination()) return endWith(RunFailure::destinationNotWritable);
    capture_.StartMixCapture();
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
        library_.BASS_FX_TempoSet(run_.backgroundChannel, kTempoUnchanged, kRateUnchanged,
                                  static_cast<float>(run_.key));
}

// A place on the vocal's own time, so that setting it again changes nothing.
void MixingRun::applySyncOffset() {
    if (run_.vocalChannel == 0) return;
    const auto bytes =
        static_cast<std::int64_t>(library_.BASS_ChannelSeconds2Bytes(run_.vocalChannel, std::abs(run_.syncOffset)));
    library_.setChannelOffset(run_.vocalChannel, run_.syncOffset < 0 ? -bytes : bytes);
}

bool MixingRun::readPaths() {
    run_.backgroundPath = fields_.background;
    run_.vocalPath = fields_.vocal;
    run_.destinationPath = fields_.destination;
    if (run_.backgroundPath.empty() || run_.vocalPath.empty() || run_.destinationPath.empty()) {
        run_.failure = RunFailure::pathsMissing;
        dialogs_.messageBox(language_.lang(7), kProductCaption, BoxIcon::information, BoxButtons::ok);
    } else if (isSameFile(run_.destinationPath, run_.backgroundPath) ||
               isSameFile(run_.destinationPath, run_.vocalPath)) {
        run_.failure = RunFailure::destinationIsSource;
    }
    return run_.failure == RunFailure::none;
}

bool MixingRun::openSources() {
    const Handle source = library_.BASS_StreamCreateFile(false, run_.backgroundPath.c_str(), 0, 0, BASS_STREAM_DECODE);
    run_.backgroundChannel = library_.BASS_FX_TempoCreate(source, BASS_FX_FREESOURCE);
    run_.vocalChannel = library_.BASS_StreamCreateFile(false, run_.vocalPath.c_str(), 0, 0, BASS_SAMPLE_LOOP);
    if (run_.backgroundChannel == 0)
        run_.failure = RunFailure::backgroundUnreadable;
    else if (run_.vocalChannel == 0)
        run_.failure = RunFailure::vocalUnreadable;
    if (run_.failure != RunFailure::none) {
        freeChannel(run_.backgroundChannel);
        freeChannel(run_.vocalChannel);
        return false;
    }
    framesTotal_ = static_cast<std::int64_t>(library_.BASS_ChannelGetLength(run_.backgroundChannel) / kBytesPerFrame);
    return true;
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
    run_.encodePath = names_.shortPath(run_.destinationPath);
    run_.encoderCommandLine = kEncoderCommand + names_.commandLineWord(run_.encodePath);
    return true;
}

void MixingRun::SetBassVolume() {
    SetChannelVolume(library_, run_.backgroundChannel, settings_.volume[0]);
    SetChannelVolume(library_, run_.vocalChannel, settings_.volume[1]);
}

void MixingRun::stopRec() {
    if (stopping_) return;
    const Flag stopping(stopping_);
    const Flag busy(busy_);
    const CardHold hold(library_);
    framesAtEnd_ = framesDone();
    run_.isMixing = capture_.StopMixCapture();
    for (std::uint32_t* channel : {&run_.vocalChannel, &run_.backgroundChannel}) {
        library_.BASS_ChannelStop(*channel);
        library_.BASS_MusicFree(*channel);
    }
    run_.vocalChannel = 0;
    run_.backgroundChannel = 0;
    input_.RestoreUserInput();
}

std::int64_t MixingRun::framesDone() const {
    if (run_.backgroundChannel == 0) return framesAtEnd_;
    return static_cast<std::int64_t>(library_.BASS_ChannelGetPosition(run_.backgroundChannel) / kBytesPerFrame);
}

void MixingRun::Timer1_Timer() {
    if (!run_.isMixing || busy_) return;
    const auto length = static_cast<double>(library_.BASS_ChannelGetLength(run_.backgroundChannel));
    const auto position = static_cast<double>(library_.BASS_ChannelGetPosition(run_.backgroundChannel));
    progressWidth_ = std::clamp(static_cast<int>(position / length * kProgressWidth), 0, kProgressWidth);
    applySyncOffset();
    const bool ended = progressWidth_ == kProgressWidth || position >= length;
    if (ended || !library_.BASS_Encode_IsActive(run_.recordChannel)) stopRec();
}

}  // namespace melvane
