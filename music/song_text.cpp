#include "music/song_text.h"

#include <algorithm>

namespace melvane::music {
namespace {

// How many bytes a character has by its first one; 0 for a byte that begins none.
std::size_t lengthByFirst(unsigned char byte) {
    if (byte < 0x80) return 1;
    if (byte >= 0xC2 && byte < 0xE0) return 2;
    if (byte >= 0xE0 && byte < 0xF0) return 3;
    return byte >= 0xF0 && byte < 0xF5 ? 4 : 0;
}

bool isUtf8(const std::string& text) {
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t length = lengthByFirst(static_cast<unsigned char>(text[at]));
        if (length == 0 || length > text.size() - at) return false;
        const auto rest = text.begin() + static_cast<std::ptrdiff_t>(at) + 1;
        if (!std::all_of(rest, rest + static_cast<std::ptrdiff_t>(length) - 1,
                         [](char c) { return (c & 0xC0) == 0x80; }))
            return false;
        at += length;
    }
    return true;
}

}  // namespace

std::string toUtf8(const std::string& text) {
    const bool already = isUtf8(text);
    std::string utf8;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7F) continue;
        if (already || byte < 0x80) {
            utf8 += c;
        } else {
            utf8 += static_cast<char>(0xC0 | byte >> 6);
            utf8 += static_cast<char>(0x80 | (byte & 0x3F));
        }
    }
    return utf8;
}

}  // namespace melvane::music
