// The sliders of the main window: both volumes, synchronisation and key, with their captions and the read-out of the
// key.
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

private:
    void addVolumes(QWidget* window);
    void addSync(QWidget* window);
    void addKey(QWidget* window);
    Slider* add(Slider* slider, const char* name, std::function<void(double)> move, std::function<void()> reset = {});
    void addText(QWidget* window, OwnText text, const QRect& place, Accent accent);
    void showKey();

    Mixer& mixer_;
    Environment environment_;
    std::vector<std::pair<QLabel*, OwnText>> texts_;
    std::array<Slider*, 2> volm_{};
    Slider* snc_ = nullptr;
    Slider* tone_ = nullptr;
    QLabel* par_ = nullptr;
};

}  // namespace melvane
