// One function for each alternative of a variant.
#pragma once

namespace melvane::music {

template <typename... Cases>
struct Visitor : Cases... {
    using Cases::operator()...;
};
template <typename... Cases>
Visitor(Cases...) -> Visitor<Cases...>;

}  // namespace melvane::music
