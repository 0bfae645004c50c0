// The texts in songs.
#pragma once

#include <string>

namespace melvane::music {

// Files seldom say how their texts are coded: what is no UTF-8 is taken for ISO 8859-1. Control characters are left
// out.
std::string toUtf8(const std::string& text);

}  // namespace melvane::music
