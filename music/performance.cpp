#include "music/performance.h"

#include <algorithm>
#include <cmath>

#include "music/song_notes.h"
#include "music/sound_fonts.h"

namespace melvane::music {

namespace {

constexpr int kFullVolume = 0x3FFF;

// The square law of MIDI volumes; a port can't play louder than the song.
int portVolume(std::int32_t hundredthsOfDecibel) {
    return static_cast<int>(std::lround(kFullVolume * std::pow(10.0, std::min(hundredthsOfDecibel, 0) / 4000.0)));
}

std::uint8_t checkedChannel(int channel) {
    if (channel < 0 || channel >= kMidiChannels) throw MusicError("There is no such channel.");
    return static_cast<std::uint8_t>(channel);
}

std::uint8_t dataByte(std::uint8_t value) {
    return std::min<std::uint8_t>(value, 0x7F);
}

}  // namespace

double Segment::length() const {
    return static_cast<double>(song_->endFrame + kTailFrames) / kSampleRate;
}

SongSettings Segment::settings(std::uint8_t channel) const {
    SongSettings settings;
    bool played = false;
    const auto take = [&](std::optional<std::uint8_t>& setting, std::uint8_t value) {
        if (!played || !setting) setting = value;
    };
    for (const SongEvent& event : song_->events) {
        if (event.status == kSystemExclusive || (event.status & 0x0F) != channel) continue;
        const int kind = event.status & 0xF0;
        if (kind == kNoteOn && event.data2 > 0) played = true;
        if (kind == kProgramChange) take(settings.program, event.data1);
        if (kind == kControlChange && event.data1 == kVolumeController) take(settings.volume, event.data2);
        if (kind == kControlChange && event.data1 == kBalanceController) take(settings.balance, event.data2);
    }
    return settings;
}

std::vector<SongNote> Segment::notes() const {
    return notesOf(*song_);
}

std::string Segment::trackName(std::uint8_t channel) const {
    return channel < song_->trackNames.size() ? song_->trackNames[channel] : "";
}

Performance::Performance(AudioLibrary& library, std::string soundFont, OutputPorts ports,
                         std::vector<std::string> listed, std::shared_ptr<SynthBus> bus)
    : library_(library),
      soundFont_(std::move(soundFont)),
      ports_(ports),
      listed_(std::move(listed)),
      bus_(std::move(bus)) {}

Performance::~Performance() {
    stop();
}

void Performance::setPort(int port, int channelGroups) {
    closeDown(channelGroups);
    const auto index = static_cast<std::size_t>(port);
    if (port > 0 && index < listed_.size()) port_ = ports_.open(listed_[index]);
    portNumber_ = port;
    if (!port_) {
        font_ = soundFont_.empty() ? findSoundFont() : soundFont_;
        nextSynth_->use(font_);
    }
    open_ = true;
}

void Performance::closeDown(int) {
    unload();
    port_.reset();
    open_ = false;
    font_.clear();
    nextSynth_->use(font_);
}

void Performance::checkOpen() const {
    if (!open_) throw MusicError("No port is open.");
}

// --- segment ---

void Performance::download(const std::shared_ptr<MusicSegment>& segment) {
    checkOpen();
    const auto ours = std::dynamic_pointer_cast<Segment>(segment);
    if (!ours) throw MusicError("There is no song.");
    if (!port_) nextSynth_->hold(*ours->song());
    song_ = ours->song();
}

void Performance::unload() {
    stop();
    song_.reset();
    nextSynth_->clear();
}

void Performance::makeReady() {
    nextSynth_->prepare();
}

void Performance::playSegment() {
    checkOpen();
    if (!song_) throw MusicError("No song is ready to play.");
    stop();
    source_ = std::make_shared<SongSource>(song_, tempo_, live_, takeInstrument(), bus_);
    stream_ = library_.createStream(source_);
    if (!stream_) throw MusicError("The song can't be played.");
    streamTempo_ = tempo_;
    bus_->attach(stream_);
    library_.BASS_ChannelPlay(stream_, false);
    library_.holdCardAtEndOf(stream_);
}

void Performance::stop() {
    if (stream_) {
        stoppedAt_ = position();
        library_.BASS_StreamFree(stream_);
        if (port_) port_->stop();
    }
    stream_ = 0;
    source_.reset();
}

void Performance::pause(bool paused) {
    if (port_ && stream_) port_->pause(paused);
}

// The card reads ahead: at the end of the song some of it has still to sound.
bool Performance::playing() const {
    return stream_ &&
           (library_.BASS_ChannelIsActive(stream_) == ChannelActivity::playing || framesSounded() < source_->endedAt());
}

double Performance::position() const {
    if (!stream_) return stoppedAt_;
    return static_cast<double>(framesSounded()) / kSampleRate * streamTempo_;
}

std::int64_t Performance::framesSounded() const {
    return static_cast<std::int64_t>(library_.BASS_ChannelGetPosition(stream_) / kBytesPerFrame);
}

std::shared_ptr<Instrument> Performance::takeInstrument() {
    if (port_) {
        port_ = std::make_shared<PortInstrument>(*port_, secondsAhead());
        port_->reset();
        return port_;
    }
    return nextSynth_->take();
}

double Performance::secondsAhead() const {
    BASS_INFO info;
    library_.BASS_GetInfo(info);
    return info.latency / 1000.0;
}

// --- settings ---

void Performance::setMasterTempo(double factor) {
    if (!(factor >= 0.01 && factor <= 100)) throw MusicError("There is no such tempo.");
    tempo_ = factor;
}

void Performance::setMasterVolume(std::int32_t hundredthsOfDecibel) {
    bus_->setMasterVolume(hundredthsOfDecibel);
    if (port_) tell(MasterVolumeMessage{portVolume(hundredthsOfDecibel)});
}

void Performance::sendPatch(std::int64_t, std::uint32_t, std::uint8_t channel, std::uint8_t instrument,
                            std::uint8_t bankHigh, std::uint8_t bankLow) {
    checkedChannel(channel);
    checkOpen();
    if (port_ && instrument == kPercussionInstrument) return;  // no device has them there
    const Patch patch{dataByte(bankHigh), dataByte(bankLow),
                      instrument == kPercussionInstrument ? instrument : dataByte(instrument)};
    tell(port_ ? PatchMessage{channel, patch} : PatchMessage{channel, patch, nextSynth_->askFor(channel, patch)});
}

void Performance::sendMidi(std::int64_t, std::uint32_t, std::uint8_t channel, std::uint8_t status, std::uint8_t data1,
                           std::uint8_t data2) {
    if (status < kNoteOff || status >= kSystemExclusive) throw MusicError("There is no such message.");
    const int whole = (status & 0xF0) | checkedChannel(channel);
    tell(ShortMessage{static_cast<std::uint8_t>(whole), dataByte(data1), dataByte(data2)});
}

void Performance::sendTranspose(std::int64_t, std::uint32_t, std::uint8_t channel, int semitones) {
    tell(TransposeMessage{checkedChannel(channel), std::clamp(semitones, -127, 127)});
}

void Performance::solo(std::uint16_t channels) {
    tell(SoloMessage{channels});
}

std::uint16_t Performance::soundingChannels() const {
    return playing() ? source_->sounding() : std::uint16_t{0};
}

void Performance::liftChannelSettings() {
    tell(LiftMessage{});
}

// With sounds of its own: those of the performance belong to what it plays.
MusicPerformance::SongReader Performance::reader() const {
    if (!song_) throw MusicError("No song is ready to play.");
    return [song = song_, tempo = tempo_, live = live_, font = port_ ? soundFont_ : font_,
            bus = std::make_shared<SynthBus>(library_)](int semitones) {
        LiveChannels moved = live;
        for (std::uint8_t channel = 0; channel < kMidiChannels; ++channel)
            moved.keep(TransposeMessage{channel, semitones});
        const auto synth = std::make_shared<NextSynth>();
        synth->use(font.empty() ? findSoundFont() : font);
        synth->hold(*song);
        for (int channel = 0; channel < kMidiChannels; ++channel)
            if (const auto& patch = live.patch(channel)) synth->askFor(channel, *patch);
        return std::make_unique<SongSource>(song, tempo, moved, synth->take(), bus);
    };
}

void Performance::tell(const LiveMessage& message) {
    checkOpen();
    live_.keep(message);
    if (source_) source_->post(message);
}

}  // namespace melvane::music
