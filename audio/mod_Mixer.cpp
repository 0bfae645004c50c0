#include "audio/mod_Mixer.h"

#include <array>
#include <cmath>

#include "state/errors.h"
#include "state/product.h"

namespace melvane {

namespace {

constexpr const char* kNoMixer = "Couldn't open the mixer please check if a audio mixer is installed then retry.";
// Bytes of the records, as the interface wants them: see platform/system_mixer.h.
constexpr std::uint32_t kLineSize = 168;
constexpr std::uint32_t kLineControlsSize = 24;
constexpr std::uint32_t kControlSize = 148;
constexpr std::uint32_t kDetailsSize = 24;
constexpr std::uint32_t kValueSize = 4;
constexpr std::int32_t kFullControl = 65535;
constexpr std::int32_t kFullSynth = 32767;  // a song never drives the synthesiser above half

MIXERCONTROLDETAILS detailsOf(const MIXERCONTROL& control, std::uint32_t* values, std::uint32_t channels) {
    return {kDetailsSize, control.dwControlID, channels, 0, kValueSize, values};
}

std::int32_t mirrored(std::int32_t value) {
    return checkedCast<std::int32_t>(std::int64_t{kFullControl} - value);
}

// Of a level 0..100; the higher the level, the lower the control.
std::int32_t toneControl(std::int16_t level) {
    if (level < 0 || level > 100) throw InvalidArgumentError();
    return mirrored(roundedCast<std::int32_t>(level / 100.0 * kFullControl));
}

// The side that a balance turns away from. The two sides are computed in a different order and round differently.
std::int32_t leftOf(std::int32_t balance) {
    const auto share = checkedCast<std::int32_t>(std::int64_t{100} - balance);
    return roundedCast<std::int32_t>(checkedCast<std::int32_t>(std::int64_t{share} * kFullSynth) / 100.0);
}

std::int32_t rightOf(std::int32_t balance) {
    return roundedCast<std::int32_t>(std::floor((balance + 100) / 100.0 * kFullSynth));
}

}  // namespace

std::int16_t mod_Mixer::OpenMixer() {
    if (mixer_.mixerOpen(lines_.hMixer, 0, 0, 0, 0) != kMixerNoError) {
        dialogs_.messageBox(kNoMixer, kProductCaption, BoxIcon::none, BoxButtons::ok);
        return 0;
    }
    findControl(MIXERLINE_COMPONENTTYPE_SRC_SYNTHESIZER, MIXERCONTROL_CONTROLTYPE_VOLUME, lines_.synthVolumeControl);
    findControl(MIXERLINE_COMPONENTTYPE_DST_SPEAKERS, MIXERCONTROL_CONTROLTYPE_BASS, lines_.speakerBassControl);
    findControl(MIXERLINE_COMPONENTTYPE_DST_SPEAKERS, MIXERCONTROL_CONTROLTYPE_TREBLE, lines_.speakerTrebleControl);
    return 0;
}

void mod_Mixer::findControl(std::uint32_t componentType, std::uint32_t controlType, MIXERCONTROL& control) {
    control.cbStruct = kControlSize;
    lines_.lastFound = GetMixerControl(lines_.hMixer, componentType, controlType, control) ? -1 : 0;
    if (lines_.lastFound) lines_.lastReadValue = GetControlValue(lines_.hMixer, control);
}

void mod_Mixer::keepSpeakerTone() {
    lines_.savedSpeakerBass = GetSpeakerBass();
    lines_.savedSpeakerTreble = GetSpeakerTreble();
}

bool mod_Mixer::GetMixerControl(MixerHandle hMixer, std::uint32_t componentType, std::uint32_t controlType,
                                MIXERCONTROL& control) {
    MIXERLINE line;
    line.cbStruct = kLineSize;
    line.dwComponentType = componentType;
    if (mixer_.mixerGetLineInfoA(hMixer, line, MIXER_GETLINEINFOF_COMPONENTTYPE) != kMixerNoError) return false;

    MIXERCONTROL found;
    MIXERLINECONTROLS wanted{kLineControlsSize, line.dwLineID, controlType, 1, kControlSize, &found};
    if (mixer_.mixerGetLineControlsA(hMixer, wanted, MIXER_GETLINECONTROLSF_ONEBYTYPE) != kMixerNoError) return false;
    control = found;
    return true;
}

std::int32_t mod_Mixer::GetControlValue(MixerHandle hMixer, const MIXERCONTROL& control) {
    std::uint32_t value = 0;
    MIXERCONTROLDETAILS details = detailsOf(control, &value, 1);
    lines_.lastMixerResult = mixer_.mixerGetControlDetailsA(hMixer, details, MIXER_GETCONTROLDETAILSF_VALUE);
    return lines_.lastMixerResult == kMixerNoError ? static_cast<std::int32_t>(value) : -1;
}

bool mod_Mixer::SetControlValue(MixerHandle hMixer, const MIXERCONTROL& control, std::int32_t value) {
    auto word = static_cast<std::uint32_t>(value);
    return setDetails(hMixer, detailsOf(control, &word, 1));
}

bool mod_Mixer::SetControlValueStereo(MixerHandle hMixer, const MIXERCONTROL& control, std::int32_t left,
                                      std::int32_t right) {
    std::array words{static_cast<std::uint32_t>(left), static_cast<std::uint32_t>(right)};
    MIXERCONTROLDETAILS details = detailsOf(control, words.data(), 2);
    details.cMultipleItems = control.cMultipleItems;
    return setDetails(hMixer, details);
}

bool mod_Mixer::setDetails(MixerHandle hMixer, const MIXERCONTROLDETAILS& details) {
    lines_.lastMixerResult = mixer_.mixerSetControlDetails(hMixer, details, MIXER_SETCONTROLDETAILSF_VALUE);
    return lines_.lastMixerResult == kMixerNoError;
}

bool mod_Mixer::SetSynthBalance() {
    const std::int32_t balance = settings_.balanceValue[0];
    lines_.leftLevel = balance > 0 ? leftOf(balance) : kFullSynth;
    lines_.rightLevel = balance < 0 ? rightOf(balance) : kFullSynth;
    return SetControlValueStereo(lines_.hMixer, lines_.synthVolumeControl, lines_.leftLevel, lines_.rightLevel);
}

bool mod_Mixer::SetSpeakerBass() {
    return SetControlValue(lines_.hMixer, lines_.speakerBassControl, toneControl(settings_.toneValue[0]));
}

bool mod_Mixer::SetSpeakerTreble() {
    return SetControlValue(lines_.hMixer, lines_.speakerTrebleControl, toneControl(settings_.toneValue[1]));
}

std::int32_t mod_Mixer::GetSpeakerBass() {
    return GetControlValue(lines_.hMixer, lines_.speakerBassControl);
}

std::int32_t mod_Mixer::GetSpeakerTreble() {
    return GetControlValue(lines_.hMixer, lines_.speakerTrebleControl);
}

bool mod_Mixer::RestoreSpeakerBass() {
    return SetControlValue(lines_.hMixer, lines_.speakerBassControl, mirrored(lines_.savedSpeakerBass));
}

bool mod_Mixer::RestoreSpeakerTreble() {
    return SetControlValue(lines_.hMixer, lines_.speakerTrebleControl, mirrored(lines_.savedSpeakerTreble));
}

}  // namespace melvane
