// The mixes of the main window, heard and unheard, and what is told of them.
#include <QApplication>

#include "app/frmMain.h"
#include "app/interrupted_mixes.h"
#include "app/mixer_job.h"
#include "base/paths.h"
#include "mixing/run_messages.h"
#include "state/window_patience.h"

namespace melvane {

void frmMain::bringBackMixes() {
    withButtonsOff([this] {
        report_.interrupted = whileEventsRun(environment_.doEvents, [this] {
            return melvane::bringBackMixes(environment_.destinations, environment_.library);
        });
        if (!report_.interrupted.empty()) mixer_.run().listenPath = report_.interrupted.back();
    });
}

void frmMain::mi_button_Click() {
    withButtonsOff([this] {
        if (!mixer_.sourceFiles().mayReplaceDestination()) return;
        lineUp_->giveUp();
        measuring_.giveUp();
        report_.begin(false);
        jobs_->remember();
        Timer1_.start();  // an opening that takes its time may be stopped
        mixer_.rehearsal().end();
        mixer_.mixingRun().mi_button_Click();
    });
}

void frmMain::b_STOP_Click() {
    if (fast_.going()) return fast_.cancel();
    if (mixer_.mixingRun().busy() && !mixer_.mixingRun().opening()) return;
    report_.stopped = true;
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
        followMeasuring();
    });
    watch_.look();
    if (wasRunning_ && mixer_.isRunning() && !mixer_.mixingRun().busy())
        showSound(true);
    else
        refresh();
}

std::string frmMain::whyNoFastMix() const {
    const modLang& language = environment_.language;
    if (fast_.going()) return language.ownText(OwnText::mixingFast);
    if (!mixer_.input().recordsCard()) return language.ownText(OwnText::fastOtherInput);
    return mixer_.midi().onDevice() ? language.ownText(OwnText::fastOtherPort) : "";
}

void frmMain::mixFast() {
    if (files_.choosing || mixer_.isRunning() || fast_.going() || !whyNoFastMix().empty()) return;
    withButtonsOff([this] {
        if (!mixer_.sourceFiles().mayReplaceDestination()) return;
        lineUp_->giveUp();
        measuring_.giveUp();
        report_.begin(true);
        jobs_->remember();
        startFast(FastMix::Task::mix);
    });
}

void frmMain::matchLevels() {
    if (files_.choosing || mixer_.isRunning() || fast_.going() || !whyNoFastMix().empty()) return;
    if (mixer_.fields().background.empty() || mixer_.fields().vocal.empty()) return;
    withButtonsOff([this] {
        lineUp_->giveUp();
        measuring_.giveUp();
        report_.begin(true);
        startFast(FastMix::Task::matchLevels);
    });
}

void frmMain::startFast(FastMix::Task task) {
    fastJob_ = takeJob(mixer_);
    fast_.start(fastJob_, task);
}

// Levels of other files than are chosen now are worth nothing.
void frmMain::takeLevels(const FastMix::Result& result) {
    takeFailure(mixer_.run(), result.run);
    report_.levels = result.levels;
    const PathFields& files = mixer_.fields();
    const bool others = files.background != fastJob_.files.background || files.vocal != fastJob_.files.vocal;
    if (others || fast_.cancelled()) report_ = {};
    if (!report_.levels || report_.levels->end != MatchEnd::matched) return;
    steps_->asOneStep([&] { mixer_.setLevels(report_.levels->levels); });
    showSettings();
}

void frmMain::followFastMix() {
    const auto result = fast_.ended();
    if (!result) return;
    const RunState& run = result->run;
    report_.inRehearsal = mixer_.rehearsal().playing();
    if (fast_.task() == FastMix::Task::matchLevels) return takeLevels(*result);
    takeResult(mixer_.run(), run);
    report_.cancelled = fast_.cancelled() && run.lastMixPath.empty() && run.partPath.empty();
    report_.lacksVoice = run.voiceOutsideSong;
    if (run.failure == RunFailure::pathsMissing || run.failure == RunFailure::midiUnplayable)
        tell(runMessage(environment_.language, run), BoxIcon::information);
    QApplication::alert(this);
}

// One that was heard would have cost too much of the processor while it was.
void frmMain::measureMix() {
    if (!mixer_.run().lastMixPath.empty() && !mixer_.run().loudness) measuring_.start(mixer_.run().lastMixPath);
    if (measuring_.going()) Timer1_.start();
}

void frmMain::followMeasuring() {
    if (const auto loudness = measuring_.ended()) mixer_.run().loudness = loudness;
}

// Of the one that goes on, or of the last as long as it is told of.
FastMixNews frmMain::fastMixNews() const {
    if (!fast_.going() && !(report_.fast && report_.told)) return {};
    const StatusLine line = statusLine();
    return {fast_.going(), line.text, line.brief, line.failed};
}

void frmMain::endFastMix() {
    fast_.cancel();
    while (fast_.going()) {
        environment_.doEvents();
        attempt([this] { followFastMix(); });
    }
}

double frmMain::doneShare() const {
    if (fast_.going() || report_.fast) return fast_.done();
    return mixer_.isRunning() || report_.told ? mixer_.mixingRun().done() : 0;
}

void frmMain::refreshStatus(bool running) {
    const double done = doneShare();
    showTitle();
    environment_.shell.showProgress(running || fast_.going() ? done : -1);
    report_.inRehearsal = report_.inRehearsal && mixer_.rehearsal().playing();
    status_->show(done, statusLine());
}

StatusLine frmMain::statusLine() const {
    return MainStatus(mixer_, environment_)
        .line({.report = report_,
               .linedUp = lineUp_->message(),
               .settingsFailure = store_.failure(),
               .fast = fast_.going() ? &fast_ : nullptr,
               .songUnreadable = status_->unreadable(0),
               .voiceUnreadable = status_->unreadable(1),
               .lostPort = watch_.lostPort(),
               .lostInput = watch_.lostInput()});
}

}  // namespace melvane
