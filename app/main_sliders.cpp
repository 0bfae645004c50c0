#include "app/main_sliders.h"

#include <cmath>

namespace melvane {

namespace {

constexpr double kPixelsPerSemitone = 6.4;

}  // namespace

std::int16_t volumeAt(int top) {
    return static_cast<std::int16_t>((kVolumeTrack.last - onTrack(kVolumeTrack, top)) * 100 / 60);
}

int volumeTop(std::int16_t volume) {
    return kVolumeTrack.last - volume * 60 / 100;
}

double keyAt(int left) {
    return (onTrack(kKeyTrack, left) - kKeyTrack.neutral) / kPixelsPerSemitone;
}

int keyLeft(double semitones) {
    return onTrack(kKeyTrack, static_cast<int>(std::lround(kKeyTrack.neutral + semitones * kPixelsPerSemitone)));
}

int syncTop(float seconds) {
    return onTrack(kSyncTrack, kSyncTrack.neutral - static_cast<int>(std::lround(seconds * 50)));
}

float syncAt(int top, float old) {
    top = onTrack(kSyncTrack, top);
    if (top == kSyncTrack.neutral) return old;
    return static_cast<float>((kSyncTrack.neutral - top) * 2) / 100;
}

void MainSliders::moveVolume(std::size_t source, int top) {
    settings_.volume.at(source) = volumeAt(top);
    if (run_.isMixing) mixing_.SetBassVolume();
}

void MainSliders::moveKey(int left) {
    run_.key = keyAt(left);
    mixing_.applyKey();
}

void MainSliders::moveSync(int top) {
    setSync(syncAt(top, run_.syncOffset));
}

void MainSliders::setSync(float seconds) {
    run_.syncOffset = seconds;
    mixing_.applySyncOffset();
}

}  // namespace melvane
