// Numbers and lists as the program writes them into texts. Independent of the locale.
#pragma once

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace melvane {

// The pieces between the separators: one more than there are separators, so an empty text is one empty piece.
inline std::vector<std::string> split(std::string_view text, char separator) {
    std::vector<std::string> pieces;
    for (;;) {
        const auto end = text.find(separator);
        pieces.emplace_back(text.substr(0, end));
        if (end == std::string_view::npos) return pieces;
        text.remove_prefix(end + 1);
    }
}

// The number that `text` begins with: blanks, sign, decimals, exponent; what follows does not matter. 0 when
// there is none, an infinity when it is beyond a double. Never NaN.
inline double leadingNumber(std::string_view text) {
    const auto start = text.find_first_not_of(" \t\r\n");
    if (start == std::string_view::npos) return 0;
    text.remove_prefix(start);
    const bool negative = text.front() == '-';
    if (negative || text.front() == '+') text.remove_prefix(1);
    // from_chars would read a second minus sign, "inf" and "nan".
    if (text.empty() || (text.front() != '.' && (text.front() < '0' || text.front() > '9'))) return 0;

    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error == std::errc::result_out_of_range) {
        // Not told which way: a fraction, or a number with a negative exponent, is too small.
        const std::string_view number(text.data(), static_cast<std::size_t>(end - text.data()));
        const auto exponent = number.find_first_of("eE");
        const bool tooSmall = exponent == std::string_view::npos ? number.find_first_not_of('0') == number.find('.')
                                                                 : number[exponent + 1] == '-';
        value = tooSmall ? 0 : std::numeric_limits<double>::infinity();
    }
    return negative ? -value : value;
}

// The shortest decimal text that reads back as the same value; without an exponent, '.' before decimals.
inline std::string numberText(float value) {
    char text[64];
    const auto [end, error] = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed);
    return error == std::errc() ? std::string(text, end) : std::string();
}

// "3:05", hours are minutes too.
inline std::string clockText(std::int64_t seconds) {
    const std::string rest = std::to_string(seconds % 60);
    return std::to_string(seconds / 60) + (rest.size() < 2 ? ":0" : ":") + rest;
}

}  // namespace melvane
