#include "audio/Module1.h"

#include <utility>

#include "audio/encoder_tag.h"
#include "base/verdict.h"
#include "state/window_patience.h"

namespace melvane {

namespace {

// A published value without meaning here: not one of its bits asks for 8-bit or floating-point samples.
constexpr std::uint32_t kCaptureFlags = 32;

// The captured data reaches the encoder by itself; the callback only tells whether to go on.
bool MixRecordProc(Handle handle, const void*, std::uint32_t, void* user) {
    return static_cast<AudioLibrary*>(user)->BASS_Encode_IsActive(handle);
}

}  // namespace

Module1::Module1(AudioLibrary& library, RunState& run, std::function<void()> stopRec,
                 std::function<RunFailure(std::int64_t)> publish, DoEvents doEvents)
    : library_(library),
      run_(run),
      stopRec_(std::move(stopRec)),
      publish_(std::move(publish)),
      doEvents_(std::move(doEvents)) {}

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
    if (!library_.BASS_ChannelPlay(run_.recordChannel, false)) giveUp(RunFailure::noThread, run_.recordChannel);
}

// A sound server may take its time.
Handle Module1::openInputs(const std::function<bool()>& wanted) {
    const auto events = [&] {
        doEvents_();
        if (!wanted()) library_.giveUpOpening();
    };
    const auto open = [this] {
        return library_.BASS_RecordStart(kSampleRate, 2, kCaptureFlags, MixRecordProc, &library_);
    };
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
    const Verdict verdict =
        whileEventsRun(doEvents_, [&] { return judge(run_.encodePath, [&] { return isWhole(frames); }); });
    if (verdict == Verdict::bad) return RunFailure::encoderFailed;
    // It is kept then, but not called a mix.
    if (verdict == Verdict::unknown && run_.failure == RunFailure::none)
        run_.failure = RunFailure::destinationNotWritable;
    return publish_(frames);
}

}  // namespace melvane
