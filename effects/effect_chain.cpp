#include "effects/effect_chain.h"

#include "audio/modAudio.h"
#include "effects/presets.h"
#include "state/errors.h"
#include "state/numbers.h"

namespace melvane {

namespace {

constexpr std::array kVocalEffects = {EffectType::reverb, EffectType::echo, EffectType::chorus, EffectType::flanger};
constexpr std::int32_t kEffectPriority = 1;
constexpr std::int32_t kBandPriority = 0;
constexpr float kBandwidth = 18;  // semitones
constexpr float kBassCentre = 125;
constexpr float kTrebleCentre = 12000;

float toneGain(std::int16_t value) {
    return static_cast<float>(10 - checkedCast<std::int16_t>(value * 20) / 100.0);
}

}  // namespace

std::int32_t effectParameter(std::int16_t n, std::int16_t level) {
    switch (n) {
        case 1:
            return 20 - level / 5;
        case 2:
            return level / 2;
        case 3:
            return level;
        case 4:
            return level / 10;
        default:
            return 0;
    }
}

EffectChain::EffectChain(AudioLibrary& library, const RunState& run, Settings& settings, mod_Mixer& midiLines)
    : library_(library),
      run_(run),
      settings_(settings),
      midiLines_(midiLines),
      switches_(library, handles_, settings) {}

void EffectChain::PrepareEffects() {
    const auto attach = [this](Handle channel, EffectType type, std::int32_t priority) {
        return library_.BASS_ChannelSetFX(channel, static_cast<std::uint32_t>(type), priority);
    };
    handles_ = {};
    for (std::size_t i = 0; i < kVocalEffects.size(); ++i)
        handles_.effectFx[i] = attach(run_.vocalChannel, kVocalEffects[i], kEffectPriority);
    for (Handle& band : handles_.eqFx) band = attach(run_.vocalChannel, EffectType::parametricEq, kBandPriority);
    if (!run_.isMidiBackground)
        for (const std::size_t i : {0U, 1U})
            handles_.toneFx[i] = attach(run_.backgroundChannel, EffectType::parametricEq, kBandPriority);
    for (const std::size_t i : {2U, 3U})
        handles_.toneFx[i] = attach(run_.vocalChannel, EffectType::parametricEq, kBandPriority);
    const auto centres = split(kBandCentres, ',');
    for (std::size_t i = 0; i < handles_.eqFx.size(); ++i)
        library_.BASS_FXSetParameters(
            handles_.eqFx[i], ParametricEqRecord{static_cast<float>(leadingNumber(centres.at(i))), kBandwidth, 0});
}

void EffectChain::ApplyAllEffects() {
    for (std::int16_t n = 1; n <= 4; ++n) {
        EffectSwitch& effect = settings_.EffectState[static_cast<std::size_t>(n - 1)];
        effect.parameter = effectParameter(n, effect.level);
        switches_.applyEffect(n);
    }
    ApplyPreset(settings_.currentPreset);
}

void EffectChain::applyTone() {
    for (std::size_t index = 0; index < settings_.toneValue.size(); ++index) applyTone(index);
}

void EffectChain::setTone(Handle effect, float centre, std::int16_t value) {
    library_.BASS_FXSetParameters(effect, ParametricEqRecord{centre, kBandwidth, toneGain(value)});
}

void EffectChain::SetBassChannel(Handle channel) {
    if (channel == 0) return;
    if (channel == run_.backgroundChannel)
        setTone(handles_.toneFx[0], kBassCentre, settings_.toneValue[0]);
    else if (channel == run_.vocalChannel)
        setTone(handles_.toneFx[2], kBassCentre, settings_.toneValue[2]);
}

void EffectChain::SetTrebleChannel(Handle channel) {
    if (channel == 0) return;
    if (channel == run_.backgroundChannel)
        setTone(handles_.toneFx[1], kTrebleCentre, settings_.toneValue[1]);
    else if (channel == run_.vocalChannel)
        setTone(handles_.toneFx[3], kTrebleCentre, settings_.toneValue[3]);
}

void EffectChain::ApplyPreset(std::int16_t index) {
    settings_.currentPreset = index;
    const bool known = index >= 0 && static_cast<std::size_t>(index) < kPresets.size();
    if (run_.isMixing && known) setBandGains(kPresets[static_cast<std::size_t>(index)].gains);
}

// Centre and width of each band stay.
void EffectChain::setBandGains(std::string_view gains) {
    const auto fields = split(gains, ',');
    for (std::size_t i = 0; i < handles_.eqFx.size(); ++i) {
        EffectRecord record = ParametricEqRecord{};
        library_.BASS_FXGetParameters(handles_.eqFx[i], record);
        if (auto* band = std::get_if<ParametricEqRecord>(&record))
            band->fGain = static_cast<float>(leadingNumber(fields.at(i)));
        library_.BASS_FXSetParameters(handles_.eqFx[i], record);
    }
}

void EffectChain::setEffectLevel(std::int16_t n, std::int16_t level) {
    EffectSwitch& effect = settings_.EffectState.at(static_cast<std::size_t>(n - 1));
    effect.level = level;
    effect.parameter = effectParameter(n, level);
    if (run_.isMixing) switches_.EnableEffect(n);
}

void EffectChain::setEffectEnabled(std::int16_t n, bool on) {
    settings_.EffectState.at(static_cast<std::size_t>(n - 1)).enabled = on ? -1 : 0;
    if (run_.isMixing && n <= 4) switches_.applyEffect(n);
}

void EffectChain::setTone(std::size_t index, std::int16_t value) {
    settings_.toneValue.at(index) = value;
    if (run_.isMixing) applyTone(index);
}

void EffectChain::applyTone(std::size_t index) {
    const Handle channel = index < 2 ? run_.backgroundChannel : run_.vocalChannel;
    if (index < 2 && run_.isMidiBackground)
        index == 0 ? midiLines_.SetSpeakerBass() : midiLines_.SetSpeakerTreble();
    else if (index % 2 == 0)
        SetBassChannel(channel);
    else
        SetTrebleChannel(channel);
}

void EffectChain::setBalance(std::size_t index, std::int32_t value) {
    settings_.balanceValue.at(index) = value;
    if (run_.isMixing) applyBalance(index);
}

void EffectChain::applyBalance() {
    applyBalance(0);
    applyBalance(1);
}

void EffectChain::applyBalance(std::size_t index) {
    if (index == 0 && run_.isMidiBackground)
        midiLines_.SetSynthBalance();
    else
        SetChannelPan(library_, index == 0 ? run_.backgroundChannel : run_.vocalChannel, settings_.balanceValue[index]);
}

}  // namespace melvane
