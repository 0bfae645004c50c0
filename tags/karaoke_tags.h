// What karaoke files say of their song.
#pragma once

#include <string>
#include <string_view>

namespace melvane {

struct KaraokeTags {
    std::string title;
    std::string artist;
};

// The first two "@T" lines among the texts of a MIDI file, wherever they stand; "" for none. UTF-8.
KaraokeTags karaokeTags(std::string_view bytes);

}  // namespace melvane
