// What a change of a job is called, by what its knob or switch is.
#pragma once

#include <string>
#include <vector>

#include "job/job.h"
#include "settings/modLang.h"

namespace melvane {

// Changes that were made at once have one name.
std::string changeName(const modLang& language, const std::vector<JobChange>& changes);

}  // namespace melvane
