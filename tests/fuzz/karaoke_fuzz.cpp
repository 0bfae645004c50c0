// What is read from a song's bytes beside its notes: the channels, and the settings behind the song.
#include <cmath>
#include <exception>

#include "midi/channel_reader.h"
#include "midi/karaoke_container.h"
#include "tests/fuzz/door.h"

void melvane::fuzz::attack(std::string_view bytes) try {
    MidiState state;
    readChannels(bytes, state, [] {});
    if (const auto container = splitContainer(bytes))
        require(container->song.size() + container->settings.size() < bytes.size());
    readStoredChannels(bytes, [](const StoredChannel& stored) { require(!std::isnan(stored.tone)); });
} catch (const std::exception&) {
}
