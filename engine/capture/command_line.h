// Command lines of external programs, taken apart and looked up without a shell.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace melvane::engine {

// The words of a command line. Blanks separate; a word in double quotes may hold blanks, and a backslash
// there takes the next character as it is.
std::vector<std::string> commandWords(std::string_view commandLine);

// The file to start for a program's name: beside this program, then in the absolute directories of `path`
// (a search path), first under the name itself and then without its ".exe". The working directory is never
// searched: a file planted there must not run.
std::optional<std::string> findProgram(const std::string& name, const std::string& besideDirectory,
                                       std::string_view path);

}  // namespace melvane::engine
