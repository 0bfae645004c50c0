#include "music/synth_bus.h"

#include <cmath>

namespace melvane::music {

namespace {

constexpr float kToneRange = 10;  // dB

float controlGain(std::uint32_t value) {
    const auto middle = static_cast<float>(value <= SynthBus::kMiddle ? SynthBus::kMiddle : SynthBus::kMiddle + 1);
    return kToneRange * (static_cast<float>(value) - middle) / static_cast<float>(SynthBus::kMiddle);
}

}  // namespace

void SynthBus::setVolume(std::uint32_t left, std::uint32_t right) {
    volume_ = {left, right};
    updateGain();
}

void SynthBus::setMasterVolume(std::int32_t hundredthsOfDecibel) {
    masterVolume_ = hundredthsOfDecibel;
    updateGain();
}

void SynthBus::updateGain() {
    const double master = std::pow(10.0, masterVolume_ / 2000.0) / kMiddle;
    gain_ = {static_cast<float>(master * volume_[0]), static_cast<float>(master * volume_[1])};
}

void SynthBus::setTone(Tone tone, std::uint32_t value) {
    ToneControl& control = controls_[static_cast<std::size_t>(tone)];
    control.value = value;
    updateTone(control);
}

void SynthBus::attach(Handle stream) {
    for (ToneControl& control : controls_) {
        control.effect = library_.BASS_ChannelSetFX(stream, static_cast<std::uint32_t>(EffectType::parametricEq), 0);
        updateTone(control);
    }
}

void SynthBus::updateTone(ToneControl& control) {
    control.record.fGain = controlGain(control.value);
    library_.BASS_FXSetParameters(control.effect, control.record);
}

}  // namespace melvane::music
