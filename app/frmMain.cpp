#include "app/frmMain.h"

#include <QApplication>
#include <QCloseEvent>
#include <QContextMenuEvent>
#include <QCoreApplication>
#include <QPointer>
#include <QScreen>
#include <QSessionManager>
#include <QThread>
#include <utility>

#include "app/interrupted_mixes.h"
#include "audio/modAudio.h"
#include "base/paths.h"
#include "controls/control_name.h"
#include "controls/skin.h"
#include "controls/window_layout.h"
#include "controls/window_region.h"
#include "controls/zoom.h"
#include "mixing/run_messages.h"
#include "settings/guarded.h"
#include "state/window_patience.h"

namespace melvane {

namespace {

constexpr short kListButton = 2;
constexpr int kTickMs = 100;

constexpr QRect kBrowse(254, 31, 36, 24);  // of the first row
constexpr int kRowStep = 28;
constexpr int kGap = 6;
constexpr int kButtonsY = 117;
constexpr int kButtonHeight = 26;
constexpr QRect kMix(kLeft, kButtonsY, 94, kButtonHeight);
constexpr QRect kStop(kMix.right() + 1 + kGap, kButtonsY, 70, kButtonHeight);
constexpr QRect kMidi(188, kButtonsY, 30, kButtonHeight);
constexpr QRect kEffects(224, kButtonsY, 30, kButtonHeight);
constexpr QRect kListen(260, kButtonsY, 30, kButtonHeight);
constexpr QRect kProgress(kLeft, 148, OverviewBar::kColumns, 22);
constexpr QRect kStatus(kLeft, 172, kRight - kLeft, 18);
constexpr QRect kHelp = kClose.translated(-30, 0);
constexpr QPoint kMenu(kHelp.x() - 28, 2);
constexpr QRect kMinimise(kMenu.x() - 28, kHelp.y(), 24, kHelp.height());

constexpr std::array kBrowseEntries = {LangEntry::browseBackground, LangEntry::browseVocal,
                                       LangEntry::browseDestination};
constexpr std::array kRowTexts = {OwnText::karaokeBackground, OwnText::vocalRecording, OwnText::mixingDestination};
constexpr std::array kEmptyTexts = {OwnText::dropSongHere, OwnText::dropVoiceHere, OwnText::dropDestinationHere};
constexpr std::array kRowSymbols = {Symbol::open, Symbol::open, Symbol::save};

}  // namespace

frmMain::frmMain(Mixer& mixer, const Environment& environment, const SettingsStore& store, Documents& documents,
                 const Workshop& workshop)
    : FramelessWindow(kMainRegion, kGripHeight),
      mixer_(mixer),
      environment_(environment),
      store_(store),
      recent_(store),
      keeper_(store, mixer.settings(), [this] { keepSettings(); }),
      sliders_(nullptr),
      levels_(this, mixer, environment),
      watch_(mixer, environment_),
      jobs_(new JobDesk(this, mixer, environment, store, documents)),
      steps_(new UndoKeeper(this, mixer, environment.language)),
      fast_(workshop, environment.language) {
    setObjectName(QStringLiteral("frmMain"));
    setAcceptDrops(true);
    caption_ = addTitle(kCaption);
    for (int i = 0; i < static_cast<int>(path_.size()); ++i) addRow(i);
    sliders_ = new SliderPanel(this, mixer_, environment_);
    addButtons();
    addProgress();
    windows_ = new SecondaryWindows(this, mixer_, environment_, store_, calls());
    for (const Slider* slider : findChildren<Slider*>(QString(), Qt::FindDirectChildrenOnly))
        connect(slider, &Slider::moved, windows_, &SecondaryWindows::follow);
    addMenu();
    addJobs();
    mixer_.sourceFiles().taken = [this](int index, const std::string&) { noteTaken(index); };
    connect(qGuiApp, &QGuiApplication::commitDataRequest, this, [this](QSessionManager&) { endSession(); });
    connect(qApp, &QCoreApplication::aboutToQuit, this, [this] {
        if (!unloaded_) Form_Unload();
    });
}

MainCalls frmMain::calls() {
    const auto choosePort = [this] {
        portChosen_ = true;
        refresh();
    };
    const auto opens = [this](const std::function<void()>& action) { withButtonsOff(action); };
    return {
        [this](const std::string& code) { useLanguage(code); },
        choosePort,
        [this] { refresh(); },
        {.whileOpening = opens, .mixFast = [this] { mixFast(); }, .fastMixRefusal = [this] { return whyNoFastMix(); }}};
}

void frmMain::addRow(int index) {
    const auto row = static_cast<std::size_t>(index);
    const QRect browse = kBrowse.translated(0, index * kRowStep);
    path_[row] = new ElidedLabel(this, Qt::ElideMiddle);
    path_[row]->setObjectName(QStringLiteral("path%1").arg(index));
    layOut(path_[row], {kLeft, browse.y(), browse.x() - kGap - kLeft, browse.height()});
    const QByteArray name = QByteArrayLiteral("BR") + QByteArray::number(index);
    BR_[row] = add(name.constData(), browse, ButtonLook::plain, kRowSymbols[row], [this, index] { BR_Click(index); });
}

void frmMain::addButtons() {
    mi_button_ = add("mi_button", kMix, ButtonLook::song, Symbol::mix, [this] { mi_button_Click(); });
    b_STOP_ = add("b_STOP", kStop, ButtonLook::recording, Symbol::stop, [this] { b_STOP_Click(); });
    b_midi_ = add("b_midi", kMidi, ButtonLook::plain, Symbol::midi, [this] { windows_->showChannels(); });
    b_midi_->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(b_midi_, &QWidget::customContextMenuRequested, this,
            [this](const QPoint& place) { menu_->mnuMidi()->popup(b_midi_->mapToGlobal(place)); });
    b_eff_ = add("b_eff", kEffects, ButtonLook::plain, Symbol::effects, [this] { windows_->showEffects(); });
    b_listen_ = add("b_listen", kListen, ButtonLook::plain, Symbol::listen, [this] { listen(); });
    bMinimise_ = add("bMinimise", kMinimise, ButtonLook::bar, Symbol::minimise, [this] { showMinimized(); });
    bMinimise_->setFocusPolicy(Qt::TabFocus);  // a Space in the window that came back would send it away again
    b_menu_ = addNavButton(this, "b_menu", kMenu, kListButton,
                           [this] { menu_->mnuKar()->popup(b_menu_->mapToGlobal(QPoint(0, b_menu_->height()))); });
    bHelp_ = add("bHelp", kHelp, ButtonLook::bar, Symbol::settings, [this] { windows_->showPreferences(); });
    bClose_ = add("bClose", kClose, ButtonLook::close, Symbol::close, [this] { close(); });
}

void frmMain::addProgress() {
    progress_ = new OverviewBar(this, kProgress);
    progress_->setObjectName(QStringLiteral("progress"));
    connect(progress_, &OverviewBar::clicked, this, [this] { perform([this] { windows_->showTimeline(); }); });
    scans_ = {new SongOverview(this, environment_.library, progress_),
              new SongOverview(this, environment_.library, nullptr)};
    for (const SongOverview* scan : scans_) connect(scan, &SongOverview::unreadable, this, &frmMain::refresh);
    status_ = new ElidedLabel(this, Qt::ElideRight);
    status_->setObjectName(QStringLiteral("status"));
    layOut(status_, kStatus);
    // Started anew by each tick, not repeating: it has to go on while a tick ends a run.
    Timer1_.setSingleShot(true);
    Timer1_.setInterval(kTickMs);
    connect(&Timer1_, &QTimer::timeout, this, &frmMain::Timer1_Timer);
}

Ed_Button* frmMain::add(const char* name, const QRect& place, ButtonLook look, Symbol symbol,
                        std::function<void()> click) {
    return addButton(this, name, place, look, symbol, [this, click = std::move(click)] { perform(click); });
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

void frmMain::addMenu() {
    menu_ = new frmMenu(mixer_.midi().state(), environment_.language, this);
    const auto on = [this](auto signal, std::function<void()> action) {
        connect(menu_, signal, this, [this, action = std::move(action)] { perform(action); });
    };
    connect(menu_, &frmMenu::browse, this, [this](int index) { perform([&] { BR_Click(index); }); });
    on(&frmMenu::preferences, [this] { windows_->showPreferences(); });
    on(&frmMenu::help, [this] { openHelp(); });
    on(&frmMenu::closeWanted, [this] { close(); });
    on(&frmMenu::mix, [this] { mi_button_Click(); });
    on(&frmMenu::stop, [this] { b_STOP_Click(); });
    on(&frmMenu::listen, [this] { listen(); });
    on(&frmMenu::rehearse, [this] { windows_->showTimeline(); });
    on(&frmMenu::showChannels, [this] { windows_->showChannels(); });
    on(&frmMenu::restoreMidi, [this] { mixer_.midi().MidiRestore(); });
    connect(menu_->recentMenu(), &QMenu::aboutToShow, this, &frmMain::fillRecentJobs);
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

void frmMain::SetMainLanguage() {
    const modLang& language = environment_.language;
    for (std::size_t i = 0; i < BR_.size(); ++i) setButtonText(BR_[i], {}, toQt(language.lang(kBrowseEntries[i])));
    const QString mix = toQt(language.ownText(OwnText::mix));
    const QString stop = toQt(language.ownText(OwnText::stop));
    setButtonText(mi_button_, mix, mix);
    setButtonText(b_STOP_, stop, stop);
    setButtonText(b_midi_, {}, toQt(language.ownText(OwnText::midiChannels)));
    setButtonText(b_eff_, {}, toQt(language.ownText(OwnText::effects)));
    setButtonText(b_listen_, {}, toQt(language.ownText(OwnText::listenToLastMix)));
    setName(b_menu_, toQt(language.ownText(OwnText::menuButton)));
    setButtonText(bMinimise_, {}, toQt(language.ownText(OwnText::minimise)));
    setButtonText(bHelp_, {}, toQt(language.lang(LangEntry::preferences)));
    setButtonText(bClose_, {}, toQt(language.lang(LangEntry::close)));
    progress_->setAccessibleName(toQt(language.ownText(OwnText::mixProgress)));
    sliders_->SetMainLanguage();
    levels_.SetMainLanguage();
    menu_->SetMenuLanguage();
    windows_->SetMainLanguage();
    refresh();
}

void frmMain::useLanguage(const std::string& code) {
    environment_.language.SetLanguage(code);
    environment_.shell.useLanguage(code);
    store_.WriteSetting(kProductKey, "language", code);
    SetMainLanguage();
}

void frmMain::usePort(bool running) {
    if (!portChosen_ || choosing_ || running) return;
    portChosen_ = false;
    mixer_.rehearsal().end();
    withButtonsOff([this] { mixer_.sourceFiles().reopenMidi(); });
}

void frmMain::takeWaiting(bool running) {
    if (waiting_.empty() || choosing_ || running) return;
    // Once what is under way is over.
    QMetaObject::invokeMethod(
        this, [this] { takeFiles(std::exchange(waiting_, {})); }, Qt::QueuedConnection);
}

void frmMain::BR_Click(int index) {
    withButtonsOff([&] { mixer_.sourceFiles().BR_Click(index); });
    rememberFiles();
}

// The run before was one of other files.
void frmMain::noteTaken(int index) {
    tellsRun_ = false;
    if (index == kDestinationField) return;
    sourceTaken_ = true;
    steps_->clear();
    scans_.at(static_cast<std::size_t>(index))->forget();
    mixer_.rehearsal().forget();
    filesChosen_ = true;
}

void frmMain::rememberFiles() {
    if (!std::exchange(sourceTaken_, false)) return;
    const RegistryBatch batch = store_.batch(RegistryAccess::change);
    jobs_->remember();
    recent_.keepFolders(mixer_.sourceFiles().lastFolder);
}

void frmMain::bringBackMixes() {
    withButtonsOff([this] {
        interrupted_ = whileEventsRun(environment_.doEvents, [this] {
            return melvane::bringBackMixes(environment_.destinations, environment_.library);
        });
        if (!interrupted_.empty()) mixer_.run().listenPath = interrupted_.back();
    });
}

void frmMain::mi_button_Click() {
    withButtonsOff([this] {
        if (!mixer_.sourceFiles().mayReplaceDestination()) return;
        stopped_ = cancelled_ = tellsFast_ = false;
        tellsRun_ = true;
        interrupted_.clear();
        jobs_->remember();
        Timer1_.start();  // an opening that takes its time may be stopped
        mixer_.rehearsal().end();
        mixer_.mixingRun().mi_button_Click();
    });
}

void frmMain::withButtonsOff(const std::function<void()>& action) {
    if (choosing_) return;
    choosing_ = true;
    const QPointer<QWidget> focus = focusWidget();
    refresh();
    attempt(action);
    choosing_ = false;
    refresh();
    if (focus && focus->isEnabled()) focus->setFocus();
}

void frmMain::b_STOP_Click() {
    if (fast_.going()) return fast_.cancel();
    if (mixer_.mixingRun().busy() && !mixer_.mixingRun().opening()) return;
    stopped_ = true;
    mixer_.mixingRun().stopRec();
    refresh();
    if (!mixer_.run().lastMixPath.empty()) listen();
}

void frmMain::listen() {
    if (!canListen()) return;
    mixer_.rehearsal().end();
    windows_->showPlayer(mixer_.run().listenPath);
}

// The player tells when the file has gone.
bool frmMain::canListen() const {
    return !mixer_.isRunning() && !fast_.going() && !mixer_.run().listenPath.empty();
}

void frmMain::Timer1_Timer() {
    Timer1_.start();
    attempt([this] {
        mixer_.mixingRun().Timer1_Timer();
        followFastMix();
    });
    watch_.look();
    if (wasRunning_ && mixer_.isRunning() && !mixer_.mixingRun().busy())
        showSound(true);
    else
        refresh();
}

void frmMain::closeEvent(QCloseEvent* event) {
    if (mixer_.isRunning() && !mixer_.mixingRun().opening()) {
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
    if (!running && !choosing_ && !fast_.going() && !mixer_.rehearsal().playing())
        Timer1_.stop();
    else if (!Timer1_.isActive())
        Timer1_.start();
    if (std::exchange(wasRunning_, running) && !running) QApplication::alert(this);  // unless it is in front
    usePort(running);
    takeWaiting(running);
    refreshPaths();
    sliders_->showValues();
    refreshButtons(running);
    if (std::exchange(filesChosen_, false)) windows_->takeFiles();
    showSound(running);
}

// What moves by itself while something sounds.
void frmMain::showSound(bool running) {
    refreshStatus(running);
    levels_.show(running || mixer_.rehearsal().playing());
    windows_->follow();
}

void frmMain::refreshPaths() {
    const PathFields& fields = mixer_.fields();
    const std::array paths = {&fields.background, &fields.vocal, &fields.destination};
    for (std::size_t i = 0; i < paths.size(); ++i) {
        const auto text = [&](OwnText t) { return toQt(environment_.language.ownText(t)); };
        path_[i]->setFullText(toQt(*paths[i]), text(kRowTexts[i]), text(kEmptyTexts[i]), toQt(fileName(*paths[i])));
    }
    for (std::size_t i = 0; i < scans_.size(); ++i) scans_[i]->show(*paths[i]);
}

// The focus goes with the run: from the mix button to the progress, where a stray key does nothing, and back.
void frmMain::switchButton(Ed_Button* button, bool on) {
    if (!on && focusWidget() == button) button->clearFocus();
    button->setEnabled(on);
}

void frmMain::refreshButtons(bool running) {
    const bool idle = !running && !choosing_;
    const bool canStop = fast_.going() || (running && (!mixer_.mixingRun().busy() || mixer_.mixingRun().opening()));
    for (Ed_Button* button : BR_) switchButton(button, idle);
    switchButton(mi_button_, idle && !fast_.going());
    switchButton(b_STOP_, canStop);
    switchButton(b_listen_, canListen());
    menu_->setRunning(!idle);
    menu_->setCanMix(idle && !fast_.going());
    const std::string whyNot = whyNoFastMix();
    menu_->setCanMixFast(idle && !fast_.going() && whyNot.empty(), toQt(whyNot));
    menu_->setCanStop(canStop);
    menu_->setCanListen(canListen());
    const bool parked = !focusWidget() || focusWidget() == progress_;
    if (parked && !idle) progress_->setFocus();
    if (parked && idle) mi_button_->setFocus();
}

void frmMain::refreshStatus(bool running) {
    const bool fast = fast_.going();
    const double done = doneShare();
    progress_->setProgress(static_cast<int>(done * OverviewBar::kColumns));
    showTitle();
    environment_.shell.showProgress(running || fast ? done : -1);
    const StatusLine line =
        MainStatus(mixer_, environment_)
            .line({tellsRun_, stopped_, scans_[0]->failed(), scans_[1]->failed(), interrupted_, store_.failure(),
                   cancelled_, fast ? &fast_ : nullptr, watch_.lostPort(), watch_.lostInput()});
    if (line == told_) return;
    told_ = line;
    status_->setFullText(toQt(line.text), {}, {}, toQt(line.brief));
    setStyleState(*status_, "warned", line.warned);
    setStyleState(*status_, "failed", line.failed);
}

void frmMain::processWindowEvents() {
    constexpr int kLongestMs = 5;
    QCoreApplication::processEvents(QEventLoop::AllEvents, kLongestMs);
    QThread::msleep(1);  // who waits in a loop need not spin
}

}  // namespace melvane
