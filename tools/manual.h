// What is installed beside a program about its command line.
#pragma once

#include <string>
#include <string_view>

#include "app/command_help.h"

namespace melvane {

// The manual page, for man. `date` is the release's, as year-month-day.
std::string manualPage(const CommandHelp& help, std::string_view date);

// What completes words in bash; it needs the functions that bash-completion brings.
std::string bashCompletion(const CommandHelp& help);

}  // namespace melvane
