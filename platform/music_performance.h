// Music as the program sees it: the bytes of a song become a segment, which a performance plays on one of the MIDI
// ports. The built-in synthesiser, always the first port, sounds on the audio library's card; the others are devices of
// the machine.
//
// Used on the user-interface thread. What waits may be called on another, by one thread at a time, while nothing else
// is asked of that performance but what says so: setPort asks the machine's servers, up to a second for each answer,
// and, like download and makeReady, reads sounds from a file; unload and closeDown wait up to 200 ms until the notes on
// a port have ended, and so does the end of a performance. Nothing else waits. What fails throws MusicError.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "platform/audio_library.h"

namespace melvane {

struct MusicError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// How the built-in synthesiser is listed among the ports.
inline constexpr const char* kSynthesizerPort = "Melvane synthesizer";

// The time of a message is given as reference time.
inline constexpr std::uint32_t kReferenceTime = 1;

// What a song itself sets a channel to before its first note there, or later; none of what it never sets.
struct SongSettings {
    std::optional<std::uint8_t> program;  // 0..127
    std::optional<std::uint8_t> volume;   // controller 7
    std::optional<std::uint8_t> balance;  // controller 10
};

// A note of a song, from its first frame at 44100 Hz to the first one behind it.
struct SongNote {
    std::int64_t begin = 0;
    std::int64_t end = 0;
    std::int16_t channel = 0;  // 0..15
    std::int16_t key = 0;      // 0..127; 60 is the middle C
};

// A song in memory.
class MusicSegment {
public:
    virtual ~MusicSegment() = default;
    // Seconds to the last event and, behind it, the longest that the last notes may take to fade.
    virtual double length() const = 0;
    virtual SongSettings settings(std::uint8_t channel) const = 0;
    // What the song calls the track that plays the channel (UTF-8); "" where it has no name or no notes.
    virtual std::string trackName(std::uint8_t channel) const = 0;
    // In the order of their beginnings.
    virtual std::vector<SongNote> notes() const = 0;
};

// Channels count from 0 to 15, 9 is percussion. Messages take effect at once, before the song begins at its first
// frame; `time` and `flags` (kReferenceTime) say when one was meant and change nothing here.
class MusicPerformance {
public:
    // Opens a song with its notes moved by so many semitones. Any thread, also when the performance has gone; reads
    // sounds from a file. Fails when there are none.
    using SongReader = std::function<std::unique_ptr<PcmSource>(int semitones)>;

    virtual ~MusicPerformance() = default;

    // Opens a port for `channelGroups` groups of 16 channels, of which the first is used. Port 0 is the default one,
    // the built-in synthesiser; `port` n is the one that is listed as n + 1; one that has gone, or can't be
    // opened, is replaced by the default one. Must come first. Fails when the port can't be opened, as when there are
    // no sounds for the synthesiser.
    virtual void setPort(int port, int channelGroups) = 0;

    // The port that is open, 0 where the default one took the place of another.
    virtual int port() const = 0;

    // The file that the sounds are taken from (UTF-8); "" on a device of the machine.
    virtual const std::string& soundFont() const = 0;

    // Makes the sounds that the segment needs ready, and lets go of them.
    virtual void download(const std::shared_ptr<MusicSegment>& segment) = 0;
    virtual void unload() = 0;

    // Any thread, while other operations go on: prepares what playSegment would have to wait for.
    virtual void makeReady() = 0;
    // Plays the downloaded segment from its beginning. The card ends with it: see AudioLibrary::holdCardAtEndOf.
    virtual void playSegment() = 0;
    // Stops with all notes off; nothing when nothing plays.
    virtual void stop() = 0;
    // Goes with the card, which is held while it is paused: what sounds on a device of the machine ends with what was
    // mixed, and is struck again when the card goes on.
    virtual void pause(bool paused) = 0;
    virtual bool playing() const = 0;
    // The playing stream on the card, silent where a device of the machine sounds; 0 when nothing plays.
    virtual Handle stream() const = 0;
    // Seconds of the segment that have sounded, also after its end; 0 before it was played.
    virtual double position() const = 0;

    // 1.0 is the song's own tempo.
    virtual void setMasterTempo(double factor) = 0;
    // Hundredths of a decibel; 0 leaves the song as it is.
    virtual void setMasterVolume(std::int32_t hundredthsOfDecibel) = 0;

    // What is sent here is the user's and wins over the song's own messages for the same setting of the channel
    // (program, volume, balance), also when the song is played again. Data beyond 127 count as 127; instrument 128 is
    // the drums, on the synthesiser only. A patch acts when its sounds have been read, and what is sent behind it acts
    // behind it; makeReady waits for them.
    virtual void sendPatch(std::int64_t time, std::uint32_t flags, std::uint8_t channel, std::uint8_t instrument,
                           std::uint8_t bankHigh, std::uint8_t bankLow) = 0;
    virtual void sendMidi(std::int64_t time, std::uint32_t flags, std::uint8_t channel, std::uint8_t status,
                          std::uint8_t data1, std::uint8_t data2) = 0;
    // Moves the notes that begin from now on by `semitones`; percussion is never moved.
    virtual void sendTranspose(std::int64_t time, std::uint32_t flags, std::uint8_t channel, int semitones) = 0;
    // Only the channels whose bits are set are heard, all of them where none is; their volumes stay as they are. Holds
    // for what is played later too.
    virtual void solo(std::uint16_t channels) = 0;
    // A bit for each channel that sounds now: a note of it is down or can still be heard. Any thread; never waits.
    virtual std::uint16_t soundingChannels() const = 0;
    // From now on the song's own messages count again on every channel; while it plays, so do those that were held
    // back.
    virtual void liftChannelSettings() = 0;

    // The segment as playSegment would play it now on the built-in synthesiser, for readers of the program's own. Fails
    // when none was downloaded.
    virtual SongReader reader() const = 0;

    // Stops, unloads and closes the port.
    virtual void closeDown(int channelGroups) = 0;
};

// The root of it all; one in a program.
class MusicSystem {
public:
    virtual ~MusicSystem() = default;
    // Asks the machine for the descriptions of its output ports, which may take two seconds; the first stands for
    // port 1. To be called on any thread, also one that outlives this.
    virtual std::function<std::vector<std::string>()> portSearch() const = 0;
    // A song from the bytes of a MIDI file. Any thread. Fails when they hold none.
    virtual std::shared_ptr<MusicSegment> loadSegment(std::string_view file) = 0;
    // `ports` are descriptions by which its setPort counts. It may outlive this.
    virtual std::unique_ptr<MusicPerformance> createPerformance(std::vector<std::string> ports) = 0;
};

}  // namespace melvane
