// Recordings that ffmpeg reads for us.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>

#include <algorithm>
#include <atomic>
#include <future>
#include <thread>

#include "engine/decode/decoded_files.h"
#include "engine/decode/ffmpeg.h"
#include "engine/decode/open_source.h"
#include "engine/library.h"
#include "engine/process/find_program.h"
#include "tests/no_threads.h"
#include "tests/temp_dir.h"
#include "tests/wav.h"

namespace melvane::decode {
namespace {

using namespace melvane::test;

Sound readAll(PcmSource& source, std::int64_t from = 0) {
    Sound all(static_cast<std::size_t>(2 * (source.frames() - from)));
    source.seek(from);
    EXPECT_EQ(source.read(all.data(), all.size() / 2), all.size() / 2);
    EXPECT_FALSE(source.failed());
    return all;
}

class Recordings : public testing::Test {
protected:
    void run(const std::string& arguments) const {
        const std::string command = "cd \"" + dir.path() + "\" && ffmpeg -nostdin -v error -y " + arguments;
        EXPECT_EQ(std::system(command.c_str()), 0) << command;
    }
    // A program ffmpeg that stands before the real one.
    DecodedFiles withProgram(const std::string& script) const {
        dir.write("ffmpeg", "#!/bin/sh\n" + script, true);
        return DecodedFiles(dir.path());
    }
    std::string noFile() const { return dir.write("any.m4a", "????ftyp is how it begins, and that is all"); }

    const TempDir dir;
    DecodedFiles decoded{""};
};

TEST_F(Recordings, HaveTheFramesThatFfmpegWrites) {
    struct Case {
        const char* file;
        int rate;
        int channels;
        const char* options;
    };
    const Case cases[] = {
        {"-telephone %03d: \"x\".m4a", 44100, 1, "-c:a aac"},
        {"wrong name.wav", 16000, 2, "-c:a aac -f ipod"},
        {"video.mp4", 48000, 2, "-f lavfi -i testsrc=s=32x32:d=2 -c:a aac -map 1 -map 0"},
        {"surround.mp4", 48000, 6, "-c:a aac"},
        {"apple.m4a", 44100, 2, "-c:a alac"},
        {"film.mkv", 44100, 2, "-c:a flac -sample_fmt s32"},
        {"old.wma", 44100, 2, "-c:a wmav2"},
        {"voice.opus", 48000, 1, "-c:a libopus"},
        {"page.webm", 16000, 2, "-c:a libopus"},
        {"pack.wv", 44100, 2, "-c:a wavpack"},
        {"raw.aac", 44100, 2, "-c:a aac"},
        {"flac.ogg", 44100, 2, "-c:a flac"},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(one.file);
        run("-f lavfi -i \"anoisesrc=r=" + std::to_string(one.rate) + ":a=0.3:d=2.1:seed=7,tremolo\" -ac " +
            std::to_string(one.channels) + " in.wav");
        run(std::string("-i in.wav ") + one.options + " -strict -2 '" + (std::string(one.file)[0] == '-' ? "./" : "") +
            one.file + "'");
        const std::string input = " -i 'file:" + std::string(one.file) + "' -map 0:a:0 ";
        run(input + "-c:a pcm_f32le floats.wav");
        run(input + "plain.wav");
        const auto source = openSource(dir / one.file, {}, 0, &decoded);
        ASSERT_TRUE(source);
        const auto expected = openSource(dir / "floats.wav");
        EXPECT_EQ(source->frames(), openSource(dir / "plain.wav")->frames());
        const Sound sound = readAll(*source);
        EXPECT_TRUE(sound == readAll(*expected));
        EXPECT_GT(*std::ranges::max_element(sound), 0.05F);
        for (const std::int64_t from : {source->frames() - 1, std::int64_t{40001}, std::int64_t{1}})
            EXPECT_TRUE(readAll(*source, from) == Sound(sound.begin() + 2 * from, sound.end())) << from;
    }
}

TEST_F(Recordings, OpenOnlyWhatHasSoundOfAKnownKind) {
    run("-f lavfi -i testsrc=s=32x32:d=1 silent.mp4");
    run("-f lavfi -i anoisesrc=d=1 -c:a aac in.m4a");
    dir.write("list.m3u8", "#EXTM3U\n#EXTINF:1,\n" + dir.path() + "/in.m4a\n");
    dir.write("list.ffconcat", "ffconcat version 1.0\nfile '" + dir.path() + "/in.m4a'\n");
    dir.write("text.m4a", "no sound");
    for (const char* name : {"silent.mp4", "list.m3u8", "list.ffconcat", "text.m4a", "none.m4a", "."}) {
        EXPECT_FALSE(openSource(dir / name, {}, 0, &decoded)) << name;
        EXPECT_NE(decoded.state(dir / name).failure, DecodingFailure::noDecoder) << name;
    }
    EXPECT_FALSE(openSource(dir / "in.m4a")) << "nobody who decodes it";
}

TEST_F(Recordings, TellWhyTheyCannotBeDecoded) {
    const std::string file = noFile();
    const auto failureWith = [&](const std::string& script) {
        DecodedFiles files = withProgram(script);
        EXPECT_FALSE(openSource(file, {}, 0, &files));
        EXPECT_FALSE(files.state(file).running);
        return files.state(file).failure;
    };
    for (const char* script : {"exit 1", "kill -9 $$", "head -c 100000 /dev/urandom", "exec >&-; exec 2>&-; exit 0"})
        EXPECT_EQ(failureWith(script + std::string("\n")), DecodingFailure::noSound) << script;

    run("-f lavfi -i anoisesrc=d=1 -f au -c:a pcm_f32be sound.au");
    const std::string whole = "cat \"" + dir.path() + "/sound.au\"\n";
    DecodedFiles stopping = withProgram(whole + "echo 'file:any.m4a: Input/output error' >&2\n");
    EXPECT_TRUE(openSource(file, {}, 0, &stopping)) << "the file was cut off";
    std::atomic<double> progress{0};
    EXPECT_EQ(decodeWithFfmpeg(dir / "ffmpeg", "/proc/self/mem", NamelessFile(), {}, progress),
              DecodingFailure::notRead);

    const std::string path = getenv("PATH");
    setenv("PATH", "/none", 1);
    EXPECT_FALSE(openSource(file, {}, 0, &decoded));
    EXPECT_FALSE(openSource(dir.write("bad.wav", "RIFF"), {}, 0, &decoded));
    setenv("PATH", path.c_str(), 1);
    EXPECT_EQ(decoded.state(dir / "bad.wav").failure, DecodingFailure::none) << "it is the file";
    EXPECT_EQ(decoded.state(file).failure, DecodingFailure::noDecoder);

    const auto before = signal(SIGXFSZ, SIG_IGN);
    rlimit usual{};
    getrlimit(RLIMIT_FSIZE, &usual);
    const rlimit little{.rlim_cur = 100000, .rlim_max = usual.rlim_max};
    DecodedFiles files = withProgram(whole);
    setrlimit(RLIMIT_FSIZE, &little);
    EXPECT_FALSE(openSource(file, {}, 0, &files));
    setrlimit(RLIMIT_FSIZE, &usual);
    signal(SIGXFSZ, before);
    EXPECT_EQ(files.state(file).failure, DecodingFailure::noRoom);
    EXPECT_TRUE(openSource(file, {}, 0, &files)) << "and again when there is";
}

TEST_F(Recordings, GiveUpAProgramThatHangs) {
    DecodedFiles files = withProgram(
        "echo $$ > \"" + (dir / "pid") +
        "\"\nprintf '  Duration: 00:00:10.00, start\\nout_time_us=4000000\\n' >&2\nsleep 1000 & kill -STOP $$\n");
    const std::string file = noFile();
    engine::Library library({.clock = CardClock::stepped, .programDirectory = dir.path()});
    library.BASS_Init(-1, kSampleRate, 0, nullptr, nullptr);
    const std::function<void()> ends[] = {[&] { library.giveUpOpening(); }, [&] { library.BASS_Free(); }};
    for (const auto& end : ends) {
        std::thread opening([&] { EXPECT_FALSE(library.BASS_StreamCreateFile(false, file.c_str(), 0, 0, 0)); });
        while (!library.decoding(file).running || library.decoding(file).progress != 0.4) std::this_thread::yield();
        end();
        opening.join();
        while (library.decoding(file).running) std::this_thread::yield();
        EXPECT_NE(kill(std::stoi(readFile(dir / "pid")), 0), 0) << "it is gone";
    }
    EXPECT_FALSE(openSource(file, std::make_shared<std::atomic<bool>>(true), 0, &files)) << "not even begun";
}

TEST_F(Recordings, AreDecodedOnceForAllWhoReadThem) {
    run("-f lavfi -i anoisesrc=d=1 -c:a aac song.m4a");
    const std::string runs = dir / "runs";
    dir.write("ffmpeg", "#!/bin/sh\necho >> \"" + runs + "\"\nexec " + *engine::findProgram("ffmpeg", "") + " \"$@\"\n",
              true);
    engine::Library library({.clock = CardClock::stepped, .programDirectory = dir.path()});
    library.BASS_Init(-1, kSampleRate, 0, nullptr, nullptr);
    const auto open = [&] {
        return library.BASS_StreamCreateFile(false, (dir / "song.m4a").c_str(), 0, 0, BASS_STREAM_DECODE);
    };
    auto reader =
        std::async(std::launch::async, [&] { return library.openReader(dir / "song.m4a", [] { return true; }); });
    EXPECT_TRUE(open());
    EXPECT_TRUE(reader.get());
    EXPECT_TRUE(open());
    EXPECT_EQ(readFile(runs), "\n");
    run("-f lavfi -i anoisesrc=d=2 -c:a aac song.m4a");
    EXPECT_TRUE(open());
    EXPECT_EQ(readFile(runs), "\n\n") << "another file by now";
}

// Behind a long hole there might be more of the song.
TEST_F(Recordings, AFileWhoseReaderDoesNotFinishIsGivenUp) {
    const std::string file = dir / "song.mp3";
    const std::string song = dir.write("song.wav", wavFile(silence(44100)));
    ASSERT_EQ(std::system(("lame --quiet \"" + song + "\" \"" + file + "\"").c_str()), 0);
    std::filesystem::resize_file(file, std::uintmax_t{1} << 40);
    engine::Library library({.clock = CardClock::stepped});
    ASSERT_TRUE(library.BASS_Init(-1, kSampleRate, 0, nullptr, nullptr));
    for (const bool threads : {true, false}) {
        auto opening = std::async(std::launch::async, [&] {
            const auto none = threads ? nullptr : std::make_unique<NoThreads>();
            return library.BASS_StreamCreateFile(false, file.c_str(), 0, 0, 0);
        });
        EXPECT_EQ(opening.wait_for(std::chrono::milliseconds(200)), std::future_status::timeout);
        library.giveUpOpening();
        EXPECT_EQ(opening.get(), 0U);
    }
}

}  // namespace
}  // namespace melvane::decode
