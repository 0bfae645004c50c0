// The level meters of the main window: song and voice beside their sliders, the mix beside the progress.
#pragma once

#include <QLabel>

#include "app/mixer.h"
#include "controls/level_meter.h"

namespace melvane {

class LevelPanel {
public:
    LevelPanel(QWidget* window, Mixer& mixer, const Environment& environment);

    // Shows what has sounded since the last time; at rest without a run.
    void show(bool running);
    void SetMainLanguage();

private:
    void showLimiter(bool running);

    Mixer& mixer_;
    Environment environment_;
    LevelMeter* song_;
    LevelMeter* voice_;
    LevelMeter* mix_;
    QLabel* limiter_;   // how much is taken away
    double taken_ = 0;  // dB
};

}  // namespace melvane
