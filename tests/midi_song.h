// A short MIDI song.
#pragma once

#include <string>

namespace melvane::test {

// A run of eighths on a flute, three seconds long.
inline std::string midiSong() {
    std::string track("\0\xC0\x49", 3);
    for (const char key : std::string(12, 60)) {
        const char pitch = static_cast<char>(key + static_cast<char>(track.size() % 12));
        track += std::string("\0\x90", 2) + pitch + '\x64' + '\x30' + '\x80' + pitch + '\0';
    }
    track += std::string("\0\xFF\x2F\0", 4);
    return std::string("MThd\0\0\0\x06\0\0\0\x01\0\x60MTrk\0\0\0", 21) + static_cast<char>(track.size()) + track;
}

}  // namespace melvane::test
