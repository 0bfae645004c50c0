// Files that are read beside the card, where their reader wants.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "engine/decode/decoded_files.h"
#include "platform/pcm_source.h"

namespace melvane::engine {

// See AudioLibrary.
std::unique_ptr<PcmSource> openReader(const std::string& file, std::shared_ptr<decode::DecodedFiles> decoded,
                                      const std::function<bool()>& wanted);
std::unique_ptr<PcmSource> inKey(std::unique_ptr<PcmSource> source, double semitones);

}  // namespace melvane::engine
