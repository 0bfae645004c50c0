// Measures loudness as ITU-R BS.1770-4 and EBU R128 define it: frame by frame, stereo at 44100 Hz. Used on one thread
// at a time, any one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "state/loudness.h"

namespace melvane {

class LoudnessMeter {
public:
    // What is measured: the integrated loudness alone, or all of a Loudness, which takes five times as long.
    enum class Scope { integrated, everything };

    // Throws std::bad_alloc.
    explicit LoudnessMeter(Scope scope = Scope::everything);
    ~LoudnessMeter();
    LoudnessMeter(const LoudnessMeter&) = delete;
    LoudnessMeter& operator=(const LoudnessMeter&) = delete;

    // Interleaved frames; full scale is 1.0, of 16-bit samples 32768. Throw std::bad_alloc.
    void add(const float* samples, std::size_t frames);
    void add(const std::int16_t* samples, std::size_t frames);

    // Of all that was added.
    Loudness result() const;

private:
    struct State;

    const Scope scope_;
    const std::unique_ptr<State> state_;
};

}  // namespace melvane
