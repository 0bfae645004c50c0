// What the fuzzer calls.
#include <cstddef>
#include <cstdint>

#include "tests/fuzz/door.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    melvane::fuzz::attack({reinterpret_cast<const char*>(data), size});
    return 0;
}
