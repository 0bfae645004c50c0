// The preferences window: devices, language and help, rehearsal, and what the program is. What is chosen here counts at
// once.
#pragma once

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QFrame>
#include <QLabel>
#include <QPushButton>
#include <array>
#include <string>

#include "controls/Ed_Button.h"
#include "controls/frameless_window.h"
#include "controls/link_button.h"
#include "platform/dialogs.h"
#include "platform/shell.h"
#include "settings/mnuHelp_about.h"
#include "settings/mnuHelp_device_list.h"
#include "settings/modLang.h"
#include "state/settings.h"

namespace melvane {

class mnuHelp : public FramelessWindow {
    Q_OBJECT

public:
    // What `midiPorts` names first is port 0, what `recordingInputs` names first is input 0; both answer at once.
    // Everything passed in outlives the window, which is deleted when it is closed.
    mnuHelp(Settings& settings, const modLang& language, Shell& shell, Dialogs& dialogs, DeviceNames midiPorts,
            DeviceNames recordingInputs, QWidget* owner);

    // Sets all texts from the current language.
    void GetPreferencesLanguage();
    // Shows the devices as they are listed now, once no list is open.
    void refreshDevices();
    // Goes to the page that tells what the program is.
    void showAbout();

Q_SIGNALS:
    // The devices are to be listed anew: the user looks at them.
    void devicesWanted();
    // The user chose a port, which is in the settings already.
    void midiPortChanged();
    // The user chose a language, which is in the settings already.
    void languageChanged(const QString& code);

protected:
    bool event(QEvent* event) override;
    void changeEvent(QEvent* event) override;  // the zoom may have been changed by its keys

private:
    void addTabs();
    void addAudioPage(DeviceNames midiPorts, DeviceNames recordingInputs);
    void addRehearsalPage();
    void addAboutPage();
    void addLanguagePage();
    void addLanguages();
    void addZoom();
    void addNotice();
    DeviceList* addDeviceList(const char* name, int label, DeviceNames deviceNames);
    void addLabel(std::size_t number, QWidget* page, const QRect& place);
    void showZoom();
    LinkButton* addLink(const char* name, const QRect& place, LangEntry address);
    void TABA_Click(int page);
    void lookForDevices();
    void showDeviceNotice();
    void openPage(const std::string& address);

    Settings& settings_;
    const modLang& language_;
    Shell& shell_;
    Dialogs& dialogs_;

    std::array<QPushButton*, 4> TABA_{};
    QFrame* FM_;
    QFrame* rehearsalPage_;
    QFrame* languagePage_;
    AboutText* about_;
    std::array<QLabel*, 7> LB_{};
    DeviceList* MidiDev_;
    DeviceList* MixDev_;
    QLabel* deviceNotice_;
    bool portGone_ = false;
    bool inputGone_ = false;
    QCheckBox* CustMix_;
    QCheckBox* linesUp_;
    QButtonGroup* languages_;
    QComboBox* zoom_;
    LinkButton* online_;
    LinkButton* adres_;
    Ed_Button* bOK_;
};

}  // namespace melvane
