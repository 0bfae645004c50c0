#include "music/song_notes.h"

#include <array>
#include <optional>

#include "platform/midi_messages.h"

namespace melvane::music {

std::vector<SongNote> notesOf(const Song& song) {
    constexpr std::size_t kKeys = 128;
    std::vector<SongNote> notes;
    std::array<std::optional<std::size_t>, kMidiChannels * kKeys> down;  // where in the list
    for (const SongEvent& event : song.events) {
        const int kind = event.status & 0xF0;
        if (kind != kNoteOn && kind != kNoteOff) continue;
        const int channel = event.status & 0x0F;
        auto& held = down[static_cast<std::size_t>(channel) * kKeys + event.data1 % kKeys];
        if (held) notes[*held].end = event.frame;
        held.reset();
        if (kind == kNoteOff || event.data2 == 0) continue;
        held = notes.size();
        notes.push_back({event.frame, song.endFrame, static_cast<std::int16_t>(channel),
                         static_cast<std::int16_t>(event.data1 % kKeys)});
    }
    return notes;
}

}  // namespace melvane::music
