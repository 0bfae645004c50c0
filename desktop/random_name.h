// Names that nothing else has.
#pragma once

#include <charconv>
#include <cstdint>
#include <random>
#include <string>

namespace melvane {

// Up to 16 hexadecimal digits.
inline std::string randomName() {
    std::random_device random;
    const std::uint64_t number = std::uint64_t{random()} << 32 | random();
    char digits[16];
    return {digits, std::to_chars(digits, digits + sizeof digits, number, 16).ptr};
}

}  // namespace melvane
