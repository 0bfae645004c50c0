// What the main window's sliders set: stored, and heard at once in a run; the key also outside of one.
#pragma once

#include <cstdint>

#include "mixing/mix_graph.h"
#include "state/run_state.h"
#include "state/settings.h"

namespace melvane {

class MainSliders {
public:
    MainSliders(RunState& run, Settings& settings, MixGraph& graph) : run_(run), settings_(settings), graph_(graph) {}

    // Source 0 background, 1 vocal.
    void setVolume(std::size_t source, std::int16_t percent) {
        settings_.volume.at(source) = percent;
        if (run_.sounds()) graph_.SetBassVolume();
    }
    void setKey(double semitones) {
        run_.key = semitones;
        graph_.applyKey();
    }
    void setSync(float seconds) {
        run_.syncOffset = seconds;
        graph_.applySyncOffset();
    }

private:
    RunState& run_;
    Settings& settings_;
    MixGraph& graph_;
};

}  // namespace melvane
