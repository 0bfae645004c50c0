#include "mixing/mix_graph.h"

#include <cmath>

#include "audio/modAudio.h"
#include "mixing/failure_cause.h"
#include "state/window_patience.h"

namespace melvane {

namespace {

std::int64_t toFrames(std::uint64_t bytes) {
    return static_cast<std::int64_t>(bytes / kBytesPerFrame);
}

std::int64_t toFrames(double seconds) {
    return std::llround(seconds * kSampleRate);
}

}  // namespace

MixGraph::MixGraph(const Environment& environment, MixState& state, EffectChain& effects, MidiBackground& midi)
    : with_(environment), run_(state.run), settings_(state.settings), effects_(effects), midi_(midi) {}

bool MixGraph::open(const std::function<bool()>& wanted) {
    run_.voiceOutsideSong = false;
    if (run_.isMidiBackground) {
        midi_.renewPort();
    } else if (!isVoiceAlone()) {
        const Handle source = openFile(run_.backgroundPath, BASS_STREAM_DECODE, wanted);
        run_.backgroundChannel = with_.library.BASS_FX_TempoCreate(source, BASS_FX_FREESOURCE);
    }
    if (!run_.vocalPath.empty())
        run_.vocalChannel = openFile(run_.vocalPath, BASS_SAMPLE_LOOP, wanted, run_.voicePlace.driftPpm);
    const bool song = isVoiceAlone() || run_.isMidiBackground || run_.backgroundChannel != 0;
    if (wanted() && song && (run_.vocalPath.empty() || run_.vocalChannel != 0)) {
        const Handle longest = isVoiceAlone() ? run_.vocalChannel : run_.backgroundChannel;
        length_ =
            run_.isMidiBackground ? toFrames(midi_.length()) : toFrames(with_.library.BASS_ChannelGetLength(longest));
        voiceLength_ = toFrames(with_.library.BASS_ChannelGetLength(run_.vocalChannel));
        return true;
    }
    if (wanted() && run_.failure == RunFailure::none) {
        run_.failure = song ? RunFailure::vocalUnreadable : RunFailure::backgroundUnreadable;
        const std::string& path = song ? run_.vocalPath : run_.backgroundPath;
        run_.cause = whileEventsRun(with_.doEvents, [&] { return readingError(path); });
        run_.decoding = with_.library.decoding(path).failure;
    }
    freeChannel(run_.backgroundChannel);
    freeChannel(run_.vocalChannel);
    return false;
}

// A long file takes a while: window events run meanwhile.
Handle MixGraph::openFile(const std::string& path, std::uint32_t flags, const std::function<bool()>& wanted,
                          double driftPpm) {
    if (!wanted()) return 0;
    return whileEventsRun(
        [&] {
            with_.doEvents();
            if (!wanted()) with_.library.giveUpOpening();
        },
        [&] {
            return driftPpm == 0 ? with_.library.BASS_StreamCreateFile(false, path.c_str(), 0, 0, flags)
                                 : with_.library.openRecording(path, driftPpm, flags);
        });
}

// Whatever kind of channel it is.
void MixGraph::freeChannel(std::uint32_t& channel) {
    with_.library.BASS_MusicFree(channel);
    with_.library.BASS_StreamFree(channel);
    channel = 0;
}

void MixGraph::closeLast() {
    if (run_.isMidiBackground) {
        midi_.setTone();
    } else {
        freeChannel(run_.backgroundChannel);
        midi_.close();
    }
    freeChannel(run_.vocalChannel);
}

void MixGraph::playFiles() {
    if (run_.backgroundChannel != 0) with_.library.BASS_ChannelPlay(run_.backgroundChannel, false);
    if (run_.vocalChannel != 0) with_.library.BASS_ChannelPlay(run_.vocalChannel, false);
    with_.library.holdCardAtEndOf(isVoiceAlone() ? run_.vocalChannel : run_.backgroundChannel);
}

bool MixGraph::playSong() {
    return !run_.isMidiBackground || midi_.PlayMidi();
}

void MixGraph::playKept(std::shared_ptr<PcmSource> mix) {
    close();
    kept_ = true;
    length_ = mix->frames();
    run_.backgroundChannel = with_.library.createStream(std::move(mix));
    with_.library.BASS_ChannelPlay(run_.backgroundChannel, false);
    with_.library.holdCardAtEndOf(run_.backgroundChannel);
}

void MixGraph::applySettings() {
    if (kept_) return;
    effects_.PrepareEffects();
    effects_.ApplyAllEffects();
    SetBassVolume();
    if (run_.voiceTrim != 0) applyTrim();
    effects_.applyTone();
    effects_.applyBalance();
    applyKey();
    applySyncOffset();
}

void MixGraph::pause() {
    with_.library.holdCard();
    midi_.pause(true);
}

void MixGraph::goOn() {
    midi_.pause(false);
    with_.library.resumeCard();
}

void MixGraph::close() {
    for (std::uint32_t* channel : {&run_.vocalChannel, &run_.backgroundChannel}) {
        with_.library.BASS_ChannelStop(*channel);
        with_.library.BASS_MusicFree(*channel);
        *channel = 0;
    }
    kept_ = false;
    midi_.StopMidi();
    midi_.restoreTone();
}

void MixGraph::SetBassVolume() {
    if (run_.isMidiBackground)
        midi_.applyVolumeAndBalance();
    else
        SetChannelVolume(with_.library, run_.backgroundChannel, settings_.volume[0]);
    SetChannelVolume(with_.library, run_.vocalChannel, settings_.volume[1]);
}

void MixGraph::applyTrim() {
    if (run_.vocalChannel != 0) with_.library.trimChannel(run_.vocalChannel, run_.voiceTrim);
}

void MixGraph::applyKey() {
    if (run_.backgroundChannel != 0)
        with_.library.BASS_FX_TempoSet(run_.backgroundChannel, kTempoUnchanged, kRateUnchanged,
                                       static_cast<float>(run_.key));
    midi_.transpose(run_.key);
}

// A place on the vocal's own time, so that setting it again changes nothing. A voice alone begins at its beginning.
void MixGraph::applySyncOffset() {
    if (run_.vocalChannel == 0) return;
    run_.voiceOutsideSong = false;
    if (isVoiceAlone()) return static_cast<void>(with_.library.placeChannel(run_.vocalChannel, 0, true));
    const std::int64_t earlier = run_.voicePlace.earlier + toFrames(static_cast<double>(run_.syncOffset));
    with_.library.placeChannel(run_.vocalChannel, earlier, run_.voicePlace.given());
    const bool known = length_ > 0 && voiceLength_ > 0;
    run_.voiceOutsideSong = known && run_.voicePlace.given() && (earlier >= voiceLength_ || -earlier >= length_);
}

std::int64_t MixGraph::position() const {
    return isMidi() ? toFrames(midi_.position())
                    : toFrames(with_.library.BASS_ChannelGetPosition(run_.backgroundChannel));
}

bool MixGraph::ended() const {
    return position() >= length_ || (isMidi() && !midi_.playing());
}

RunFailure MixGraph::lostSource() const {
    if (with_.library.channelFailed(run_.backgroundChannel)) return RunFailure::backgroundLost;
    if (with_.library.channelFailed(run_.vocalChannel)) return RunFailure::vocalLost;
    return RunFailure::none;
}

}  // namespace melvane
