// The main window's sliders: their pixel positions, the values that these stand for, and what a moved slider does.
#pragma once

#include <cstdint>

#include "app/mixing_run.h"
#include "controls/track.h"
#include "state/run_state.h"
#include "state/settings.h"

namespace melvane {

inline constexpr Track kVolumeTrack{64, 124, 64};  // top edge; up is louder
inline constexpr Track kKeyTrack{308, 372, 340};   // left edge
inline constexpr Track kSyncTrack{64, 124, 94};    // top edge; up is earlier

std::int16_t volumeAt(int top);  // percent
int volumeTop(std::int16_t volume);
double keyAt(int left);  // semitones, -5..5
int keyLeft(double semitones);
int syncTop(float seconds);
// The offset for a position; `old` at the centre, where the offset is left as it was.
float syncAt(int top, float old);  // seconds, -0.6..0.6; positive: the vocal is earlier

class MainSliders {
public:
    MainSliders(RunState& run, Settings& settings, MixingRun& mixing)
        : run_(run), settings_(settings), mixing_(mixing) {}

    // Source 0 background, 1 vocal. Applied at once in a run.
    void moveVolume(std::size_t source, int top);
    // Applied at once, in a run or not.
    void moveKey(int left);
    // Applied at once in a run.
    void moveSync(int top);
    // Back to no offset; the only way there, since the track's centre leaves the offset alone.
    void resetSync() { setSync(0); }

private:
    void setSync(float seconds);

    RunState& run_;
    Settings& settings_;
    MixingRun& mixing_;
};

}  // namespace melvane
