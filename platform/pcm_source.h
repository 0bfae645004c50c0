// Where samples come from: interleaved stereo float frames at 44100 Hz, full scale at 1.0.
#pragma once

#include <cstddef>
#include <cstdint>

namespace melvane {

// One thread at a time; nothing here throws. What can't be decoded of a damaged file is silence.
class PcmSource {
public:
    virtual ~PcmSource() = default;

    // The exact length of a file; of sound that is made as it plays, the most that it can become.
    virtual std::int64_t frames() const = 0;
    // Fills `out` with up to `frames` frames and returns how many; fewer only at the end, 0 behind it, and where the
    // source has failed.
    virtual std::size_t read(float* out, std::size_t frames) = 0;
    // The next read() begins at `frame`, which is clamped to 0..frames().
    virtual void seek(std::int64_t frame) = 0;
    // As seek(frame), where what is read before `heard` will not be heard: it is only to bring what follows into the
    // state that it would have.
    virtual void roll(std::int64_t frame, std::int64_t /*heard*/) { seek(frame); }
    // True for good once the file could not be read although there was more of it: an error of the drive, or a file
    // that was cut off meanwhile.
    virtual bool failed() const { return false; }
};

}  // namespace melvane
