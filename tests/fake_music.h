// Music and a mixer that make no sound: they write down what they are called with and answer as a test says.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/music_performance.h"
#include "platform/system_mixer.h"

namespace melvane::test {

class FakeMusic : public MusicSystem {
public:
    // Of all performances, in order, as "sendMidi 10 1 3 176 7 90"; questions are not written down.
    std::vector<std::string> calls;

    std::vector<std::string> ports = {"Built-in synthesiser"};
    bool portOpens = true;
    bool songLoads = true;
    bool plays = true;
    int messagesLeft = 1000;  // until sending fails
    double length = 3;
    double position = 0;
    bool isPlaying = false;
    Handle stream = 50;  // of what plays

    std::unique_ptr<MusicLoader> createLoader() override { return std::make_unique<Loader>(*this); }
    std::unique_ptr<MusicPerformance> createPerformance() override { return std::make_unique<Performance>(*this); }

private:
    struct Segment : MusicSegment {
        explicit Segment(double seconds) : seconds_(seconds) {}
        double length() const override { return seconds_; }
        double seconds_;
    };

    struct Loader : MusicLoader {
        explicit Loader(FakeMusic& music) : music_(music) {}
        std::shared_ptr<MusicSegment> loadSegment(const std::string& fileName) override {
            music_.note("loadSegment " + fileName, music_.songLoads);
            return std::make_shared<Segment>(music_.length);
        }
        FakeMusic& music_;
    };

    class Performance : public MusicPerformance {
    public:
        explicit Performance(FakeMusic& music) : music_(music) {}
        int portCount() const override { return static_cast<int>(music_.ports.size()); }
        std::string portDescription(int port) const override {
            return music_.ports.at(static_cast<std::size_t>(port - 1));
        }
        void init() override { music_.note("init"); }
        void setPort(int port, int groups) override { music_.note(words("setPort", port, groups), music_.portOpens); }
        void download(const std::shared_ptr<MusicSegment>&) override { music_.note("download"); }
        void unload() override { music_.note("unload"); }
        void playSegment() override {
            music_.note("playSegment", music_.plays);
            music_.isPlaying = true;
        }
        void stop() override {
            music_.note("stop");
            music_.isPlaying = false;
        }
        bool playing() const override { return music_.isPlaying; }
        Handle stream() const override { return music_.isPlaying ? music_.stream : 0; }
        double position() const override { return music_.position; }
        void setMasterTempo(double factor) override { music_.note(words("setMasterTempo", factor)); }
        void setMasterVolume(std::int32_t volume) override { music_.note(words("setMasterVolume", volume)); }
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
        void liftChannelSettings() override { music_.note("liftChannelSettings"); }
        void closeDown(int groups) override { music_.note(words("closeDown", groups)); }

    private:
        template <typename... Numbers>
        static std::string words(const char* name, Numbers... numbers) {
            return (std::string(name) + ... + (" " + std::to_string(numbers)));
        }
        void send(const std::string& message) { music_.note(message, music_.messagesLeft-- > 0); }
        FakeMusic& music_;
    };

    void note(const std::string& call, bool succeeds = true) {
        if (!succeeds) throw MusicError("refused: " + call);
        calls.push_back(call);
    }
};

class FakeSystemMixer : public SystemMixer {
public:
    bool opens = true;
    std::map<std::uint32_t, std::vector<std::uint32_t>> values = {
        {MIXERCONTROL_CONTROLTYPE_VOLUME, {0}},  // by type, which is also the control's identifier
        {MIXERCONTROL_CONTROLTYPE_BASS, {1000}},
        {MIXERCONTROL_CONTROLTYPE_TREBLE, {2000}}};

    std::uint32_t mixerOpen(MixerHandle& handle, std::uint32_t device, std::uint32_t, std::uint32_t,
                            std::uint32_t) override {
        if (!opens || device != 0) return kFailed;
        handle = kHandle;
        return kMixerNoError;
    }
    std::uint32_t mixerGetLineInfoA(MixerHandle handle, MIXERLINE& line, std::uint32_t flags) override {
        line.dwLineID = line.dwComponentType + 1;
        return handle == kHandle && line.cbStruct == 168 && flags == 3 ? kMixerNoError : kFailed;
    }
    std::uint32_t mixerGetLineControlsA(MixerHandle handle, MIXERLINECONTROLS& wanted, std::uint32_t flags) override {
        const bool sizesFit = wanted.cbStruct == 24 && wanted.cbmxctrl == 148 && wanted.cControls == 1;
        const auto line = wanted.dwControlType == MIXERCONTROL_CONTROLTYPE_VOLUME ? 0x1005U : 5U;
        if (handle != kHandle || !sizesFit || flags != 2 || wanted.dwLineID != line) return kFailed;
        *wanted.pamxctrl = {148, wanted.dwControlType, wanted.dwControlType};
        return values.contains(wanted.dwControlType) ? kMixerNoError : kFailed;
    }
    std::uint32_t mixerGetControlDetailsA(MixerHandle handle, MIXERCONTROLDETAILS& details, std::uint32_t) override {
        if (!isKnown(handle, details)) return kFailed;
        details.paDetails[0] = values[details.dwControlID][0];
        return kMixerNoError;
    }
    std::uint32_t mixerSetControlDetails(MixerHandle handle, const MIXERCONTROLDETAILS& details,
                                         std::uint32_t) override {
        if (!isKnown(handle, details)) return kFailed;
        values[details.dwControlID].assign(details.paDetails, details.paDetails + details.cChannels);
        return kMixerNoError;
    }

private:
    static constexpr std::uint32_t kFailed = 1;
    static constexpr MixerHandle kHandle = 77;

    bool isKnown(MixerHandle handle, const MIXERCONTROLDETAILS& details) const {
        return handle == kHandle && details.cbStruct == 24 && details.cbDetails == 4 &&
               values.contains(details.dwControlID);
    }
};

}  // namespace melvane::test
