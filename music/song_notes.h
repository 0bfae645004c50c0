// The notes of a song, as a picture of it shows them.
#pragma once

#include <vector>

#include "music/song.h"
#include "platform/music_performance.h"

namespace melvane::music {

// In the order of their beginnings. One that is struck again ends there; one that never ends goes to the song's end.
std::vector<SongNote> notesOf(const Song& song);

}  // namespace melvane::music
