// WAV in its three spellings, with sound of any coding in it, MP3 too.
#include "tests/fuzz/sound_door.h"

void melvane::fuzz::attack(std::string_view bytes) {
    for (const std::string_view name : {"RIFF", "RIFX", "RF64"})
        if (bytes.starts_with(name)) hear(bytes);
}
