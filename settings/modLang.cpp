#include "settings/modLang.h"

#include <cstddef>

#include "state/errors.h"

namespace melvane {

void modLang::InitLanguage(const FileNames& names, const std::string& languageCode) {
    systemFolder_ = names.systemDirectory();
    for (const LanguageRow& row : languageRows()) {
        langPL_.at(static_cast<std::size_t>(row.number)) = row.polish;
        langEN_.at(static_cast<std::size_t>(row.number)) = row.english;
    }
    for (const LangEntry page : {LangEntry::homePage, LangEntry::helpPage}) {
        for (Table* table : {&langPL_, &langEN_}) {
            std::string& text = table->at(static_cast<std::size_t>(page));
            text = names.pageAddress(text);
        }
    }
    SetLanguage(languageCode);
}

void modLang::SetLanguage(const std::string& code) {
    languageCode_ = code;
    if (code == "pl") lang_ = langPL_;
    if (code == "en") lang_ = langEN_;
}

const std::string& modLang::lang(int n) const {
    if (n < 0 || n >= kLanguageEntries) throw BoundsError();
    return lang_[static_cast<std::size_t>(n)];
}

std::string modLang::ownText(OwnText text, std::string_view argument) const {
    constexpr std::string_view kPlace = "%1";
    const OwnTextRow& row = ownTextRow(text);
    std::string result = languageCode_ == "pl" ? row.polish : row.english;
    if (const auto place = result.find(kPlace); place != std::string::npos)
        result.replace(place, kPlace.size(), argument);
    return result;
}

}  // namespace melvane
