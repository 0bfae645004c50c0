// Songs, voices and what a microphone makes of both, as imprints.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <random>
#include <vector>

#include "alignment/imprint.h"
#include "platform/audio_library.h"

namespace melvane::test {

using Mono = std::vector<float>;

inline Mono noise(std::size_t frames, double level, unsigned seed) {
    std::mt19937 random(seed);
    std::normal_distribution<float> normal(0, static_cast<float>(level));
    Mono sound(frames);
    for (float& sample : sound) sample = normal(random);
    return sound;
}

// Plucked notes with overtones and drums on a beat, `bars` of 2 s over and over; played up to `swing` frames late.
inline Mono makeSong(double seconds, int bars, unsigned seed, std::size_t swing = 0) {
    Mono song(static_cast<std::size_t>(seconds * kSampleRate));
    const Mono drum = noise(4000, 0.3, 1);
    std::mt19937 random;
    for (std::size_t eighth = 0; eighth * 11025 < song.size(); ++eighth) {
        if (eighth % static_cast<std::size_t>(bars * 8) == 0) random.seed(seed);
        const double pitch = 110 * std::pow(2, static_cast<double>(random() % 30) / 12);
        const bool beats = random() % 3 == 0;
        const std::size_t start = eighth * 11025 + (swing > 0 ? random() % swing : 0);
        for (std::size_t i = 0; i < 11025 && start + i < song.size(); ++i) {
            const double fade = std::exp(-static_cast<double>(i) / 5000);
            double sample = 0;
            for (int tone = 1; tone < 6; ++tone)
                sample += std::sin(2 * std::numbers::pi * pitch * tone * static_cast<double>(i) / kSampleRate) / tone;
            song[start + i] = static_cast<float>(0.2 * fade * sample);
            if (beats && i < drum.size()) song[start + i] += drum[i] * static_cast<float>(fade);
        }
    }
    return song;
}

// Vowels of a quarter of a second on wandering pitches, with a pause of a second now and then.
inline Mono makeVoice(double seconds, unsigned seed) {
    Mono voice = noise(static_cast<std::size_t>(seconds * kSampleRate), 1e-4, seed);
    std::mt19937 random(seed);
    double pitch = 200;
    bool sings = true;
    double phase = 0;
    for (std::size_t i = 0; i < voice.size(); ++i) {
        if (i % 11025 == 0) pitch = 150 + static_cast<double>(random() % 200);
        if (i % 44100 == 0) sings = random() % 5 != 0;
        phase += pitch / kSampleRate;
        const double wave = std::fmod(phase, 1.0) - 0.5;
        if (sings) voice[i] += static_cast<float>(0.3 * wave);
    }
    return voice;
}

struct Damage {
    double earlier = 0;   // seconds by which the recording begins before the song
    double driftPpm = 0;  // by which it is too long
    double leak = 0.01;   // the song's level
    double room = 0;      // of its reflections; the direct sound is 1
};

// What a recording of `seconds` holds: the voice, the song behind it, noise below both.
inline Mono record(const Mono& song, const Mono& voice, const Damage& damage) {
    Mono take = noise(voice.size(), 0.0005, 7);
    std::mt19937 random(3);
    std::vector<std::pair<double, double>> paths{{0, 1}};  // delay in frames, strength
    for (int path = 0; path < 40 && damage.room > 0; ++path) {
        const double delay = 200 + static_cast<double>(random() % 8000);
        paths.emplace_back(delay, damage.room * std::exp(-delay / 3000) * (random() % 2 ? 1 : -1));
    }
    for (std::size_t i = 0; i < take.size(); ++i) {
        const double at = static_cast<double>(i) / (1 + damage.driftPpm * 1e-6) - damage.earlier * kSampleRate;
        double heard = 0;
        for (const auto& [delay, strength] : paths) {
            const double frame = std::floor(at - delay);
            const auto whole = static_cast<std::int64_t>(frame);
            if (whole < 0 || whole + 1 >= std::ssize(song)) continue;
            const double part = at - delay - frame;
            heard += strength * (static_cast<double>(song[static_cast<std::size_t>(whole)]) * (1 - part) +
                                 static_cast<double>(song[static_cast<std::size_t>(whole + 1)]) * part);
        }
        take[i] += voice[i] + static_cast<float>(damage.leak * heard);
    }
    return take;
}

inline Trace imprint(const Mono& sound) {
    std::vector<float> stereo;
    for (const float sample : sound) stereo.insert(stereo.end(), 2, sample);
    ImprintMaker maker;
    constexpr std::size_t kBlock = 4099;  // nothing that divides anything
    for (std::size_t at = 0; at < sound.size(); at += kBlock)
        maker.add(&stereo[2 * at], std::min(kBlock, sound.size() - at));
    return maker.take();
}

}  // namespace melvane::test
