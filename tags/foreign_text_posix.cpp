#include <iconv.h>

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "tags/foreign_text.h"

namespace melvane {

namespace {

using Byte = unsigned char;

// A Polish coding: its letters beyond ASCII, and those of them that are no letters in western texts.
struct Polish {
    const char* name;
    std::string_view letters;
    std::string_view proof;
};
constexpr Polish kPolish[] = {
    {"CP1250", "\xA5\xC6\xCA\xA3\xD1\xD3\x8C\x8F\xAF\xB9\xE6\xEA\xB3\xF1\xF3\x9C\x9F\xBF",
     "\xA5\xA3\x8C\x8F\xAF\xB9\xB3\x9C\x9F\xBF"},
    {"ISO-8859-2", "\xA1\xC6\xCA\xA3\xD1\xD3\xA6\xAC\xAF\xB1\xE6\xEA\xB3\xF1\xF3\xB6\xBC\xBF",
     "\xA1\xA3\xA6\xAC\xAF\xB1\xB3\xB6\xBC\xBF"},
};

bool isHigh(char c) {
    return static_cast<Byte>(c) >= 0x80;
}

bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isWithin(char c, Byte first, Byte last) {
    return static_cast<Byte>(c) >= first && static_cast<Byte>(c) <= last;
}

// All letters are Polish, and one that could be nothing else stands in a word.
bool isPolish(const Polish& coding, std::string_view text) {
    const auto isIn = [](std::string_view set, char c) { return set.find(c) != std::string_view::npos; };
    bool proven = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (!isHigh(text[i])) continue;
        if (!isIn(coding.letters, text[i])) return false;
        const bool inWord = (i > 0 && isLetter(text[i - 1])) || (i + 1 < text.size() && isLetter(text[i + 1]));
        proven = proven || (inWord && isIn(coding.proof, text[i]));
    }
    return proven;
}

// Pairs whose second byte is beyond ASCII, and kana, are hardly ever the letters of a western text.
bool isJapanese(std::string_view text) {
    int pairs = 0;
    int sure = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (!isHigh(text[i])) continue;
        const char first = text[i];
        const char second = ++i < text.size() ? text[i] : '\0';
        const bool leads = isWithin(first, 0x81, 0x9F) || isWithin(first, 0xE0, 0xEA);
        if (!leads || !(isWithin(second, 0x40, 0x7E) || isWithin(second, 0x80, 0xFC))) return false;
        ++pairs;
        if (isHigh(second) || static_cast<Byte>(first) == 0x83) ++sure;
    }
    return sure > 0 && 2 * sure >= pairs;
}

// Nothing where a byte has no meaning there.
std::string converted(const std::string& text, const char* coding) {
    const iconv_t converter = iconv_open("UTF-8", coding);
    if (converter == reinterpret_cast<iconv_t>(-1)) return "";  // NOLINT: the interface's word for none
    constexpr std::size_t kLongest = 4;                         // bytes of a character
    std::string utf8(text.size() * kLongest, '\0');
    char* from = const_cast<char*>(text.data());  // it is not written to
    char* to = utf8.data();
    std::size_t left = text.size();
    std::size_t room = utf8.size();
    const bool done = iconv(converter, &from, &left, &to, &room) != static_cast<std::size_t>(-1);
    iconv_close(converter);
    utf8.resize(done ? utf8.size() - room : 0);
    return utf8;
}

const char* codingOf(const std::string& text) {
    if (!converted(text, "UTF-8").empty()) return "UTF-8";
    for (const Polish& coding : kPolish)
        if (isPolish(coding, text)) return coding.name;
    return isJapanese(text) ? "CP932" : "CP1252";
}

}  // namespace

std::vector<std::string> guessedUtf8(const std::vector<std::string>& texts) {
    std::string all;
    for (const std::string& text : texts) all += text + '\n';
    const char* const coding = codingOf(all);
    std::vector<std::string> utf8;
    for (const std::string& text : texts) {
        utf8.push_back(converted(text, coding));
        if (utf8.back().empty()) utf8.back() = converted(text, "ISO-8859-1");
    }
    return utf8;
}

}  // namespace melvane
