#include "job/recent_jobs.h"

#include "job/job_text.h"
#include "state/numbers.h"

namespace melvane {

namespace {
constexpr const char* kJobs = "jobs";
constexpr char kSeparator = '\n';
}  // namespace

std::vector<Job> RecentJobs::list() const {
    std::vector<Job> jobs;
    for (const std::string& line : split(store_.ReadSetting(kRecentKey, kJobs), kSeparator)) {
        if (line.empty() || jobs.size() == kMost) continue;
        try {
            jobs.push_back(readJobText(line, ""));
        } catch (const JobError&) {
            continue;
        }
    }
    return jobs;
}

void RecentJobs::add(const Job& job) const {
    const RegistryBatch batch = store_.batch(RegistryAccess::change);
    std::vector<Job> jobs = list();
    std::erase_if(jobs, [&](const Job& other) {
        return other.files.background == job.files.background && other.files.vocal == job.files.vocal;
    });
    jobs.insert(jobs.begin(), job);
    if (jobs.size() > kMost) jobs.pop_back();
    std::string text;
    for (const Job& each : jobs) text += jobText(each, "", JobLayout::line) + kSeparator;
    store_.WriteSetting(kRecentKey, kJobs, text);
}

}  // namespace melvane
