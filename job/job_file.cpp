#include "job/job_file.h"

#include <cerrno>
#include <filesystem>

#include "audio/modAudio.h"
#include "base/paths.h"
#include "mixing/run_messages.h"

namespace melvane {

namespace {

constexpr std::size_t kLargestFile = 1 << 20;

std::string folderOf(const std::string& path) {
    std::error_code error;
    return toText(std::filesystem::absolute(toPath(path), error).parent_path().lexically_normal());
}

std::string causeOf(const modLang& language, const JobError& error) {
    switch (error.fault) {
        case JobFault::unreadable:
            return readingCause(language, error.cause);
        case JobFault::noJob:
            return language.ownText(OwnText::noJobInFile);
        case JobFault::newer:
            return language.ownText(OwnText::jobIsNewer);
        case JobFault::value:
            return language.ownText(OwnText::jobValueWrong, error.what());
    }
    return "";
}

}  // namespace

bool isJobFile(const std::string& path) {
    return lowerCase(path).ends_with(kJobExtension);
}

Job readJobFile(Documents& documents, const std::string& path) {
    std::string text;
    const int error = documents.read(path, kLargestFile, text);
    if (error == EFBIG) throw JobError(JobFault::noJob);
    if (error != 0) throw JobError(JobFault::unreadable, "", error);
    return readJobText(text, folderOf(path));
}

int writeJobFile(Documents& documents, const std::string& path, const Job& job) {
    return documents.write(path, jobText(job, folderOf(path)));
}

std::string jobMessage(const modLang& language, const JobError& error, const std::string& path) {
    const std::string cause = causeOf(language, error);
    return (cause.empty() ? "" : cause + " ") + language.ownText(OwnText::cannotOpenJob, path);
}

}  // namespace melvane
