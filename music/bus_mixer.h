// The mixer device of the synthesiser: device 0 with two lines and three controls.
#pragma once

#include <memory>

#include "music/synth_bus.h"
#include "platform/system_mixer.h"

namespace melvane::music {

class BusMixer : public SystemMixer {
public:
    explicit BusMixer(std::shared_ptr<SynthBus> bus) : bus_(std::move(bus)) {}

    std::uint32_t mixerOpen(MixerHandle& handle, std::uint32_t device, std::uint32_t callback, std::uint32_t instance,
                            std::uint32_t flags) override;
    std::uint32_t mixerGetLineInfoA(MixerHandle handle, MIXERLINE& line, std::uint32_t flags) override;
    std::uint32_t mixerGetLineControlsA(MixerHandle handle, MIXERLINECONTROLS& controls, std::uint32_t flags) override;
    std::uint32_t mixerGetControlDetailsA(MixerHandle handle, MIXERCONTROLDETAILS& details,
                                          std::uint32_t flags) override;
    std::uint32_t mixerSetControlDetails(MixerHandle handle, const MIXERCONTROLDETAILS& details,
                                         std::uint32_t flags) override;

private:
    const std::shared_ptr<SynthBus> bus_;
};

}  // namespace melvane::music
