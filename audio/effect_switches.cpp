#include "audio/effect_switches.h"

namespace melvane {

namespace {

constexpr float kSilent = -96;     // dB
constexpr float kEchoDelay = 266;  // ms
constexpr float kChorusDelay = 20;
constexpr float kFlangerDelay = 2;

}  // namespace

// Fields that `change` leaves alone keep what the library holds.
template <typename Record, typename Change>
void EffectSwitches::change(std::int16_t n, Change change) {
    const Handle handle = handles_.effectFx[static_cast<std::size_t>(n - 1)];
    EffectRecord record = Record{};
    library_.BASS_FXGetParameters(handle, record);
    if (auto* own = std::get_if<Record>(&record)) {
        change(*own);
        library_.BASS_FXSetParameters(handle, record);
    }
}

void EffectSwitches::EnableEffect(std::int16_t n) {
    if (n < 1 || n > 4) return;
    const auto p = static_cast<double>(settings_.EffectState[static_cast<std::size_t>(n - 1)].parameter);
    const auto percent = static_cast<float>(p);
    switch (n) {
        case 1:
            return change<ReverbRecord>(n, [&](auto& r) { r.fReverbMix = static_cast<float>(-0.012 * p * p * p); });
        case 2:
            return change<EchoRecord>(n, [&](auto& r) {
                r.fWetDryMix = percent;
                r.fFeedback = 50;
                r.fLeftDelay = r.fRightDelay = kEchoDelay;
            });
        case 3:
            return change<ChorusRecord>(n, [&](auto& r) {
                r.fWetDryMix = percent;
                r.fDepth = static_cast<float>(settings_.EffectState[2].parameter / 2);
                r.fFeedback = 50;
                r.fFrequency = 1;
                r.fDelay = kChorusDelay;
                r.lPhase = kPhase90;
            });
        default:
            return change<FlangerRecord>(n, [&](auto& r) {
                r.fWetDryMix = 50;
                r.fDepth = 100;
                r.fFeedback = -50;
                r.fFrequency = percent;
                r.fDelay = kFlangerDelay;
                r.lPhase = kPhaseZero;
            });
    }
}

void EffectSwitches::DisableEffect(std::int16_t n) {
    switch (n) {
        case 1:
            return change<ReverbRecord>(n, [](auto& r) { r.fReverbMix = kSilent; });
        case 2:
            return change<EchoRecord>(n,
                                      [](auto& r) { r.fWetDryMix = r.fFeedback = r.fLeftDelay = r.fRightDelay = 0; });
        case 3:
            return change<ChorusRecord>(n, [](auto& r) {
                r.fWetDryMix = r.fDepth = r.fFeedback = r.fFrequency = 0;
                r.lPhase = 0;
                r.fDelay = kChorusDelay;
            });
        case 4:
            return change<FlangerRecord>(n, [](auto& r) {
                r.fWetDryMix = r.fDepth = r.fFeedback = r.fFrequency = r.fDelay = 0;
                r.lPhase = 0;
            });
        default:
            return;
    }
}

void EffectSwitches::applyEffect(std::int16_t n) {
    if (settings_.EffectState.at(static_cast<std::size_t>(n - 1)).enabled)
        EnableEffect(n);
    else
        DisableEffect(n);
}

}  // namespace melvane
