// The windows that open over the main window: each is made when it is first shown, and comes back where it stood.
#pragma once

#include <QObject>
#include <QPointer>
#include <functional>
#include <optional>
#include <string>

#include "app/frmTags.h"
#include "app/frm_device_search.h"
#include "app/frm_line_up.h"
#include "app/mixer.h"
#include "app/source_files.h"
#include "effects/frmEff.h"
#include "midi/frmChann.h"
#include "player/frmPlayer.h"
#include "rehearsal/frmTimeline.h"
#include "settings/mnuHelp.h"
#include "settings/window_places.h"

namespace melvane {

// A stored place; far off the screen at most.
QPoint toPixels(const WindowPosition& position);

// What the windows ask of the main one.
struct MainCalls {
    // The user has chosen something in the preferences; it is in the settings already.
    std::function<void(const std::string& code)> useLanguage;
    std::function<void()> usePort;
    // What a rehearsal plays has changed.
    std::function<void()> rehearsed;
    std::function<void(const QList<QUrl>& files, std::optional<int> field)> takeDropped;
    std::function<void()> close;
    TimelineCalls timeline;
};

class SecondaryWindows : public QObject {
public:
    SecondaryWindows(FramelessWindow* main, Mixer& mixer, const Environment& environment, const SettingsStore& store,
                     Waveforms& waveforms, LineUp& lineUp, MainCalls mainCalls);

    void showEffects();
    void showChannels();
    void showPreferences();
    void showAbout();
    void showTimeline();
    void showTags();
    // Plays a file; the other windows wait until the player is closed.
    void showPlayer(const std::string& file);
    // Opens again what was open when the program ended; the focus stays in the main window.
    void reopen();
    // Hides all of them and keeps their places; to the settings they count as open.
    void hideAll();

    // Sets their texts from the current language.
    void SetMainLanguage();
    // Shows the settings of the channels as they are now, or all settings.
    void updateChannels();
    // A song or a voice was chosen.
    void takeFiles();
    // Shows what sounds, and how the run and the rehearsal go on.
    void follow();
    void updateSettings();

private:
    void openEffects(bool takesFocus);
    void openChannels(const frmChann::StartFlags& flags);
    // Where it stood, or else beside the main window.
    void place(FramelessWindow* window, Qt::Edge edge);
    bool eventFilter(QObject* window, QEvent* event) override;  // keeps the place of a window that goes

    FramelessWindow* main_;
    Mixer& mixer_;
    Environment environment_;
    WindowPlaces places_;
    const MainCalls mainCalls_;
    Waveforms& waveforms_;
    LineUp& lineUp_;
    DeviceSearch* search_;
    frmEff* effects_ = nullptr;
    frmChann* channels_ = nullptr;
    frmTimeline* timeline_ = nullptr;
    frmTags* tags_ = nullptr;
    QPointer<mnuHelp> preferences_;
    QPointer<frmPlayer> player_;
};

}  // namespace melvane
