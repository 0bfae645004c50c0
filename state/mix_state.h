// What everything in the program shares: the run, the files that the user chose, the settings.
#pragma once

#include "state/run_state.h"
#include "state/settings.h"
#include "state/tag_choice.h"

namespace melvane {

struct MixState {
    RunState run;
    PathFields fields;
    Settings settings;
    TagChoice tags;
};

}  // namespace melvane
