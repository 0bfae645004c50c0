#include "music/bus_mixer.h"

#include <algorithm>
#include <array>

namespace melvane::music {

namespace {

// The interface's error codes.
constexpr std::uint32_t kBadDeviceId = 2;
constexpr std::uint32_t kInvalidHandle = 5;
constexpr std::uint32_t kInvalidFlag = 10;
constexpr std::uint32_t kInvalidParameter = 11;
constexpr std::uint32_t kInvalidLine = 1024;
constexpr std::uint32_t kInvalidControl = 1025;

constexpr MixerHandle kHandle = 1;
constexpr std::uint32_t kHighest = 65535;

struct Line {
    std::uint32_t componentType;
    std::uint32_t id;
    std::uint32_t channels;
    const char* name;
};

struct Control {
    std::uint32_t type;
    std::uint32_t id;
    std::uint32_t lineId;
    std::uint32_t channels;
    const char* name;
};

constexpr std::array kLines{
    Line{MIXERLINE_COMPONENTTYPE_DST_SPEAKERS, 0, 2, "Speakers"},
    Line{MIXERLINE_COMPONENTTYPE_SRC_SYNTHESIZER, 1, 2, "Synthesizer"},
};

constexpr std::uint32_t kVolumeId = 1;
constexpr std::uint32_t kBassId = 2;
constexpr std::uint32_t kTrebleId = 3;

constexpr std::array kControls{
    Control{MIXERCONTROL_CONTROLTYPE_VOLUME, kVolumeId, 1, 2, "Volume"},
    Control{MIXERCONTROL_CONTROLTYPE_BASS, kBassId, 0, 1, "Bass"},
    Control{MIXERCONTROL_CONTROLTYPE_TREBLE, kTrebleId, 0, 1, "Treble"},
};

std::uint32_t controlsOf(const Line& line) {
    return static_cast<std::uint32_t>(std::ranges::count(kControls, line.id, &Control::lineId));
}

std::uint32_t checkDetails(MixerHandle handle, const MIXERCONTROLDETAILS& details, std::uint32_t flags,
                           std::uint32_t wantedFlags) {
    if (handle != kHandle) return kInvalidHandle;
    if (flags != wantedFlags) return kInvalidFlag;
    if (details.cbStruct != 24 || details.cbDetails != 4 || !details.paDetails) return kInvalidParameter;
    const auto control = std::ranges::find(kControls, details.dwControlID, &Control::id);
    if (control == kControls.end()) return kInvalidControl;
    const bool fits = details.cChannels == 1 || details.cChannels == control->channels;
    return fits && details.cMultipleItems == 0 ? kMixerNoError : kInvalidParameter;
}

Tone toneOf(std::uint32_t controlId) {
    return controlId == kBassId ? Tone::bass : Tone::treble;
}

}  // namespace

std::uint32_t BusMixer::mixerOpen(MixerHandle& handle, std::uint32_t device, std::uint32_t, std::uint32_t,
                                  std::uint32_t) {
    if (device != 0) return kBadDeviceId;
    handle = kHandle;
    return kMixerNoError;
}

std::uint32_t BusMixer::mixerGetLineInfoA(MixerHandle handle, MIXERLINE& line, std::uint32_t flags) {
    if (handle != kHandle) return kInvalidHandle;
    if (flags != MIXER_GETLINEINFOF_COMPONENTTYPE) return kInvalidFlag;
    if (line.cbStruct != 168) return kInvalidParameter;
    const auto found = std::ranges::find(kLines, line.dwComponentType, &Line::componentType);
    if (found == kLines.end()) return kInvalidLine;
    line = {168, found->id, found->componentType, found->channels, controlsOf(*found), found->name};
    return kMixerNoError;
}

std::uint32_t BusMixer::mixerGetLineControlsA(MixerHandle handle, MIXERLINECONTROLS& controls, std::uint32_t flags) {
    if (handle != kHandle) return kInvalidHandle;
    if (flags != MIXER_GETLINECONTROLSF_ONEBYTYPE) return kInvalidFlag;
    if (controls.cbStruct != 24 || controls.cbmxctrl != 148 || controls.cControls != 1 || !controls.pamxctrl)
        return kInvalidParameter;
    if (std::ranges::find(kLines, controls.dwLineID, &Line::id) == kLines.end()) return kInvalidLine;
    const auto found = std::ranges::find_if(kControls, [&](const Control& control) {
        return control.lineId == controls.dwLineID && control.type == controls.dwControlType;
    });
    if (found == kControls.end()) return kInvalidControl;
    *controls.pamxctrl = {148, found->id, found->type, 0, 0, kHighest, found->name};
    return kMixerNoError;
}

std::uint32_t BusMixer::mixerGetControlDetailsA(MixerHandle handle, MIXERCONTROLDETAILS& details, std::uint32_t flags) {
    const std::uint32_t result = checkDetails(handle, details, flags, MIXER_GETCONTROLDETAILSF_VALUE);
    if (result != kMixerNoError) return result;
    if (details.dwControlID == kVolumeId)
        std::copy_n(bus_->volume().begin(), details.cChannels, details.paDetails);
    else
        *details.paDetails = bus_->tone(toneOf(details.dwControlID));
    return kMixerNoError;
}

std::uint32_t BusMixer::mixerSetControlDetails(MixerHandle handle, const MIXERCONTROLDETAILS& details,
                                               std::uint32_t flags) {
    const std::uint32_t result = checkDetails(handle, details, flags, MIXER_SETCONTROLDETAILSF_VALUE);
    if (result != kMixerNoError) return result;
    const std::uint32_t first = details.paDetails[0];
    const std::uint32_t last = details.paDetails[details.cChannels - 1];
    if (std::max(first, last) > kHighest) return kInvalidParameter;
    if (details.dwControlID == kVolumeId)
        bus_->setVolume(first, last);
    else
        bus_->setTone(toneOf(details.dwControlID), first);
    return kMixerNoError;
}

}  // namespace melvane::music
