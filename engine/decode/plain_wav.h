// WAV files as plain as their decoder needs them: recorders leave wrong lengths in the header, and other chunks than
// those that say how the sound is stored have sent the decoder round in circles.
#pragma once

#include "engine/decode/input_file.h"

namespace melvane::decode {

// Makes a RIFF, RIFX or RF64 WAV read as its format and its data alone. Data whose length is 0, unknown or beyond the
// end of the file go up to the end of the file; so do those of a file beyond 4 GiB whose length began again at 0.
// Other files stay as they are. Throws NotSound when format or data are missing. Moves the position.
void readAsPlainWav(InputFile& file);

}  // namespace melvane::decode
