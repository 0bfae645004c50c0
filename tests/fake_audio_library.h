// An audio library that makes no sound: it writes down what it is called with and answers as a test says.
#pragma once

#include <atomic>
#include <chrono>
#include <concepts>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "platform/audio_library.h"
#include "platform/audio_library_file.h"
#include "tests/mp3_tag.h"
#include "tests/sound.h"

namespace melvane::test {

// What a test sets while the program asks for it on threads of its own.
template <typename Files>
class Shared {
public:
    Shared() = default;
    Shared& operator=(const Shared& other) { return *this = other.files(); }
    Shared& operator=(Files files) {
        const std::lock_guard lock(mutex_);
        files_ = std::move(files);
        return *this;
    }
    void clear() { *this = Files(); }
    bool contains(const std::string& file) const {
        const std::lock_guard lock(mutex_);
        return files_.contains(file);
    }
    std::size_t erase(const std::string& file) {
        const std::lock_guard lock(mutex_);
        return files_.erase(file);
    }
    auto at(const std::string& file) const {
        const std::lock_guard lock(mutex_);
        return files_.at(file);
    }
    // Where Files is a map.
    void put(const std::string& file, auto value) {
        const std::lock_guard lock(mutex_);
        files_[file] = std::move(value);
    }

private:
    Files files() const {
        const std::lock_guard lock(mutex_);
        return files_;
    }

    mutable std::mutex mutex_;
    Files files_;
};

class FakeAudioLibrary : public AudioLibrary {
public:
    struct Input {
        std::string name;
        std::uint32_t setting;  // as BASS_RecordGetInput answers
    };

    // Calls that change something, in order, as "BASS_ChannelPlay 1 0"; questions are not written down.
    std::vector<std::string> calls;
    // While another thread may call.
    std::string lastCall() const {
        const std::lock_guard lock(callsMutex_);
        return calls.empty() ? "" : calls.back();
    }

    std::vector<Input> inputs = {{"Microphone", BASS_INPUT_TYPE_MIC | 70},
                                 {"Stereo Mix", BASS_INPUT_TYPE_ANALOG | BASS_INPUT_OFF | 30}};
    Shared<std::set<std::string>> unreadable;   // files that no stream is made of
    Shared<std::set<std::string>> failingOnce;  // of which no stream is made at first
    Shared<std::map<std::string, Decoding>> decodings;
    std::set<Handle> failedChannels;  // whose files can no longer be read
    std::uint64_t length = 1760;      // of every channel but those of these files
    std::map<std::string, std::uint64_t> lengths;
    std::uint64_t position = 0;                // of every channel
    std::chrono::milliseconds openingTime{0};  // of a file
    bool initialises = true;
    bool captureStarts = true;
    bool encoderExists = true;
    bool encoderStarts = true;
    // What the encoder writes; by default whole.
    std::string product = taggedMp3(440);
    std::int64_t framesCaptured = 440;
    bool productReadable = true;
    int encoderFinishes = 0;  // times that it is asked after the stop until it has finished
    EncoderState encoder = EncoderState::finished;
    double stalled = 0;        // seconds that the encoder takes nothing
    bool capturePlays = true;  // there is a thread for it
    CardStatus card{.deviceOpen = true};
    BASS_INFO info{.dsver = 9};
    std::map<Handle, std::uint32_t> volumes;  // as set last
    std::map<Handle, EffectRecord> effects;   // as set last
    std::map<Handle, PeakLevels> peaks;       // until they are taken

    bool BASS_Init(int device, std::uint32_t freq, std::uint32_t flags, void*, const void*) override {
        note("BASS_Init", device, freq, flags);
        return initialises;
    }
    bool BASS_Free() override { return note("BASS_Free"); }
    bool BASS_GetInfo(BASS_INFO& result) override {
        result = info;
        return true;
    }

    void holdCard() override { note("holdCard"); }
    void resumeCard() override { note("resumeCard"); }
    void holdCardAtEndOf(Handle channel) override { note("holdCardAtEndOf", channel); }
    std::int64_t cardPlace = 0;
    bool cueCard(std::int64_t frame) override {
        cardPlace = frame;
        return note("cueCard", frame);
    }
    void loopCard(std::int64_t begin, std::int64_t end) override { note("loopCard", begin, end); }
    std::int64_t cardPosition() const override { return cardPlace; }
    std::uint32_t stepCard(std::uint32_t frames) override { return frames; }
    float reduction = 0;
    float takeReduction() override { return reduction; }
    std::shared_ptr<KeptMix> keepMix(Handle) override { return nullptr; }
    std::unique_ptr<LimitedSound> limited(std::unique_ptr<PcmSource>) override { return nullptr; }
    CardStatus cardStatus() const override { return card; }

    PeakLevels takePeaks(Handle channel) override {
        const auto taken = peaks.extract(channel);
        return taken ? taken.mapped() : PeakLevels{};
    }
    Handle createStream(std::shared_ptr<PcmSource>) override {
        note("createStream");
        return ++lastHandle_;
    }
    Handle BASS_StreamCreateFile(bool, const char* file, std::uint32_t, std::uint32_t, std::uint32_t flags) override {
        note("BASS_StreamCreateFile", std::string(file), flags);
        return open(file);
    }
    Handle openRecording(const std::string& file, double driftPpm, std::uint32_t flags) override {
        note("openRecording", file, static_cast<float>(driftPpm), flags);
        return open(file);
    }
    Handle open(const std::string& file) {
        std::this_thread::sleep_for(openingTime);
        if (failingOnce.erase(file) > 0) return 0;
        if (unreadable.contains(file) || (product_ == file && !productReadable)) return 0;
        if (lengths.contains(file)) lengthsOfChannels_[lastHandle_ + 1] = lengths.at(file);
        return ++lastHandle_;
    }
    Shared<std::map<std::string, Sound>> readers;  // what files hold; others hold nothing
    std::shared_ptr<std::atomic<bool>> readersWait = std::make_shared<std::atomic<bool>>(false);
    std::unique_ptr<PcmSource> openReader(const std::string& file, const std::function<bool()>& wanted) override {
        if (unreadable.contains(file)) return nullptr;
        while (*readersWait && wanted()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
        return wanted() ? std::make_unique<MemorySource>(readers.contains(file) ? readers.at(file) : Sound()) : nullptr;
    }
    std::unique_ptr<PcmSource> inKey(std::unique_ptr<PcmSource> source, double) override { return source; }
    void giveUpOpening() override {
        *givenUp_ = true;
        note("giveUpOpening");
    }
    Decoding decoding(const std::string& file) const override {
        return decodings.contains(file) ? decodings.at(file) : Decoding{};
    }
    bool BASS_StreamFree(Handle handle) override { return note("BASS_StreamFree", handle); }
    bool BASS_MusicFree(Handle handle) override { return note("BASS_MusicFree", handle); }
    bool BASS_ChannelPlay(Handle handle, bool restart) override {
        return note("BASS_ChannelPlay", handle, restart) && (handle != capture_ || capturePlays);
    }
    bool BASS_ChannelStop(Handle handle) override { return note("BASS_ChannelStop", handle); }
    ChannelActivity BASS_ChannelIsActive(Handle) const override { return ChannelActivity::playing; }
    bool channelFailed(Handle handle) const override { return failedChannels.contains(handle); }
    std::uint64_t BASS_ChannelGetLength(Handle handle) const override {
        return lengthsOfChannels_.contains(handle) ? lengthsOfChannels_.at(handle) : length;
    }
    std::uint64_t BASS_ChannelGetPosition(Handle) const override { return position; }
    bool BASS_ChannelSetPosition(Handle handle, std::uint64_t to) override {
        return note("BASS_ChannelSetPosition", handle, to);
    }
    std::uint64_t BASS_ChannelSeconds2Bytes(Handle, float seconds) const override {
        return static_cast<std::uint64_t>(seconds * kSampleRate) * kBytesPerFrame;
    }
    bool BASS_ChannelGetAttributes(Handle handle, std::uint32_t& frequency, std::uint32_t& volume,
                                   std::int32_t& pan) const override {
        frequency = kSampleRate;
        volume = volumes.contains(handle) ? volumes.at(handle) : 100;
        pan = 0;
        return true;
    }
    bool BASS_ChannelSetAttributes(Handle handle, std::uint32_t frequency, std::uint32_t volume,
                                   std::int32_t pan) override {
        volumes[handle] = volume;
        return note("BASS_ChannelSetAttributes", handle, frequency, volume, pan);
    }

    bool trimChannel(Handle handle, float decibels) override { return note("trimChannel", handle, decibels); }
    bool placeChannel(Handle handle, std::int64_t earlierFrames, bool once) override {
        return note("placeChannel", handle, earlierFrames, once);
    }

    Handle BASS_ChannelSetFX(Handle handle, std::uint32_t type, std::int32_t priority) override {
        note("BASS_ChannelSetFX", handle, type, priority);
        effects[++lastHandle_] = defaultRecord(static_cast<EffectType>(type));
        return lastHandle_;
    }
    bool BASS_FXSetParameters(Handle effect, const EffectRecord& record) override {
        if (effects.contains(effect)) effects[effect] = record;
        return effects.contains(effect);
    }
    bool BASS_FXGetParameters(Handle effect, EffectRecord& record) const override {
        if (!effects.contains(effect)) return false;
        record = effects.at(effect);
        return true;
    }

    Handle BASS_FX_TempoCreate(Handle source, std::uint32_t flags) override {
        note("BASS_FX_TempoCreate", source, flags);
        return source == 0 ? 0 : ++lastHandle_;
    }
    bool BASS_FX_TempoSet(Handle handle, float tempo, float rate, float pitch) override {
        return note("BASS_FX_TempoSet", handle, tempo, rate, pitch);
    }

    // While this is false, the sound server does not answer, for two seconds at most.
    std::shared_ptr<std::atomic<bool>> answers = std::make_shared<std::atomic<bool>>(true);
    std::function<std::vector<std::string>()> inputSearch() const override {
        return [answers = answers, inputs = inputs] {
            waitUntil([&] { return answers->load(); });
            std::vector<std::string> names;
            for (const Input& input : inputs) names.push_back(input.name);
            return names;
        };
    }
    bool BASS_RecordInit(int device) override {
        note("BASS_RecordInit", device);
        return initialises;
    }
    const char* BASS_RecordGetInputName(int input) const override {
        return isInput(input) ? at(input).name.c_str() : nullptr;
    }
    std::uint32_t BASS_RecordGetInput(int input) const override {
        return isInput(input) ? at(input).setting : 0xFFFFFFFF;
    }
    bool BASS_RecordSetInput(int input, std::uint32_t setting) override {
        if (isInput(input)) {
            std::uint32_t& word = inputs[static_cast<std::size_t>(input)].setting;
            if (setting & BASS_INPUT_OFF) word |= BASS_INPUT_OFF;
            if (setting & BASS_INPUT_ON) word &= ~BASS_INPUT_OFF;
            if (setting & BASS_INPUT_LEVEL) word = (word & ~0xFFFFU) | (setting & 0xFFFFU);
        }
        return note("BASS_RecordSetInput", input, setting);
    }
    Handle BASS_RecordStart(std::uint32_t freq, std::uint32_t chans, std::uint32_t flags, RecordProc, void*) override {
        *givenUp_ = false;
        note("BASS_RecordStart", freq, chans, flags);
        waitUntil([&] { return *answers || *givenUp_; });
        return capture_ = captureStarts && !*givenUp_ ? ++lastHandle_ : 0;
    }

    // While this is false, the disk with the programs does not answer, for two seconds at most.
    std::shared_ptr<std::atomic<bool>> diskAnswers = std::make_shared<std::atomic<bool>>(true);
    std::function<bool()> encoderSearch(const std::string&) const override {
        return [answers = diskAnswers, exists = encoderExists] {
            waitUntil([&] { return answers->load(); });
            return exists;
        };
    }
    bool BASS_Encode_Start(Handle handle, const char* commandLine, std::uint32_t flags, void*, void*) override {
        note("BASS_Encode_Start", handle, std::string(commandLine), flags);
        finishing_ = false;
        const std::string words = commandLine;
        product_ = words.substr(words.find('<') + 1, words.rfind('>') - words.find('<') - 1);
        return encoderStarts;
    }
    bool BASS_Encode_IsActive(Handle) const override { return !finishing_ || (polls_ > 0 && polls_-- > 0); }
    bool BASS_Encode_Stop(Handle handle) override {
        finishing_ = true;
        polls_ = encoderFinishes;
        std::ofstream(product_, std::ios::binary) << product;
        return note("BASS_Encode_Stop", handle);
    }
    void hurryEncoder(Handle handle) override { note("hurryEncoder", handle); }
    double encoderStalled(Handle) const override { return stalled; }
    EncoderState encoderState(Handle) const override { return encoder; }
    std::int64_t framesEncoded(Handle) const override { return framesCaptured; }

private:
    static EffectRecord defaultRecord(EffectType type) {
        static const std::map<EffectType, EffectRecord> defaults = {{EffectType::chorus, ChorusRecord{}},
                                                                    {EffectType::echo, EchoRecord{}},
                                                                    {EffectType::flanger, FlangerRecord{}},
                                                                    {EffectType::parametricEq, ParametricEqRecord{}},
                                                                    {EffectType::reverb, ReverbRecord{}}};
        return defaults.at(type);
    }

    static void waitUntil(const std::function<bool()>& answered) {
        for (int waited = 0; !answered() && waited < 2000; ++waited)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }

    static std::string word(const std::string& text) { return text; }
    static std::string word(float number) { return std::to_string(number); }
    template <std::integral T>
    static std::string word(T number) {
        return std::to_string(number);
    }

    template <typename... Arguments>
    bool note(const char* name, const Arguments&... arguments) {
        const std::lock_guard lock(callsMutex_);
        calls.push_back((std::string(name) + ... + (" " + word(arguments))));
        return true;
    }

    bool isInput(int input) const { return input >= 0 && static_cast<std::size_t>(input) < inputs.size(); }
    const Input& at(int input) const { return inputs[static_cast<std::size_t>(input)]; }

    // Files are opened on a thread of their own, while the window goes on. Shared, so that a fake can be copied.
    inline static std::mutex callsMutex_;
    Handle lastHandle_ = 0;
    std::map<Handle, std::uint64_t> lengthsOfChannels_;
    std::string product_;  // the file that is encoded into
    Handle capture_ = 0;
    std::shared_ptr<std::atomic<bool>> givenUp_ = std::make_shared<std::atomic<bool>>(false);
    bool finishing_ = false;
    mutable int polls_ = 0;
};

// The file of such a library.
class FakeLibraryFile : public AudioLibraryFile {
public:
    std::set<std::string> files = {"/program/lib"};  // that there are
    std::uint32_t version = 0x00020002;
    std::string loaded;
    // Null once it was handed out; further ones are as they come.
    std::unique_ptr<FakeAudioLibrary> first = std::make_unique<FakeAudioLibrary>();

    std::string fileName() const override { return "lib"; }
    bool exists(const std::string& path) const override { return files.contains(path); }
    bool load(const std::string& path) override {
        loaded = path;
        return true;
    }
    std::uint32_t BASS_GetVersion() const override { return version; }
    std::unique_ptr<AudioLibrary> create(const AudioLibraryOptions&) override {
        return first ? std::move(first) : std::make_unique<FakeAudioLibrary>();
    }
};

}  // namespace melvane::test
