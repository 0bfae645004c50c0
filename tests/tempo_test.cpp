#include "engine/graph/tempo_source.h"

#include <gtest/gtest.h>

#include "tests/no_threads.h"
#include "tests/sound.h"

namespace melvane::engine {
namespace {

using namespace melvane::test;

Sound readAll(TempoSource& source, std::size_t frames, std::size_t block) {
    Sound sound(frames * 2);
    for (std::size_t done = 0; done < frames; done += block)
        source.read(sound.data() + done * 2, std::min(block, frames - done));
    return sound;
}

TempoSource tempoOf(Sound sound) {
    return TempoSource(std::make_shared<MemorySource>(std::move(sound)));
}

// The place of each hit: where the first 3 % of its energy have come.
std::vector<double> onsets(const Sound& sound, std::size_t every) {
    std::vector<double> found;
    const std::size_t frames = sound.size() / 2;
    for (std::size_t start = 0; start + every <= frames; start += every) {
        std::vector<double> energy(every + 1);
        for (std::size_t i = 0; i < every; ++i) {
            const auto sample = static_cast<double>(sound[2 * (start + i)]);
            energy[i + 1] = energy[i] + sample * sample;
        }
        const auto place = std::ranges::lower_bound(energy, energy.back() * 0.03);
        found.push_back(static_cast<double>(start) + static_cast<double>(place - energy.begin()));
    }
    return found;
}

TEST(TempoSource, KeyZeroPassesBitByBitAlsoAfterOtherKeys) {
    const Sound sound = noise16(100000, 5);
    TempoSource source = tempoOf(sound);
    EXPECT_EQ(source.frames(), 100000);
    readAll(source, 20000, 441);
    source.setPitch(3);
    readAll(source, 20000, 441);
    source.setPitch(0);
    readAll(source, 10000, 441);
    const Sound rest = readAll(source, 50000, 441);
    EXPECT_TRUE(std::equal(rest.begin(), rest.end(), sound.begin() + 100000));
    EXPECT_EQ(source.read(Sound(20).data(), 10), 0U);
}

TEST(TempoSource, MovesASineByTheKey) {
    for (const float key : {-5.0F, -2.0F, 0.5F, 2.0F, 5.0F}) {
        TempoSource source = tempoOf(sine(440, 0.5, 88200));
        source.setPitch(key);
        const Sound shifted = readAll(source, 88200, 441);
        const double moved = 440 * std::exp2(static_cast<double>(key) / 12);
        EXPECT_NEAR(decibels(levelAt(shifted, moved, 30000, 32768) / 0.5), 0, 0.5) << key;
        EXPECT_LT(decibels(levelAt(shifted, 440, 30000, 32768) / 0.5), key == 0.5F ? -20 : -40) << key;
    }
}

// C3 E3 G3 C4 E4 G4 B4, eight harmonics each.
constexpr double kChord[] = {130.81, 164.81, 196.00, 261.63, 329.63, 392.00, 493.88};

Sound chord(std::size_t frames) {
    Sound sound = silence(frames);
    for (const double note : kChord)
        for (int harmonic = 1; harmonic <= 8; ++harmonic) {
            const Sound partial = sine(note * harmonic, 0.08 / harmonic, frames);
            for (std::size_t i = 0; i < sound.size(); ++i) sound[i] += partial[i];
        }
    return sound;
}

// How far the partials stand above everything else, in dB.
double clearness(const Sound& sound, double scale) {
    constexpr std::size_t kFrames = 65536;
    const std::vector<double> power = powerSpectrum(sound, 40000, kFrames);
    double partials = 0;
    double rest = 0;
    for (std::size_t bin = 0; bin < power.size(); ++bin) {
        const double hertz = static_cast<double>(bin) * kSampleRate / kFrames;
        const bool isPartial = std::ranges::any_of(kChord, [&](double note) {
            const double harmonic = std::round(hertz / (note * scale));
            return harmonic >= 1 && harmonic <= 8 && std::abs(hertz - harmonic * note * scale) < 8;
        });
        (isPartial ? partials : rest) += power[bin];
    }
    return 10 * std::log10(partials / rest);
}

TEST(TempoSource, KeepsAChordClear) {
    constexpr std::size_t kFrames = 3 * kSampleRate;
    for (const float key : {-5.0F, -2.0F, 2.0F, 5.0F}) {
        TempoSource source = tempoOf(chord(kFrames));
        source.setPitch(key);
        EXPECT_GT(clearness(readAll(source, kFrames, 441), std::exp2(static_cast<double>(key) / 12)), 19) << key;
    }
}

// After any number of changes the song lies where it lay: within half a millisecond on average. Single attacks
// scatter by up to 2 ms in the engine, at a steady key too.
TEST(TempoSource, KeepsItsPlaceThroughAHundredChanges) {
    constexpr std::size_t kEvery = 11025;
    const Sound sound = hits(kEvery * 60, kEvery);
    const std::vector<double> expected = onsets(sound, kEvery);
    TempoSource source = tempoOf(sound);
    std::mt19937 random(7);
    std::uniform_int_distribution<int> key(-50, 50);
    Sound shifted;
    for (int change = 0; change < 100; ++change) {
        source.setPitch(static_cast<float>(key(random)) / 10.0F);
        const Sound piece = readAll(source, sound.size() / 200, 441);
        shifted.insert(shifted.end(), piece.begin(), piece.end());
    }
    const std::vector<double> found = onsets(shifted, kEvery);
    double sum = 0;
    for (std::size_t i = 0; i < found.size(); ++i) {
        EXPECT_NEAR(found[i], expected[i], 88.2) << i;
        sum += found[i] - expected[i];
    }
    EXPECT_NEAR(sum / static_cast<double>(found.size()), 0, 22);
}

TEST(TempoSource, TheSamplesDoNotDependOnTheBlock) {
    const auto run = [](std::size_t block) {
        TempoSource source = tempoOf(noise16(60000, 9));
        source.setPitch(-2);
        Sound all = readAll(source, 20480, block);
        source.setPitch(4);
        const Sound rest = readAll(source, 39520, block);
        all.insert(all.end(), rest.begin(), rest.end());
        return all;
    };
    const Sound reference = run(4096);
    for (const std::size_t block : {64U, 441U}) EXPECT_EQ(run(block), reference) << block;
}

TEST(SourceWindow, GivesSilenceOutsideAndGoesBack) {
    const Sound sound = noise16(200000, 11);
    SourceWindow window(std::make_shared<MemorySource>(sound));
    const struct {
        std::int64_t frame;
        std::size_t count;
    } reads[] = {{-100, 200}, {50000, 30000}, {48000, 100}, {20, 500}, {199990, 50}, {300000, 10}, {0, 32768}};
    for (const auto& r : reads) {
        Sound out(r.count * 2);
        window.read(r.frame, out.data(), r.count);
        for (std::size_t i = 0; i < r.count; ++i) {
            const std::int64_t frame = r.frame + static_cast<std::int64_t>(i);
            const bool inside = frame >= 0 && frame < 200000;
            ASSERT_EQ(out[2 * i], inside ? sound[static_cast<std::size_t>(frame) * 2] : 0.0F) << r.frame << "+" << i;
        }
    }
}

TEST(Worker, WithoutAThreadItsOwnerDoesTheWork) {
    const NoThreads none;
    int done = 0;
    Worker worker([&] { ++done; });
    for (const int round : {1, 2}) {
        worker.start();
        worker.wait();
        EXPECT_EQ(done, round);
    }
}

}  // namespace
}  // namespace melvane::engine
