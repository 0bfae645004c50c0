#include "app/frm_jobs.h"

#include <algorithm>
#include <filesystem>

#include "app/mixer_job.h"
#include "base/paths.h"
#include "job/job_file.h"
#include "mixing/run_messages.h"
#include "state/product.h"
#include "state/window_patience.h"

namespace melvane {

namespace {

constexpr const char* kDialogTitle = "melvane";
constexpr const char* kFilter = " (*.melvane;)|*.melvane;";

bool sameSources(const Job& one, const Job& other) {
    return one.files.background == other.files.background && one.files.vocal == other.files.vocal;
}

// A file that was looked for in another place, or sounds that another machine has, are no work of the user.
bool sameWork(const Job& one, const Job& other) {
    return one.files == other.files && changesBetween(one, other).empty();
}

std::string proposedFile(const Job& job) {
    return toText(toPath(job.files.background).replace_extension(kJobExtension));
}

}  // namespace

JobDesk::JobDesk(QObject* owner, Mixer& mixer, const Environment& environment, const SettingsStore& store,
                 Documents& documents)
    : QObject(owner), mixer_(mixer), environment_(environment), documents_(documents), recent_(store) {}

void JobDesk::tell(const std::string& text, BoxIcon icon) {
    environment_.dialogs.tell(text, kProductCaption, icon);
}

FileQuestion JobDesk::question(OwnText button, const std::string& start) const {
    const modLang& language = environment_.language;
    return {kDialogTitle, language.ownText(OwnText::jobFiles) + kFilter, start, language.ownText(button),
            language.ownText(OwnText::allFiles)};
}

void JobDesk::open() {
    const std::string& near = file_.empty() ? mixer_.fields().background : file_;
    const std::string folder =
        near.empty() ? mixer_.sourceFiles().lastFolder.front() : toText(toPath(near).parent_path());
    const std::string path = environment_.dialogs.openFile(question(OwnText::openJobHere, folder));
    if (!path.empty()) openFile(path);
}

void JobDesk::openFile(const std::string& path) {
    try {
        const auto job = whileWanted(
            environment_.doEvents, [this] { return !mixer_.sourceFiles().givenUp(); },
            [&documents = documents_, path] { return readJobFile(documents, path); });
        if (!job) return;
        restore(*job);
        file_ = path;
        saved_ = takeJob(mixer_);
    } catch (const JobError& error) {
        tell(jobMessage(environment_.language, error, path), BoxIcon::critical);
    }
}

void JobDesk::restore(const Job& job) {
    file_.clear();
    const std::vector<std::string> gone = restoreJob(job, mixer_, environment_.doEvents);
    remember();
    Q_EMIT restored();
    std::string names;
    for (const std::string& file : gone) names += "\n" + file;
    if (!gone.empty()) tell(environment_.language.ownText(OwnText::jobFilesGone, names), BoxIcon::information);
}

bool JobDesk::save() {
    return file_.empty() ? saveAs() : write(file_);
}

bool JobDesk::saveAs() {
    const std::string start = file_.empty() ? proposedFile(takeJob(mixer_)) : file_;
    std::string path = environment_.dialogs.saveFile(question(OwnText::saveJob, start));
    if (path.empty()) return false;
    if (!isJobFile(path)) path += kJobExtension;
    const bool asks = path != file_ && whileEventsRun(environment_.doEvents, [&] { return isFile(path); });
    if (asks && environment_.dialogs.messageBox(environment_.language.lang(LangEntry::overwrite), kProductCaption,
                                                BoxIcon::question, BoxButtons::yesNoCancel) != BoxAnswer::yes)
        return false;
    return write(path);
}

bool JobDesk::write(const std::string& path) {
    const Job job = takeJob(mixer_);
    const int error = whileEventsRun(environment_.doEvents, [&] { return writeJobFile(documents_, path, job); });
    if (error != 0) {
        const std::string cause = writingCause(environment_.language, error);
        tell((cause.empty() ? "" : cause + " ") + environment_.language.ownText(OwnText::cannotSaveJob, path),
             BoxIcon::critical);
        return false;
    }
    file_ = path;
    saved_ = job;
    return true;
}

bool JobDesk::changed() const {
    return !file_.empty() && !sameWork(takeJob(mixer_), saved_);
}

bool JobDesk::mayClose() {
    if (!changed()) return true;
    const BoxAnswer answer =
        environment_.dialogs.messageBox(environment_.language.ownText(OwnText::saveChanges, fileName(file_)),
                                        kProductCaption, BoxIcon::question, BoxButtons::yesNoCancel);
    return answer == BoxAnswer::no || (answer == BoxAnswer::yes && save());
}

void JobDesk::restoreLast() {
    const Job now = takeJob(mixer_);
    const std::vector<Job> jobs = recent();
    const auto last = std::ranges::find_if(jobs, [&](const Job& job) { return !sameSources(job, now); });
    if (last == jobs.end()) return;
    restore(*last);
}

void JobDesk::remember() {
    if (!forgets()) return;
    remembered_ = takeJob(mixer_);
    recent_.add(remembered_);
}

bool JobDesk::forgets() const {
    const Job now = takeJob(mixer_);
    return now.hasSources() && now != remembered_;
}

}  // namespace melvane
