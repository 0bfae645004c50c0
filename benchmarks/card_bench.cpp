// What the card costs. The counter "cores" is the share of one core that the work takes when it runs live.
#include <benchmark/benchmark.h>

#include "engine/graph/card.h"
#include "engine/graph/tempo_source.h"
#include "tests/sound.h"

namespace melvane::engine {
namespace {

using namespace melvane::test;

constexpr std::size_t kBlock = 441;
constexpr std::size_t kSongFrames = 20 * kSampleRate;

std::shared_ptr<PcmSource> song() {
    return std::make_shared<MemorySource>(noise16(kSongFrames, 1));
}

void countCores(benchmark::State& state) {
    state.counters["cores"] = benchmark::Counter(static_cast<double>(state.iterations()) * kBlock / kSampleRate,
                                                 benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void mixForever(benchmark::State& state, const std::shared_ptr<Channel>& background) {
    Card card;
    const auto voice = std::make_shared<Channel>(song(), true);
    for (const auto& channel : {background, voice}) card.play(channel, false);
    Sound block(kBlock * 2);
    for (auto _ : state) {
        if (!background->playing()) card.play(background, true);
        card.mix(block.data(), kBlock);
    }
    countCores(state);
}

void mixTwoSources(benchmark::State& state) {
    mixForever(state, std::make_shared<Channel>(song(), false));
}
BENCHMARK(mixTwoSources);

void mixWithKey(benchmark::State& state) {
    const auto tempo = std::make_shared<TempoSource>(song());
    tempo->setPitch(static_cast<float>(state.range(0)));
    mixForever(state, std::make_shared<Channel>(tempo, false));
}
BENCHMARK(mixWithKey)->Arg(0)->Arg(2)->Arg(-5)->Arg(5)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace melvane::engine
