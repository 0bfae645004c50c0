// What the user has set on the channels of a song, which wins over the song's own messages.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <variant>

#include "music/midi_messages.h"
#include "music/midi_sink.h"
#include "music/song.h"

namespace melvane::music {

struct Patch {
    std::uint8_t bankHigh = 0;
    std::uint8_t bankLow = 0;
    std::uint8_t program = 0;
};

void sendPatch(MidiSink& sink, std::int64_t frame, int channel, const Patch& patch);
// 14 bits, as the universal message; full is the song as it is.
void sendMasterVolume(MidiSink& sink, std::int64_t frame, int value);

// Of a patch: whether they are in memory.
enum class Sounds : std::uint8_t { awaited, loaded, missing };

struct PatchMessage {
    std::uint8_t channel;
    Patch patch;
    std::shared_ptr<const std::atomic<Sounds>> sounds = {};  // none: nothing has to be read

    bool has(Sounds state) const { return sounds && *sounds == state; }
};
struct ShortMessage {
    std::uint8_t status, data1, data2;
};
struct TransposeMessage {
    std::uint8_t channel;
    int semitones;
};
// A bit for each channel that is heard; none: all are.
struct SoloMessage {
    std::uint16_t channels;
};
struct LiftMessage {};
struct MasterVolumeMessage {
    int value;
};
using LiveMessage =
    std::variant<PatchMessage, ShortMessage, TransposeMessage, SoloMessage, LiftMessage, MasterVolumeMessage>;

class LiveChannels {
public:
    // Keeps what a message sets.
    void keep(const LiveMessage& message);

    // Whether a message of the song is to be left out.
    bool overrides(const SongEvent& event) const;
    bool overrides(std::span<const std::uint8_t> sysex) const { return masterVolume_ && isMasterVolume(sysex); }
    // Others are heard alone.
    bool silenced(int channel) const { return soloed_ != 0 && !(soloed_ >> channel & 1); }
    // Such a message is kept, but not to be sent.
    bool silences(const ShortMessage& message) const;
    const std::optional<Patch>& patch(int channel) const { return channels_[static_cast<std::size_t>(channel)].patch; }
    int transposition(int channel) const { return channels_[static_cast<std::size_t>(channel)].semitones; }

    // Sends the user's settings of one channel or all of them.
    void sendSettings(MidiSink& sink, std::int64_t frame, int channel) const;
    void sendSettings(MidiSink& sink, std::int64_t frame) const;
    void sendVolumes(MidiSink& sink, std::int64_t frame) const;

private:
    struct Channel {
        std::optional<Patch> patch;
        std::optional<std::uint8_t> volume;
        std::optional<std::uint8_t> balance;
        int semitones = 0;
    };

    void sendVolume(MidiSink& sink, std::int64_t frame, int channel) const;
    void keepShort(const ShortMessage& message);

    std::array<Channel, kMidiChannels> channels_;
    std::optional<int> masterVolume_;
    std::uint16_t soloed_ = 0;
};

}  // namespace melvane::music
