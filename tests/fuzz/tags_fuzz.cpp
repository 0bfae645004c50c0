// What a song's file says of it, in all formats.
#include "tags/mix_tag.h"
#include "tests/fuzz/sound_door.h"

void melvane::fuzz::attack(std::string_view bytes) {
    const std::string file = inMemory(bytes);
    for (const bool isMidi : {false, true}) {
        const SongTags tags = readSongTags(file, isMidi);
        for (const std::string& text : tags.texts) require(text.size() <= kLongestTag);
        require(!tags.cover || tags.cover->bytes.size() <= kLargestCover);
        const std::string tag = renderTag(tags.texts, tags.cover.get());
        require(tag.empty() || tag.starts_with("ID3\3"));
    }
}
