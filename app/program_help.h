// The command line of the program with windows.
#pragma once

#include "app/command_help.h"

namespace melvane {

CommandHelp programHelp();

}  // namespace melvane
