// The numbered texts of the program in both languages, UTF-8. Numbers that have no row are empty texts.
#pragma once

#include <span>

namespace melvane {

inline constexpr int kLanguageEntries = 101;  // 0..100

struct LanguageRow {
    int number;
    const char* polish;
    const char* english;
};

std::span<const LanguageRow> languageRows();

}  // namespace melvane
