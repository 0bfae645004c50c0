// What the product is called wherever a user sees it.
#pragma once

namespace melvane {

inline constexpr const char* kProductCaption = "Melvane";

}  // namespace melvane
