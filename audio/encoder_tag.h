// What the encoder itself wrote down about an MP3 file when it was complete.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace melvane {

// The frames (samples of each side) that were encoded into the file, by the tag in its first MPEG frame: the frames of
// that many MPEG frames without the encoder's delay and padding. None without such a tag, and where the file is shorter
// than the tag says. Only of MPEG-1 layer III; the layout is that of the Xing header with LAME's extension. Reads two
// hundred bytes.
std::optional<std::int64_t> taggedFrames(const std::string& path);

}  // namespace melvane
