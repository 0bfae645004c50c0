// Where the pages of the program's documents are.
#pragma once

#include <string>

namespace melvane {

// The address of a page as a browser wants it: in the folder `pages` that a build makes beside the program, else where
// pages are installed for a program in that directory (UTF-8).
std::string pageAddress(const std::string& programDirectory, const std::string& page);

}  // namespace melvane
