// The sliders of the main window: both volumes, synchronisation and key, with their captions and read-outs.
#pragma once

#include <QLabel>
#include <array>
#include <functional>
#include <utility>
#include <vector>

#include "app/mixer.h"
#include "controls/slider.h"

namespace melvane {

class SliderPanel : public QObject {
public:
    // Makes the controls in `window`, which owns this. The others outlive it.
    SliderPanel(QWidget* window, Mixer& mixer, const Environment& environment);

    // Places the sliders as the settings and the run are.
    void place();
    void SetMainLanguage();
    // Has the read-outs, and what is said of the key, follow the settings, the run and the song.
    void showValues();

private:
    void addVolumes(QWidget* window);
    void addSync(QWidget* window);
    void addKey(QWidget* window);
    Slider* add(Slider* slider, const char* name, std::function<void(double)> move, std::function<void()> reset = {});
    void addText(QWidget* window, OwnText text, const QRect& place, Accent accent);
    QLabel* addReadout(QWidget* window, const QRect& place, Accent accent, const char* name);
    QString syncText(double offset) const;
    void showSync();
    void nameKey();

    Mixer& mixer_;
    Environment environment_;
    std::vector<std::pair<QLabel*, OwnText>> texts_;
    std::array<Slider*, 2> volm_{};
    std::array<QLabel*, 2> volumeReadouts_{};
    Slider* snc_ = nullptr;
    QLabel* syncReadout_ = nullptr;
    Slider* tone_ = nullptr;
    QLabel* par_ = nullptr;
};

}  // namespace melvane
