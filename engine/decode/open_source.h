// The way from a file to its sound.
#pragma once

#include <memory>
#include <string>

#include "platform/pcm_source.h"

namespace melvane::decode {

// Opens an MP3, OGG or WAV file (and what else the decoders read) by its content; the name says nothing.
// nullptr when there is no sound in it or it can't be read. Never throws, never waits for a pipe or device.
// Reads an MP3 file through once, to know its length.
std::unique_ptr<PcmSource> openSource(const std::string& utf8Path);

}  // namespace melvane::decode
