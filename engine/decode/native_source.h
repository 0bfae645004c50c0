// What the decoders of the single formats share: a sound at its own sample rate whose length is exact.
#pragma once

#include <stdexcept>

#include "platform/pcm_source.h"

namespace melvane::decode {

// Thrown by the constructors of sources; the file is not readable as sound of that kind.
struct NotSound : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Like any PcmSource, but its frames are at rate().
class NativeSource : public PcmSource {
public:
    // In Hz.
    int rate() const { return rate_; }
    std::int64_t frames() const final { return frames_; }
    std::size_t read(float* out, std::size_t frames) final;
    void seek(std::int64_t frame) final;

protected:
    // To be called by the constructor of the derived class. Throws NotSound when there is nothing to hear or
    // the rate is out of range.
    void setFormat(int rate, std::int64_t frames);
    // The same for a length that the file claims: when its last frame can't be read, all frames are counted.
    void setClaimedFormat(int rate, std::int64_t frames);

private:
    // Up to `frames` frames in stereo; 0 only when no more can be had.
    virtual std::size_t decode(float* out, std::size_t frames) = 0;
    // 0 <= frame < frames().
    virtual void reposition(std::int64_t frame) = 0;

    std::int64_t countFrames();

    int rate_ = 0;
    std::int64_t frames_ = 0;
    std::int64_t position_ = 0;
};

}  // namespace melvane::decode
