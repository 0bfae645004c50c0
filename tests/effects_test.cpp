#include <gtest/gtest.h>

#include <limits>
#include <thread>

#include "engine/effects/effect.h"
#include "tests/sound.h"

namespace melvane::engine {
namespace {

using namespace melvane::test;

constexpr EffectType kTypes[] = {EffectType::chorus, EffectType::echo, EffectType::flanger, EffectType::parametricEq,
                                 EffectType::reverb};  // in the order of EffectRecord

std::unique_ptr<Effect> effectWith(const EffectRecord& record) {
    auto effect = makeEffect(kTypes[record.index()]);
    EXPECT_TRUE(effect->set(record));
    return effect;
}

struct Change {
    std::size_t frame;
    EffectRecord record;
};

// `block` 0: of random sizes.
Sound through(const std::vector<Change>& changes, Sound sound, std::size_t block = 441) {
    const auto effect = makeEffect(kTypes[changes.front().record.index()]);
    std::mt19937 random(1);
    std::uniform_int_distribution<std::size_t> size(1, 3000);
    const std::size_t frames = sound.size() / 2;
    auto next = changes.begin();
    for (std::size_t done = 0; done < frames;) {
        for (; next != changes.end() && next->frame == done; ++next) effect->set(next->record);
        const std::size_t end = next == changes.end() ? frames : next->frame;
        const std::size_t count = std::min(block == 0 ? size(random) : block, end - done);
        effect->process(sound.data() + done * 2, count);
        done += count;
    }
    return sound;
}

Sound through(const EffectRecord& record, Sound sound) {
    return through({{0, record}}, std::move(sound));
}

Sound impulse(std::size_t frames, bool left = true, bool right = true) {
    Sound sound = silence(frames);
    sound[0] = left ? 1.0F : 0.0F;
    sound[1] = right ? 1.0F : 0.0F;
    return sound;
}

Sound difference(Sound sound, const Sound& dry) {
    std::transform(sound.begin(), sound.end(), dry.begin(), sound.begin(), std::minus<>());
    return sound;
}

double power(const Sound& sound, std::size_t start, std::size_t frames) {
    double sum = 0;
    for (std::size_t i = 2 * start; i < 2 * (start + frames); ++i) sum += std::pow(static_cast<double>(sound[i]), 2);
    return sum / static_cast<double>(2 * frames);
}

// --- equaliser ---

double gainAt(const Sound& impulseResponse, double hertz) {
    std::complex<double> sum;
    std::complex<double> turn = 1;
    const auto step = std::polar(1.0, -2 * std::numbers::pi * hertz / kSampleRate);
    for (std::size_t i = 0; i < impulseResponse.size(); i += 2, turn *= step)
        sum += static_cast<double>(impulseResponse[i]) * turn;
    return decibels(std::abs(sum));
}

double analogueGainAt(const ParametricEqRecord& band, double hertz) {
    const double a = std::pow(10, static_cast<double>(band.fGain) / 40);
    const double damping = 2 * std::sinh(std::numbers::ln2 / 2 * static_cast<double>(band.fBandwidth) / 12);
    const std::complex<double> s(0, hertz / static_cast<double>(band.fCenter));
    return decibels(std::abs((s * s + s * a * damping + 1.0) / (s * s + s / a * damping + 1.0)));
}

TEST(ParametricEq, FollowsTheAnalogueBand) {
    for (const auto centre : {80.F, 125.F, 600.F, 3e3F, 12e3F, 14e3F, 16e3F})
        for (const auto gain : {-15.F, -6.F, 2.F, 15.F})
            for (const auto bandwidth : {6.F, 18.F}) {
                const ParametricEqRecord band{.fCenter = centre, .fBandwidth = bandwidth, .fGain = gain};
                const Sound response = through(band, impulse(24000));
                EXPECT_NEAR(gainAt(response, static_cast<double>(centre)), static_cast<double>(gain), 0.05) << centre;
                for (double hertz = 20; hertz <= 15000; hertz *= 1.2)
                    ASSERT_NEAR(gainAt(response, hertz), analogueGainAt(band, hertz), 0.5)
                        << centre << " Hz " << gain << " dB " << bandwidth << " at " << hertz;
            }
}

// --- echo ---

TEST(Echo, RepetitionsComeWhenAndWhereAndAsLoudAsSet) {
    const struct {
        float mix, feedback, left, right;
        std::int32_t swap;
        struct {
            std::size_t frame, side;
            float level;
        } heard[4];  // of an impulse on the left
    } cases[] = {
        {40, 50, 266, 266, 0, {{0, 0, 0.6F}, {11731, 0, 0.4F}, {23462, 0, 0.2F}, {35193, 0, 0.1F}}},
        {100, 25, 10, 700, 0, {{0, 0, 0}, {441, 0, 1}, {882, 0, 0.25F}, {1323, 0, 0.0625F}}},
        {50, 100, 100, 300, 1, {{0, 0, 0.5F}, {4410, 0, 0.5F}, {17640, 1, 0.5F}, {22050, 0, 0.5F}}},
        {50, 0, 2000, 0, 0, {{0, 0, 0.5F}, {88200, 0, 0.5F}, {0, 1, 0}, {40000, 0, 0}}},
        {80, 100, 0, 0, 0, {{0, 0, 1}, {1, 0, 0}, {2, 0, 0}, {3, 1, 0}}},
    };
    for (const auto& c : cases) {
        const Sound out = through(EchoRecord{c.mix, c.feedback, c.left, c.right, c.swap}, impulse(90000, true, false));
        for (const auto& h : c.heard) {
            const std::size_t at = 2 * h.frame + h.side;
            EXPECT_NEAR(out[at], h.level, 1e-6) << c.left << " ms at " << h.frame;
            EXPECT_EQ(out[at + 2], 0) << c.left << " ms behind " << h.frame;
            EXPECT_EQ(h.level * out[at ^ 1], 0) << c.left << " ms beside " << h.frame;
        }
    }
}

// --- chorus and flanger ---

constexpr double kSlope = 1.0 / 131072;  // a frame

// The delay of each frame, read from what becomes of a sound that rises in a straight line.
std::vector<double> delays(const EffectRecord& record, std::size_t frames, std::size_t side) {
    Sound rising = silence(frames);
    for (std::size_t i = 0; i < rising.size(); ++i) rising[i] = static_cast<float>(static_cast<double>(i / 2) * kSlope);
    const Sound wet = through(record, rising);
    std::vector<double> read;
    for (std::size_t i = 0; i < frames; ++i)
        read.push_back(static_cast<double>(i) - static_cast<double>(wet[2 * i + side]) / kSlope);
    return read;
}

double oscillator(std::uint32_t waveform, double turns) {
    const double sine = std::sin(2 * std::numbers::pi * turns);
    return waveform == kWaveformSine ? sine : 2 / std::numbers::pi * std::asin(sine);
}

template <typename Record>
void expectSweep(float depth, float rate, std::uint32_t waveform, float delay, std::uint32_t phase) {
    const Record record{100, depth, 0, rate, waveform, delay, phase};
    const double centre = static_cast<double>(delay) * kSampleRate / 1000;
    for (const std::size_t side : {0U, 1U}) {
        const std::vector<double> read = delays(record, 100000, side);
        const double ahead = side == 0 ? 0 : (phase - 2.0) / 4;
        for (std::size_t i = 4000; i < read.size(); ++i) {
            const double turns = static_cast<double>(rate) * static_cast<double>(i) / kSampleRate + ahead;
            const double wanted = centre * (1 + static_cast<double>(depth) / 100 * oscillator(waveform, turns));
            ASSERT_NEAR(read[i], std::max(1.0, wanted), 0.01 * centre) << delay << " ms, frame " << i;
        }
    }
}

TEST(ModulatedDelay, SweepsAsSet) {
    expectSweep<ChorusRecord>(25, 1, kWaveformSine, 20, kPhase90);
    expectSweep<ChorusRecord>(100, 3, kWaveformTriangle, 20, 0);
    expectSweep<ChorusRecord>(10, 0, kWaveformSine, 16, 4);
    expectSweep<FlangerRecord>(100, 5, kWaveformSine, 2, kPhaseZero);
    expectSweep<FlangerRecord>(60, 10, kWaveformTriangle, 4, 1);
}

TEST(ModulatedDelay, FeedsBackWithItsSign) {
    for (const float feedback : {50.F, -50.F, -99.F}) {
        const Sound out = through(FlangerRecord{100, 0, feedback, 0, kWaveformSine, 2.5F, 2}, impulse(2000));
        // 110.25 frames lie between samples: the sum over each repetition is its level.
        float level = 1;
        for (std::size_t n = 1; n < 6; ++n, level *= feedback / 100) {
            float sum = 0;
            for (std::size_t i = n * 110 - 30; i < n * 110 + 30; ++i) sum += out[2 * i];
            EXPECT_NEAR(sum, level, 0.01) << feedback << ", repetition " << n;
        }
    }
    // All repetitions together, where they lie between the newest samples.
    for (const float delay : {0.03F, 0.05F, 0.06F}) {
        const Sound out = through(FlangerRecord{100, 0, 75, 0, kWaveformSine, delay, 2}, impulse(2000));
        EXPECT_NEAR(std::reduce(out.begin(), out.end()) / 2, 4, 0.001) << delay;
    }
}

// --- reverb ---

// The wet sound of a second of noise and of four seconds behind it.
Sound tailOf(const ReverbRecord& record) {
    Sound burst = noise16(5 * kSampleRate, 4);
    std::fill(burst.begin() + 2 * kSampleRate, burst.end(), 0.0F);
    return difference(through(record, burst), burst);
}

// Seconds for 60 dB around `hertz`, from the slope between -5 and -35 dB of the energy that is still to come behind
// `start` (M. R. Schroeder, 1965).
double decayTime(Sound sound, double hertz, std::size_t start) {
    const ParametricEqRecord peak{.fCenter = static_cast<float>(hertz), .fBandwidth = 4, .fGain = 15};
    for (int i = 0; i < 6; ++i) sound = through(peak, sound);
    double left = 0;
    for (std::size_t i = start; i < sound.size() / 2; ++i) left += std::pow(static_cast<double>(sound[2 * i]), 2);
    const double whole = left;
    double from = 0;
    for (std::size_t i = start; i < sound.size() / 2; ++i) {
        left -= std::pow(static_cast<double>(sound[2 * i]), 2);
        if (from == 0 && left < whole * std::pow(10, -0.5)) from = static_cast<double>(i);
        if (left < whole * std::pow(10, -3.5)) return 2 * (static_cast<double>(i) - from) / kSampleRate;
    }
    return 1e9;
}

TEST(Reverb, DecaysInTheTimeThatIsSet) {
    const struct {
        float ratio;
        double least, most;  // of the decay at 14 kHz in relation to the one at 1 kHz
    } cases[] = {{0.001F, 0.05, 0.45}, {0.5F, 0.4, 0.65}, {0.999F, 0.8, 1.1}};
    for (const float time : {300.F, 1000.F, 3000.F})
        for (const auto& c : cases) {
            const Sound tail = tailOf({.fReverbTime = time, .fHighFreqRTRatio = c.ratio});
            const double seconds = static_cast<double>(time) / 1000;
            EXPECT_NEAR(decayTime(tail, 1000, kSampleRate), seconds, 0.1 * seconds) << c.ratio;
            const double high = decayTime(tail, 14000, kSampleRate) / seconds;
            EXPECT_TRUE(high > c.least && high < c.most) << high << " for " << c.ratio << " and " << time;
        }
}

TEST(Reverb, IsAsLoudAsTheDrySoundAndSmoothAndWide) {
    const Sound dry = noise16(4 * kSampleRate, 5);
    for (const float time : {0.001F, 100.F, 1000.F, 3000.F})
        for (const auto& [ratio, most] : {std::pair(0.5F, 2.0), {0.999F, 0.6}}) {
            const Sound wet =
                difference(through(ReverbRecord{.fReverbTime = time, .fHighFreqRTRatio = ratio}, dry), dry);
            EXPECT_NEAR(10 * std::log10(power(wet, 88200, 88200) / power(dry, 88200, 88200)), 0, most) << time;
        }
    const ReverbRecord soft{.fInGain = -6, .fReverbMix = -14, .fHighFreqRTRatio = 0.999F};
    const Sound wet = difference(through(soft, dry), dry);
    EXPECT_NEAR(10 * std::log10(power(wet, 88200, 88200) / power(dry, 88200, 88200)), -20, 0.1);

    const Sound click = impulse(3 * kSampleRate);
    const Sound tail = difference(through(ReverbRecord{.fReverbTime = 3000, .fHighFreqRTRatio = 0.999F}, click), click);
    EXPECT_NEAR(10 * std::log10(power(tail, 0, 900) / power(tail, 900, 900)), 0, 3) << "it begins at once";
    double both = 0;
    for (std::size_t i = 44100; i < 88200; ++i)
        both += static_cast<double>(tail[2 * i]) * static_cast<double>(tail[2 * i + 1]);
    EXPECT_LT(std::abs(both) / 44100, 0.1 * power(tail, 44100, 44100));
    // No tone stands out of its neighbourhood; in steady noise it is up to 9 dB.
    for (const std::size_t start : {22050U, 66150U}) {
        std::vector<double> levels;
        for (double hertz = 200; hertz < 6000; hertz += 4)
            levels.push_back(std::pow(levelAt(tail, hertz, start, 22050), 2));
        for (std::size_t i = 50; i + 50 < levels.size(); ++i) {
            const double around = std::reduce(&levels[i - 50], &levels[i + 50]) / 100;
            EXPECT_LT(10 * std::log10(levels[i] / around), 13) << 200 + 4 * i << " Hz";
        }
    }
}

TEST(Reverb, NothingIsLeftOfWhatSoundedBeforeItWasOff) {
    Sound sound = noise16(60000, 3);
    std::fill(sound.begin() + 2 * 22000, sound.end(), 0.0F);
    const Sound out =
        through({{0, ReverbRecord{}}, {20000, ReverbRecord{.fReverbMix = -96}}, {25000, ReverbRecord{}}}, sound);
    EXPECT_EQ(power(out, 22000, 38000), 0);
}

// --- all ---

// What each effect is when it is switched on, and when it is switched off, for the voice.
const struct {
    EffectRecord on, other, off;
} kSettings[] = {
    {ChorusRecord{50, 25, 50, 1, kWaveformSine, 20, kPhase90}, ChorusRecord{80, 40, -30, 2, kWaveformTriangle, 12, 1},
     ChorusRecord{0, 0, 0, 0, kWaveformSine, 20, 0}},
    {EchoRecord{25, 50, 266, 266, 0}, EchoRecord{60, 70, 90, 410, 1}, EchoRecord{0, 0, 0, 0, 0}},
    {FlangerRecord{50, 100, -50, 5, kWaveformSine, 2, kPhaseZero},
     FlangerRecord{70, 60, 80, 1, kWaveformTriangle, 4, 4}, FlangerRecord{0, 0, 0, 0, kWaveformSine, 0, 0}},
    {ParametricEqRecord{1000, 18, 12}, ParametricEqRecord{12000, 18, -10}, ParametricEqRecord{1000, 18, 0}},
    {ReverbRecord{0, -3, 1000, 0.001F}, ReverbRecord{-6, -10, 300, 0.7F}, ReverbRecord{0, -96, 1000, 0.001F}},
};

TEST(Effects, SamplesDoNotDependOnTheBlock) {
    for (const auto& s : kSettings) {
        const std::vector<Change> changes = {{0, s.on},       {5000, s.off},  {5300, s.other}, {5301, s.on},
                                             {9000, s.other}, {12345, s.off}, {110000, s.on}};
        const Sound sound = noise16(120000, 6);
        const Sound reference = through(changes, sound, 4096);
        EXPECT_NE(reference, sound);
        for (const std::size_t block : {0U, 1U, 64U, 441U})
            EXPECT_EQ(through(changes, sound, block), reference) << s.on.index() << ", blocks of " << block;
    }
}

TEST(Effects, OffPassesBitByBitFromTheStartAndAgainSoonAfterSwitchingOff) {
    for (const auto& s : kSettings) {
        const Sound sound = noise16(150000, 7);
        EXPECT_EQ(through(s.off, sound), sound) << s.on.index();
        const Sound later = through({{0, s.on}, {10000, s.off}}, sound);
        EXPECT_FALSE(std::equal(sound.begin(), sound.begin() + 20000, later.begin()));
        EXPECT_TRUE(std::equal(sound.begin() + 200000, sound.end(), later.begin() + 200000)) << s.on.index();
    }
}

// The greatest fourth difference, as the step that it would come from: the tone itself is 96 dB below its level.
float roughness(const Sound& sound, std::size_t start, std::size_t end) {
    float most = 0;
    for (std::size_t i = 2 * start; i < 2 * end; ++i)
        most =
            std::max(most, std::abs(sound[i] - 4 * sound[i + 2] + 6 * sound[i + 4] - 4 * sound[i + 6] + sound[i + 8]));
    return most / 6;
}

TEST(Effects, ChangesDoNotClick) {
    Sound tone = sine(440, 0.5, 150000);
    for (std::size_t i = 0; i < 4000; ++i) tone[i] *= static_cast<float>(i * i) / 16e6F;
    for (const auto& s : kSettings)
        for (const auto& [from, to] : {std::pair(s.off, s.on), {s.on, s.off}, {s.on, s.other}, {s.other, s.on}}) {
            const Sound out = through({{0, from}, {60000, to}, {61000, from}, {61400, to}}, tone);
            const float steady = std::max(roughness(out, 15000, 59000), roughness(out, 106000, 149000));
            EXPECT_LT(roughness(out, 59900, 64000), std::max(0.0005F, 1.1F * steady)) << s.on.index();
        }
}

TEST(Effects, StayInBoundsAtTheExtremes) {
    const EffectRecord extremes[] = {
        ChorusRecord{100, 100, -99, 10, kWaveformSine, 0, 4},
        FlangerRecord{100, 100, 99, 10, kWaveformSine, 4, 3},
        FlangerRecord{100, 0, 99, 0, kWaveformSine, 0.06F, 2},
        EchoRecord{100, 100, 0, 0.03F, 1},
        ReverbRecord{0, 0, 3000, 0.999F},
        ReverbRecord{0, 0, 0.001F, 0.001F},
        ParametricEqRecord{80, 1, 15},
        ParametricEqRecord{16000, 36, 15},
    };
    const Sound loud = noise16(30 * kSampleRate, 8, 32767);
    for (const EffectRecord& record : extremes) {
        const Sound out = through(record, loud);
        const auto [least, most] = std::ranges::minmax(out);
        EXPECT_TRUE(least > -20 && most < 20 && std::isfinite(power(out, 0, out.size() / 2)))
            << record.index() << ": " << least << ".." << most;
    }
}

TEST(Effects, TakeOnlyTheirOwnRecordsAndKeepThemAsTheyWereSet) {
    const EffectRecord defaults[] = {ChorusRecord{50, 10, 25, 1.1F, kWaveformSine, 16, kPhase90},
                                     EchoRecord{50, 50, 500, 500, 0},
                                     FlangerRecord{50, 100, -50, 0.25F, kWaveformSine, 2, kPhaseZero},
                                     ParametricEqRecord{8000, 12, 0}, ReverbRecord{0, 0, 1000, 0.001F}};
    for (const EffectType type : kTypes) {
        const auto effect = makeEffect(type);
        EXPECT_EQ(effect->get(), defaults[effect->get().index()]) << "to begin with";
        for (const EffectRecord& record : defaults) EXPECT_EQ(effect->set(record), kTypes[record.index()] == type);
    }
    const float none = std::numeric_limits<float>::quiet_NaN();
    const std::pair<EffectRecord, EffectRecord> limits[] = {
        {ChorusRecord{120, 1e9F, 300, 99, 7, 70, 9}, ChorusRecord{100, 100, 99, 10, kWaveformSine, 20, 4}},
        {FlangerRecord{90, -1, -1e9F, -3, 0, 70, 0}, FlangerRecord{90, 0, -99, 0, 0, 4, 0}},
        {EchoRecord{170, 500, 1e9F, -9, 8}, EchoRecord{100, 100, 2000, 0, 1}},
        {EchoRecord{70, 500, 30, 40, -1}, EchoRecord{70, 100, 30, 40, 0}},
        {ParametricEqRecord{1, 0, 99}, ParametricEqRecord{80, 1, 15}},
        {ParametricEqRecord{1e9F, 99, none}, ParametricEqRecord{16000, 36, -15}},
        {ReverbRecord{30, 30, 1e9F, 7}, ReverbRecord{0, 0, 3000, 0.999F}},
        {ReverbRecord{none, -3, none, none}, ReverbRecord{-96, -3, 0.001F, 0.001F}},
    };
    const Sound sound = noise16(100000, 9);
    for (const auto& [set, limited] : limits) {
        EXPECT_EQ(through(set, sound), through(limited, sound)) << set.index();
        const bool comparable = set == set;
        EXPECT_EQ(effectWith(set)->get() == set, comparable) << set.index();
    }
}

TEST(Effects, TakeRecordsWhileTheyWork) {
    for (const auto& s : kSettings) {
        const auto effect = effectWith(s.on);
        std::thread mixing([&] {
            Sound block = noise16(441, 10);
            for (int i = 0; i < 200; ++i) effect->process(block.data(), 441);
        });
        for (int i = 0; i < 2000; ++i) effect->set(i % 2 == 0 ? s.other : s.on);
        mixing.join();
        EXPECT_EQ(effect->get(), s.on);
    }
}

}  // namespace
}  // namespace melvane::engine
