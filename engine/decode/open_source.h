// The way from a file to its sound.
#pragma once

#include <memory>
#include <string>

#include "engine/decode/input_file.h"
#include "platform/pcm_source.h"

namespace melvane::decode {

class DecodedFiles;

// Opens an MP3, OGG or WAV file (and what else the decoders read) by its content; the name says nothing. What they
// don't read is `decoded` by another program, where that is given. nullptr when there is no sound in it or it can't be
// read. Never throws, never waits for a pipe or device. Reads an MP3 file through once, to know its length. When
// `cancelled` becomes true, the file is as one that can't be read any more. `driftPpm`: see atCardRate.
std::unique_ptr<PcmSource> openSource(const std::string& utf8Path, const CancelFlag& cancelled = {},
                                      double driftPpm = 0, DecodedFiles* decoded = nullptr);

}  // namespace melvane::decode
