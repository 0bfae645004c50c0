// What everything in the program shares: the run, the files that the user chose, the settings.
#pragma once

#include "state/run_state.h"
#include "state/settings.h"

namespace melvane {

struct MixState {
    RunState run;
    PathFields fields;
    Settings settings;
};

}  // namespace melvane
