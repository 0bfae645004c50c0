// The lengths in the header of a WAV file, which many recorders leave wrong.
#pragma once

#include "engine/decode/input_file.h"

namespace melvane::decode {

// Makes a RIFF, RIFX or RF64 WAV whose data length is 0, unknown or beyond the end of the file read as one
// whose data go up to the end of the file. Other files stay as they are. Moves the position.
void repairWavLengths(InputFile& file);

}  // namespace melvane::decode
