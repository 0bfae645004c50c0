// Captures the card's mix and pipes it into the MP3 encoder.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>

#include "loudness/loudness_meter.h"
#include "platform/audio_library.h"
#include "state/run_state.h"

namespace melvane {

class Module1 {
public:
    // `stopRec` ends the run; it is called when capture or encoder cannot start. `publish` puts a whole file of
    // so many frames in its place.
    Module1(AudioLibrary& library, RunState& run, std::function<void()> stopRec,
            std::function<RunFailure(std::int64_t)> publish, DoEvents doEvents);

    // Starts capture and encoder, and lets window events run until the inputs are open; on failure recordChannel is 0,
    // RunState::failure says why and the run was ended. No longer `wanted`, it leaves nothing behind.
    void StartMixCapture(const std::function<bool()>& wanted);
    // Ends both and lets window events run until the encoder has finished its file. Always false: the new
    // value of RunState::isMixing.
    bool StopMixCapture();

    // Measures what the encoder is given into RunState::loudness, from the next start on.
    void measure() { measures_ = true; }

private:
    static bool MixRecordProc(Handle handle, const void* buffer, std::uint32_t length, void* user);
    void meterBlock(Handle handle, const std::int16_t* samples, std::size_t frames);
    void noteLoudness();
    void giveUp(RunFailure failure, Handle channel);
    Handle openInputs(const std::function<bool()>& wanted);
    RunFailure finish();
    bool isWhole(std::int64_t frames);

    AudioLibrary& library_;
    RunState& run_;
    std::function<void()> stopRec_;
    std::function<RunFailure(std::int64_t)> publish_;
    DoEvents doEvents_;
    bool measures_ = false;
    std::mutex meterMutex_;  // a capture that was given up may still deliver
    std::unique_ptr<LoudnessMeter> meter_;
    Handle metered_ = 0;  // capture
};

}  // namespace melvane
