// What the user wants of the tags of a mix, and what came of them.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>

namespace melvane {

enum TagField : std::size_t { kTitleTag, kArtistTag, kAlbumTag, kYearTag, kGenreTag, kTagFields };

// UTF-8. What is not set is the song's own; "" is none.
struct TagChoice {
    bool wanted = true;
    std::array<std::optional<std::string>, kTagFields> texts;
    std::optional<std::string> cover;  // a file

    // Nothing but the song's own; `wanted` stays.
    void clear() { *this = {.wanted = wanted}; }
    bool operator==(const TagChoice&) const = default;
};

// Why a mix has less than was wanted; it is whole without.
enum class TagFault {
    none,
    notWritten,      // no tags at all
    coverUnread,     // the file that was chosen has gone, or can't be read
    coverNoPicture,  // neither JPEG nor PNG
    coverTooLarge,
};

}  // namespace melvane
