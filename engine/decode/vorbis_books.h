// A look at an OGG file before libvorbis reads it: a set-up of 200 bytes can make it take gigabytes, or more stack than
// a thread has.
#pragma once

#include "engine/decode/input_file.h"

namespace melvane::decode {

// Whether no Vorbis stream in the file has larger code books than any encoder makes, all in all 2^18 entries or 2^22
// values, or books without a dimension. Reads the whole file and goes back to its start. The layout is that of a code
// book in Vorbis I's set-up header.
bool hasUsualBooks(InputFile& file);

}  // namespace melvane::decode
