// The program ffmpeg, which reads what our own decoders don't.
#pragma once

#include <atomic>
#include <optional>
#include <string>

#include "engine/decode/input_file.h"
#include "engine/decode/nameless_file.h"
#include "platform/audio_library.h"

namespace melvane::decode {

// Decodes the first audio stream of `utf8Path` into `sound`, as an AU file of 32-bit floats at the stream's own rate
// and in its own channels: the frames that `ffmpeg -i FILE -map 0:a:0` writes. Sees that file alone, no playlist,
// nothing on a network. `program` is the file to start, none where there isn't one. Waits for it; once `cancelled` is
// true it is ended within some milliseconds and there is no sound. `progress` follows, 0..1, and stays 0 where the file
// does not say how long it is.
DecodingFailure decodeWithFfmpeg(const std::optional<std::string>& program, const std::string& utf8Path,
                                 const NamelessFile& sound, const CancelFlag& cancelled, std::atomic<double>& progress);

}  // namespace melvane::decode
