// A MIDI song as a list of events on the card's time.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace melvane::music {

struct SongEvent {
    std::int64_t frame = 0;   // at 44100 Hz, from the song's beginning
    std::uint8_t status = 0;  // 0x80..0xEF with its channel; 0xF0: a system exclusive message
    std::uint8_t data1 = 0;
    std::uint8_t data2 = 0;
    std::uint32_t sysex = 0;  // of a system exclusive message: which one of Song::sysex
};

struct Song {
    std::vector<SongEvent> events;  // in order of time; events of one time in the order of file and track
    std::vector<std::vector<std::uint8_t>> sysex;  // whole messages, from 0xF0 to 0xF7
    std::int64_t endFrame = 0;                     // of the last event, end-of-track marks included
    // By channel: the name of the track that plays there first, in UTF-8.
    std::array<std::string, 16> trackNames = {};
};

// Reads a Standard MIDI File of format 0, 1 or 2 (whose sequences follow one another), bare or in a RIFF file, with a
// division by beats or by SMPTE frames. What can be read of a damaged file is read. Throws MusicError when that holds
// no note.
Song readSong(std::span<const std::uint8_t> file);

}  // namespace melvane::music
