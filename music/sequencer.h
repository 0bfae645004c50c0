// Walks through a song and tells a sink what is to sound, as the user has changed it. Mixing thread.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "music/live_channels.h"
#include "music/midi_sink.h"
#include "music/song.h"

namespace melvane::music {

class Sequencer {
public:
    // 1.0 is the song's own tempo. The sink must live longer.
    Sequencer(std::shared_ptr<const Song> song, double tempo, MidiSink& sink);

    // The song's end at this tempo, in frames.
    std::int64_t endFrame() const { return placeOf(song_->endFrame); }

    // Back to the beginning, where the user's settings go first, or to `frame` with all that is set and sounds there.
    void begin(const LiveChannels& live, std::int64_t frame = 0);
    void take(const LiveMessage& message, std::int64_t frame);
    // Sends everything before `frame`. Behind the song's end nothing is left on.
    void playTo(std::int64_t frame);

    // Everything was sent, the end of all notes included.
    bool finished() const { return finished_; }
    // A bit for each channel with a key down.
    std::uint16_t keysDown() const;
    // When a note or a pedal was let go last.
    std::int64_t lastRelease() const { return lastRelease_; }

private:
    // A key that is down: the song's, and the one that was sent for it.
    struct Sounding {
        int channel;
        std::uint8_t key;
        std::uint8_t sentKey;
    };

    std::int64_t placeOf(std::int64_t songFrame) const;
    void sendHeldBack(std::int64_t frame, const LiveChannels& before, const LiveChannels& now);
    void send(const SongEvent& event, std::int64_t frame);
    void sendNote(const SongEvent& event, std::int64_t frame);
    void sendControl(const SongEvent& event, std::int64_t frame);
    void sendSysex(const std::vector<std::uint8_t>& message, std::int64_t frame);
    std::uint8_t moved(int channel, std::uint8_t key) const;
    std::vector<Sounding>::iterator sounding(int channel, std::uint8_t key);
    void forgetNotes(int channel);
    void releaseAll();

    const std::shared_ptr<const Song> song_;
    const double tempo_;
    MidiSink* sink_;
    LiveChannels live_;
    std::size_t next_ = 0;
    std::vector<Sounding> sounding_;            // the oldest first
    std::array<bool, kMidiChannels> pedals_{};  // those that keep notes sounding
    std::int64_t lastRelease_ = 0;
    bool finished_ = false;
};

}  // namespace melvane::music
