// What the main window does with jobs: documents, recent ones, and steps back and forth.
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

// What a file was that was chosen before. Sound of which nothing is known is more often a recording than a song.
std::optional<int> fieldThen(const std::string& file, const std::vector<Job>& jobs) {
    const auto isIn = [&](auto part) {
        return std::ranges::any_of(jobs, [&](const Job& job) { return job.files.*part == file; });
    };
    if (isIn(&PathFields::vocal)) return kVocalField;
    if (isIn(&PathFields::background)) return kBackgroundField;
    return fieldFor(file, {}, {}) == kSongOrVoice ? std::optional(kVocalField) : std::nullopt;
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
    connect(menu_, &frmMenu::matchLevels, this, &frmMain::matchLevels);
    connect(menu_, &frmMenu::undo, this, [this] { perform([this] { steps_->undo(); }); });
    connect(menu_, &frmMenu::redo, this, [this] { perform([this] { steps_->redo(); }); });
    menu_->undoText = [this] { return steps_->undoText(); };
    menu_->redoText = [this] { return steps_->redoText(); };
    connect(steps_, &UndoKeeper::applied, this, &frmMain::showSettings);
    connect(steps_, &UndoKeeper::stepped, this, &frmMain::showSteps);
    connect(jobs_, &JobDesk::restored, this, [this] {
        files_.toLineUp = false;  // the voice is where it was then
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
                [this, file = files[i], field = fieldThen(files[i], jobs)] { takeFiles({file}, field); });
    if (menu->isEmpty())
        menu->addAction(toQt(environment_.language.ownText(OwnText::noRecentFiles)))->setEnabled(false);
}

}  // namespace melvane
