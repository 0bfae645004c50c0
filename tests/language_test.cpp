#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <utility>

#include "settings/instrument_names.h"
#include "settings/language_tables.h"
#include "settings/modLang.h"
#include "settings/own_texts.h"
#include "state/errors.h"

namespace melvane {
namespace {

using Texts = std::pair<std::string, std::string>;  // Polish, English

std::map<int, Texts> allTexts() {
    modLang polish;
    modLang english;
    polish.InitLanguage("/system", "pl");
    english.InitLanguage("/system", "en");
    std::map<int, Texts> texts;
    for (int n = 0; n < kLanguageEntries; ++n) texts[n] = {polish.lang(n), english.lang(n)};
    return texts;
}

TEST(Language, IrregularTextsStayAsTheyAre) {
    auto texts = allTexts();
    const std::map<int, Texts> expected = {
        {2, {"Skompresowane plik audio", "Compressed audio file"}},
        {5, {"Niewprawidłowa wersja biblioteki audio.", "Incorrect Audio library version."}},
        {8, {"You must stop mixing first.", "Zakończ miksowanie."}},
        {9, {"Nie udała się próba zapisu do pliku MP3...", "Couldn 't start encoding to MP3 file..."}},
        {13, {"D A L E J", "CO NT I N U E"}},
        {25, {"POMOC ONLINE", "TUTORIAL ONLINE"}},
        {27, {"Podany plik już istnieje.\r\nCzy chcesz kontynuować?", "Do you want to overwrite existing file?"}},
        {31, {"Mie można zainicjować interfejsu midi", "Midi interface didn't initialize."}},
        {53, {"Wskaż docelowy plik miksowania", "Browse for  mixing destination file"}},
        {59, {"Tony niskie dla Vocalu", "Vocal Treble"}},
        {60, {"Tony wysokie dla Vocalu", ""}},
        {63, {"Głośność kanału ", "Channel "}},
        {64, {"", " volume"}},
        {65, {"Balans kanału ", " balance"}},
        {66, {"Wł/wył kanał ", "Switch on/off channel "}},
        {81,
         {"Usunięcie vocalu dla formatu MIDI jest niemożliwe.Spróbuj wyłączyć odpowiedni kanał midi (najczęściej "
          "4-ty).",
          "Removing vocals for MIDI standard is not allowed.Try switch off one of midi channels (4 is default)."}},
        {86, {"Otwórz plik z vocalem..", "Load vocal file..."}},
        {100, {"", ""}},
    };
    for (const auto& [n, pair] : expected) EXPECT_EQ(texts[n], pair) << n;
}

TEST(Language, OnlyTheKnownEntriesAreEmpty) {
    std::set<int> used = {10, 13, 80, 81, 84, 85, 86, 87, 89, 90, 91};
    for (const auto& [first, last] : {std::pair(0, 9), std::pair(19, 33), std::pair(50, 67)})
        for (int n = first; n <= last; ++n) used.insert(n);
    for (const auto& [n, pair] : allTexts()) {
        EXPECT_EQ(pair.first.empty(), !used.contains(n) || n == 64) << n;
        EXPECT_EQ(pair.second.empty(), !used.contains(n) || n == 60) << n;
    }
    std::set<int> rows;
    for (const LanguageRow& row : languageRows()) EXPECT_TRUE(rows.insert(row.number).second) << row.number;
}

TEST(Language, UnknownCodesAreRememberedButChangeNothing) {
    modLang fresh;
    fresh.InitLanguage("/system", "de");
    EXPECT_EQ(fresh.languageCode(), "de");
    EXPECT_EQ(fresh.systemFolder(), "/system");
    for (int n = 0; n < kLanguageEntries; ++n) EXPECT_EQ(fresh.lang(n), "") << n;

    modLang changed;
    changed.InitLanguage("/system", "pl");
    for (const char* code : {"EN", "En", "en ", "", "de"}) {
        changed.SetLanguage(code);
        EXPECT_EQ(changed.lang(20), "Język") << code;
        EXPECT_EQ(changed.languageCode(), code);
    }
    changed.SetLanguage("en");
    EXPECT_EQ(changed.lang(20), "Language");
}

TEST(Language, NumbersOutsideTheTableAreBoundsErrors) {
    modLang language;
    language.InitLanguage("", "en");
    EXPECT_THROW(language.lang(-1), BoundsError);
    EXPECT_THROW(language.lang(101), BoundsError);
    EXPECT_NO_THROW(language.lang(100));
}

TEST(Language, OwnTextsExistInBothLanguagesAndTakeAnArgument) {
    modLang polish;
    modLang english;
    polish.SetLanguage("pl");
    english.SetLanguage("de");
    for (int i = 0; i < static_cast<int>(OwnText::count); ++i) {
        const OwnTextRow& row = ownTextRow(static_cast<OwnText>(i));
        const std::string pl = row.polish;
        const std::string en = row.english;
        EXPECT_FALSE(pl.empty() || en.empty()) << i;
        EXPECT_EQ(pl.find("%1") == std::string::npos, en.find("%1") == std::string::npos) << i;
        EXPECT_EQ(polish.ownText(row.text, "%1"), pl);
        EXPECT_EQ(english.ownText(row.text, "%1"), en);
    }
    EXPECT_EQ(english.ownText(OwnText::mixFinished, "ż%1.mp3"), "Mix finished: ż%1.mp3");
}

TEST(Language, InstrumentNames) {
    const std::map<int, std::string> expected = {{-1, ""},
                                                 {0, "Acoustic Grand"},
                                                 {21, "Accoridan"},
                                                 {23, "Tango Accordian"},
                                                 {33, "Electric Bass(finger)"},
                                                 {50, "SynthStrings 1"},
                                                 {77, "Skakuhachi"},
                                                 {87, "Lead 8 (bass+lead)"},
                                                 {111, "Shanai"},
                                                 {127, "Gunshot"},
                                                 {128, "Percussion"},
                                                 {129, ""}};
    for (const auto& [program, name] : expected) EXPECT_EQ(GetInstrumentName(program), name) << program;
    std::set<std::string> names;
    for (int program = 0; program <= kPercussionInstrument; ++program) names.insert(GetInstrumentName(program));
    EXPECT_EQ(names.size(), 129U);
}

}  // namespace
}  // namespace melvane
