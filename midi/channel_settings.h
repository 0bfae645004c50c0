// The user's own settings for the channels of a song: kept in the channel table and sent to the performance at once,
// if there is one. The song's file never changes. Used on the user-interface thread.
//
// Values are 0..127 and sent as one byte. Setters end silently at the first failure, be it a channel outside 0..15 or
// a message that can't be sent; what was recorded before it stays.
#pragma once

#include <cstdint>
#include <functional>

#include "midi/midi_device.h"
#include "state/midi_state.h"
#include "state/run_state.h"
#include "state/settings.h"

namespace melvane {

class MidiChannels {
public:
    MidiChannels(MidiState& state, MidiDevice& device, const Settings& settings, const DoEvents& doEvents)
        : state_(state), device_(device), settings_(settings), doEvents_(doEvents) {}

    // Called when the whole table has changed.
    std::function<void()> updateChannels = [] {};

    void setChannelInstrument(std::int16_t channel, std::int16_t instrument);
    void setChannelVolume(std::int16_t channel, std::int16_t volume);
    void setChannelBalance(std::int16_t channel, std::int16_t balance);
    // Sets the volume, and keeps whether the user has the channel on. Throws BoundsError.
    void switchChannel(std::int16_t channel, std::int16_t volume, bool on);
    // Throws BoundsError.
    std::int16_t GetInstrument(std::int16_t channel) const;

    // The background's volume. Throws OverflowError for one beyond 16-bit arithmetic.
    void SetMidiVolume();
    // Moves the notes of every used channel but the percussion by `key` semitones, rounded to whole ones.
    void transpose(double key);

    // Records the settings of a used channel; off is volume 0. Sends nothing. Throws BoundsError.
    void SetSingleChannel(std::int16_t channel, bool on, std::int16_t volume, std::int16_t balance,
                          std::int16_t instrument);
    // Sends what SetSingleChannel has recorded since the song was read.
    void ApplyChannelSettings();
    // Back to what the song itself sets; nothing before a song was loaded.
    void MidiRestore();

private:
    MusicPerformance& performance();
    void sendInstrument(std::int16_t channel);
    void sendVolume(std::int16_t channel);
    void sendBalance(std::int16_t channel);

    MidiState& state_;
    MidiDevice& device_;
    const Settings& settings_;
    DoEvents doEvents_;
};

}  // namespace melvane
