// Music and a mixer that make no sound: they write down what they are called with and answer as a test says.
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "platform/music_performance.h"
#include "platform/system_mixer.h"

namespace melvane::test {

// Refuses, as the real thing does, whatever comes before its port is open or its song is there.
class FakeMusic : public MusicSystem {
public:
    // Of all performances, in order, as "sendMidi 10 1 3 176 7 90"; questions are not written down.
    std::vector<std::string> calls;

    std::vector<std::string> ports = {"Built-in synthesiser"};
    std::string soundFont;
    bool portOpens = true;
    bool devicesOpen = true;
    bool songLoads = true;
    bool plays = true;
    std::uint16_t sounding = 0;  // channels
    int messagesLeft = 1000;     // until sending fails
    int openPorts = 0;
    std::atomic<int> performances = 0;  // that there are

    // While this is false, the machine's servers do not answer, for two seconds at most.
    std::shared_ptr<std::atomic<bool>> answers = std::make_shared<std::atomic<bool>>(true);

    std::function<std::vector<std::string>()> portSearch() const override {
        return [ports = ports, answers = answers] {
            waitFor(*answers);
            return ports;
        };
    }
    std::shared_ptr<MusicSegment> loadSegment(std::string_view file) override {
        note("loadSegment " + std::to_string(file.size()), songLoads);
        return std::make_shared<Segment>();
    }
    std::unique_ptr<MusicPerformance> createPerformance(std::vector<std::string>) override {
        return std::make_unique<Performance>(*this);
    }

private:
    struct Segment : MusicSegment {
        std::string trackName(std::uint8_t channel) const override { return channel == 2 ? "Lead" : ""; }
        std::vector<SongNote> notes() const override { return {{0, 44100, 0, 60}, {22050, 66150, 2, 72}}; }
        double length() const override { return 3; }
        SongSettings settings(std::uint8_t channel) const override {
            return channel == 2 ? SongSettings{0, 127, {}} : SongSettings{};
        }
    };

    class Performance : public MusicPerformance {
    public:
        explicit Performance(FakeMusic& music) : music_(music) { ++music_.performances; }
        ~Performance() override {
            if (open_) --music_.openPorts;
            --music_.performances;
        }
        void setPort(int port, int groups) override {
            waitFor(*music_.answers);
            music_.note(words("setPort", port, groups), music_.portOpens && !open_);
            open_ = ++music_.openPorts > 0;
            port_ = music_.devicesOpen ? port : 0;
        }
        int port() const override { return port_; }
        const std::string& soundFont() const override { return music_.soundFont; }
        void download(const std::shared_ptr<MusicSegment>& segment) override {
            note("download");
            ready_ = segment != nullptr;
        }
        void unload() override { note("unload"), ready_ = false; }
        void makeReady() override {}
        void playSegment() override {
            note("playSegment", ready_ && music_.plays);
            playing_ = true;
        }
        void stop() override { note("stop"), playing_ = false; }
        void pause(bool paused) override { note(words("pause", paused)); }
        bool playing() const override { return playing_; }
        Handle stream() const override { return playing_ ? 50 : 0; }
        double position() const override { return 0; }
        void setMasterTempo(double factor) override { note(words("setMasterTempo", factor)); }
        void setMasterVolume(std::int32_t volume) override { note(words("setMasterVolume", volume)); }
        void sendPatch(std::int64_t time, std::uint32_t flags, std::uint8_t channel, std::uint8_t instrument,
                       std::uint8_t bankHigh, std::uint8_t bankLow) override {
            send(words("sendPatch", time, flags, channel, instrument, bankHigh, bankLow));
        }
        void sendMidi(std::int64_t time, std::uint32_t flags, std::uint8_t channel, std::uint8_t status,
                      std::uint8_t data1, std::uint8_t data2) override {
            send(words("sendMidi", time, flags, channel, status, data1, data2));
        }
        void sendTranspose(std::int64_t time, std::uint32_t flags, std::uint8_t channel, int semitones) override {
            send(words("sendTranspose", time, flags, channel, semitones));
        }
        void solo(std::uint16_t channels) override { note(words("solo", channels)); }
        std::uint16_t soundingChannels() const override { return music_.sounding; }
        void liftChannelSettings() override { note("liftChannelSettings"); }
        SongReader reader() const override { return {}; }
        void closeDown(int groups) override {
            note(words("closeDown", groups), !ready_);
            open_ = --music_.openPorts < 0;
        }

    private:
        template <typename... Numbers>
        static std::string words(const char* name, Numbers... numbers) {
            return (std::string(name) + ... + (" " + std::to_string(numbers)));
        }
        void note(const std::string& call, bool succeeds = true) { music_.note(call, open_ && succeeds); }
        void send(const std::string& message) { note(message, music_.messagesLeft-- > 0); }
        FakeMusic& music_;
        bool open_ = false;
        int port_ = 0;
        bool ready_ = false;
        bool playing_ = false;
    };

    static void waitFor(const std::atomic<bool>& answer) {
        for (int waited = 0; !answer && waited < 2000; ++waited)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    void note(const std::string& call, bool succeeds) {
        if (!succeeds) throw MusicError("refused: " + call);
        calls.push_back(call);
    }
};

// A song of the 21 bytes that are not searched for messages, and what follows them.
inline std::string songOf(const std::string& bytes) {
    return std::string("MThd\0\0\0\6\0\1\0\2\1\xE0MTrk\0\0\0", 21) + bytes;
}

// Keeps what is written into a control; its type is also its identifier.
class FakeSystemMixer : public SystemMixer {
public:
    bool opens = true;
    std::map<std::uint32_t, std::vector<std::uint32_t>> values;

    std::uint32_t mixerOpen(MixerHandle& handle, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t) override {
        handle = opens ? kHandle : 0;
        return opens ? kMixerNoError : 1;
    }
    std::uint32_t mixerGetLineInfoA(MixerHandle handle, MIXERLINE&, std::uint32_t) override {
        return handle == kHandle ? kMixerNoError : 1;
    }
    std::uint32_t mixerGetLineControlsA(MixerHandle, MIXERLINECONTROLS& wanted, std::uint32_t) override {
        *wanted.pamxctrl = {148, wanted.dwControlType, wanted.dwControlType};
        return kMixerNoError;
    }
    std::uint32_t mixerGetControlDetailsA(MixerHandle handle, MIXERCONTROLDETAILS& details, std::uint32_t) override {
        details.paDetails[0] = 1000;
        return handle == kHandle ? kMixerNoError : 1;
    }
    std::uint32_t mixerSetControlDetails(MixerHandle handle, const MIXERCONTROLDETAILS& details,
                                         std::uint32_t) override {
        values[details.dwControlID].assign(details.paDetails, details.paDetails + details.cChannels);
        return handle == kHandle ? kMixerNoError : 1;
    }

private:
    static constexpr MixerHandle kHandle = 77;
};

}  // namespace melvane::test
