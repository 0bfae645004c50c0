// The instrument picker: gives one channel of the song another instrument, heard at once.
#pragma once

#include <QListWidget>

#include "controls/Ed_Button.h"
#include "controls/frameless_window.h"
#include "midi/midi_background.h"
#include "platform/dialogs.h"
#include "settings/modLang.h"

namespace melvane {

class frmIns : public FramelessWindow {
    Q_OBJECT

public:
    // Everything passed in outlives the window; `owner` owns it.
    frmIns(MidiBackground& midi, const modLang& language, Dialogs& dialogs, FramelessWindow* owner);

    std::int16_t editedChannel = 0;  // 0..15; set before the picker is shown

    // Selects the entry of exactly this name; without one, the selection stays. The channel keeps its instrument.
    void SelectInstrument(const QString& name);
    // Sets all texts from the current language.
    void GetInstrumentsLanguage();
    // Shows the picker at the side of its owner.
    void open();

Q_SIGNALS:
    void picked(std::int16_t channel, const QString& name);

protected:
    void keyPressEvent(QKeyEvent* event) override;  // Enter takes the selected entry again and closes

private:
    void List3_Click();
    void showTitle();

    MidiBackground& midi_;
    const modLang& language_;
    Dialogs& dialogs_;

    QListWidget* List3_;
    Ed_Button* Command1_;
};

}  // namespace melvane
