// What the program knows of the MIDI song that is loaded. Flags are -1 (true) or 0.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/midi_messages.h"
#include "platform/music_performance.h"
#include "state/errors.h"

namespace melvane {

inline constexpr std::int16_t kUnusedChannel = -1;  // as a channel's number

constexpr std::int16_t asFlag(bool on) {
    return static_cast<std::int16_t>(on ? -1 : 0);
}

struct ChannelSettings {
    std::int16_t instrumentChanged = 0;
    std::int16_t volumeChanged = 0;
    std::int16_t balanceChanged = 0;
    std::int16_t instrument = 0;     // General MIDI program, 0..127
    std::int16_t channelNumber = 0;  // from 1; kUnusedChannel: it plays no notes
    std::int16_t volume = 0;         // controller 7, 0..127
    std::int16_t balance = 0;        // controller 10, 0..127; 64 is the centre
    std::int16_t state = 0;          // 2: used
    std::int16_t shown = 0;
    std::int16_t switchedOn = 0;
};

// What the song itself sets a channel to.
struct InitialSettings {
    std::int16_t volume = 0;
    std::int16_t balance = 0;
    std::int16_t instrument = 0;
};

// What of a channel the user has set, so that it is not the song's any more.
struct TouchedSettings {
    bool instrument = false;
    bool volume = false;
    bool balance = false;
};

// What the user has chosen for a channel; where nothing was, the song's own setting counts.
struct ChannelChoice {
    bool on = true;
    std::optional<std::int16_t> instrument;
    std::optional<std::int16_t> volume;  // of one that is off: 0
    std::optional<std::int16_t> balance;

    bool operator==(const ChannelChoice&) const = default;
};

// A table of the sixteen channels, from 0. Another index throws BoundsError.
template <typename T>
class ChannelTable {
public:
    T& operator[](std::int16_t channel) { return rows_[checked(channel)]; }
    const T& operator[](std::int16_t channel) const { return rows_[checked(channel)]; }

    bool operator==(const ChannelTable&) const = default;

private:
    static std::size_t checked(std::int16_t channel) {
        if (channel < 0 || channel >= kMidiChannels) throw BoundsError();
        return static_cast<std::size_t>(channel);
    }

    std::array<T, kMidiChannels> rows_{};
};

struct MidiState {
    ChannelTable<ChannelSettings> ChannelInfo;
    ChannelTable<InitialSettings> InitialChannel;
    ChannelTable<TouchedSettings> touched;
    ChannelTable<SongSettings> songSettings;
    ChannelTable<std::string> trackNames;  // "" where there is none
    std::vector<SongNote> notes;           // in the order of their beginnings
    std::uint16_t soloed = 0;              // a bit for each channel that is heard alone; none: all are heard
    std::string midiBytes;                 // the song's file
    std::string midiSettingsBlock;         // of the karaoke container it came in
    bool fileSettingsFound = false;        // such a block was read; nothing asks for it yet
    std::vector<std::string> midiPorts;    // descriptions; the first stands for port 1
    std::int16_t midiLoaded = 0;
    bool deviceOpen = false;  // a song is loaded into the performance
    float midiLength = 0;     // seconds
};

}  // namespace melvane
