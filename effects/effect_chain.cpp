#include "effects/effect_chain.h"

#include "audio/effect_switches.h"
#include "audio/modAudio.h"
#include "effects/presets.h"
#include "state/errors.h"
#include "state/numbers.h"

namespace melvane {

namespace {

constexpr std::int32_t kEffectPriority = 1;
constexpr std::int32_t kBandPriority = 0;
constexpr float kBandwidth = 18;  // semitones

}  // namespace

double toneGain(std::int16_t value) {
    return 10 - checkedCast<std::int16_t>(value * 20) / 100.0;
}

void EffectChain::PrepareEffects() {
    const auto attach = [this](Handle channel, EffectType type, std::int32_t priority) {
        return library_.BASS_ChannelSetFX(channel, static_cast<std::uint32_t>(type), priority);
    };
    for (std::size_t i = 0; i < effectFx_.size(); ++i)
        effectFx_[i] = attach(run_.vocalChannel, kVocalEffects[i].type, kEffectPriority);
    for (Handle& band : eqFx_) band = attach(run_.vocalChannel, EffectType::parametricEq, kBandPriority);
    for (std::size_t i = 0; i < toneFx_.size(); ++i)
        toneFx_[i] =
            i < 2 && run_.isMidiBackground ? 0 : attach(channelOf(i / 2), EffectType::parametricEq, kBandPriority);
    const auto centres = split(kBandCentres, ',');
    for (std::size_t i = 0; i < eqFx_.size(); ++i)
        library_.BASS_FXSetParameters(
            eqFx_[i], ParametricEqRecord{static_cast<float>(leadingNumber(centres.at(i))), kBandwidth, 0});
}

// Fields that `to` leaves alone keep what the library holds.
template <typename Change>
void EffectChain::change(Handle effect, Change to) {
    EffectRecord record;
    if (!library_.BASS_FXGetParameters(effect, record)) return;
    to(record);
    library_.BASS_FXSetParameters(effect, record);
}

void EffectChain::ApplyAllEffects() {
    for (std::size_t i = 0; i < kVocalEffects.size(); ++i) {
        EffectSwitch& effect = settings_.EffectState[i];
        effect.parameter = kVocalEffects[i].parameter(effect.level);
        applyEffect(i);
    }
    ApplyPreset(settings_.currentPreset);
}

void EffectChain::EnableEffect(std::int16_t n) {
    if (n < 1 || n > 4) return;
    const auto index = static_cast<std::size_t>(n - 1);
    change(effectFx_[index], [&](EffectRecord& record) { switchOn(record, settings_.EffectState[index].parameter); });
}

void EffectChain::DisableEffect(std::int16_t n) {
    if (n >= 1 && n <= 4) change(effectFx_[static_cast<std::size_t>(n - 1)], switchOff);
}

void EffectChain::applyEffect(std::size_t index) {
    const auto n = static_cast<std::int16_t>(index + 1);
    settings_.EffectState[index].enabled ? EnableEffect(n) : DisableEffect(n);
}

void EffectChain::setEffectLevel(std::size_t index, std::int16_t level, bool leaveOff) {
    EffectSwitch& effect = settings_.EffectState.at(index);
    effect.level = level;
    effect.parameter = kVocalEffects.at(index).parameter(level);
    if (run_.sounds() && (effect.enabled != 0 || !leaveOff)) EnableEffect(static_cast<std::int16_t>(index + 1));
}

void EffectChain::setEffectEnabled(std::size_t index, bool on) {
    settings_.EffectState.at(index).enabled = on ? -1 : 0;
    if (run_.sounds()) applyEffect(index);
}

void EffectChain::ApplyPreset(std::int16_t index) {
    settings_.currentPreset = index;
    const bool known = index >= 0 && static_cast<std::size_t>(index) < kPresets.size();
    if (!run_.sounds() || !known) return;
    const auto gains = split(kPresets[static_cast<std::size_t>(index)].gains, ',');
    for (std::size_t i = 0; i < eqFx_.size(); ++i)
        change(eqFx_[i], [&](EffectRecord& record) {
            std::get<ParametricEqRecord>(record).fGain = static_cast<float>(leadingNumber(gains.at(i)));
        });
}

void EffectChain::setToneBand(std::size_t index) {
    ParametricEqRecord band = kToneBands[index % 2];
    band.fGain = static_cast<float>(toneGain(settings_.toneValue[index]));
    library_.BASS_FXSetParameters(toneFx_[index], band);
}

void EffectChain::setToneOf(Handle channel, std::size_t corner) {
    if (channel == 0) return;
    for (const std::size_t source : {0U, 1U})
        if (channel == channelOf(source)) return setToneBand(2 * source + corner);
}

void EffectChain::setTone(std::size_t index, std::int16_t value) {
    settings_.toneValue.at(index) = value;
    if (run_.sounds()) applyTone(index);
}

void EffectChain::applyTone() {
    for (std::size_t index = 0; index < toneFx_.size(); ++index) applyTone(index);
}

void EffectChain::applyTone(std::size_t index) {
    if (index >= 2 || !run_.isMidiBackground)
        setToneBand(index);
    else
        index == 0 ? midiLines_.SetSpeakerBass() : midiLines_.SetSpeakerTreble();
}

void EffectChain::setBalance(std::size_t source, std::int32_t value) {
    settings_.balanceValue.at(source) = value;
    if (run_.sounds()) applyBalance(source);
}

void EffectChain::applyBalance() {
    applyBalance(0);
    applyBalance(1);
}

void EffectChain::applyBalance(std::size_t source) {
    if (source == 0 && run_.isMidiBackground)
        midiLines_.SetSynthBalance();
    else
        SetChannelPan(library_, channelOf(source), settings_.balanceValue[source]);
}

}  // namespace melvane
