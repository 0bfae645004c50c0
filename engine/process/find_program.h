// Where another program is.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace melvane::engine {

// The file to start for a program's name: beside this program, then in the absolute directories of `path`
// (a search path), first under the name itself and then without its ".exe". The working directory is never
// searched: a file planted there must not run.
std::optional<std::string> findProgram(const std::string& name, const std::string& besideDirectory,
                                       std::string_view path);
// The same in the search path of this process.
std::optional<std::string> findProgram(const std::string& name, const std::string& besideDirectory);

}  // namespace melvane::engine
