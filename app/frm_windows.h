// The windows that open over the main window: each is made when it is first shown, and comes back where it stood.
#pragma once

#include <QObject>
#include <QPointer>
#include <string>

#include "app/mixer.h"
#include "effects/frmEff.h"
#include "midi/frmChann.h"
#include "player/frmPlayer.h"
#include "settings/mnuHelp.h"
#include "settings/window_places.h"

namespace melvane {

// A stored place; far off the screen at most.
QPoint toPixels(const WindowPosition& position);

class SecondaryWindows : public QObject {
    Q_OBJECT

public:
    SecondaryWindows(FramelessWindow* main, Mixer& mixer, const Environment& environment, const SettingsStore& store);

    void showEffects();
    void showChannels();
    void showPreferences();
    // Plays a file; the other windows wait until the player is closed.
    void showPlayer(const std::string& file);
    // Opens again what was open when the program ended.
    void reopen();
    // Hides all of them and keeps their places; to the settings they count as open.
    void hideAll();

    // Opens the song on the MIDI port that was chosen in the preferences, unless a run uses the old one.
    void usePort();

    // Sets their texts from the current language.
    void SetMainLanguage();
    // Shows the settings of the channels as they are now.
    void updateChannels();

Q_SIGNALS:
    // Another language was chosen in the preferences.
    void languageChosen(const QString& code);
    // Another MIDI port was chosen there; usePort() takes it.
    void portChosen();

private:
    bool runsNow() const;
    void openChannels(const frmChann::StartFlags& flags);
    void place(FramelessWindow* window, const QPoint& firstPlace);
    void bringUp(FramelessWindow* window, const QPoint& firstPlace);
    bool eventFilter(QObject* window, QEvent* event) override;  // keeps the place of a window that goes

    FramelessWindow* main_;
    Mixer& mixer_;
    Environment environment_;
    WindowPlaces places_;
    frmEff* effects_ = nullptr;
    frmChann* channels_ = nullptr;
    bool portChanged_ = false;
    QPointer<mnuHelp> preferences_;
    QPointer<frmPlayer> player_;
};

}  // namespace melvane
