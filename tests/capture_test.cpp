#include "engine/capture/capture.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <thread>

#include "engine/capture/command_line.h"
#include "engine/capture/pcm16.h"
#include "engine/process/find_program.h"
#include "tests/no_threads.h"
#include "tests/sound.h"
#include "tests/temp_dir.h"
#include "tests/wav.h"

namespace melvane::engine {
namespace {

using namespace melvane::test;
using namespace std::chrono_literals;
using Words = std::vector<std::string>;

TEST(CommandLine, SplitsAtBlanksAndKeepsQuotedWords) {
    const std::pair<const char*, Words> cases[] = {
        {"lame.exe --alt-preset standard - /tmp/mix.mp3",
         {"lame.exe", "--alt-preset", "standard", "-", "/tmp/mix.mp3"}},
        {"  a   b ", {"a", "b"}},
        {R"(a "b c" d)", {"a", "b c", "d"}},
        {R"(a "say \"so\" \\ $HOME `x` ;" e)", {"a", R"(say "so" \ $HOME `x` ;)", "e"}},
        {R"(a "" b)", {"a", "", "b"}},
        {R"(C:\a\b)", {R"(C:\a\b)"}},
        {"", {}},
        {R"(a "unended x)", {"a", "unended x"}},
    };
    for (const auto& [line, words] : cases) EXPECT_EQ(commandWords(line), words) << line;
}

TEST(FindProgram, PrefersTheGivenNameAndNeverLooksInTheWorkingDirectory) {
    const TempDir beside;
    const TempDir onPath;
    const TempDir working;
    working.write("lame", "", true);
    working.write("lame.exe", "", true);
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(working.path());
    const auto find = [&](const std::string& path) {
        return findProgram("lame.exe", beside.path(), path).value_or("");
    };
    EXPECT_EQ(find(":.::" + onPath.path()), "");
    onPath.write("lame.exe", "");
    EXPECT_EQ(find(onPath.path()), "") << "a file that cannot be run";
    const std::string lame = onPath.write("lame", "", true);
    EXPECT_EQ(find(".:" + onPath.path()), lame);
    const std::string own = beside.write("lame.exe", "", true);
    EXPECT_EQ(find(onPath.path()), own);
    std::filesystem::current_path(before);
}

TEST(Pcm16, KeepsSixteenBitStepsAndCutsAtFullScale) {
    for (const int step : {-32768, -32767, -1, 0, 1, 12345, 32767})
        EXPECT_EQ(toPcm16(static_cast<float>(step) / 32768.0F), step);
    EXPECT_EQ(toPcm16(1.5F), 32767);
    EXPECT_EQ(toPcm16(-1.5F), -32768);
}

bool goOn(Handle, const void*, std::uint32_t, void*) {
    return true;
}

bool encoderAlive(Handle, const void*, std::uint32_t, void* user) {
    return static_cast<Capture*>(user)->encoderRunning();
}

// An encoder that is a shell script, and a capture of the card's mix that feeds it.
struct CaptureFixture : testing::Test {
    // In the script, "$1" is the destination.
    Words encoder(const std::string& script) {
        return {dir.write("encoder", "#!/bin/sh\n" + script, true), destination};
    }

    void start(Capture& capture, const std::string& script) {
        RecordingInputs inputs;
        inputs.list(nullptr);
        ASSERT_TRUE(capture.open(inputs, nullptr));
        ASSERT_TRUE(capture.startEncoder(encoder(script)));
        capture.begin(1);
    }
    static void push(Capture& capture, const Sound& sound, std::size_t block = 441) {
        for (std::size_t done = 0; done < sound.size(); done += block * 2)
            capture.push(sound.data() + done, std::min(block, (sound.size() - done) / 2));
    }
    static void finish(Capture& capture) {
        capture.endEncoding();
        while (capture.encoderRunning()) std::this_thread::sleep_for(1ms);
    }
    Sound recorded() const { return soundOfWav(readFile(destination)); }

    TempDir dir;
    std::string destination = dir / "mix ż.wav";
};

TEST_F(CaptureFixture, WithoutAThreadItDoesNotBeginAndItsEncoderEnds) {
    Capture capture(goOn, nullptr);
    RecordingInputs inputs;
    inputs.list(nullptr);
    ASSERT_TRUE(capture.open(inputs, nullptr));
    ASSERT_TRUE(capture.startEncoder(encoder("exec cat > \"$1\"")));
    const NoThreads none;
    EXPECT_FALSE(capture.begin(1));
    EXPECT_FALSE(capture.capturing());
    finish(capture);
    EXPECT_EQ(capture.encoderState(), EncoderState::failed);
}

// Slow enough that the device's clock goes on meanwhile, little enough for memory.
TEST_F(CaptureFixture, AnEncoderThatTakesNothingIsEndedWhenTenMinutesWait) {
    Capture capture(goOn, nullptr);
    start(capture, "kill -STOP $$");
    const Sound second(2 * kSampleRate);
    for (int i = 0; i < 590; ++i) push(capture, second, kSampleRate);
    while (capture.stalledSeconds() < 0.2) std::this_thread::sleep_for(1ms);
    EXPECT_TRUE(capture.encoderRunning());
    for (int i = 0; i < 20; ++i) push(capture, second, kSampleRate);
    while (capture.encoderRunning()) std::this_thread::sleep_for(1ms);
    EXPECT_EQ(capture.encoderState(), EncoderState::failed);
}

TEST_F(CaptureFixture, EverythingPushedReachesTheEncoderAlsoOneThatIsStoppedMeanwhile) {
    const Sound sound = noise16(400000, 2);
    Capture capture(goOn, nullptr);
    start(capture, "echo $$ > \"$1.pid\"; exec cat > \"$1\"");
    push(capture, Sound(sound.begin(), sound.begin() + 20000));
    std::string pid;
    while ((pid = readFile(destination + ".pid")).find('\n') == std::string::npos) std::this_thread::sleep_for(1ms);
    kill(std::stoi(pid), SIGSTOP);
    push(capture, Sound(sound.begin() + 20000, sound.end()));
    while (!capture.congested()) std::this_thread::sleep_for(1ms);
    kill(std::stoi(pid), SIGCONT);
    finish(capture);
    EXPECT_EQ(capture.encoderState(), EncoderState::finished);
    EXPECT_EQ(readFile(destination).substr(0, 4), "RIFF");
    EXPECT_EQ(recorded(), sound);
}

TEST_F(CaptureFixture, AnEncoderThatGoesEndsTheCaptureAndIsToldFromOneThatFinished) {
    const struct {
        const char* script;
        bool goesEarly;
        EncoderState state;
    } cases[] = {
        {"exit 1", true, EncoderState::failed},
        {"exit 0", true, EncoderState::failed},
        {"head -c 1000 > \"$1\"", true, EncoderState::failed},
        {"kill -9 $$", true, EncoderState::failed},
        {"cat > /dev/null; exit 3", false, EncoderState::failed},
        {"cat > /dev/null", false, EncoderState::finished},
    };
    for (const auto& c : cases) {
        Capture asking(encoderAlive, &asking);
        start(asking, c.script);
        do push(asking, noise16(4410, 3));
        while (c.goesEarly && asking.capturing());
        EXPECT_EQ(asking.capturing(), !c.goesEarly) << c.script;
        finish(asking);
        EXPECT_EQ(asking.encoderState(), c.state) << c.script;
    }
}

TEST(RecordingInputs, ListedAgainTheyKeepWhatTheUserSetAndNewOnesAreOff) {
    const CaptureSource microphone{"usb", "Microphone", false, true};
    const CaptureSource line{"line", "Line", false, false};
    const CaptureSource monitor{"hall.monitor", "Monitor", true, false};
    const auto words = [](const RecordingInputs& inputs) {
        std::string all;
        for (const RecordingInputs::Input& input : inputs.all())
            all += input.name + (input.on ? " on " : " off ") + std::to_string(input.level) + "; ";
        return all;
    };
    RecordingInputs alone;
    alone.list(nullptr);
    EXPECT_EQ(words(alone), "Stereo Mix on 100; ");
    EXPECT_EQ(alone.setting(0), BASS_INPUT_TYPE_ANALOG | 100U);
    EXPECT_TRUE(alone.set(0, BASS_INPUT_LEVEL | 40U) && alone.set(0, BASS_INPUT_OFF));
    EXPECT_EQ(alone.setting(0), BASS_INPUT_TYPE_ANALOG | BASS_INPUT_OFF | 40U);
    EXPECT_FALSE(alone.set(1, BASS_INPUT_ON));
    EXPECT_EQ(alone.setting(-1), ~0U);
    RecordingInputs inputs;
    inputs.list({microphone, line});
    EXPECT_EQ(words(inputs), "Stereo Mix off 100; Microphone on 100; Line off 100; ");
    inputs.set(1, BASS_INPUT_LEVEL | 30U);
    inputs.set(2, BASS_INPUT_ON);
    inputs.list({line, monitor, microphone});
    EXPECT_EQ(words(inputs), "Stereo Mix off 100; Line on 100; Monitor off 100; Microphone on 30; ");
    inputs.list({monitor});
    EXPECT_EQ(words(inputs), "Stereo Mix off 100; Monitor off 100; ");
    inputs.list({monitor, microphone});
    EXPECT_EQ(words(inputs), "Stereo Mix off 100; Monitor off 100; Microphone off 100; ");
}

}  // namespace
}  // namespace melvane::engine
