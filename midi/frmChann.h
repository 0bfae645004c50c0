// The channels window: a strip for each channel of the song, to switch it off, to set its volume and balance and to
// choose its instrument. What is set here is heard at once.
#pragma once

#include <array>
#include <functional>
#include <vector>

#include "controls/Ed_Button.h"
#include "controls/elided_label.h"
#include "controls/frameless_window.h"
#include "controls/navButton.h"
#include "controls/slider.h"
#include "midi/frmIns.h"
#include "midi/frm_strip_parts.h"
#include "midi/midi_background.h"
#include "platform/dialogs.h"
#include "settings/modLang.h"
#include "state/scale.h"

namespace melvane {

class frmChann : public FramelessWindow {
    Q_OBJECT

public:
    // How open() shows the window.
    struct StartFlags {
        bool waitsForSong = false;  // hidden until there are channels to show
        bool takesFocus = true;     // in front of the other windows
    };

    // Everything passed in outlives the window; `owner` owns it. While it is shown, and after it was hidden by
    // another than its user, Settings::channelsWindowOpen is on.
    frmChann(MidiBackground& midi, Settings& settings, const modLang& language, Dialogs& dialogs, QWidget* owner);

    StartFlags startFlags;
    void open();

    // Shows the channels of the song that is loaded as they are set.
    void updateChannels();
    // Lights the channels that sound now.
    void showSounding();
    // Sets all texts from the current language.
    void GetChannelsLanguage();

Q_SIGNALS:
    // The user has switched a channel, or chosen it alone.
    void heardChanged();

protected:
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void addStrip(std::int16_t channel);
    // `set`: the exact value. The knob gives `change` the value of its position, or the neutral one.
    Slider* addKnob(const char* name, std::int16_t channel, const SliderPlace& place, const Scale& scale,
                    std::int16_t ChannelSettings::*set, std::int16_t neutral, std::function<void(std::int16_t)> change);
    void addReset(Slider* slider);
    std::array<QWidget*, 4> strip(std::int16_t channel) const;
    void onoff_Click(std::int16_t channel);
    void solo(std::int16_t channel);
    bool isSolo(std::int16_t channel) const { return (state_.soloed >> channel & 1) != 0; }
    void nameSwitch(std::int16_t channel);
    void setVolume(std::int16_t channel, std::int16_t volume, bool on);
    void ins_DblClick(std::int16_t channel);
    void showInstrument(std::int16_t channel);
    // Says what the knobs and the instrument are, and what the song sets where the user has not.
    void nameStrip(std::int16_t channel);
    void describe(QWidget* control, const QString& name, bool touched, const QString& songs);
    void showStrip(std::int16_t channel);
    void showOn(std::int16_t channel, bool on);

    MidiBackground& midi_;
    const MidiState& state_;
    Settings& settings_;
    const modLang& language_;
    Dialogs& dialogs_;

    ElidedLabel* hint_;
    QLabel* noSong_;
    UpwardText* balanceRow_;
    UpwardText* volumeRow_;
    std::array<ChannelToggle*, kMidiChannels> onoff_{};
    std::array<Slider*, kMidiChannels> bl_{};
    std::array<Slider*, kMidiChannels> vol_{};
    std::array<InstrumentLabel*, kMidiChannels> ins_{};
    std::vector<QAction*> resets_;
    navButton* b_main_;
    Ed_Button* bClose_;
    frmIns* picker_ = nullptr;  // made when it is first opened
};

}  // namespace melvane
