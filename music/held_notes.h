// The notes of a song that sound at one moment: of keys that are down, or held by a pedal.
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
        sustain_ = sostenuto_ = {};
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
    // and with what makes all of them sound again. The sostenuto pedal holds what is down when it is pressed, so it
    // comes between those that it held and the others.
    template <typename Send>
    void strikeAgain(Send send) const {
        const auto strikeAll = [&](bool held) {
            for (const Note& note : notes_)
                if (note.held == held) send(onChannel(kNoteOn, note.channel), note.key, note.velocity);
        };
        sendPressed(send, sustain_, kSustain, true);
        sendPressed(send, sostenuto_, kSostenuto, false);
        strikeAll(true);
        sendPressed(send, sostenuto_, kSostenuto, true);
        strikeAll(false);
        for (const Note& note : notes_)
            if (!note.down) send(onChannel(kNoteOff, note.channel), note.key, kReleaseVelocity);
    }

private:
    struct Note {
        int channel;
        std::uint8_t key, velocity;
        bool down;          // or held by a pedal
        bool held = false;  // by the sostenuto pedal
    };
    using Pedals = std::array<std::uint8_t, kMidiChannels>;

    static std::uint8_t& of(Pedals& pedals, int channel) { return pedals[static_cast<std::size_t>(channel)]; }
    static bool isPressed(std::uint8_t pedal) { return pedal >= 64; }

    // The pedals that are pressed, or that they are up.
    template <typename Send>
    static void sendPressed(Send send, Pedals pedals, std::uint8_t controller, bool down) {
        for (int channel = 0; channel < kMidiChannels; ++channel)
            if (const std::uint8_t pedal = of(pedals, channel); isPressed(pedal))
                send(onChannel(kControlChange, channel), controller, down ? pedal : std::uint8_t{0});
    }

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
        if (controller == kResetControllers) value = 0;
        if (controller == kSostenuto || controller == kResetControllers) pressSostenuto(channel, value);
        if (controller == kSustain || controller == kResetControllers) of(sustain_, channel) = value;
        endReleased(channel);
    }

    void pressSostenuto(int channel, std::uint8_t value) {
        const bool before = isPressed(of(sostenuto_, channel));
        of(sostenuto_, channel) = value;
        if (before && isPressed(value)) return;
        for (Note& note : notes_)
            if (note.channel == channel) note.held = isPressed(value) && note.down;
    }

    void endReleased(int channel) {
        if (isPressed(of(sustain_, channel))) return;
        std::erase_if(notes_, [&](const Note& n) { return n.channel == channel && !n.down && !n.held; });
    }

    std::vector<Note> notes_;  // in order of time
    Pedals sustain_{}, sostenuto_{};
};

}  // namespace melvane::music
