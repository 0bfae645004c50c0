// What the effects on the voice cost. The counter "cores" is the share of one core that the work takes when it runs
// live.
#include <benchmark/benchmark.h>

#include "engine/effects/effect.h"
#include "tests/sound.h"

namespace melvane::engine {
namespace {

using namespace melvane::test;

constexpr std::size_t kBlock = 441;

using Chain = std::vector<std::unique_ptr<Effect>>;

void add(Chain& chain, EffectType type, const EffectRecord& record) {
    chain.push_back(makeEffect(type));
    chain.back()->set(record);
}

void addReverb(Chain& chain) {
    add(chain, EffectType::reverb, ReverbRecord{.fReverbMix = -12});
}

void addEcho(Chain& chain) {
    add(chain, EffectType::echo, EchoRecord{.fWetDryMix = 25, .fLeftDelay = 266, .fRightDelay = 266});
}

void addChorus(Chain& chain) {
    add(chain, EffectType::chorus,
        ChorusRecord{.fWetDryMix = 50, .fDepth = 25, .fFeedback = 50, .fFrequency = 1, .fDelay = 20});
}

void addFlanger(Chain& chain) {
    add(chain, EffectType::flanger, FlangerRecord{.fFrequency = 5});
}

void addEqualisers(Chain& chain) {
    float gain = 6;
    for (const auto centre : {80.F, 170.F, 310.F, 600.F, 1e3F, 3e3F, 6e3F, 12e3F, 14e3F, 16e3F, 125.F, 12e3F}) {
        add(chain, EffectType::parametricEq, ParametricEqRecord{.fCenter = centre, .fBandwidth = 18, .fGain = gain});
        gain = -gain;
    }
}

void addAll(Chain& chain) {
    addReverb(chain);
    addEcho(chain);
    addChorus(chain);
    addFlanger(chain);
    addEqualisers(chain);
}

// Off: attached, but with parameters that make them inaudible.
void addAllOff(Chain& chain) {
    add(chain, EffectType::reverb, ReverbRecord{.fReverbMix = -96});
    add(chain, EffectType::echo, EchoRecord{.fWetDryMix = 0, .fFeedback = 0, .fLeftDelay = 0, .fRightDelay = 0});
    add(chain, EffectType::chorus, ChorusRecord{.fWetDryMix = 0, .fDepth = 0, .fFeedback = 0, .fFrequency = 0});
    add(chain, EffectType::flanger, FlangerRecord{.fWetDryMix = 0, .fDepth = 0, .fFeedback = 0, .fFrequency = 0});
    for (int i = 0; i < 12; ++i) add(chain, EffectType::parametricEq, ParametricEqRecord{});
}

void voiceChain(benchmark::State& state, void (*fill)(Chain&)) {
    Chain chain;
    fill(chain);
    const Sound voice = noise16(100 * kBlock, 1);
    Sound block(kBlock * 2);
    std::size_t place = 0;
    for (auto _ : state) {
        std::copy_n(voice.begin() + static_cast<std::ptrdiff_t>(place), block.size(), block.begin());
        place = (place + block.size()) % voice.size();
        for (const auto& effect : chain) effect->process(block.data(), kBlock);
        benchmark::DoNotOptimize(block.data());
    }
    state.counters["cores"] = benchmark::Counter(static_cast<double>(state.iterations()) * kBlock / kSampleRate,
                                                 benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK_CAPTURE(voiceChain, all, addAll);
BENCHMARK_CAPTURE(voiceChain, reverb, addReverb);
BENCHMARK_CAPTURE(voiceChain, echo, addEcho);
BENCHMARK_CAPTURE(voiceChain, chorus, addChorus);
BENCHMARK_CAPTURE(voiceChain, flanger, addFlanger);
BENCHMARK_CAPTURE(voiceChain, equalisers, addEqualisers);
BENCHMARK_CAPTURE(voiceChain, off, addAllOff);

}  // namespace
}  // namespace melvane::engine
