#include "app/frmMain.h"

#include <QApplication>
#include <QCloseEvent>
#include <QContextMenuEvent>
#include <QCoreApplication>
#include <QScreen>
#include <QSessionManager>
#include <QThread>
#include <utility>

#include "controls/window_layout.h"
#include "controls/window_region.h"
#include "controls/zoom.h"
#include "settings/guarded.h"

namespace melvane {

namespace {

constexpr int kTickMs = 100;

Waveforms::OpenReader readerOf(AudioLibrary& library) {
    return [&library](const std::string& file, const std::function<bool()>& wanted) {
        return library.openReader(file, wanted);
    };
}

}  // namespace

frmMain::frmMain(Mixer& mixer, const Environment& environment, const SettingsStore& store, Documents& documents,
                 const Workshop& workshop)
    : FramelessWindow(kMainRegion, kGripHeight),
      mixer_(mixer),
      environment_(environment),
      store_(store),
      recent_(store),
      keeper_(store, mixer.settings(), [this] { keepSettings(); }),
      waveforms_(readerOf(environment.library), OutlineCache(environment.names.cacheDirectory())),
      sliders_(nullptr),
      levels_(this, mixer, environment),
      watch_(mixer, environment_),
      jobs_(new JobDesk(this, mixer, environment, store, documents)),
      steps_(new UndoKeeper(this, mixer, environment.language)),
      lineUp_(new LineUp(this, mixer, environment, waveforms_, lineUpCalls())),
      fast_(workshop, environment.language),
      measuring_(environment.library) {
    setObjectName(QStringLiteral("frmMain"));
    setAcceptDrops(true);
    caption_ = addTitle(kCaption);
    for (int i = 0; i < static_cast<int>(path_.size()); ++i) addRow(i);
    sliders_ = new SliderPanel(this, mixer_, environment_);
    addButtons();
    addStatus();
    windows_ = new SecondaryWindows(this, mixer_, environment_, store_, waveforms_, *lineUp_, calls());
    for (const Slider* slider : findChildren<Slider*>(QString(), Qt::FindDirectChildrenOnly))
        connect(slider, &Slider::moved, windows_, &SecondaryWindows::follow);
    addMenu();
    addJobs();
    followLineUp();
    // Started anew by each tick, not repeating: it has to go on while a tick ends a run.
    Timer1_.setSingleShot(true);
    Timer1_.setInterval(kTickMs);
    connect(&Timer1_, &QTimer::timeout, this, &frmMain::Timer1_Timer);
    mixer_.sourceFiles().taken = [this](int index, const std::string&) { noteTaken(index); };
    connect(qGuiApp, &QGuiApplication::commitDataRequest, this, [this](QSessionManager&) { endSession(); });
    connect(qApp, &QCoreApplication::aboutToQuit, this, [this] {
        if (!unloaded_) Form_Unload();
    });
}

MainCalls frmMain::calls() {
    const auto choosePort = [this] {
        files_.otherPort = true;
        refresh();
    };
    TimelineCalls timeline;
    timeline.whileOpening = [this](const std::function<void()>& action) { withButtonsOff(action); };
    timeline.lineUp = [this] { lineUp_->start(); };
    timeline.giveUpLineUp = [this] { lineUp_->giveUp(); };
    timeline.mixFast = [this] { fast_.going() ? fast_.cancel() : mixFast(); };
    timeline.matchLevels = [this] { matchLevels(); };
    timeline.setLoudness = [this](std::optional<float> lufs) {
        mixer_.run().targetLoudness = lufs;
        refresh();
    };
    timeline.fastMixRefusal = [this] { return whyNoFastMix(); };
    timeline.fastMix = [this] { return fastMixNews(); };
    timeline.opening = [this] { return MainStatus(mixer_, environment_).opening(); };
    timeline.decoding = [this] { return MainStatus(mixer_, environment_).decoding().value_or(""); };
    return {[this](const std::string& code) { useLanguage(code); },
            choosePort,
            [this] { refresh(); },
            [this](const QList<QUrl>& files, std::optional<int> field) { takeDropped(files, field); },
            [this] { close(); },
            timeline};
}

LineUp::Calls frmMain::lineUpCalls() {
    const auto asOneStep = [this](const std::function<void()>& change) { steps_->asOneStep(change); };
    return {.busy = [this] { return files_.choosing || QGuiApplication::mouseButtons() != Qt::NoButton; },
            .change =
                [this, asOneStep](const std::function<void()>& change) {
                    if (!mixer_.run().isRehearsing) return attempt([&] { asOneStep(change); });
                    withButtonsOff([&] { asOneStep(change); });
                }};
}

// The focus stays where the user works.
void frmMain::followLineUp() {
    const auto show = [this] { showSound(mixer_.isRunning()); };
    connect(lineUp_, &LineUp::looking, this, show);
    connect(lineUp_, &LineUp::noTrace, this, show);
    connect(lineUp_, &LineUp::linedUp, this, show);
    connect(lineUp_, &LineUp::notLinedUp, this, show);
}

void frmMain::attempt(const std::function<void()>& action) {
    guarded(environment_.dialogs, environment_.language, action);
}

void frmMain::tell(const std::string& text, BoxIcon icon) {
    environment_.dialogs.tell(text, kProductCaption, icon);
}

void frmMain::openHelp() {
    const std::string& page = environment_.language.lang(LangEntry::helpPage);
    if (!environment_.shell.open(page))
        tell(environment_.language.ownText(OwnText::cannotOpenPage, page), BoxIcon::information);
}

void frmMain::perform(const std::function<void()>& action) {
    attempt(action);
    refresh();
}

void frmMain::DoRest() {
    if (const auto& stored = mixer_.settings().position)
        moveOntoScreen(toPixels(*stored));
    else if (screen())
        move(screen()->availableGeometry().center() - rect().center());
    mixer_.sourceFiles().lastFolder = recent_.folders();
    sliders_->place();
    BR_[0]->setFocus();
    SetMainLanguage();
}

void frmMain::useLanguage(const std::string& code) {
    environment_.language.SetLanguage(code);
    environment_.shell.useLanguage(code);
    store_.WriteSetting(kProductKey, "language", code);
    SetMainLanguage();
}

void frmMain::closeEvent(QCloseEvent* event) {
    if ((mixer_.isRunning() && !mixer_.mixingRun().opening()) || fast_.going()) {
        event->ignore();
        return tell(environment_.language.lang(LangEntry::stopMixingFirst), BoxIcon::information);
    }
    bool goesOn = false;
    attempt([&] { goesOn = !jobs_->mayClose(); });
    if (goesOn) return event->ignore();
    attempt([this] { Form_Unload(); });
}

void frmMain::Form_Unload() {
    unloaded_ = true;
    endFastMix();
    {
        const RegistryBatch batch = store_.batch(RegistryAccess::change);
        jobs_->remember();
        windows_->hideAll();
        keepPlace();
        store_.save(mixer_.settings());
    }
    mixer_.Form_Unload();
}

void frmMain::keepPlace() {
    if (placesItself() || !mixer_.settings().position)
        mixer_.settings().position = WindowPosition{static_cast<float>(x()), static_cast<float>(y())};
}

void frmMain::keepSettings() {
    if (unloaded_ || !isVisible()) return;
    keepPlace();
    const bool saved = keeper_.save();
    jobs_->remember();
    if (saved) refresh();
}

void frmMain::endSession() {
    if (mixer_.isRunning()) mixer_.mixingRun().stopRec();
    endFastMix();
    keepSettings();
}

void frmMain::showEvent(QShowEvent* event) {
    FramelessWindow::showEvent(event);
    if (!event->spontaneous()) windows_->reopen();
}

void frmMain::contextMenuEvent(QContextMenuEvent* event) {
    menu_->mnuKar()->popup(event->globalPos());
}

void frmMain::refresh() {
    const bool running = mixer_.isRunning();
    if (!running && !files_.choosing && !fast_.going() && !measuring_.going() && !mixer_.rehearsal().playing())
        Timer1_.stop();
    else if (!Timer1_.isActive())
        Timer1_.start();
    if (std::exchange(wasRunning_, running) && !running) {
        report_.lacksVoice = mixer_.run().voiceOutsideSong;
        measureMix();
        QApplication::alert(this);  // unless it is in front
    }
    usePort(running);
    takeWaiting(running);
    refreshPaths();
    sliders_->showValues();
    refreshButtons(running);
    showFiles(running);
    showSound(running);
}

// What moves by itself while something sounds.
void frmMain::showSound(bool running) {
    refreshStatus(running);
    levels_.show(running || mixer_.rehearsal().playing());
    windows_->follow();
}

void frmMain::processWindowEvents() {
    constexpr int kLongestMs = 5;
    QCoreApplication::processEvents(QEventLoop::AllEvents, kLongestMs);
    QThread::msleep(1);  // who waits in a loop need not spin
}

}  // namespace melvane
