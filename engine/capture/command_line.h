// Command lines of external programs, taken apart without a shell.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace melvane::engine {

// The words of a command line. Blanks separate; a word in double quotes may hold blanks, and a backslash
// there takes the next character as it is.
std::vector<std::string> commandWords(std::string_view commandLine);

}  // namespace melvane::engine
