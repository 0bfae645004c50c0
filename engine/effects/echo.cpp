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
    const auto [mix, feedback, swap] = values;
    for (float* frame = block; frame != block + frames * 2; frame += 2) {
        delays_.advance();
        std::array<float, 2> repeats;
        for (std::size_t side = 0; side < 2; ++side) {
            lines_[side].push(frame[side]);
            repeats[side] =
                delays_.heard([&](const Delays& delays) { return delays[side] == 0 ? 0 : lines_[side][delays[side]]; });
        }
        for (std::size_t side = 0; side < 2; ++side) {
            const float dry = frame[side];
            const float undelayed = delays_.heard([&](const Delays& delays) { return delays[side] == 0 ? dry : 0; });
            const float back = (1 - swap) * repeats[side] + swap * repeats[1 - side];
            lines_[side].newest() = bounded(dry + feedback * back);
            if (mix > 0) frame[side] = (1 - mix) * dry + mix * (repeats[side] + undelayed);
        }
    }
}

}  // namespace melvane::engine
