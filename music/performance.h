// Plays a song on the audio library's card, with the synthesiser or on a MIDI port of the machine.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "music/live_channels.h"
#include "music/next_synth.h"
#include "music/output_ports.h"
#include "music/song_source.h"
#include "music/synth_bus.h"
#include "platform/audio_library.h"
#include "platform/music_performance.h"

namespace melvane::music {

class Segment : public MusicSegment {
public:
    explicit Segment(Song song) : song_(std::make_shared<const Song>(std::move(song))) {}

    double length() const override;
    SongSettings settings(std::uint8_t channel) const override;
    std::string trackName(std::uint8_t channel) const override;
    std::vector<SongNote> notes() const override;
    const std::shared_ptr<const Song>& song() const { return song_; }

private:
    const std::shared_ptr<const Song> song_;
};

class Performance : public MusicPerformance {
public:
    // `soundFont` is the file to use, the best one installed when empty.
    // `listed` are the ports as setPort counts them.
    Performance(AudioLibrary& library, std::string soundFont, OutputPorts ports, std::vector<std::string> listed,
                std::shared_ptr<SynthBus> bus);
    ~Performance() override;

    void setPort(int port, int channelGroups) override;
    int port() const override { return port_ ? portNumber_ : 0; }
    const std::string& soundFont() const override { return font_; }
    void download(const std::shared_ptr<MusicSegment>& segment) override;
    void unload() override;
    void makeReady() override;
    void playSegment() override;
    void stop() override;
    void pause(bool paused) override;
    bool playing() const override;
    Handle stream() const override { return playing() ? stream_ : 0; }
    double position() const override;
    void setMasterTempo(double factor) override;
    void setMasterVolume(std::int32_t hundredthsOfDecibel) override;
    void sendPatch(std::int64_t time, std::uint32_t flags, std::uint8_t channel, std::uint8_t instrument,
                   std::uint8_t bankHigh, std::uint8_t bankLow) override;
    void sendMidi(std::int64_t time, std::uint32_t flags, std::uint8_t channel, std::uint8_t status, std::uint8_t data1,
                  std::uint8_t data2) override;
    void sendTranspose(std::int64_t time, std::uint32_t flags, std::uint8_t channel, int semitones) override;
    void solo(std::uint16_t channels) override;
    std::uint16_t soundingChannels() const override;
    void liftChannelSettings() override;
    SongReader reader() const override;
    void closeDown(int channelGroups) override;

private:
    void checkOpen() const;
    void tell(const LiveMessage& message);
    std::shared_ptr<Instrument> takeInstrument();
    double secondsAhead() const;
    std::int64_t framesSounded() const;

    AudioLibrary& library_;
    const std::string soundFont_;
    const OutputPorts ports_;
    const std::vector<std::string> listed_;
    const std::shared_ptr<SynthBus> bus_;
    bool open_ = false;
    std::shared_ptr<PortInstrument> port_;  // none: the synthesiser plays
    int portNumber_ = 0;                    // of port_
    std::shared_ptr<const Song> song_;
    std::string font_;  // of the synthesiser
    const std::shared_ptr<NextSynth> nextSynth_ = std::make_shared<NextSynth>();
    LiveChannels live_;
    double tempo_ = 1;

    // What plays or has played to its end.
    Handle stream_ = 0;
    std::shared_ptr<SongSource> source_;
    double streamTempo_ = 1;
    double stoppedAt_ = 0;
};

}  // namespace melvane::music
