// The music objects of the song that is loaded; null where there is none.
#pragma once

#include <memory>

#include "platform/music_performance.h"

namespace melvane {

struct MidiDevice {
    std::unique_ptr<MusicLoader> loader;
    std::unique_ptr<MusicPerformance> performance;
    std::shared_ptr<MusicSegment> segment;
};

}  // namespace melvane
