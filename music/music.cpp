#include "music/music.h"

#include "music/bus_mixer.h"
#include "music/performance.h"
#include "music/sound_fonts.h"

namespace melvane::music {

namespace {

class System : public MusicSystem {
public:
    System(AudioLibrary& library, const MusicOptions& options, std::shared_ptr<SynthBus> bus)
        : library_(library), soundFont_(options.soundFont), ports_(options.devicePorts), bus_(std::move(bus)) {}

    std::function<std::vector<std::string>()> portSearch() const override {
        return [ports = ports_] { return ports.list(); };
    }
    std::shared_ptr<MusicSegment> loadSegment(std::string_view file) override {
        return std::make_shared<Segment>(readSong({reinterpret_cast<const std::uint8_t*>(file.data()), file.size()}));
    }
    std::unique_ptr<MusicPerformance> createPerformance(std::vector<std::string> ports) override {
        return std::make_unique<Performance>(library_, soundFont_, ports_, std::move(ports), bus_);
    }

private:
    AudioLibrary& library_;
    const std::string soundFont_;
    const OutputPorts ports_;
    const std::shared_ptr<SynthBus> bus_;
};

}  // namespace

Music createMusic(AudioLibrary& library, const MusicOptions& options) {
    auto bus = std::make_shared<SynthBus>(library);
    return {std::make_unique<System>(library, options, bus), std::make_unique<BusMixer>(bus)};
}

}  // namespace melvane::music
