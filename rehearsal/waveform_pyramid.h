// The outline of a sound at every width: its lowest and highest sample in every 256 frames, and in every twice as many
// above. One thread adds while any thread looks; nobody waits.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace melvane {

// Of both sides, 32767 is full scale.
struct Extremes {
    std::int16_t lowest = 0;
    std::int16_t highest = 0;

    bool operator==(const Extremes&) const = default;
};

class WaveformPyramid {
public:
    static constexpr std::int64_t kBinFrames = 256;

    // Of a sound of that length.
    explicit WaveformPyramid(std::int64_t frames);
    // The same with its bins, as bins() gave them; what is missing of them is silence.
    WaveformPyramid(std::int64_t frames, std::span<const Extremes> bins);

    // --- one thread ---
    // The next frames, interleaved stereo with full scale at 1.0; what goes beyond the length is left out.
    void add(const float* block, std::size_t count);
    // Nothing comes any more.
    void finish();
    // Once it is finished.
    std::span<const Extremes> bins() const { return levels_.front(); }

    // --- any thread ---
    std::int64_t frames() const { return frames_; }
    // How many of them are known.
    std::int64_t known() const;
    // Of the frames from `begin` to `end` - 1, or a little more at both ends; silent where nothing is known.
    Extremes between(std::int64_t begin, std::int64_t end) const;

private:
    void close();
    void closeAbove(std::size_t bin);

    const std::int64_t frames_;
    std::vector<std::vector<Extremes>> levels_;  // level n: of kBinFrames << n frames each
    std::atomic<std::size_t> done_{0};           // bins of the first level, with all above them that are whole
    Extremes open_;                              // of the bin that is not whole yet
    std::int64_t openFrames_ = 0;
};

}  // namespace melvane
