#include "music/music.h"

#include "music/bus_mixer.h"
#include "music/performance.h"

namespace melvane::music {

namespace {

class Loader : public MusicLoader {
public:
    std::shared_ptr<MusicSegment> loadSegment(const std::string& fileName) override {
        return std::make_shared<Segment>(readSongFile(fileName));
    }
};

class System : public MusicSystem {
public:
    System(AudioLibrary& library, const MusicOptions& options, std::shared_ptr<SynthBus> bus)
        : library_(library),
          soundFont_(options.soundFont),
          ports_(std::make_shared<PortList>(options.devicePorts)),
          bus_(std::move(bus)) {}

    std::unique_ptr<MusicLoader> createLoader() override { return std::make_unique<Loader>(); }
    std::unique_ptr<MusicPerformance> createPerformance() override {
        return std::make_unique<Performance>(library_, soundFont_, ports_, bus_);
    }

private:
    AudioLibrary& library_;
    const std::string soundFont_;
    const std::shared_ptr<PortList> ports_;
    const std::shared_ptr<SynthBus> bus_;
};

}  // namespace

Music createMusic(AudioLibrary& library, const MusicOptions& options) {
    auto bus = std::make_shared<SynthBus>(library);
    return {std::make_unique<System>(library, options, bus), std::make_unique<BusMixer>(bus)};
}

}  // namespace melvane::music
