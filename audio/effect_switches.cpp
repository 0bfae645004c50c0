#include "audio/effect_switches.h"

#include <cmath>

namespace melvane {

namespace {

// What an effect is given whatever its level.
constexpr float kSilent = -96;     // dB
constexpr float kEchoDelay = 266;  // ms
constexpr float kChorusDelay = 20;
constexpr float kFlangerDelay = 2;

struct On {
    double p;

    void operator()(ReverbRecord& r) const { r.fReverbMix = static_cast<float>(-0.012 * p * p * p); }
    void operator()(EchoRecord& r) const {
        r.fWetDryMix = static_cast<float>(p);
        r.fFeedback = 50;
        r.fLeftDelay = r.fRightDelay = kEchoDelay;
    }
    void operator()(ChorusRecord& r) const {
        r.fWetDryMix = static_cast<float>(p);
        r.fDepth = static_cast<float>(std::floor(p / 2));
        r.fFeedback = 50;
        r.fFrequency = 1;
        r.fDelay = kChorusDelay;
        r.lPhase = kPhase90;
    }
    void operator()(FlangerRecord& r) const {
        r.fWetDryMix = 50;
        r.fDepth = 100;
        r.fFeedback = -50;
        r.fFrequency = static_cast<float>(p);
        r.fDelay = kFlangerDelay;
        r.lPhase = kPhaseZero;
    }
    void operator()(ParametricEqRecord&) const {}
};

struct Off {
    void operator()(ReverbRecord& r) const { r.fReverbMix = kSilent; }
    void operator()(EchoRecord& r) const { r.fWetDryMix = r.fFeedback = r.fLeftDelay = r.fRightDelay = 0; }
    void operator()(ChorusRecord& r) const {
        r.fWetDryMix = r.fDepth = r.fFeedback = r.fFrequency = 0;
        r.lPhase = 0;
        r.fDelay = kChorusDelay;
    }
    void operator()(FlangerRecord& r) const {
        r.fWetDryMix = r.fDepth = r.fFeedback = r.fFrequency = r.fDelay = 0;
        r.lPhase = 0;
    }
    void operator()(ParametricEqRecord&) const {}
};

}  // namespace

void switchOn(EffectRecord& record, std::int32_t parameter) {
    std::visit(On{static_cast<double>(parameter)}, record);
}

void switchOff(EffectRecord& record) {
    std::visit(Off{}, record);
}

}  // namespace melvane
