// Texts of which nothing tells how they are coded.
#pragma once

#include <string>
#include <vector>

namespace melvane {

// The texts of one file, which are all coded alike, as UTF-8. What is UTF-8 stays as it is; Polish (Windows 1250 or ISO
// 8859-2) is known by its letters, Japanese (Shift-JIS) by its pairs of bytes; all else is taken for Windows 1252.
std::vector<std::string> guessedUtf8(const std::vector<std::string>& texts);

}  // namespace melvane
