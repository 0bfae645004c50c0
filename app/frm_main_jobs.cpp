// What the main window does with jobs: documents, recent ones, steps back and forth, and the mix that nobody hears.
#include <QApplication>
#include <algorithm>

#include "app/frmMain.h"
#include "app/mixer_job.h"
#include "base/paths.h"
#include "controls/window_layout.h"
#include "job/job_file.h"
#include "mixing/run_messages.h"

namespace melvane {

namespace {

// As the text of a menu.
QString shown(const std::string& text) {
    return toQt(text).replace(QLatin1Char('&'), QLatin1String("&&"));
}

}  // namespace

void frmMain::addJobs() {
    const auto on = [this](auto signal, auto action) {
        connect(menu_, signal, this, [this, action] {
            withButtonsOff([this, action] { action(*jobs_); });
            rememberFiles();
        });
    };
    on(&frmMenu::openJob, [](JobDesk& jobs) { jobs.open(); });
    on(&frmMenu::saveJob, [](JobDesk& jobs) { jobs.save(); });
    on(&frmMenu::saveJobAs, [](JobDesk& jobs) { jobs.saveAs(); });
    on(&frmMenu::lastJob, [](JobDesk& jobs) { jobs.restoreLast(); });
    connect(menu_, &frmMenu::mixFast, this, &frmMain::mixFast);
    connect(menu_, &frmMenu::undo, this, [this] { perform([this] { steps_->undo(); }); });
    connect(menu_, &frmMenu::redo, this, [this] { perform([this] { steps_->redo(); }); });
    menu_->undoText = [this] { return steps_->undoText(); };
    menu_->redoText = [this] { return steps_->redoText(); };
    connect(steps_, &UndoKeeper::applied, this, &frmMain::showSettings);
    connect(steps_, &UndoKeeper::stepped, this, &frmMain::showSteps);
    connect(jobs_, &JobDesk::restored, this, [this] {
        steps_->clear();
        showSettings();
    });
}

void frmMain::showSettings() {
    sliders_->place();
    windows_->updateSettings();
}

void frmMain::showSteps() {
    menu_->setSteps(steps_->canUndo(), steps_->canRedo());
    showTitle();
}

void frmMain::showTitle() {
    QString title = QLatin1String(kProductCaption);
    if (!jobs_->file().empty())
        title =
            toQt(fileName(jobs_->file())) + (jobs_->changed() ? QStringLiteral("* – ") : QStringLiteral(" – ")) + title;
    caption_->setFullText(title);
    const bool mixes = mixer_.isRunning() || fast_.going();
    constexpr double kPercent = 100;
    setWindowTitle(mixes ? QStringLiteral("%1 % – %2").arg(static_cast<int>(doneShare() * kPercent)).arg(title)
                         : title);
}

void frmMain::fillRecentJobs() {
    QMenu* menu = menu_->recentMenu();
    menu->clear();
    const RegistryBatch batch = store_.batch(RegistryAccess::read);
    const std::vector<Job> jobs = jobs_->recent();
    for (const Job& job : jobs) {
        QAction* entry = menu->addAction(shown(fileName(job.files.background) + " + " + fileName(job.files.vocal)));
        entry->setToolTip(toQt(job.files.background + "\n" + job.files.vocal + "\n" + job.files.destination));
        connect(entry, &QAction::triggered, this, [this, job] {
            withButtonsOff([&] { jobs_->restore(job); });
            rememberFiles();
        });
    }
    const std::vector<std::string> files = recent_.list();
    for (std::size_t i = 0; i + jobs.size() < RecentJobs::kMost && i < files.size(); ++i)
        connect(menu->addAction(shown(files[i])), &QAction::triggered, this,
                [this, file = files[i]] { takeFiles({file}); });
    if (menu->isEmpty())
        menu->addAction(toQt(environment_.language.ownText(OwnText::noRecentFiles)))->setEnabled(false);
}

// Of several jobs the last one stays.
std::vector<std::string> frmMain::openJobsAmong(std::vector<std::string> paths) {
    const auto jobs = std::ranges::stable_partition(paths, [](const std::string& path) { return !isJobFile(path); });
    for (const std::string& job : jobs) withButtonsOff([&] { jobs_->openFile(job); });
    paths.erase(jobs.begin(), jobs.end());
    return paths;
}

std::string frmMain::whyNoFastMix() const {
    const modLang& language = environment_.language;
    if (fast_.going()) return language.ownText(OwnText::mixingFast);
    if (!mixer_.input().recordsCard()) return language.ownText(OwnText::fastOtherInput);
    return mixer_.midi().onDevice() ? language.ownText(OwnText::fastOtherPort) : "";
}

void frmMain::mixFast() {
    if (choosing_ || mixer_.isRunning() || fast_.going() || !whyNoFastMix().empty()) return;
    withButtonsOff([this] {
        if (!mixer_.sourceFiles().mayReplaceDestination()) return;
        stopped_ = cancelled_ = false;
        tellsRun_ = tellsFast_ = true;
        interrupted_.clear();
        jobs_->remember();
        fast_.start(takeJob(mixer_));
    });
}

void frmMain::followFastMix() {
    const auto result = fast_.ended();
    if (!result) return;
    takeResult(mixer_.run(), *result);
    cancelled_ = fast_.cancelled() && result->lastMixPath.empty();
    if (result->failure == RunFailure::pathsMissing || result->failure == RunFailure::midiUnplayable)
        tell(runMessage(environment_.language, *result), BoxIcon::information);
    QApplication::alert(this);
}

void frmMain::endFastMix() {
    fast_.cancel();
    while (fast_.going()) {
        environment_.doEvents();
        attempt([this] { followFastMix(); });
    }
}

double frmMain::doneShare() const {
    if (fast_.going() || tellsFast_) return fast_.done();
    return mixer_.isRunning() || tellsRun_ ? mixer_.mixingRun().done() : 0;
}

}  // namespace melvane
