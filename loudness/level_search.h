// The volumes of song and voice and the trim of the voice with which they fit each other. Pure computation.
#pragma once

#include <array>
#include <functional>

namespace melvane {

struct Levels {
    std::array<int, 2> volume{100, 100};  // of song and voice, 0..100
    double trim = 0;                      // of the voice, dB, -24..24

    bool operator==(const Levels&) const = default;
};

// What a search may ask about a song and a voice that were kept apart from each other.
struct LevelTrials {
    // The integrated loudness of one of them alone, LUFS, when it is made that much louder than it was kept; -infinity
    // of silence.
    std::function<double(double gainDb)> song;
    std::function<double(double gainDb)> voice;
    // The share of blocks of 10 ms of both in which the limiter takes more than 0.1 dB, 0..1.
    std::function<double(double songGainDb, double voiceGainDb)> limited;
    // What a volume means, dB.
    std::function<double(int volume)> songVolume;
    std::function<double(int volume)> voiceVolume;
};

enum class MatchEnd { matched, songSilent, voiceSilent, outOfReach };

struct LevelMatch {
    MatchEnd end = MatchEnd::outOfReach;
    Levels levels;
    // With these levels.
    double songLufs = 0;
    double voiceLufs = 0;
    double limitedShare = 0;
};

inline constexpr double kVoiceAboveSong = 2;    // LU
inline constexpr double kMatchTolerance = 0.5;  // LU
inline constexpr double kMostLimitedShare = 0.01;

// The song is as loud as it may be and no louder than it is now; the voice follows it by its trim, and by its volume
// only where it is too loud for that. `now`: the levels at which both were kept. What the trials throw is passed on.
LevelMatch matchLevels(const Levels& now, const LevelTrials& trials);

}  // namespace melvane
