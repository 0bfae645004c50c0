#include "app/frmMain.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QScreen>
#include <QThread>
#include <algorithm>
#include <utility>

#include "app/run_messages.h"
#include "controls/skin.h"
#include "controls/window_layout.h"
#include "state/guarded.h"

namespace melvane {

namespace {

constexpr QSize kSize(460, 196);
constexpr int kTickMs = 100;
constexpr int kPercent = 100;

constexpr QRect kBrowse(254, 34, 36, 26);  // of the first row
constexpr int kRowStep = 31;
constexpr int kGap = 6;
constexpr QRect kMix(kLeft, 130, 84, 28);
constexpr QRect kStop(kMix.right() + 1 + kGap, kMix.y(), 70, 28);
constexpr QRect kEffects(kBrowse.right() + 1 - 70, kMix.y(), 70, 28);
constexpr QRect kProgress(kLeft, 164, MixingRun::kProgressWidth, 6);
constexpr QRect kStatus(kLeft, 171, kRight - kLeft, 20);

constexpr int kStopMixingFirst = 8;
constexpr int kCloseEntry = 50;
constexpr int kBrowseEntry = 51;  // of the first row
constexpr std::array kRowTexts = {OwnText::karaokeBackground, OwnText::vocalRecording, OwnText::mixingDestination};

QPoint toPixels(const WindowPosition& position) {
    constexpr float kFarthest = 1e6F;
    const auto pixel = [&](float place) { return static_cast<int>(std::clamp(place, -kFarthest, kFarthest)); };
    return {pixel(position.left), pixel(position.top)};
}

}  // namespace

frmMain::frmMain(Mixer& mixer, const Environment& environment, const SettingsStore& store)
    : FramelessWindow(kSize, kGripHeight), mixer_(mixer), environment_(environment), store_(store) {
    setObjectName(QStringLiteral("frmMain"));
    setWindowTitle(QLatin1String(kProductCaption));
    auto* caption = new QLabel(QLatin1String(kProductCaption), this);
    caption->setObjectName(QStringLiteral("caption"));
    caption->setGeometry(kCaption);
    for (int i = 0; i < static_cast<int>(path_.size()); ++i) addRow(i);
    sliders_ = new SliderPanel(this, mixer_, environment_);
    mi_button_ = addButton("mi_button", kMix, [this] { mi_button_Click(); });
    b_STOP_ = addButton("b_STOP", kStop, [this] { b_STOP_Click(); });
    b_eff_ = addButton("b_eff", kEffects, [this] { b_eff_Click(); });
    bClose_ = addButton("bClose", kClose, [this] { close(); });
    bClose_->setText(QStringLiteral("✕"));

    progress_ = new QProgressBar(this);
    progress_->setObjectName(QStringLiteral("progress"));
    progress_->setGeometry(kProgress);
    progress_->setRange(0, MixingRun::kProgressWidth);
    progress_->setTextVisible(false);
    status_ = new ElidedLabel(this, Qt::ElideRight);
    status_->setObjectName(QStringLiteral("status"));
    status_->setGeometry(kStatus);

    // Started anew by each tick, not repeating: it has to go on while a tick ends a run.
    Timer1_.setSingleShot(true);
    Timer1_.setInterval(kTickMs);
    connect(&Timer1_, &QTimer::timeout, this, &frmMain::Timer1_Timer);
}

void frmMain::addRow(int index) {
    const auto row = static_cast<std::size_t>(index);
    const QRect browse = kBrowse.translated(0, index * kRowStep);
    path_[row] = new ElidedLabel(this, Qt::ElideMiddle);
    path_[row]->setObjectName(QStringLiteral("path%1").arg(index));
    path_[row]->setGeometry(kLeft, browse.y(), browse.x() - kGap - kLeft, browse.height());
    BR_[row] = addButton("BR", browse, [this, index] { BR_Click(index); });
    BR_[row]->setObjectName(QStringLiteral("BR%1").arg(index));
    BR_[row]->setText(QStringLiteral("…"));
}

QPushButton* frmMain::addButton(const char* name, const QRect& place, std::function<void()> click) {
    auto* button = new QPushButton(this);
    button->setObjectName(QLatin1String(name));
    button->setGeometry(place);
    connect(button, &QPushButton::clicked, this, [this, click = std::move(click)] {
        guarded(environment_.dialogs, click);
        refresh();
    });
    return button;
}

void frmMain::DoRest() {
    if (const auto& stored = mixer_.settings().position)
        moveOntoScreen(toPixels(*stored));
    else if (screen())
        move(screen()->availableGeometry().center() - rect().center());
    sliders_->place();
    BR_[0]->setFocus();
    SetMainLanguage();
}

void frmMain::SetMainLanguage() {
    const modLang& language = environment_.language;
    for (std::size_t i = 0; i < BR_.size(); ++i) {
        const QString text = toQt(language.lang(kBrowseEntry + static_cast<int>(i)));
        BR_[i]->setToolTip(text);
        BR_[i]->setAccessibleName(text);
    }
    mi_button_->setText(toQt(language.ownText(OwnText::mix)));
    b_STOP_->setText(toQt(language.ownText(OwnText::stop)));
    b_eff_->setText(toQt(language.ownText(OwnText::effects)));
    sliders_->SetMainLanguage();
    if (effects_) effects_->GetEffectsLanguage();
    bClose_->setToolTip(toQt(language.lang(kCloseEntry)));
    bClose_->setAccessibleName(bClose_->toolTip());
    progress_->setAccessibleName(toQt(language.ownText(OwnText::mixProgress)));
    refresh();
}

void frmMain::BR_Click(int index) {
    mixer_.sourceFiles().BR_Click(index);
}

void frmMain::mi_button_Click() {
    stopped_ = false;
    // Events run while the sources are opened: no other button may be pressed meanwhile.
    for (QPushButton* button : BR_) button->setEnabled(false);
    switchButton(mi_button_, false);
    mixer_.mixingRun().mi_button_Click();
}

void frmMain::b_STOP_Click() {
    if (mixer_.mixingRun().busy()) return;
    stopped_ = true;
    mixer_.mixingRun().stopRec();
}

void frmMain::b_eff_Click() {
    if (!effects_)
        effects_ = new frmEff(mixer_.effects(), mixer_.settings(), environment_.language, environment_.dialogs, this);
    effects_->show();
    effects_->raise();
    effects_->activateWindow();
}

void frmMain::Timer1_Timer() {
    Timer1_.start();
    guarded(environment_.dialogs, [this] { mixer_.mixingRun().Timer1_Timer(); });
    refresh();
}

void frmMain::closeEvent(QCloseEvent* event) {
    if (isRunning()) {
        event->ignore();
        environment_.dialogs.messageBox(environment_.language.lang(kStopMixingFirst), kProductCaption,
                                        BoxIcon::information, BoxButtons::ok);
        return;
    }
    guarded(environment_.dialogs, [this] { Form_Unload(); });
}

// Hidden, not closed, the effects window counts as open for the next start.
void frmMain::Form_Unload() {
    if (effects_) effects_->hide();
    if (placesItself() || !mixer_.settings().position)
        mixer_.settings().position = WindowPosition{static_cast<float>(x()), static_cast<float>(y())};
    mixer_.Form_Unload(&store_);
}

void frmMain::showEvent(QShowEvent* event) {
    FramelessWindow::showEvent(event);
    if (!event->spontaneous() && mixer_.settings().effectsWindowOpen != 0) b_eff_Click();
}

bool frmMain::isRunning() const {
    return mixer_.run().isMixing || mixer_.mixingRun().busy();
}

void frmMain::refresh() {
    const bool running = isRunning();
    if (!running)
        Timer1_.stop();
    else if (!Timer1_.isActive())
        Timer1_.start();
    refreshPaths();
    refreshButtons(running);
    refreshStatus(running);
}

void frmMain::refreshPaths() {
    const PathFields& fields = mixer_.fields();
    const std::array paths = {&fields.background, &fields.vocal, &fields.destination};
    for (std::size_t i = 0; i < paths.size(); ++i)
        path_[i]->setFullText(toQt(*paths[i]), toQt(environment_.language.ownText(kRowTexts[i])));
}

// The focus goes with the run: from the mix button to the stop button and back, to no other one.
void frmMain::switchButton(QPushButton* button, bool on) {
    if (!on && focusWidget() == button) button->clearFocus();
    button->setEnabled(on);
}

void frmMain::refreshButtons(bool running) {
    const bool canStop = running && !mixer_.mixingRun().busy();
    for (QPushButton* button : BR_) button->setEnabled(!running);
    switchButton(mi_button_, !running);
    switchButton(b_STOP_, canStop);
    if (!focusWidget() && (canStop || !running)) (canStop ? b_STOP_ : mi_button_)->setFocus();
    setStyleState(*mi_button_, "running", running);
}

void frmMain::refreshStatus(bool running) {
    const int width = mixer_.mixingRun().progressWidth();
    progress_->setValue(width);
    setWindowTitle(running ? QStringLiteral("%1 % – %2")
                                 .arg(width * kPercent / MixingRun::kProgressWidth)
                                 .arg(QLatin1String(kProductCaption))
                           : QLatin1String(kProductCaption));
    status_->setFullText(toQt(statusText(running)));
    setStyleState(*status_, "failed", !running && mixer_.run().failure != RunFailure::none);
}

std::string frmMain::statusText(bool running) const {
    const modLang& language = environment_.language;
    const RunState& run = mixer_.run();
    if (running) {
        if (mixer_.mixingRun().busy()) return language.ownText(OwnText::finishingFile);
        if (run.recordsSilence) return language.ownText(OwnText::noMixInput);
        // The device opens with the first frame.
        const bool silent = mixer_.mixingRun().framesDone() > 0 && !environment_.library.cardStatus().deviceOpen;
        return language.ownText(silent ? OwnText::playsSilently : OwnText::mixing);
    }
    if (run.failure != RunFailure::none) return runMessage(language, run);
    if (stopped_) return language.ownText(OwnText::stopped);
    if (!run.lastMixPath.empty()) return language.ownText(OwnText::mixFinished, run.lastMixPath);
    return language.ownText(OwnText::ready);
}

void frmMain::processWindowEvents() {
    constexpr int kLongestMs = 5;
    QCoreApplication::processEvents(QEventLoop::AllEvents, kLongestMs);
    QThread::msleep(1);  // who waits in a loop need not spin
}

}  // namespace melvane
