#include "app/frm_windows.h"

#include <QEvent>
#include <algorithm>
#include <utility>

namespace melvane {

namespace {

std::vector<std::string> recordingInputs(const AudioLibrary& library) {
    std::vector<std::string> names;
    while (const char* name = library.BASS_RecordGetInputName(static_cast<int>(names.size()))) names.emplace_back(name);
    return names;
}

std::string nameOf(const QObject* window) {
    return window->objectName().toStdString();
}

std::optional<int> fieldOf(frmTimeline::FileLane lane) {
    if (lane == frmTimeline::FileLane::none) return std::nullopt;
    return lane == frmTimeline::FileLane::song ? kBackgroundField : kVocalField;
}

constexpr const char* kTimelineSize = "frmTimeline size";  // in units

}  // namespace

QPoint toPixels(const WindowPosition& position) {
    constexpr float kFarthest = 1e6F;
    const auto pixel = [&](float place) { return static_cast<int>(std::clamp(place, -kFarthest, kFarthest)); };
    return {pixel(position.left), pixel(position.top)};
}

SecondaryWindows::SecondaryWindows(FramelessWindow* main, Mixer& mixer, const Environment& environment,
                                   const SettingsStore& store, Waveforms& waveforms, LineUp& lineUp,
                                   MainCalls mainCalls)
    : QObject(main),
      main_(main),
      mixer_(mixer),
      environment_(environment),
      places_(store),
      mainCalls_(std::move(mainCalls)),
      waveforms_(waveforms),
      lineUp_(lineUp),
      search_(new DeviceSearch(this, mixer, environment)) {
    connect(search_, &DeviceSearch::found, this, [this] {
        if (preferences_) preferences_->refreshDevices();
    });
    mixer_.midi().updateChannels = [this] { updateChannels(); };
}

void SecondaryWindows::openEffects(bool takesFocus) {
    if (!effects_)
        effects_ = new frmEff(mixer_.effects(), mixer_.settings(), environment_.language, environment_.dialogs, main_);
    place(effects_, Qt::BottomEdge);
    effects_->bringUp(takesFocus);
}

void SecondaryWindows::showEffects() {
    openEffects(true);
}

void SecondaryWindows::showChannels() {
    openChannels({});
}

void SecondaryWindows::openChannels(const frmChann::StartFlags& flags) {
    if (!channels_) {
        channels_ = new frmChann(mixer_.midi(), mixer_.settings(), environment_.language, environment_.dialogs, main_);
        connect(channels_, &frmChann::heardChanged, this, &SecondaryWindows::follow);
    }
    place(channels_, Qt::TopEdge);
    channels_->startFlags = flags;
    channels_->open();
}

void SecondaryWindows::showPreferences() {
    if (!preferences_) {
        const auto midiPorts = [this] { return mixer_.midi().state().midiPorts; };
        const auto inputs = [this] { return recordingInputs(environment_.library); };
        preferences_ = new mnuHelp(mixer_.settings(), environment_.language, environment_.shell, environment_.dialogs,
                                   midiPorts, inputs, main_);
        connect(preferences_, &mnuHelp::languageChanged, this,
                [this](const QString& code) { mainCalls_.useLanguage(code.toStdString()); });
        connect(preferences_, &mnuHelp::midiPortChanged, this, mainCalls_.usePort);
        connect(preferences_, &mnuHelp::devicesWanted, search_, &DeviceSearch::start);
    }
    place(preferences_, Qt::TopEdge);
    preferences_->bringUp();
}

void SecondaryWindows::showAbout() {
    showPreferences();
    preferences_->showAbout();
}

void SecondaryWindows::showTimeline() {
    if (!timeline_) {
        timeline_ = new frmTimeline(mixer_.rehearsal(), mixer_.state(), mixer_.midi().state(), waveforms_,
                                    environment_.language, environment_.dialogs, mainCalls_.timeline, main_);
        connect(timeline_, &frmTimeline::changed, this, mainCalls_.rehearsed);
        connect(timeline_, &frmTimeline::filesDropped, this, [this](const auto& files, frmTimeline::FileLane lane) {
            mainCalls_.takeDropped(files, fieldOf(lane));
        });
        connect(&lineUp_, &LineUp::looking, timeline_, &frmTimeline::showLiningUp);
        connect(&lineUp_, &LineUp::linedUp, timeline_, &frmTimeline::showLinedUp);
        connect(&lineUp_, &LineUp::noTrace, timeline_, &frmTimeline::showNoTrace);
        connect(&lineUp_, &LineUp::notLinedUp, timeline_, &frmTimeline::showNotLinedUp);
        const auto size = places_.find(kTimelineSize);
        if (size) timeline_->setUnits({toPixels(*size).x(), toPixels(*size).y()});
        timeline_->takeFiles();
    }
    place(timeline_, Qt::BottomEdge);
    timeline_->bringUp();
}

void SecondaryWindows::showTags() {
    if (!tags_) tags_ = new frmTags(mixer_, environment_, main_);
    tags_->takeFiles();
    place(tags_, Qt::TopEdge);
    tags_->bringUp();
}

void SecondaryWindows::takeFiles() {
    if (timeline_) timeline_->takeFiles();
    if (tags_) tags_->takeFiles();
}

void SecondaryWindows::follow() {
    if (timeline_ && timeline_->isVisible()) timeline_->refresh();
    if (channels_) channels_->showSounding();
}

void SecondaryWindows::showPlayer(const std::string& file) {
    delete player_;
    player_ = new frmPlayer(environment_.library, environment_.language, environment_.dialogs, file, main_);
    // Once the player, which the others wait for, is closed.
    connect(player_, &frmPlayer::quitWanted, main_, mainCalls_.close, Qt::QueuedConnection);
    player_->moveBesideOwner(Qt::BottomEdge);
    player_->bringUp();
}

void SecondaryWindows::place(FramelessWindow* window, Qt::Edge edge) {
    if (window->isVisible()) return;
    window->removeEventFilter(this);
    window->installEventFilter(this);
    const auto kept = places_.find(nameOf(window));
    window->moveBesideOwner(edge, kept ? std::optional(toPixels(*kept)) : std::nullopt);
}

bool SecondaryWindows::eventFilter(QObject* window, QEvent* event) {
    if (event->type() == QEvent::Hide && FramelessWindow::placesItself()) {
        const QPoint place = static_cast<QWidget*>(window)->pos();
        places_.keep(nameOf(window), {static_cast<float>(place.x()), static_cast<float>(place.y())});
    }
    if (event->type() == QEvent::Hide && window == timeline_) {
        const QSize& size = timeline_->units();
        places_.keep(kTimelineSize, {static_cast<float>(size.width()), static_cast<float>(size.height())});
    }
    return QObject::eventFilter(window, event);
}

void SecondaryWindows::reopen() {
    if (mixer_.settings().effectsWindowOpen != 0) openEffects(false);
    // Without a song there is nothing to see yet.
    if (mixer_.settings().channelsWindowOpen != 0) openChannels({.waitsForSong = true, .takesFocus = false});
}

// Hidden, not closed, effects and channels count as open for the next start.
void SecondaryWindows::hideAll() {
    for (QWidget* window :
         std::initializer_list<QWidget*>{effects_, channels_, timeline_, tags_, preferences_, player_})
        if (window) window->hide();
}

void SecondaryWindows::SetMainLanguage() {
    if (effects_) effects_->GetEffectsLanguage();
    if (channels_) channels_->GetChannelsLanguage();
    if (timeline_) timeline_->GetTimelineLanguage();
    if (tags_) tags_->GetTagsLanguage();
    if (preferences_) preferences_->GetPreferencesLanguage();
    if (player_) player_->GetPlayerLanguage();
}

void SecondaryWindows::updateSettings() {
    if (effects_) effects_->SetEffects();
    if (tags_) tags_->refresh();
    updateChannels();
}

void SecondaryWindows::updateChannels() {
    if (channels_) channels_->updateChannels();
    if (timeline_) timeline_->refresh();
}

}  // namespace melvane
