// The job that the mixer holds, and how one gets into it.
#pragma once

#include <string>
#include <vector>

#include "app/mixer.h"
#include "job/job.h"

namespace melvane {

Job takeJob(Mixer& mixer);

// Sets knobs, switches, channels and the voice's place as in `job`; what sounds follows. Files, port and sounds stay.
void applyKnobs(const Job& job, Mixer& mixer);

// Sets everything, the destination last; a song is opened while window events run. What has gone is left empty and
// returned. Not during a run.
std::vector<std::string> restoreJob(const Job& job, Mixer& mixer, const DoEvents& doEvents);

}  // namespace melvane
