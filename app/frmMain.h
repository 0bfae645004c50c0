// The main window: three files, the sliders, the mix button, the stop button, progress and status. It shows the mixer's
// state and calls its operations; it decides nothing.
#pragma once

#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <array>
#include <functional>
#include <string>

#include "app/frm_slider_panel.h"
#include "app/mixer.h"
#include "controls/elided_label.h"
#include "controls/frameless_window.h"
#include "effects/frmEff.h"

namespace melvane {

class frmMain : public FramelessWindow {
    Q_OBJECT

public:
    // Everything passed in outlives the window.
    frmMain(Mixer& mixer, const Environment& environment, const SettingsStore& store);

    // The remainder of set-up, once the mixer has its settings: position, texts, state.
    void DoRest();
    // Sets all texts from the current language.
    void SetMainLanguage();

    // Lets pending window events run, for a few milliseconds at most.
    static void processWindowEvents();

protected:
    void closeEvent(QCloseEvent* event) override;
    void showEvent(QShowEvent* event) override;  // the effects window comes along if it was open

private:
    void BR_Click(int index);
    void mi_button_Click();
    void b_STOP_Click();
    void b_eff_Click();
    void Timer1_Timer();
    void Form_Unload();

    QPushButton* addButton(const char* name, const QRect& place, std::function<void()> click);
    void addRow(int index);
    void refresh();
    void refreshPaths();
    void refreshButtons(bool running);
    void switchButton(QPushButton* button, bool on);
    void refreshStatus(bool running);
    std::string statusText(bool running) const;
    bool isRunning() const;

    Mixer& mixer_;
    Environment environment_;
    const SettingsStore& store_;
    bool stopped_ = false;  // the last run was ended with the stop button

    std::array<ElidedLabel*, 3> path_{};
    std::array<QPushButton*, 3> BR_{};
    SliderPanel* sliders_;
    QPushButton* mi_button_;
    QPushButton* b_STOP_;
    QPushButton* b_eff_;
    QPushButton* bClose_;
    QProgressBar* progress_;
    ElidedLabel* status_;
    frmEff* effects_ = nullptr;  // made when it is first opened
    QTimer Timer1_{this};
};

}  // namespace melvane
