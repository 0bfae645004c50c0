#include "engine/effects/echo.h"

#include "platform/audio_library.h"

namespace melvane::engine {

namespace {

constexpr float kLongest = 2000;  // ms

std::size_t framesOf(float milliseconds) {
    return static_cast<std::size_t>(std::lround(limited(milliseconds, 0, kLongest) * (kSampleRate / 1000.0F)));
}

}  // namespace

Echo::Echo() : lines_{DelayLine(framesOf(kLongest) + 1), DelayLine(framesOf(kLongest) + 1)} {}

EchoValues Echo::goalOf(const EchoRecord& record) {
    delays_.aim({framesOf(record.fLeftDelay), framesOf(record.fRightDelay)});
    return {limited(record.fWetDryMix, 0, 100) / 100, limited(record.fFeedback, 0, 100) / 100,
            record.lPanDelay > 0 ? 1.0F : 0.0F};
}

void Echo::render(float* block, std::size_t frames, const EchoValues& values) {
    for (std::size_t count = 0; frames > 0; frames -= count, block += 2 * count) {
        delays_.advance();
        count = delays_.resting() ? std::min(frames, straightFrames()) : 1;
        renderChunk(block, count, values);
    }
}

void Echo::clear(std::int64_t, const EchoValues&) {
    for (DelayLine& line : lines_) line.clear();
    delays_.finish();
}

// How many frames repeat nothing of one another.
std::size_t Echo::straightFrames() const {
    std::size_t frames = kChunk;
    for (const std::size_t delay : delays_[1])
        if (delay > 0) frames = std::min(frames, delay);
    return frames;
}

void Echo::renderChunk(float* block, std::size_t frames, const EchoValues& values) {
    const auto [mix, feedback, swap] = values;
    std::array<float*, 2> lines;
    std::array<Row<float>, 2> repeats;
    for (std::size_t side = 0; side < 2; ++side) {
        lines[side] = lines_[side].append(frames);
        for (std::size_t f = 0; f < frames; ++f)
            repeats[side][f] = delays_.heard([&](std::size_t i) {
                const std::size_t delay = delays_[i][side];
                return delay == 0 ? 0 : *(lines[side] + f - delay);
            });
    }
    for (std::size_t side = 0; side < 2; ++side) {
        const float undelayed = delays_.heard([&](std::size_t i) { return delays_[i][side] == 0 ? 1.0F : 0.0F; });
        for (std::size_t f = 0; f < frames; ++f) {
            float& sample = block[2 * f + side];
            const float back = (1 - swap) * repeats[side][f] + swap * repeats[1 - side][f];
            lines[side][f] = bounded(sample + feedback * back);
            if (mix > 0) sample = (1 - mix) * sample + mix * (repeats[side][f] + undelayed * sample);
        }
    }
}

}  // namespace melvane::engine
