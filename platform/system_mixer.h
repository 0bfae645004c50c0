// The mixer lines of the MIDI synthesiser, with the records and constants of the multimedia mixer interface. The sizes
// that a record carries are those of the interface's first, 32-bit edition; a call that gives others fails.
//
// All operations are called on the user-interface thread. The result is kMixerNoError or an error code.
#pragma once

#include <cstdint>
#include <string>

namespace melvane {

using MixerHandle = std::uint32_t;

inline constexpr std::uint32_t kMixerNoError = 0;

inline constexpr std::uint32_t MIXERLINE_COMPONENTTYPE_DST_SPEAKERS = 4;
inline constexpr std::uint32_t MIXERLINE_COMPONENTTYPE_SRC_SYNTHESIZER = 0x1004;
inline constexpr std::uint32_t MIXERCONTROL_CONTROLTYPE_VOLUME = 0x50030001;
inline constexpr std::uint32_t MIXERCONTROL_CONTROLTYPE_BASS = 0x50030002;
inline constexpr std::uint32_t MIXERCONTROL_CONTROLTYPE_TREBLE = 0x50030003;
inline constexpr std::uint32_t MIXER_GETLINEINFOF_COMPONENTTYPE = 3;
inline constexpr std::uint32_t MIXER_GETLINECONTROLSF_ONEBYTYPE = 2;
inline constexpr std::uint32_t MIXER_GETCONTROLDETAILSF_VALUE = 0;
inline constexpr std::uint32_t MIXER_SETCONTROLDETAILSF_VALUE = 0;

struct MIXERLINE {
    std::uint32_t cbStruct = 0;  // 168
    std::uint32_t dwLineID = 0;
    std::uint32_t dwComponentType = 0;
    std::uint32_t cChannels = 0;
    std::uint32_t cControls = 0;
    std::string szName;
};

struct MIXERCONTROL {
    std::uint32_t cbStruct = 0;  // 148
    std::uint32_t dwControlID = 0;
    std::uint32_t dwControlType = 0;
    std::uint32_t cMultipleItems = 0;
    std::int32_t lMinimum = 0;
    std::int32_t lMaximum = 0;
    std::string szName;
};

struct MIXERLINECONTROLS {
    std::uint32_t cbStruct = 0;  // 24
    std::uint32_t dwLineID = 0;
    std::uint32_t dwControlType = 0;
    std::uint32_t cControls = 0;
    std::uint32_t cbmxctrl = 0;        // 148
    MIXERCONTROL* pamxctrl = nullptr;  // cControls records
};

struct MIXERCONTROLDETAILS {
    std::uint32_t cbStruct = 0;  // 24
    std::uint32_t dwControlID = 0;
    std::uint32_t cChannels = 0;  // 1: one value for all channels
    std::uint32_t cMultipleItems = 0;
    std::uint32_t cbDetails = 0;         // 4
    std::uint32_t* paDetails = nullptr;  // cChannels values, 0..65535
};

class SystemMixer {
public:
    virtual ~SystemMixer() = default;
    virtual std::uint32_t mixerOpen(MixerHandle& handle, std::uint32_t device, std::uint32_t callback,
                                    std::uint32_t instance, std::uint32_t flags) = 0;
    virtual std::uint32_t mixerGetLineInfoA(MixerHandle handle, MIXERLINE& line, std::uint32_t flags) = 0;
    virtual std::uint32_t mixerGetLineControlsA(MixerHandle handle, MIXERLINECONTROLS& controls,
                                                std::uint32_t flags) = 0;
    virtual std::uint32_t mixerGetControlDetailsA(MixerHandle handle, MIXERCONTROLDETAILS& details,
                                                  std::uint32_t flags) = 0;
    virtual std::uint32_t mixerSetControlDetails(MixerHandle handle, const MIXERCONTROLDETAILS& details,
                                                 std::uint32_t flags) = 0;
};

}  // namespace melvane
