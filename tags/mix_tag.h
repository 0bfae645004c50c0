// The tags of a mix as bytes in front of it.
#pragma once

#include <string>

#include "tags/song_tags.h"

namespace melvane {

struct MixTag {
    std::string bytes;                // ID3v2.3 with texts in UTF-16, without a date; "" where there is nothing to say
    TagFault fault = TagFault::none;  // of the cover
};

// The same of the same.
std::string renderTag(const TagTexts& texts, const Cover* cover);

// As the choice has it, of the song where that leaves it open. Reads files; any thread.
MixTag makeMixTag(const std::string& song, bool isMidi, const TagChoice& choice);

// The cover of the choice, or else the song's.
CoverRead chosenCover(const SongTags& song, const TagChoice& choice);

}  // namespace melvane
