// AIFF and FLAC.
#include "tests/fuzz/sound_door.h"

void melvane::fuzz::attack(std::string_view bytes) {
    if (bytes.starts_with("FORM") || bytes.starts_with("fLaC")) hear(bytes);
}
