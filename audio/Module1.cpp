#include "audio/Module1.h"

#include <new>
#include <utility>

#include "audio/encoder_tag.h"
#include "base/verdict.h"
#include "state/window_patience.h"

namespace melvane {

namespace {

// A published value without meaning here: not one of its bits asks for 8-bit or floating-point samples.
constexpr std::uint32_t kCaptureFlags = 32;

}  // namespace

Module1::Module1(AudioLibrary& library, RunState& run, std::function<void()> stopRec,
                 std::function<RunFailure(std::int64_t)> publish, DoEvents doEvents)
    : library_(library),
      run_(run),
      stopRec_(std::move(stopRec)),
      publish_(std::move(publish)),
      doEvents_(std::move(doEvents)) {}

// The captured data reaches the encoder by itself; the callback tells whether to go on, and measures beside it.
bool Module1::MixRecordProc(Handle handle, const void* buffer, std::uint32_t length, void* user) {
    auto& self = *static_cast<Module1*>(user);
    self.meterBlock(handle, static_cast<const std::int16_t*>(buffer), length / kBytesPerFrame);
    return self.library_.BASS_Encode_IsActive(handle);
}

void Module1::meterBlock(Handle handle, const std::int16_t* samples, std::size_t frames) {
    const std::lock_guard lock(meterMutex_);
    if (!meter_ || metered_ != handle) return;
    try {
        meter_->add(samples, frames);
    } catch (const std::bad_alloc&) {
        meter_.reset();  // the loudness remains unknown
    }
}

void Module1::StartMixCapture(const std::function<bool()>& wanted) {
    if (run_.lastMixStream != 0) {
        library_.BASS_StreamFree(run_.lastMixStream);
        run_.lastMixStream = 0;
    }
    if (run_.recordChannel != 0) {
        library_.BASS_Encode_Stop(run_.recordChannel);
        library_.BASS_ChannelStop(run_.recordChannel);
    }
    run_.recordChannel = openInputs(wanted);
    if (!wanted()) return;
    if (run_.recordChannel == 0) return giveUp(RunFailure::captureNotStarted, 0);
    if (!library_.BASS_Encode_Start(run_.recordChannel, run_.encoderCommandLine.c_str(), 0, nullptr, nullptr))
        return giveUp(library_.encoderSearch(run_.encoderCommandLine)() ? RunFailure::encoderNotRun
                                                                        : RunFailure::encoderNotStarted,
                      run_.recordChannel);
    if (measures_) {
        const std::lock_guard lock(meterMutex_);
        meter_ = std::make_unique<LoudnessMeter>();
        metered_ = run_.recordChannel;
    }
    if (!library_.BASS_ChannelPlay(run_.recordChannel, false)) giveUp(RunFailure::noThread, run_.recordChannel);
}

// A sound server may take its time.
Handle Module1::openInputs(const std::function<bool()>& wanted) {
    const auto events = [&] {
        doEvents_();
        if (!wanted()) library_.giveUpOpening();
    };
    const auto open = [this] { return library_.BASS_RecordStart(kSampleRate, 2, kCaptureFlags, MixRecordProc, this); };
    const Handle channel = whileEventsRun(events, open);
    if (wanted()) return channel;
    whileEventsRun(doEvents_, [&] { library_.BASS_ChannelStop(channel); });
    return 0;
}

void Module1::giveUp(RunFailure failure, Handle channel) {
    run_.failure = failure;
    library_.BASS_ChannelStop(channel);
    run_.recordChannel = 0;
    stopRec_();
}

bool Module1::StopMixCapture() {
    if (run_.recordChannel == 0) return false;
    library_.BASS_Encode_Stop(run_.recordChannel);
    library_.BASS_ChannelStop(run_.recordChannel);
    while (library_.BASS_Encode_IsActive(run_.recordChannel)) doEvents_();
    // What was mixed until song or voice was lost is kept too.
    const RunFailure end = finish();
    if (run_.failure == RunFailure::none) run_.failure = end;
    if (run_.failure != RunFailure::none) {
        library_.BASS_StreamFree(run_.lastMixStream);
        run_.lastMixStream = 0;
    }
    run_.recordChannel = 0;
    doEvents_();
    return false;
}

// The encoder does not report its last writes, nor what it left out: what it says of the file must be what it was
// given, and so must what is there to be played.
bool Module1::isWhole(std::int64_t frames) {
    library_.BASS_StreamFree(run_.lastMixStream);
    run_.lastMixStream = library_.BASS_StreamCreateFile(false, run_.encodePath.c_str(), 0, 0, 0);
    if (run_.lastMixStream == 0) return false;
    const auto playable =
        static_cast<std::int64_t>(library_.BASS_ChannelGetLength(run_.lastMixStream) / kBytesPerFrame);
    return playable == frames && taggedFrames(run_.encodePath) == frames;
}

// Stopped before the first frame, there is no file.
RunFailure Module1::finish() {
    if (library_.encoderState(run_.recordChannel) == EncoderState::failed) return RunFailure::encoderFailed;
    const std::int64_t frames = library_.framesEncoded(run_.recordChannel);
    if (frames == 0) return RunFailure::none;
    noteLoudness();
    const Verdict verdict =
        whileEventsRun(doEvents_, [&] { return judge(run_.encodePath, [&] { return isWhole(frames); }); });
    if (verdict == Verdict::bad) return RunFailure::encoderFailed;
    // It is kept then, but not called a mix.
    if (verdict == Verdict::unknown && run_.failure == RunFailure::none)
        run_.failure = RunFailure::destinationNotWritable;
    return publish_(frames);
}

void Module1::noteLoudness() {
    const std::lock_guard lock(meterMutex_);
    if (meter_) run_.loudness = meter_->result();
    meter_.reset();
}

}  // namespace melvane
