// The jobs that were worked on last, from one start to the next.
#pragma once

#include <string>
#include <vector>

#include "job/job.h"
#include "settings/recent_files.h"

namespace melvane {

class RecentJobs {
public:
    explicit RecentJobs(const SettingsStore& store) : store_(store) {}

    // The latest first; what can't be read is left out.
    std::vector<Job> list() const;
    // Puts a job with a song and a voice in front, in the place of an older one of the same; stored at once.
    void add(const Job& job) const;

    static constexpr std::size_t kMost = 8;

private:
    const SettingsStore& store_;
};

}  // namespace melvane
