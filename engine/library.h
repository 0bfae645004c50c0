// The audio library: its interface in terms of the parts.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <stop_token>
#include <string>
#include <vector>

#include "engine/capture/recording_inputs.h"
#include "engine/decode/decoded_files.h"
#include "engine/device/mixing_thread.h"
#include "engine/device/sound_server.h"
#include "engine/graph/card.h"
#include "engine/handle_table.h"
#include "engine/openings.h"
#include "platform/audio_library.h"

namespace melvane::engine {

class Library : public AudioLibrary {
public:
    explicit Library(const AudioLibraryOptions& options);
    ~Library() override;

    bool BASS_Init(int device, std::uint32_t freq, std::uint32_t flags, void* window, const void* classId) override;
    bool BASS_Free() override;
    bool BASS_GetInfo(BASS_INFO& info) override;
    void holdCard() override { card_.hold(true); }
    void resumeCard() override { card_.hold(false); }
    void holdCardAtEndOf(Handle channel) override;
    bool cueCard(std::int64_t frame) override;
    void loopCard(std::int64_t begin, std::int64_t end) override { card_.loop(begin, end); }
    std::int64_t cardPosition() const override { return card_.songFrame(); }
    std::uint32_t stepCard(std::uint32_t frames) override;
    CardStatus cardStatus() const override;
    PeakLevels takePeaks(Handle channel) override;
    float takeReduction() override { return card_.takeReduction(); }
    std::shared_ptr<KeptMix> keepMix(Handle channel) override;
    std::unique_ptr<LimitedSound> limited(std::unique_ptr<PcmSource> source) override;

    Handle BASS_StreamCreateFile(bool mem, const char* file, std::uint32_t offset, std::uint32_t length,
                                 std::uint32_t flags) override;
    Handle openRecording(const std::string& file, double driftPpm, std::uint32_t flags) override;
    void giveUpOpening() override;
    Decoding decoding(const std::string& file) const override { return decoded_->state(file); }
    std::unique_ptr<PcmSource> openReader(const std::string& file, const std::function<bool()>& wanted) override;
    std::unique_ptr<PcmSource> inKey(std::unique_ptr<PcmSource> source, double semitones) override;
    Handle createStream(std::shared_ptr<PcmSource> source) override;
    bool BASS_StreamFree(Handle handle) override;
    bool BASS_MusicFree(Handle handle) override { return BASS_StreamFree(handle); }
    bool BASS_ChannelPlay(Handle handle, bool restart) override;
    bool BASS_ChannelStop(Handle handle) override;
    ChannelActivity BASS_ChannelIsActive(Handle handle) const override;
    bool channelFailed(Handle handle) const override;
    std::uint64_t BASS_ChannelGetLength(Handle handle) const override;
    std::uint64_t BASS_ChannelGetPosition(Handle handle) const override;
    bool BASS_ChannelSetPosition(Handle handle, std::uint64_t position) override;
    std::uint64_t BASS_ChannelSeconds2Bytes(Handle handle, float seconds) const override;
    bool BASS_ChannelGetAttributes(Handle handle, std::uint32_t& frequency, std::uint32_t& volume,
                                   std::int32_t& pan) const override;
    bool BASS_ChannelSetAttributes(Handle handle, std::uint32_t frequency, std::uint32_t volume,
                                   std::int32_t pan) override;

    bool trimChannel(Handle handle, float decibels) override;
    bool placeChannel(Handle handle, std::int64_t earlierFrames, bool once) override;

    Handle BASS_ChannelSetFX(Handle handle, std::uint32_t type, std::int32_t priority) override;
    bool BASS_FXSetParameters(Handle effect, const EffectRecord& record) override;
    bool BASS_FXGetParameters(Handle effect, EffectRecord& record) const override;

    Handle BASS_FX_TempoCreate(Handle source, std::uint32_t flags) override;
    bool BASS_FX_TempoSet(Handle handle, float tempo, float rate, float pitch) override;

    std::function<std::vector<std::string>()> inputSearch() const override { return inputs_.search(recordingServer()); }
    bool BASS_RecordInit(int device) override;
    const char* BASS_RecordGetInputName(int input) const override;
    std::uint32_t BASS_RecordGetInput(int input) const override { return inputs_.setting(input); }
    bool BASS_RecordSetInput(int input, std::uint32_t setting) override { return inputs_.set(input, setting); }
    Handle BASS_RecordStart(std::uint32_t freq, std::uint32_t chans, std::uint32_t flags, RecordProc proc,
                            void* user) override;

    std::function<bool()> encoderSearch(const std::string& commandLine) const override;
    bool BASS_Encode_Start(Handle handle, const char* commandLine, std::uint32_t flags, void* proc,
                           void* user) override;
    bool BASS_Encode_IsActive(Handle handle) const override { return handles_.encoderRunning(handle); }
    bool BASS_Encode_Stop(Handle handle) override;
    void hurryEncoder(Handle handle) override;
    double encoderStalled(Handle handle) const override;
    EncoderState encoderState(Handle handle) const override;
    std::int64_t framesEncoded(Handle handle) const override;

private:
    // nullptr where the card's mix is the only input.
    std::shared_ptr<SoundServer> recordingServer() const;

    const AudioLibraryOptions options_;
    const std::shared_ptr<SoundServer> server_ = std::make_shared<SoundServer>();
    RecordingInputs inputs_;
    Card card_;
    std::unique_ptr<MixingThread> mixing_;
    const std::shared_ptr<decode::DecodedFiles> decoded_ =
        std::make_shared<decode::DecodedFiles>(options_.programDirectory);
    Openings openings_{decoded_};
    std::mutex givenUpMutex_;
    std::stop_source givenUp_;  // of the devices that are being opened for a capture
    std::vector<float> stepBlock_;
    bool initialised_ = false;
    HandleTable handles_;
};

}  // namespace melvane::engine
