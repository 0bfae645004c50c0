// The parameter records of the effects, with the fields, units and ranges of the DirectX 8 effect records. What
// lies outside a range is clamped to it. The values here are the published defaults, with which an effect begins.
#pragma once

#include <array>
#include <cstdint>
#include <variant>

namespace melvane {

enum class EffectType : std::uint32_t { chorus = 0, echo = 3, flanger = 4, parametricEq = 7, reverb = 8 };

struct ReverbRecord {
    float fInGain = 0;                // dB, -96..0; what enters the reverb
    float fReverbMix = 0;             // dB, -96..0; the wet signal beside the dry one, silent at -96
    float fReverbTime = 1000;         // ms, 0.001..3000; decay by 60 dB
    float fHighFreqRTRatio = 0.001F;  // 0.001..0.999; decay time of the highest frequencies in relation to it

    bool operator==(const ReverbRecord&) const = default;
};

struct EchoRecord {
    float fWetDryMix = 50;       // percent: 0 dry only, 100 wet only
    float fFeedback = 50;        // percent, 0..100
    float fLeftDelay = 500;      // ms, 0..2000
    float fRightDelay = 500;     // ms, 0..2000
    std::int32_t lPanDelay = 0;  // 1: each echo changes sides

    bool operator==(const EchoRecord&) const = default;
};

inline constexpr std::uint32_t kWaveformTriangle = 0;
inline constexpr std::uint32_t kWaveformSine = 1;

// The phase of the right side's oscillator against the left one's: -180, -90, 0, 90 and 180 degrees.
inline constexpr std::uint32_t kPhaseZero = 2;
inline constexpr std::uint32_t kPhase90 = 3;

struct ChorusRecord {
    float fWetDryMix = 50;    // percent
    float fDepth = 10;        // percent of the delay, 0..100
    float fFeedback = 25;     // percent, -99..99
    float fFrequency = 1.1F;  // Hz, 0..10
    std::uint32_t lWaveform = kWaveformSine;
    float fDelay = 16;                // ms, 0..20
    std::uint32_t lPhase = kPhase90;  // 0..4

    bool operator==(const ChorusRecord&) const = default;
};

struct FlangerRecord {
    float fWetDryMix = 50;     // percent
    float fDepth = 100;        // percent of the delay, 0..100
    float fFeedback = -50;     // percent, -99..99
    float fFrequency = 0.25F;  // Hz, 0..10
    std::uint32_t lWaveform = kWaveformSine;
    float fDelay = 2;                   // ms, 0..4
    std::uint32_t lPhase = kPhaseZero;  // 0..4

    bool operator==(const FlangerRecord&) const = default;
};

struct ParametricEqRecord {
    float fCenter = 8000;   // Hz, 80..16000
    float fBandwidth = 12;  // semitones, 1..36
    float fGain = 0;        // dB, -15..15

    bool operator==(const ParametricEqRecord&) const = default;
};

// The equaliser bands that are a sound's tone controls, bass and treble.
inline constexpr std::array kToneBands{ParametricEqRecord{125, 18, 0}, ParametricEqRecord{12000, 18, 0}};

using EffectRecord = std::variant<ChorusRecord, EchoRecord, FlangerRecord, ParametricEqRecord, ReverbRecord>;

}  // namespace melvane
