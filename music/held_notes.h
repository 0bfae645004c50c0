// The notes of a song that sound at one moment: of keys that are down, or held by the pedal.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "music/midi_messages.h"

namespace melvane::music {

class HeldNotes {
public:
    void clear() {
        notes_.clear();
        pedals_ = {};
    }

    // The next message of a channel.
    void take(std::uint8_t status, std::uint8_t data1, std::uint8_t data2) {
        const int channel = status & 0x0F;
        const int kind = status & 0xF0;
        if (kind == kNoteOn && data2 > 0)
            strike(channel, data1, data2);
        else if (kind == kNoteOn || kind == kNoteOff)
            release(channel, data1);
        else if (kind == kControlChange)
            control(channel, data1, data2);
    }

    // Calls send(status, data1, data2) with what lets go of the keys that are down,
    template <typename Send>
    void letGo(Send send) const {
        for (const Note& note : notes_)
            if (note.down) send(onChannel(kNoteOff, note.channel), note.key, kReleaseVelocity);
    }
    // and with what makes all of them sound again.
    template <typename Send>
    void strikeAgain(Send send) const {
        for (int channel = 0; channel < kMidiChannels; ++channel)
            if (isPressed(channel)) send(onChannel(kControlChange, channel), kSustain, pedal(channel));
        for (const Note& note : notes_) {
            send(onChannel(kNoteOn, note.channel), note.key, note.velocity);
            if (!note.down) send(onChannel(kNoteOff, note.channel), note.key, kReleaseVelocity);
        }
    }

private:
    struct Note {
        int channel;
        std::uint8_t key, velocity;
        bool down;  // or held by the pedal
    };

    std::uint8_t pedal(int channel) const { return pedals_[static_cast<std::size_t>(channel)]; }
    bool isPressed(int channel) const { return pedal(channel) >= 64; }

    void strike(int channel, std::uint8_t key, std::uint8_t velocity) {
        std::erase_if(notes_, [&](const Note& n) { return n.channel == channel && n.key == key; });
        notes_.push_back({channel, key, velocity, true});
    }

    void release(int channel, std::uint8_t key) {
        for (Note& note : notes_) note.down = note.down && !(note.channel == channel && note.key == key);
        endReleased(channel);
    }

    void control(int channel, std::uint8_t controller, std::uint8_t value) {
        const bool endsNotes = controller == kAllSoundOff || controller >= kAllNotesOff;
        if (endsNotes) std::erase_if(notes_, [&](const Note& n) { return n.channel == channel; });
        if (controller != kSustain && controller != kResetControllers) return;
        pedals_[static_cast<std::size_t>(channel)] = controller == kSustain ? value : std::uint8_t{0};
        endReleased(channel);
    }

    void endReleased(int channel) {
        if (isPressed(channel)) return;
        std::erase_if(notes_, [&](const Note& n) { return n.channel == channel && !n.down; });
    }

    std::vector<Note> notes_;  // in order of time
    std::array<std::uint8_t, kMidiChannels> pedals_{};
};

}  // namespace melvane::music
