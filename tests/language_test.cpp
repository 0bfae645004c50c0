#include <gtest/gtest.h>

#include <QFileInfo>
#include <QUrl>
#include <set>

#include "desktop/local_file_names.h"
#include "settings/instrument_names.h"
#include "settings/language_tables.h"
#include "settings/modLang.h"
#include "settings/own_texts.h"
#include "state/errors.h"
#include "tests/fake_platform.h"

namespace melvane {
namespace {

modLang languageOf(const std::string& code) {
    modLang language;
    language.InitLanguage(test::FakeFileNames(), code);
    return language;
}

TEST(Language, EveryEntryHasItsPlaceInBothTables) {
    const modLang polish = languageOf("pl");
    const modLang english = languageOf("en");
    std::set<int> rows;
    for (const LanguageRow& row : languageRows()) {
        EXPECT_TRUE(rows.insert(row.number).second) << row.number;
        // Two entries have no text in one language.
        EXPECT_EQ(polish.lang(row.number).empty(), row.number == 64) << row.number;
        EXPECT_EQ(english.lang(row.number).empty(), row.number == 60) << row.number;
    }
    // Those that look like mistakes are as users know them.
    EXPECT_EQ(english.lang(LangEntry::stopMixingFirst), "Zakończ miksowanie.");
    EXPECT_EQ(english.lang(LangEntry::vocalBass), "Vocal Treble");
    EXPECT_EQ(english.lang(LangEntry::channelVolume) + "4" + english.lang(LangEntry::channelVolumeEnd),
              "Channel 4 volume");
}

TEST(Language, PagesHaveAddressesThatLeadToThem) {
    std::set<std::string> addresses;
    for (const char* code : {"pl", "en"}) {
        modLang language;
        language.InitLanguage(LocalFileNames(), code);
        for (const LangEntry page : {LangEntry::homePage, LangEntry::helpPage}) {
            const std::string& address = language.lang(page);
            addresses.insert(address);
            EXPECT_TRUE(address.starts_with("file:///")) << address;
            const QString file = QUrl(QString::fromStdString(address), QUrl::StrictMode).toLocalFile();
            EXPECT_TRUE(QFileInfo(file).isFile()) << address;
            EXPECT_TRUE(file.endsWith(QLatin1String(code) + QStringLiteral(".html"))) << address;
        }
    }
    EXPECT_EQ(addresses.size(), 4U);
}

TEST(Language, UnknownCodesAreRememberedButChangeNothing) {
    const modLang fresh = languageOf("de");
    EXPECT_EQ(fresh.languageCode() + fresh.systemFolder(), "de/system");
    for (int n = 0; n < kLanguageEntries; ++n) EXPECT_EQ(fresh.lang(n), "") << n;

    modLang changed = languageOf("pl");
    for (const char* code : {"EN", "En", "en ", "", "de"}) {
        changed.SetLanguage(code);
        EXPECT_EQ(changed.lang(LangEntry::language), "Język") << code;
        EXPECT_EQ(changed.languageCode(), code);
    }
    changed.SetLanguage("en");
    EXPECT_EQ(changed.lang(LangEntry::language), "Language");
    for (const int outside : {-1, 101}) EXPECT_THROW(changed.lang(outside), BoundsError);
}

TEST(Language, OwnTextsTakeTheSameArgumentInBothLanguages) {
    for (int i = 0; i < static_cast<int>(OwnText::count); ++i) {
        const OwnTextRow& row = ownTextRow(static_cast<OwnText>(i));
        const std::string polish = row.polish;
        const std::string english = row.english;
        EXPECT_FALSE(polish.empty() || english.empty()) << i;
        EXPECT_EQ(polish.find("%1") == std::string::npos, english.find("%1") == std::string::npos) << english;
    }
    EXPECT_EQ(languageOf("de").ownText(OwnText::mixFinished, "ż%1.mp3"), "Mix finished: ż%1.mp3");
    EXPECT_EQ(languageOf("pl").ownText(OwnText::stopped), "Zatrzymano");
}

TEST(Language, InstrumentNames) {
    std::set<std::string> names;
    for (int program = 0; program <= kPercussionInstrument; ++program) names.insert(GetInstrumentName(program));
    EXPECT_EQ(names.size(), 129U);
    EXPECT_FALSE(names.contains(""));
    // One of each quarter: none is missing and none stands twice before them.
    EXPECT_EQ(GetInstrumentName(33), "Electric Bass(finger)");
    EXPECT_EQ(GetInstrumentName(77), "Skakuhachi");
    EXPECT_EQ(GetInstrumentName(127), "Gunshot");
    EXPECT_EQ(GetInstrumentName(-1) + GetInstrumentName(129), "");
}

}  // namespace
}  // namespace melvane
