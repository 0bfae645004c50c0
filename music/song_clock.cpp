#include "music/song_clock.h"

#include <array>
#include <numeric>

#include "platform/audio_library.h"
#include "platform/music_performance.h"

namespace melvane::music {
namespace {

constexpr std::int64_t kMicroseconds = 1'000'000;
constexpr std::int64_t kDefaultTempo = 500'000;
constexpr std::int64_t kLongestGap = std::int64_t{600} * kSampleRate;

struct SmpteRate {
    int code;
    std::int64_t frames;
    std::int64_t seconds;  // that these take
};
constexpr std::array<SmpteRate, 4> kSmpteRates{{{24, 24, 1}, {25, 25, 1}, {29, 30000, 1001}, {30, 30, 1}}};

SmpteRate smpteRate(int code) {
    for (const SmpteRate& rate : kSmpteRates)
        if (rate.code == code) return rate;
    throw MusicError("The MIDI file counts time in unknown frames.");
}

}  // namespace

SongClock::SongClock(std::uint16_t division) : smpte_(division >= 0x8000) {
    const int ticks = smpte_ ? division & 0xFF : division;
    if (ticks == 0) throw MusicError("The MIDI file says nothing of its time.");
    // The high byte holds the negative rate.
    const SmpteRate rate = smpte_ ? smpteRate(0x100 - (division >> 8)) : SmpteRate{0, kMicroseconds, 1};
    const std::int64_t frames = rate.seconds * kSampleRate;
    const std::int64_t units = rate.frames * ticks;
    const std::int64_t common = std::gcd(frames, units);
    perUnit_ = frames / common;
    perFrame_ = units / common;
    if (!smpte_) unitsPerTick_ = kDefaultTempo;
}

void SongClock::setTempo(std::uint32_t microsecondsPerBeat) {
    if (!smpte_ && microsecondsPerBeat > 0) unitsPerTick_ = microsecondsPerBeat;
}

bool SongClock::advance(std::int64_t ticks) {
    if (ticks > kLongestGap * perFrame_ / perUnit_ / unitsPerTick_) return false;
    units_ += ticks * unitsPerTick_;
    return true;
}

std::int64_t SongClock::frame() const {
    return (units_ * perUnit_ + perFrame_ / 2) / perFrame_;
}

}  // namespace melvane::music
