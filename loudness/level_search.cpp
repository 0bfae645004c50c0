#include "loudness/level_search.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace melvane {

namespace {

constexpr double kMostTrim = 24;   // dB
constexpr double kTrimSteps = 10;  // a decibel
constexpr int kRounds = 4;
constexpr int kFinest = 20;     // by what part of a volume the next is lower
constexpr double kNear = 0.03;  // LU

class Search {
public:
    Search(const Levels& now, const LevelTrials& trials) : now_(now), ask_(trials) {}

    LevelMatch run() {
        LevelMatch match{.levels = now_};
        if (!std::isfinite(ask_.song(0))) return {.end = MatchEnd::songSilent};
        if (!findVoice()) return {.end = MatchEnd::voiceSilent};
        int volume = loudest([this](int song) { return levelsAt(song).has_value(); });
        volume =
            std::min(volume, loudest([&](int song) { return song <= volume && share(song) <= kMostLimitedShare; }));
        // The quieter the song, the less of it is above the absolute gate: what was reckoned is measured.
        for (; volume > 0; volume -= 1 + volume / kFinest)
            if (measure(volume, match)) return match;
        return {.end = MatchEnd::outOfReach};
    }

private:
    // Gains on what was kept, by volume and trim.
    double songGain(int volume) const { return ask_.songVolume(volume) - ask_.songVolume(now_.volume[0]); }
    double voiceGain(const Levels& levels) const {
        return ask_.voiceVolume(levels.volume[1]) - ask_.voiceVolume(now_.volume[1]) + levels.trim - now_.trim;
    }

    // The voice's gain beside the song as it was kept. False when nothing of it can be heard.
    bool findVoice() {
        gain_ = 0;
        double voice = ask_.voice(gain_);
        if (!std::isfinite(voice)) voice = ask_.voice(gain_ = kMostTrim - now_.trim);
        if (!std::isfinite(voice)) return false;
        gain_ = settled(ask_.song(0), gain_, voice);
        return true;
    }

    // The gain with which the voice lies above a song of that loudness, from one with which it is that loud.
    double settled(double song, double gain, double voice) const {
        for (int round = 0; round < kRounds && std::abs(song + kVoiceAboveSong - voice) > kNear; ++round) {
            if (!std::isfinite(song - voice)) break;
            gain += song + kVoiceAboveSong - voice;
            voice = ask_.voice(gain);
        }
        return gain;
    }

    // The trim, and the voice's volume where that is not enough, that make up a gain on the voice.
    std::optional<Levels> levelsOf(int song, double gain) const {
        Levels levels{{song, now_.volume[1]}, now_.trim};
        const double trim = now_.trim + gain;
        const auto tooLoud = [&] { return gain - voiceGain(levels) + now_.trim < -kMostTrim; };
        while (levels.volume[1] > 0 && tooLoud()) --levels.volume[1];
        levels.trim = std::round((trim - voiceGain(levels)) * kTrimSteps) / kTrimSteps;
        const bool fits = levels.volume[1] > 0 && std::abs(levels.trim) <= kMostTrim;
        return fits ? std::optional(levels) : std::nullopt;
    }
    std::optional<Levels> levelsAt(int song) const { return levelsOf(song, gain_ + songGain(song)); }

    double share(int song) const {
        const auto levels = levelsAt(song);
        return levels ? ask_.limited(songGain(song), voiceGain(*levels)) : 1;
    }

    // The highest volume of the song, up to what it is now, that is good enough; 0 when none is. Lower ones are better.
    template <typename Good>
    int loudest(Good good) const {
        int low = 0;
        int high = now_.volume[0];
        if (good(high)) return high;
        while (high - low > 1) {
            const int middle = (low + high) / 2;
            (good(middle) ? low : high) = middle;
        }
        return low;
    }

    bool measure(int volume, LevelMatch& match) const {
        match.songLufs = ask_.song(songGain(volume));
        const double gain = gain_ + songGain(volume);
        const auto levels = levelsOf(volume, settled(match.songLufs, gain, ask_.voice(gain)));
        if (!levels) return false;
        match.levels = *levels;
        match.voiceLufs = ask_.voice(voiceGain(*levels));
        match.limitedShare = ask_.limited(songGain(volume), voiceGain(*levels));
        const bool near = std::abs(match.voiceLufs - match.songLufs - kVoiceAboveSong) <= kMatchTolerance;
        match.end = MatchEnd::matched;
        return near && match.limitedShare <= kMostLimitedShare;
    }

    const Levels& now_;
    const LevelTrials& ask_;
    double gain_ = 0;  // of the voice, with which it fits the song as that was kept
};

}  // namespace

LevelMatch matchLevels(const Levels& now, const LevelTrials& trials) {
    return Search(now, trials).run();
}

}  // namespace melvane
