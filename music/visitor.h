// One function for each alternative of a variant.
#pragma once

namespace melvane::music {

template <typename... Cases>
struct Visitor : Cases... {
    using Cases::operator()...;
};

}  // namespace melvane::music
