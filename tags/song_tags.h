// What a song's file says of it: title, artist and so on, and the picture on its cover.
//
// ID3 of MP3 files, the comments of Vorbis, Opus and FLAC, the tags of MP4 and WMA, the "@T" lines of karaoke files.
// Texts without a coding of their own are guessed, see tags/foreign_text.h.
#pragma once

#include <array>
#include <memory>
#include <string>

#include "state/tag_choice.h"
#include "tags/cover.h"

namespace melvane {

// UTF-8, each of a line of at most kLongestTag bytes; "" for none. A year has four digits.
using TagTexts = std::array<std::string, kTagFields>;
inline constexpr std::size_t kLongestTag = 1000;

// One line that fits in, whatever it was.
std::string tagLine(std::string text);
// Four digits, or none.
std::string tagYear(const std::string& text);

struct SongTags {
    TagTexts texts;
    std::shared_ptr<const Cover> cover;  // null: none
    TagFault fault = TagFault::none;     // of the cover
};

// Tells the format by content. Reads at most 48 MiB, whatever the file claims; nothing of what is no file, or can't be
// read. Any thread.
SongTags readSongTags(const std::string& file, bool isMidi);

}  // namespace melvane
