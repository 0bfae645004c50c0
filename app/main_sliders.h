// What the main window's sliders set: stored, and heard at once in a run; the key also outside of one.
#pragma once

#include <cstdint>

#include "app/mixing_run.h"
#include "state/run_state.h"
#include "state/settings.h"

namespace melvane {

class MainSliders {
public:
    MainSliders(RunState& run, Settings& settings, MixingRun& mixing)
        : run_(run), settings_(settings), mixing_(mixing) {}

    // Source 0 background, 1 vocal.
    void setVolume(std::size_t source, std::int16_t percent) {
        settings_.volume.at(source) = percent;
        if (run_.isMixing) mixing_.SetBassVolume();
    }
    void setKey(double semitones) {
        run_.key = semitones;
        mixing_.applyKey();
    }
    void setSync(float seconds) {
        run_.syncOffset = seconds;
        mixing_.applySyncOffset();
    }

private:
    RunState& run_;
    Settings& settings_;
    MixingRun& mixing_;
};

}  // namespace melvane
