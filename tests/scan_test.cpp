// The outline of a file, as the library makes it on a thread of its own.
#include <gtest/gtest.h>

#include <future>
#include <map>

#include "engine/library.h"
#include "tests/no_threads.h"
#include "tests/temp_dir.h"
#include "tests/wav.h"

namespace melvane::engine {
namespace {

using namespace melvane::test;
using namespace std::chrono_literals;

void waitForEnd(const WaveformScan& scan) {
    while (!scan.finished()) std::this_thread::sleep_for(1ms);
}

struct ScanFixture : testing::Test {
    TempDir dir;
    Library library{{CardClock::stepped}};
};

TEST_F(ScanFixture, GivesTheHighestSampleOfBothSidesInEachColumn) {
    constexpr std::size_t kColumns = 176;
    constexpr std::size_t kFrames = 100'003;
    Sound sound = silence(kFrames);
    std::vector<float> expected;
    for (std::size_t column = 0; column < kColumns; ++column) {
        const std::size_t first = column * kFrames / kColumns;
        const std::size_t last = (column + 1) * kFrames / kColumns - 1;
        expected.push_back(static_cast<float>(column) / 256);
        sound[2 * (column % 3 == 0 ? first : last) + column % 2] = column % 5 == 0 ? expected.back() : -expected.back();
    }
    const auto scan = library.scanWaveform(dir.write("song.wav", wavFile(sound)), kColumns);
    waitForEnd(*scan);
    EXPECT_FALSE(scan->failed());
    EXPECT_EQ(scan->progress(), 1);
    EXPECT_EQ(scan->peaks(), expected);
}

TEST_F(ScanFixture, AFileWithFewerFramesThanColumnsFillsThemAll) {
    const std::string file = dir.write("tiny.wav", wavFile({0.25F, 0, 0, -0.5F}));
    for (const auto& [columns, peaks] :
         std::map<int, std::vector<float>>{{5, {0.25F, 0.25F, 0.25F, 0.25F, 0.5F}}, {1, {0.5F}}}) {
        const auto scan = library.scanWaveform(file, columns);
        waitForEnd(*scan);
        EXPECT_EQ(scan->peaks(), peaks);
    }
}

TEST_F(ScanFixture, WhatIsNoSoundFails) {
    for (const std::string& file : {dir / "missing.mp3", dir.path(), dir.write("song.mid", "MThd\0\0\0\6"),
                                    dir.write("broken.wav", wavFile(silence(0))), dir.write("empty.mp3", "")}) {
        const auto scan = library.scanWaveform(file, 3);
        waitForEnd(*scan);
        EXPECT_TRUE(scan->failed()) << file;
        EXPECT_EQ(scan->peaks(), std::vector<float>(3)) << file;
    }
}

TEST_F(ScanFixture, EndsBeforeItsTimeWhenItIsLetGoOrTheLibraryIs) {
    constexpr std::uint32_t kBytes = 1'600'000'000;  // two and a half hours
    std::string header = wavFile({});
    header.replace(40, 4, little(kBytes, 4));
    const std::string file = dir.write("long.wav", header);
    std::filesystem::resize_file(file, header.size() + kBytes);
    auto own = std::make_unique<Library>(AudioLibraryOptions{CardClock::stepped});
    auto dropped = own->scanWaveform(file, 176);
    const auto kept = own->scanWaveform(file, 176);
    while (dropped->progress() == 0 || kept->progress() == 0) std::this_thread::yield();
    dropped.reset();
    own.reset();
    EXPECT_TRUE(kept->finished()) << "its thread has ended with the library";
    EXPECT_LT(kept->progress(), 1);
}

// Behind a long hole there might be more of the song.
TEST_F(ScanFixture, AFileWhoseReaderDoesNotFinishIsGivenUp) {
    const std::string file = dir / "song.mp3";
    const std::string song = dir.write("song.wav", wavFile(silence(44100)));
    ASSERT_EQ(std::system(("lame --quiet \"" + song + "\" \"" + file + "\"").c_str()), 0);
    std::filesystem::resize_file(file, std::uintmax_t{1} << 40);
    ASSERT_TRUE(library.BASS_Init(-1, kSampleRate, 0, nullptr, nullptr));
    for (const bool threads : {true, false}) {
        auto opening = std::async(std::launch::async, [&] {
            const auto none = threads ? nullptr : std::make_unique<NoThreads>();
            return library.BASS_StreamCreateFile(false, file.c_str(), 0, 0, 0);
        });
        EXPECT_EQ(opening.wait_for(200ms), std::future_status::timeout);
        library.giveUpOpening();
        EXPECT_EQ(opening.get(), 0U);
    }
}

}  // namespace
}  // namespace melvane::engine
