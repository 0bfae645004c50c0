// MP3: whatever is no sound of another kind. Also what is read back from a mix.
#include "audio/encoder_tag.h"
#include "tests/fuzz/sound_door.h"

void melvane::fuzz::attack(std::string_view bytes) {
    hear(bytes);
    const auto frames = taggedFrames(inMemory(bytes));
    require(!frames || *frames >= 0);
}
