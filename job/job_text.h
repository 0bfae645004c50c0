// A job as JSON text.
//
// Numbers are the shortest that read back as the same value. Files have their absolute names and, seen from the
// document's folder, relative ones, which count first where they lead to a file: a folder that was moved still works.
// What is missing has the value of a new job; what a later program may have added is ignored, and is not written again.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

#include "job/job.h"

namespace melvane {

enum class JobFault {
    unreadable,  // the file: see JobError::cause
    noJob,       // or one that is damaged, or larger than any
    newer,       // of a version that is not known
    value,       // of a field: see JobError::what()
};

struct JobError : std::runtime_error {
    explicit JobError(JobFault of, const std::string& field = {}, int error = 0)
        : std::runtime_error(field), fault(of), cause(error) {}
    JobFault fault;
    int cause;  // error number (<cerrno>); 0: none
};

enum class JobLayout { document, line };

// `folder` is that of the document, absolute; "": no relative names. UTF-8, a line without a line break.
std::string jobText(const Job& job, const std::string& folder, JobLayout layout = JobLayout::document);
// Every value of what is returned is in its range. Looks for the files. Throws JobError.
Job readJobText(std::string_view text, const std::string& folder);

}  // namespace melvane
