// The texts of the program in the current language. Used on the user-interface thread.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "platform/file_names.h"
#include "settings/language_tables.h"
#include "settings/own_texts.h"

namespace melvane {

class modLang {
public:
    // Before this call every numbered text is empty.
    void InitLanguage(const FileNames& names, const std::string& languageCode);
    // "pl" or "en", exactly so written, change the numbered texts; any other code is remembered only.
    void SetLanguage(const std::string& code);

    // Numbered text 0..100. Entries 10 and 26 are addresses of pages.
    // Throws BoundsError.
    const std::string& lang(int n) const;
    const std::string& lang(LangEntry entry) const { return lang(static_cast<int>(entry)); }

    // A text that has no number. In English for a code other than "pl"; `argument` takes the place of "%1".
    std::string ownText(OwnText text, std::string_view argument = {}) const;

    const std::string& languageCode() const { return languageCode_; }
    const std::string& systemFolder() const { return systemFolder_; }

private:
    using Table = std::array<std::string, kLanguageEntries>;

    Table langPL_;
    Table langEN_;
    Table lang_;
    std::string languageCode_ = "en";
    std::string systemFolder_;
};

}  // namespace melvane
