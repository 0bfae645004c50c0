#include "app/frm_windows.h"

#include <QEvent>
#include <QScreen>
#include <algorithm>
#include <utility>

#include "controls/window_layout.h"
#include "controls/zoom.h"

namespace melvane {

namespace {

constexpr int kGap = 8;

// Listed anew, but not in a run, which uses them.
std::vector<std::string> recordingInputs(AudioLibrary& library, bool running) {
    if (!running) library.BASS_RecordInit(-1);
    std::vector<std::string> names;
    while (const char* name = library.BASS_RecordGetInputName(static_cast<int>(names.size()))) names.emplace_back(name);
    return names;
}

std::string nameOf(const QObject* window) {
    return window->objectName().toStdString();
}

// Of a window as wide as the main one that covers nothing of it: above it, or else on the side that has room.
QPoint freePlace(const QWidget& main) {
    const QRect room = main.screen()->availableGeometry();
    const int across = main.width() + kGap;
    const int above = zoomed(frmChann::kHeight) + kGap;
    if (main.y() - room.top() >= above) return {0, -above};
    return {main.x() + across + main.width() <= room.right() ? across : -across, 0};
}

}  // namespace

QPoint toPixels(const WindowPosition& position) {
    constexpr float kFarthest = 1e6F;
    const auto pixel = [&](float place) { return static_cast<int>(std::clamp(place, -kFarthest, kFarthest)); };
    return {pixel(position.left), pixel(position.top)};
}

SecondaryWindows::SecondaryWindows(FramelessWindow* main, Mixer& mixer, const Environment& environment,
                                   const SettingsStore& store, PreferenceCalls preferenceCalls)
    : QObject(main),
      main_(main),
      mixer_(mixer),
      environment_(environment),
      places_(store),
      preferenceCalls_(std::move(preferenceCalls)) {
    mixer_.midi().updateChannels = [this] { updateChannels(); };
}

void SecondaryWindows::showEffects() {
    const bool first = !effects_;
    if (first)
        effects_ = new frmEff(mixer_.effects(), mixer_.settings(), environment_.language, environment_.dialogs, main_);
    bringUp(effects_, {0, main_->height() + kGap});
}

void SecondaryWindows::showChannels() {
    openChannels({});
}

void SecondaryWindows::openChannels(const frmChann::StartFlags& flags) {
    if (!channels_)
        channels_ = new frmChann(mixer_.midi(), mixer_.settings(), environment_.language, environment_.dialogs, main_);
    place(channels_, freePlace(*main_));
    channels_->startFlags = flags;
    channels_->open();
}

void SecondaryWindows::showPreferences() {
    if (!preferences_) {
        const auto midiPorts = [this] {
            mixer_.midi().ReadMap();
            return mixer_.midi().state().midiPorts;
        };
        const auto inputs = [this] { return recordingInputs(environment_.library, mixer_.isRunning()); };
        preferences_ = new mnuHelp(mixer_.settings(), environment_.language, environment_.shell, environment_.dialogs,
                                   midiPorts, inputs, main_);
        connect(preferences_, &mnuHelp::languageChanged, this,
                [this](const QString& code) { preferenceCalls_.useLanguage(code.toStdString()); });
        connect(preferences_, &mnuHelp::midiPortChanged, this, preferenceCalls_.usePort);
    }
    bringUp(preferences_, freePlace(*main_));
}

void SecondaryWindows::showPlayer(const std::string& file) {
    delete player_;
    player_ = new frmPlayer(environment_.library, environment_.language, environment_.dialogs, file, main_);
    bringUp(player_, {(main_->width() - player_->width()) / 2, kGap});
}

void SecondaryWindows::place(FramelessWindow* window, const QPoint& firstPlace) {
    if (window->isVisible()) return;
    window->removeEventFilter(this);
    window->installEventFilter(this);
    if (const auto kept = places_.find(nameOf(window)))
        window->moveOntoScreen(toPixels(*kept));
    else
        window->moveOntoScreen(main_->pos() + firstPlace);
}

void SecondaryWindows::bringUp(FramelessWindow* window, const QPoint& firstPlace) {
    place(window, firstPlace);
    window->show();
    window->raise();
    window->activateWindow();
}

bool SecondaryWindows::eventFilter(QObject* window, QEvent* event) {
    if (event->type() == QEvent::Hide && FramelessWindow::placesItself()) {
        const QPoint place = static_cast<QWidget*>(window)->pos();
        places_.keep(nameOf(window), {static_cast<float>(place.x()), static_cast<float>(place.y())});
    }
    return QObject::eventFilter(window, event);
}

void SecondaryWindows::reopen() {
    if (mixer_.settings().effectsWindowOpen != 0) showEffects();
    // Without a song there is nothing to see yet.
    if (mixer_.settings().channelsWindowOpen != 0) openChannels({.waitsForSong = true, .takesFocus = false});
}

// Hidden, not closed, effects and channels count as open for the next start.
void SecondaryWindows::hideAll() {
    for (QWidget* window : std::initializer_list<QWidget*>{effects_, channels_, preferences_, player_})
        if (window) window->hide();
}

void SecondaryWindows::SetMainLanguage() {
    if (effects_) effects_->GetEffectsLanguage();
    if (channels_) channels_->GetChannelsLanguage();
    if (preferences_) preferences_->GetPreferencesLanguage();
    if (player_) player_->GetPlayerLanguage();
}

void SecondaryWindows::updateChannels() {
    if (channels_) channels_->updateChannels();
}

}  // namespace melvane
