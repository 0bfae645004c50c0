// The effects window: vocal effects, equaliser preset, tone and balance. What is set here is stored, and heard at
// once in a run.
#pragma once

#include <QPushButton>
#include <array>
#include <functional>
#include <utility>
#include <vector>

#include "controls/Ed_Button.h"
#include "controls/frameless_window.h"
#include "controls/slider.h"
#include "controls/switch.h"
#include "effects/effect_chain.h"
#include "effects/frm_preset_list.h"
#include "platform/dialogs.h"
#include "settings/modLang.h"

namespace melvane {

class frmEff : public FramelessWindow {
    Q_OBJECT

public:
    // Everything passed in outlives the window; `owner` owns it. While it is shown, and after it was hidden by
    // another than its user, Settings::effectsWindowOpen is on.
    frmEff(EffectChain& effects, Settings& settings, const modLang& language, Dialogs& dialogs, QWidget* owner);

    // Places every control as the settings are.
    void SetEffects();
    // Sets all texts from the current language.
    void GetEffectsLanguage();

protected:
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void addPresets();
    void addEffects();
    void addTone(std::size_t index);
    void addBalance(std::size_t index);
    Slider* addSlider(const char* name, std::size_t number, const SliderPlace& place, Accent accent, SliderValue value,
                      std::function<void(double)> move);
    QLabel* addText(OwnText text, const QRect& place, Accent accent, Qt::Alignment alignment = Qt::AlignCenter);
    void choosePreset(int row);
    void showPreset();
    void showBalance(std::size_t index);

    EffectChain& effects_;
    Settings& settings_;
    const modLang& language_;
    Dialogs& dialogs_;

    std::vector<std::pair<QLabel*, OwnText>> texts_;
    PresetList* pList_;
    QPushButton* labPreset_;
    std::array<Switch*, 5> efo_{};
    QLabel* spare_ = nullptr;
    std::array<Slider*, 4> ef_{};
    std::array<Slider*, 4> eq_song_{};
    std::array<Slider*, 2> bal_{};
    std::array<QWidget*, 2> bbg_{};
    std::array<QLabel*, 2> par_{};
    Ed_Button* bClose_;
};

}  // namespace melvane
