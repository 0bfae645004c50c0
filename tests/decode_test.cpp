#include <gtest/gtest.h>
#include <sndfile.h>
#include <sys/stat.h>

#include <limits>

#include "base/paths.h"
#include "engine/decode/open_source.h"
#include "tests/temp_dir.h"
#include "tests/wav.h"

namespace melvane::decode {
namespace {

namespace fs = std::filesystem;
using namespace melvane::test;
using Samples = Sound;

constexpr double kSineHz = 441.0;
constexpr float kSineLevel = 0.5F;

// One second with a click at 0.4 s, then one with a sine, and an odd rest.
std::int64_t signalFrames(int rate) {
    return 2 * rate + 123;
}
std::int64_t clickAt(int rate) {
    return rate * 2 / 5;
}

// Channel `only` alone sounds, or all when it is -1.
Samples makeSignal(int rate, int channels, int only = -1) {
    Samples signal(static_cast<std::size_t>(signalFrames(rate) * channels));
    for (std::int64_t i = 0; i < signalFrames(rate); ++i) {
        const double sine = kSineLevel * std::sin(2 * std::numbers::pi * kSineHz * static_cast<double>(i) / rate);
        const float value = i == clickAt(rate) ? 0.9F : i >= rate ? static_cast<float>(sine) : 0.0F;
        for (int c = 0; c < channels; ++c)
            if (only < 0 || c == only) signal[static_cast<std::size_t>(i * channels + c)] = value;
    }
    return signal;
}

std::string noise(std::size_t bytes, unsigned seed) {
    std::mt19937 random(seed);
    std::string text(bytes, '\0');
    for (char& c : text) c = static_cast<char>(random());
    return text;
}

// Everything there is, in blocks of odd sizes.
Samples readAll(PcmSource& source) {
    Samples all;
    std::size_t block = 1;
    Samples buffer(2 * 5000);
    while (const std::size_t got = source.read(buffer.data(), block)) {
        all.insert(all.end(), buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(2 * got));
        block = block * 7 % 4999;
    }
    EXPECT_EQ(std::ssize(all) / 2, source.frames());
    EXPECT_FALSE(source.failed());
    return all;
}

struct Levels {
    double sine;  // amplitude at kSineHz
    double rest;  // RMS of what remains without it
};

Levels measure(const Samples& stereo, std::int64_t from, std::int64_t to, std::size_t side) {
    double cosine = 0, sine = 0, power = 0;
    for (std::int64_t i = from; i < to; ++i) {
        const double sample = stereo[static_cast<std::size_t>(2 * i) + side];
        const double angle = 2 * std::numbers::pi * kSineHz * static_cast<double>(i) / 44100;
        cosine += sample * std::cos(angle);
        sine += sample * std::sin(angle);
        power += sample * sample;
    }
    const double frames = static_cast<double>(to - from);
    const double level = 2 * std::hypot(cosine, sine) / frames;
    return {level, std::sqrt(std::max(power / frames - level * level / 2, 0.0))};
}

// `fine` is how far level and purity may be off; `late` how many frames click and end may come too late.
void expectSignal(const Samples& stereo, int rate, double fine, std::int64_t late = 0) {
    const auto scaled = [rate](std::int64_t frame) { return std::llround(static_cast<double>(frame) * 44100 / rate); };
    const std::int64_t frames = std::ssize(stereo) / 2;
    EXPECT_GE(frames, scaled(signalFrames(rate)));
    EXPECT_LE(frames, scaled(signalFrames(rate)) + 2 * late);
    ASSERT_GT(frames, 88000);
    const auto isSofter = [](float one, float other) { return std::abs(one) < std::abs(other); };
    const std::int64_t click =
        (std::max_element(stereo.begin(), stereo.begin() + 80000, isSofter) - stereo.begin()) / 2;
    EXPECT_GE(click, scaled(clickAt(rate)));
    EXPECT_LE(click, scaled(clickAt(rate)) + late);
    for (const std::size_t side : {0U, 1U}) {
        const Levels levels = measure(stereo, 52000, 52000 + 30000, side);
        EXPECT_NEAR(levels.sine, kSineLevel, fine);
        EXPECT_LT(levels.rest, fine);
    }
}

class Decode : public testing::Test {
protected:
    std::string encode(const std::string& name, int format, int rate, int channels, const Samples& samples) const {
        SF_INFO info{};
        info.format = format;
        info.samplerate = rate;
        info.channels = channels;
        SNDFILE* file = sf_open((dir / name).c_str(), SFM_WRITE, &info);
        EXPECT_NE(file, nullptr) << name << ": " << sf_strerror(nullptr);
        EXPECT_EQ(sf_write_float(file, samples.data(), std::ssize(samples)), std::ssize(samples));
        sf_close(file);
        return dir / name;
    }
    std::string encodeMp3(const std::string& name, const std::string& options, int rate, int channels) const {
        const std::string wav =
            encode("in.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, rate, channels, makeSignal(rate, channels));
        // At a constant bit rate the encoder takes 5 % off the level by itself.
        const std::string scale = options.find("-b") == std::string::npos ? "" : "--scale 1.0526 ";
        const std::string command = "lame --quiet " + scale + options + " \"" + wav + "\" \"" + (dir / name) + "\"";
        EXPECT_EQ(std::system(command.c_str()), 0) << command;
        return dir / name;
    }
    Samples decode(const std::string& file) const {
        const auto source = openSource(file);
        EXPECT_TRUE(source) << file;
        return source ? readAll(*source) : Samples();
    }

    TempDir dir;
};

TEST_F(Decode, readsEveryFormatAtEveryRate) {
    struct Case {
        const char* name;
        int format, rate, channels;
        double fine;
    };
    constexpr Case kCases[] = {
        {"8 bit", SF_FORMAT_WAV | SF_FORMAT_PCM_U8, 44100, 1, 0.01},
        {"16 bit", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 44100, 2, 1e-4},
        {"24 bit, 48 kHz", SF_FORMAT_WAV | SF_FORMAT_PCM_24, 48000, 2, 1e-4},
        {"32 bit, 96 kHz mono", SF_FORMAT_WAV | SF_FORMAT_PCM_32, 96000, 1, 1e-4},
        {"float, 22.05 kHz", SF_FORMAT_WAV | SF_FORMAT_FLOAT, 22050, 2, 1e-4},
        {"double, 192 kHz", SF_FORMAT_WAV | SF_FORMAT_DOUBLE, 192000, 2, 1e-4},
        {"8 kHz", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 8000, 2, 1e-4},
        {"odd rate", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 44099, 2, 1e-4},
        {"5.1, all alike", SF_FORMAT_WAVEX | SF_FORMAT_PCM_16, 44100, 6, 1e-4},
        {"RIFX", SF_FORMAT_WAV | SF_FORMAT_PCM_16 | SF_ENDIAN_BIG, 44100, 2, 1e-4},
        {"RF64", SF_FORMAT_RF64 | SF_FORMAT_PCM_24, 32000, 2, 1e-4},
        {"FLAC", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, 44100, 2, 1e-4},
        {"OGG", SF_FORMAT_OGG | SF_FORMAT_VORBIS, 44100, 2, 0.02},
        {"OGG, 48 kHz mono", SF_FORMAT_OGG | SF_FORMAT_VORBIS, 48000, 1, 0.02},
    };
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.name);
        const std::string file = encode("any.name", c.format, c.rate, c.channels, makeSignal(c.rate, c.channels));
        expectSignal(decode(file), c.rate, c.fine);
    }
}

TEST_F(Decode, silencesWhatIsNoNumber) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    const Samples bad{0.25F, std::nanf(""), kInfinity, -0.5F, -kInfinity, 1.1e6F, 1e6F, 0.0F};
    const std::string file = encode("a.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, 44100, 2, bad);
    EXPECT_EQ(decode(file), (Samples{0.25F, 0.0F, 0.0F, -0.5F, 0.0F, 0.0F, 1e6F, 0.0F}));
}

TEST_F(Decode, foldsSurroundToStereo) {
    struct Case {
        int format, channels, only;
        float left, right;
    };
    constexpr int kWav = SF_FORMAT_WAVEX | SF_FORMAT_FLOAT;
    constexpr int kOgg = SF_FORMAT_OGG | SF_FORMAT_VORBIS;
    constexpr float kFront = 0.41421F;  // 1 / (1 + 2 * 0.70711)
    constexpr float kBack = 0.29289F;
    constexpr Case kCases[] = {
        {kWav, 6, 0, kFront, 0},      {kWav, 6, 2, kBack, kBack},   {kWav, 6, 3, 0, 0},      {kWav, 6, 5, 0, kBack},
        {kWav, 3, 2, kFront, kFront}, {kOgg, 3, 1, kFront, kFront}, {kWav, 4, 2, kFront, 0}, {kWav, 10, 7, 0, 0.2F},
    };
    for (const Case& c : kCases) {
        SCOPED_TRACE(testing::Message() << std::hex << c.format << ", channel " << c.only << " of " << c.channels);
        const Samples stereo =
            decode(encode("a.wav", c.format, 44100, c.channels, makeSignal(44100, c.channels, c.only)));
        ASSERT_GT(stereo.size(), 170000U);
        EXPECT_NEAR(measure(stereo, 52000, 82000, 0).sine, c.left * kSineLevel, 0.005);
        EXPECT_NEAR(measure(stereo, 52000, 82000, 1).sine, c.right * kSineLevel, 0.005);
    }
}

struct WavHeader {
    const char* name;
    std::uint64_t dataLength;
    const char* magic = "RIFF";
    std::string before = "";  // chunks in front of the format
    std::string after = "";   // what follows the sound
    std::int64_t frames = 1000;
};

// `sound` as 16-bit stereo under that header.
std::string makeWav(const WavHeader& header, const std::string& sound) {
    return header.magic + little(header.dataLength + 36, 4) + "WAVE" + header.before + "fmt " + little(16, 4) +
           little(1, 2) + little(2, 2) + little(44100, 4) + little(176400, 4) + little(4, 2) + little(16, 2) + "data" +
           little(header.dataLength, 4) + sound + header.after;
}

std::string longLengths(std::uint64_t length) {
    return "ds64" + little(28, 4) + little(length, 8) + little(length, 8) + little(length / 4, 8) + little(0, 4);
}

TEST_F(Decode, passesSixteenBitsExactly) {
    std::string bytes;
    Samples all;
    for (int sample = -32768; sample < 32768; ++sample) {
        bytes += little(static_cast<std::uint64_t>(sample), 2);
        all.push_back(static_cast<float>(sample) / 32768.0F);
    }
    EXPECT_EQ(decode(dir.write("a.wav", makeWav({"", bytes.size()}, bytes))), all);
}

TEST_F(Decode, playsTheDataThatAreThere) {
    const std::string list = "LIST" + little(4, 4) + "INFO";
    constexpr std::uint64_t kUnknown = 0xFFFFFFFF;
    const WavHeader kCases[] = {
        {"right", 4000},
        {"right, with a chunk behind", 4000, "RIFF", "", list},
        {"shorter than the file", 3998, "RIFF", "", "", 999},
        {"recorder died", 0},
        {"recorder died behind a chunk", 0, "RIFF", "JUNK" + little(3, 4) + "abc" + '\0'},
        {"recorder died within a frame", 0, "RIFF", "", "\x01\x02\x03"},
        {"stream", kUnknown},
        {"more than 2 GiB", 0x80000000},
        {"overflown", 0xFFFFFFD0},
        {"a few bytes too long", 4003},
        {"RF64", kUnknown, "RF64", longLengths(4000)},
        {"RF64, recorder died", kUnknown, "RF64", longLengths(0)},
        {"RF64, too long", kUnknown, "RF64", longLengths(1ULL << 33)},
        {"RF64, unknown", kUnknown, "RF64", longLengths(~0ULL)},
        {"RF64 without its own chunk", kUnknown, "RF64"},
        {"a title without end", 4000, "RIFF", "LIST" + little(12, 4) + "INFOXXXX" + little(0xFFFFFFF7, 4)},
        {"a list without end", 4000, "RIFF", "LIST" + little(0xFFFFFFF7, 4) + "INFOXXXX" + little(0xFFFFFFF7, 4)},
        {"a title without end behind", 4000, "RIFF", "", "LIST" + little(12, 4) + "INFOXXXX" + little(0xFFFFFFF7, 4)},
    };
    std::string sound;
    while (sound.size() < 4000) sound += little(0x4000, 2);
    for (const WavHeader& c : kCases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(decode(dir.write("a.wav", makeWav(c, sound))), Samples(static_cast<std::size_t>(2 * c.frames), 0.5F));
    }
}

// Counted in 32 bits, the length has begun again at 0 once or twice.
TEST_F(Decode, readsWavFilesBeyond4GiBToTheirEnd) {
    const std::string list = "LIST" + little(4, 4) + "INFO";
    const std::string last = little(0x4000, 2) + little(0x2000, 2);
    for (const char* magic : {"RIFF", "RF64"})
        for (const std::uint64_t length : {(1ULL << 32) - 4, 1ULL << 32, (1ULL << 32) + 4000, (1ULL << 33) + 40})
            for (const std::string& behind : {std::string(), list}) {
                SCOPED_TRACE(magic + std::to_string(length) + behind);
                const bool longForm = magic == std::string("RF64");
                WavHeader header{"", longForm ? 0xFFFFFFFF : length, magic};
                if (longForm) header.before = longLengths(length);
                const std::string head = makeWav(header, {});
                const std::string file = dir.write("a.wav", head);
                fs::resize_file(toPath(file), head.size() + length - last.size());
                std::ofstream(file, std::ios::binary | std::ios::app) << last << behind;
                const auto source = openSource(file);
                ASSERT_TRUE(source);
                EXPECT_EQ(source->frames(), static_cast<std::int64_t>(length / 4));
                Samples end(4);
                source->seek(source->frames() - 1);
                EXPECT_EQ(source->read(end.data(), 2), 1U);
                EXPECT_EQ(end, (Samples{0.5F, 0.25F, 0, 0}));
            }
}

TEST_F(Decode, readsMp3FromItsFirstSampleToItsLast) {
    struct Case {
        const char *name, *options;
        int rate, channels;
        bool exact;  // the encoder's tag is there
    };
    constexpr Case kCases[] = {
        {"constant", "-b 128", 44100, 2, true},
        {"variable", "-V 4", 44100, 2, true},
        {"constant without tag", "-t -b 128", 44100, 2, false},
        {"variable without tag", "-t -V 4", 44100, 2, false},
        {"mono", "-b 96", 44100, 1, true},
        {"48 kHz", "-b 128", 48000, 2, true},
        {"32 kHz", "-b 96", 32000, 2, true},
        {"22.05 kHz", "-b 64", 22050, 2, true},
        {"16 kHz mono without tag", "-t -b 32", 16000, 1, false},
        {"8 kHz", "-b 32", 8000, 1, false},
    };
    // Delay of encoder and decoder plus up to two frames of padding, at the lowest rate.
    const auto padding = [](int rate) { return 1105 * 44100 / rate + 1152 * 44100 / rate; };
    const std::string picture = "APIC" + std::string("\0\x03\x0D\x40\0\0", 6) + noise(200000, 5);
    const std::string tag = "ID3" + std::string("\x03\0\0\0\x0C\x1A\x4A", 7) + picture;
    ASSERT_EQ(tag.size(), 10U + (0x0CU << 14) + (0x1AU << 7) + 0x4AU);
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.name);
        const std::string file = encodeMp3("song.mp3", c.options, c.rate, c.channels);
        const Samples plain = decode(file);
        expectSignal(plain, c.rate, 0.01, c.exact ? 0 : padding(c.rate));
        EXPECT_EQ(decode(dir.write("with picture", tag + readFile(dir / "song.mp3"))), plain);
    }
}

TEST_F(Decode, playsWhatIsLeftOfAnMp3) {
    const Samples whole = decode(encodeMp3("song.mp3", "-b 128", 44100, 2));
    const std::string bytes = readFile(dir / "song.mp3");

    const Samples cut = decode(dir.write("cut", bytes.substr(0, bytes.size() * 3 / 5)));
    ASSERT_NEAR(static_cast<double>(cut.size()) / static_cast<double>(whole.size()), 0.6, 0.05);
    EXPECT_TRUE(std::equal(cut.begin(), cut.end() - 4 * 1152, whole.begin()));
    EXPECT_EQ((cut.size() / 2 + 1105) % 1152, 0U);  // whole frames, but for the delay

    // The sine behind the damage is there, at its place or earlier by what was lost.
    for (const std::string& damage : {std::string(3000, '\0'), noise(3000, 1), std::string()}) {
        std::string broken = bytes;
        broken.replace(9000, 3000, damage);
        const Samples rest = decode(dir.write("broken", broken));
        ASSERT_GT(rest.size(), whole.size() * 8 / 10);
        EXPECT_LE(rest.size(), whole.size() + 2 * 4 * 1152);
        EXPECT_NEAR(measure(rest, 50000, 70000, 1).sine, kSineLevel, 0.01);
    }
    EXPECT_EQ(decode(dir.write("junk before", noise(20000, 2) + bytes)), whole);
    EXPECT_GT(decode(dir.write("two songs", bytes + bytes)).size(), 2 * whole.size());
}

TEST_F(Decode, findsMp3InsideOfWav) {
    const Samples plain = decode(encodeMp3("song.mp3", "-t -V 4", 44100, 2));
    const std::string sound = readFile(dir / "song.mp3");
    const std::string format = little(0x55, 2) + little(2, 2) + little(44100, 4) + little(16000, 4) + little(1, 2) +
                               little(0, 2) + little(12, 2) + little(1, 2) + little(2, 4) + little(417, 2) +
                               little(1, 2) + little(1393, 2);
    EXPECT_EQ(decode(dir.write("a.wav", "RIFF" + little(sound.size() + 50, 4) + "WAVEfmt " + little(30, 4) + format +
                                            "data" + little(sound.size(), 4) + sound)),
              plain);
}

TEST_F(Decode, playsWhatIsLeftOfOggAndFlac) {
    const Samples signal = noise16(10 * 44100, 8);  // of several pages
    const Samples whole = decode(encode("a.ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS, 44100, 2, signal));
    const std::string bytes = readFile(dir / "a.ogg");
    const Samples cut = decode(dir.write("cut", bytes.substr(0, bytes.size() * 4 / 5)));
    EXPECT_LT(cut.size(), whole.size());
    ASSERT_GT(cut.size(), whole.size() / 4);
    EXPECT_TRUE(std::equal(cut.begin(), cut.end(), whole.begin()));
    EXPECT_EQ(decode(dir.write("zeros behind", bytes + std::string(100000, '\0'))), whole);

    std::string holed = bytes;
    const Samples rest = decode(dir.write("holed", holed.erase(bytes.size() / 2, 20000)));
    EXPECT_EQ(rest.size(), whole.size());
    EXPECT_EQ(Samples(rest.end() - 2000, rest.end()), silence(1000)) << "instead of what is missing";

    encode("b.ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS, 44100, 1, signal);
    EXPECT_EQ(decode(dir.write("chained", bytes + readFile(dir / "b.ogg"))).size(), 3 * whole.size());
    encode("c.ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS, 22050, 1, makeSignal(22050, 1));
    EXPECT_EQ(decode(dir.write("chained at another rate", bytes + readFile(dir / "c.ogg"))), whole);

    // A FLAC file claims its length where it begins.
    const Samples all = decode(encode("a.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, 44100, 2, signal));
    const std::string flac = readFile(dir / "a.flac");
    const Samples half = decode(dir.write("half", flac.substr(0, flac.size() / 2)));
    EXPECT_NEAR(static_cast<double>(half.size()) / static_cast<double>(all.size()), 0.5, 0.05);
    EXPECT_TRUE(std::equal(half.begin(), half.end(), all.begin()));
}

// As a stick that is pulled out: unlike a file that was cut off before it was opened.
TEST_F(Decode, failsWhereAFileCanNoLongerBeRead) {
    const Samples signal = noise16(5 * 48000, 8);  // much more than is read at once
    std::vector<std::string> files{encodeMp3("a.mp3", "-V 4", 44100, 2), encodeMp3("b.mp3", "-b 64", 22050, 1)};
    for (const int format :
         {SF_FORMAT_WAV | SF_FORMAT_PCM_16, SF_FORMAT_OGG | SF_FORMAT_VORBIS, SF_FORMAT_FLAC | SF_FORMAT_PCM_16})
        for (const int rate : {44100, 48000})
            files.push_back(encode(std::to_string(format + rate), format, rate, 2, signal));
    for (const std::string& file : files) {
        SCOPED_TRACE(file);
        const Samples whole = decode(file);
        const auto source = openSource(file);
        ASSERT_TRUE(source);
        Samples part(whole.size());
        std::size_t got = source->read(part.data(), 1000);
        fs::resize_file(toPath(file), fs::file_size(toPath(file)) * 2 / 3);
        while (const std::size_t more = source->read(part.data() + 2 * got, 512)) got += more;
        EXPECT_TRUE(source->failed());
        part.resize(2 * got);
        EXPECT_LT(part.size(), whole.size());
        EXPECT_TRUE(std::equal(part.begin(), part.end(), whole.begin()));
        source->seek(0);
        EXPECT_EQ(source->read(part.data(), 1), 0U) << "where it stands, nobody can tell";
    }
}

TEST_F(Decode, continuesExactlyAfterSeek) {
    std::vector<std::string> files{encodeMp3("variable.mp3", "-t -V 6", 44100, 2),
                                   encodeMp3("low.mp3", "-b 8", 22050, 1), encodeMp3("48.mp3", "-V 2", 48000, 2)};
    constexpr int kWav = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    constexpr int kOgg = SF_FORMAT_OGG | SF_FORMAT_VORBIS;
    for (const int rate : {8000, 22050, 44099, 44100, 48000, 96000})
        for (const int format : {kWav, kOgg})
            files.push_back(encode(std::to_string(format + rate), format, rate, 2, makeSignal(rate, 2)));
    std::mt19937 random(3);
    for (const std::string& file : files) {
        SCOPED_TRACE(file);
        const auto source = openSource(file);
        ASSERT_TRUE(source);
        const Samples whole = readAll(*source);
        const std::int64_t frames = source->frames();
        std::vector<std::int64_t> places{0, 1, frames - 1, frames, frames - 700, -5, frames + 5};
        for (int i = 0; i < 40; ++i)
            places.push_back(static_cast<std::int64_t>(random() % static_cast<unsigned>(frames)));
        for (const std::int64_t place : places) {
            source->seek(place);
            const std::int64_t from = std::clamp<std::int64_t>(place, 0, frames);
            const auto count = std::min<std::int64_t>(3000, frames - from);
            Samples part(2 * 3000);
            ASSERT_EQ(source->read(part.data(), 3000), static_cast<std::size_t>(count));
            const auto isNear = [](float one, float other) { return std::abs(one - other) < 1e-5F; };
            ASSERT_TRUE(std::equal(part.begin(), part.begin() + 2 * count, whole.begin() + 2 * from, isNear))
                << "from " << from << " of " << frames;
        }
    }
}

TEST_F(Decode, refusesWhatIsNoSound) {
    const std::string list = "LIST" + little(4, 4) + "INFO";
    // Two frame headers that match, as they stand by chance in one of 2000 files.
    std::string chance = noise(100000, 4);
    for (const std::size_t place : {5000U, 5417U}) chance.replace(place, 4, "\xFF\xFB\x90\x64");
    std::string text;
    while (text.size() < 3000000) text += "Zażółć gęślą jaźń.\n";
    std::string wide = "\xFF\xFE";  // which looks like the begin of a frame
    for (int i = 0; i < 100000; ++i) wide += little('a' + static_cast<unsigned>(i % 26), 2);
    encode("whole.ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS, 44100, 2, makeSignal(44100, 2));
    encodeMp3("whole.mp3", "-t -b 128", 44100, 2);

    const std::pair<const char*, std::string> kCases[] = {
        {"empty", ""},
        {"text", text},
        {"wide text", wide},
        {"noise", noise(300000, 6)},
        {"chance", chance},
        {"sync bytes", std::string(300000, '\xFF')},
        {"no frame in the header", makeWav({"", 0}, {})},
        {"only other chunks", makeWav({"", 0, "RIFF", "", list}, {})},
        {"unknown length of nothing", makeWav({"", 0xFFFFFFFF}, {})},
        {"half a header", makeWav({"", 4000}, std::string(4000, 1)).substr(0, 30)},
        {"headers of OGG", readFile(dir / "whole.ogg").substr(0, 200)},
        {"part of a frame", readFile(dir / "whole.mp3").substr(0, 300)},
    };
    for (const auto& [name, bytes] : kCases) EXPECT_FALSE(openSource(dir.write(name, bytes))) << name;
    for (const auto& [rate, opens] :
         {std::pair(0U, false), {999, false}, {1000, true}, {768000, true}, {768001, false}}) {
        const std::string sound = makeWav({"", 4000}, std::string(4000, 1)).replace(24, 4, little(rate, 4));
        EXPECT_EQ(openSource(dir.write("rate", sound)) != nullptr, opens) << rate;
    }

    ASSERT_EQ(mkfifo((dir / "pipe.mp3").c_str(), 0600), 0);
    for (const std::string& path : {std::string(), dir / "missing.mp3", dir / "missing/a.mp3", dir.path(),
                                    dir / "pipe.mp3", std::string("\xFF\xFE not UTF-8"), std::string("/dev/zero")})
        EXPECT_FALSE(openSource(path)) << path;
}

}  // namespace
}  // namespace melvane::decode
