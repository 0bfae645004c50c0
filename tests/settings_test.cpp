#include <gtest/gtest.h>
#include <sys/resource.h>

#include <QLockFile>
#include <cmath>
#include <csignal>
#include <thread>

#include "audio/modAudio.h"
#include "desktop/registry_file.h"
#include "settings/recent_files.h"
#include "settings/settings_store.h"
#include "settings/window_places.h"
#include "state/numbers.h"
#include "tests/file_accesses.h"
#include "tests/temp_dir.h"

namespace melvane {
namespace {

using namespace melvane::test;
using std::string_literals::operator""s;

constexpr auto kUser = RegistryHive::HKEY_CURRENT_USER;
constexpr std::uint32_t kDword = 4;  // a type that the program has no use for

TEST(Numbers, LeadingNumberReadsThePrefix) {
    const std::pair<const char*, double> cases[] = {
        {"", 0},    {" \t-12.5e1 x", -125}, {"+7,5", 7}, {"4,", 4},     {" 4", 4},  {".5", 0.5},    {"5.", 5},
        {"1e", 1},  {"1e+2", 100},          {"--1", 0},  {"-", 0},      {"- 1", 0}, {"+-1", 0},     {"inf", 0},
        {"nan", 0}, {"-infinity", 0},       {"0x10", 0}, {"1e-999", 0}, {"abc", 0}, {"\xC5\xBC", 0}};
    for (const auto& [text, value] : cases) EXPECT_EQ(leadingNumber(text), value) << text;
    EXPECT_EQ(leadingNumber("1e999"), HUGE_VAL);
    EXPECT_EQ(leadingNumber("-" + std::string(400, '9')), -HUGE_VAL);
    EXPECT_EQ(leadingNumber("0." + std::string(400, '0') + "1"), 0);
}

TEST(Numbers, TextsAndLists) {
    EXPECT_EQ(numberText(100000), "100000");
    EXPECT_EQ(numberText(-0.1F), "-0.1");
    for (const float value : {3.4028235e38F, 1e-45F, 16777217.0F / 3})
        EXPECT_EQ(static_cast<float>(leadingNumber(numberText(value))), value);
    EXPECT_EQ(split("a,,b,", ','), (std::vector<std::string>{"a", "", "b", ""}));
    EXPECT_EQ(split("", ','), std::vector<std::string>{""});
}

struct RegistryFixture : testing::Test {
    TempDir dir;
    const std::string path = dir / "new/registry.json";
    RegistryFile registry{path};
    const SettingsStore store{registry};

    void put(const std::string& bytes) const {
        std::filesystem::create_directory(dir / "new");
        dir.write("new/registry.json", bytes);
    }
    static std::int32_t set(Registry& registry, const std::string& name, std::uint32_t type, const std::string& data) {
        RegistryKey key = 0;
        if (registry.RegCreateKeyA(kUser, kProductKey, key) != ERROR_SUCCESS) return ERROR_WRITE_FAULT;
        const auto size = static_cast<std::uint32_t>(data.size());
        const auto result = registry.RegSetValueExA(key, name, 0, type, data.data(), size);
        EXPECT_EQ(registry.RegCloseKey(key), ERROR_SUCCESS);
        return result;
    }
};

TEST_F(RegistryFixture, SettingsSurviveARestart) {
    Settings loaded;
    store.load(loaded);
    EXPECT_EQ(loaded, Settings()) << "nothing is stored yet";
    Settings expected{.language = "pl",
                      .position = WindowPosition{-12.5F, 100000.0F / 7},
                      .mixDevice = 3,
                      .mixDeviceStored = true,
                      .forceMixDevice = 1,
                      .midiPort = 70000,
                      .currentPreset = 13,
                      .EffectState = {{{-1, 0, 40}, {}, {}, {0, 0, 100}, {}}},
                      .toneValue = {0, 100, 1, 99},
                      .balanceValue = {-100, 103},
                      .volume = {0, 42},
                      .effectsWindowOpen = -1,
                      .linesUpVoices = false};
    store.save(expected);
    // Other versions and the sibling product read and write these too.
    EXPECT_EQ(store.ReadSetting(kProductKey, "audio effects"), "1,40;0,0;0,0;0,100");
    EXPECT_EQ(store.ReadSetting(kProductKey, "effects window"), "-1");
    EXPECT_EQ(GetSettingString(store, kProductKey, "balance"), "-100,103");
    EXPECT_EQ(GetSettingString(store, kSiblingKey, "rec directory"), "");
    SaveSettingString(store, kSiblingKey, "rec directory", "/home/Żaneta/歌");
    expected.recDirectory = "/home/Żaneta/歌";

    RegistryFile second(path);
    SettingsStore(second).load(loaded);
    EXPECT_EQ(loaded, expected);
}

TEST_F(RegistryFixture, TextsAndBinariesAreReadOtherTypesAreNothing) {
    using Case = std::tuple<std::uint32_t, std::string, std::string>;
    const Case cases[] = {{REG_SZ, "żółw\0rest"s, "żółw"},
                          {REG_SZ, "\0x"s, ""},
                          {REG_BINARY, "\xFE\xFF"s, "-2"},
                          {REG_BINARY, "\x39\x30\x07\x07"s, "12345"},
                          {REG_BINARY, "\x07"s, "7"},
                          {kDword, "\x05\0\0\0"s, ""},
                          {7, "text", ""}};
    for (const auto& [type, data, text] : cases) {
        ASSERT_EQ(set(registry, "name", type, data), ERROR_SUCCESS);
        EXPECT_EQ(store.ReadSetting(kProductKey, "name"), text) << type;
    }
    EXPECT_EQ(store.ReadSetting(kProductKey, "other") + store.ReadSetting("other", "name"), "");
}

TEST_F(RegistryFixture, HandEditedValuesSpoilOnlyTheirField) {
    Settings settings;
    const auto load = [&](const char* name, const std::string& text) {
        store.WriteSetting(kProductKey, name, text);
        store.load(settings);
        return settings;
    };
    const std::pair<const char*, const char*> spoilt[] = {
        {"positionXY", "12"},          {"positionXY", "1e30,5"}, {"mix device", "-1"},
        {"mix device", "32768"},       {"audio preset", "14"},   {"force mix device", "99999"},
        {"midi device", "2147483648"}, {"volume", "1e999"},      {"channels window", "70000"}};
    for (const auto& [name, text] : spoilt) EXPECT_EQ(load(name, text), Settings()) << name << ": " << text;
    EXPECT_EQ(load("positionXY", "x, 7.25,9").position, (WindowPosition{0, 7.25F}));
    EXPECT_EQ(load("mix device", "2.5 or so").mixDevice, 2);
    EXPECT_EQ(load("midi device", "-2147483648").midiPort, std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(load("audio effects", ";1,40,9;-1;1,101;1,50;;;").EffectState,
              (std::array<EffectSwitch, 5>{{{}, {-1, 0, 40}, {-1}, {-1}, {}}}));
    EXPECT_EQ(load("bass & treble", "101,-1,7").toneValue, (std::array<std::int16_t, 4>{50, 50, 7, 50}));
    EXPECT_EQ(load("balance", "103,103,5,5").balanceValue, (std::array{0, 103}));
    EXPECT_EQ(load("volume", std::string(1 << 20, ',')).volume, (std::array<std::int16_t, 2>{0, 0}));
    EXPECT_EQ(load("effects window", "5").effectsWindowOpen, -1);
}

TEST_F(RegistryFixture, FilesThatEarlierProgramsKeptAreRead) {
    for (const auto& [name, song] : {std::pair("0", "/a/ż.mp3"), {"1", "/b.mid"}, {"3", "/c"}})
        store.WriteSetting(kRecentKey, name, song);
    const RecentFiles recent(store);
    EXPECT_EQ(recent.list(), (std::vector<std::string>{"/a/ż.mp3", "/b.mid", "/c"}));
    store.WriteSetting(kRecentKey, "paths", "/d, e;.wav\n\n/b.mid\n1\n2\n3\n4\n5\n6\n7\n");
    EXPECT_EQ(recent.list(), (std::vector<std::string>{"/d, e;.wav", "/b.mid", "1", "2", "3", "4", "5", "6"}));
}

TEST_F(RegistryFixture, AnActionReadsAndReplacesTheFileOnce) {
    put("{}");
    Settings settings;
    EXPECT_EQ(accessesTo(path, [&] { store.load(settings); }), Accesses(1, 0));
    EXPECT_EQ(
        accessesTo(
            path,
            [&] {
                const RegistryBatch batch = store.batch(RegistryAccess::change);
                for (const char* window : {"frmEff", "frmChann"}) WindowPlaces(store).keep(window, {1, 2});
                EXPECT_EQ(WindowPlaces(store).find("frmEff"), (WindowPosition{1, 2})) << "a batch sees what it wrote";
                store.save(Settings());
            }),
        Accesses(1, 1));
}

TEST_F(RegistryFixture, BytesAndTypesSurviveAndNamesIgnoreAsciiCase) {
    std::string allBytes;
    for (int i = 0; i < 256; ++i) allBytes += static_cast<char>(i);
    const std::pair<std::uint32_t, std::string> cases[] = {
        {REG_SZ, "zażółć \"\\ \n\x7F"}, {REG_SZ, "\xEF\xBB\xBF mark"}, {REG_SZ, "zero\0in"s}, {REG_SZ, allBytes},
        {REG_BINARY, allBytes},         {kDword, "\x01\0\0\0"s},       {0xFFFFFFFF, "odd"},   {REG_BINARY, ""}};
    for (const auto& [type, data] : cases) {
        ASSERT_EQ(set(registry, "Mix Device", type, data), ERROR_SUCCESS);
        RegistryFile reader(path);
        RegistryKey key = 0;
        std::uint32_t readType = 0;
        std::uint32_t size = 0;
        ASSERT_EQ(reader.RegOpenKeyA(kUser, R"(SOFTWARE\tessaro\MELVANE)", key), ERROR_SUCCESS);
        ASSERT_EQ(reader.RegQueryValueExA(key, "mix dEVICE", readType, nullptr, size), ERROR_SUCCESS);
        std::string room(size, '?');
        EXPECT_EQ(reader.RegQueryValueExA(key, "mix device", readType, room.data(), size), ERROR_SUCCESS);
        EXPECT_EQ(std::pair(readType, room), std::pair(type, data));
        if (data.empty()) continue;
        --size;
        EXPECT_EQ(reader.RegQueryValueExA(key, "mix device", readType, room.data(), size), ERROR_MORE_DATA);
        EXPECT_EQ(size, data.size());
        EXPECT_EQ(reader.RegCloseKey(key), ERROR_SUCCESS);
        EXPECT_EQ(reader.RegQueryValueExA(key, "mix device", readType, nullptr, size), ERROR_FILE_NOT_FOUND);
        EXPECT_EQ(reader.RegOpenKeyA(kUser, "software\\Tessaro\\M\xC4\x98LVANE", key), ERROR_FILE_NOT_FOUND);
        EXPECT_EQ(key, 0U);
    }
    const std::string bytes = readFile(path);
    EXPECT_EQ(bytes.find("evice"), bytes.rfind("evice")) << "one entry, however it was written";
}

TEST_F(RegistryFixture, EntriesThatAreNotUnderstoodAreKept) {
    put(R"({"HKEY_CURRENT_USER\\software\\Tessaro\\MELVANE":
        {"a": 5, "b": {"type": -1, "base64": ""}, "c": {"type": 1, "base64": "?"}, "d": [null], "e": "old"},
        "other": {"x": true}})");
    for (const char* name : {"a", "b", "c", "d", "x"}) EXPECT_EQ(store.ReadSetting(kProductKey, name), "") << name;
    store.WriteSetting(kProductKey, "E", "new");
    EXPECT_EQ(store.ReadSetting(kProductKey, "e"), "new");
    std::string bytes = readFile(path);
    std::erase_if(bytes, [](char c) { return c == ' ' || c == '\n'; });
    for (const char* part : {R"("a":5)", R"("b":{"base64":"","type":-1})", R"("c":{"base64":"?","type":1})",
                             R"("d":[null])", R"("other":{"x":true})"})
        EXPECT_NE(bytes.find(part), std::string::npos) << part;
}

TEST_F(RegistryFixture, WhatIsNoRegistryReadsAsNothingAndIsKeptAside) {
    const std::string cases[] = {
        "", "{\"HKEY", "[1]", "{\"a\": 1}", std::string(2000, '['), "{}" + std::string(5 << 20, ' ')};
    std::string aside = ".broken";
    for (int number = 2; const std::string& bytes : cases) {
        put(bytes);
        EXPECT_EQ(store.ReadSetting(kProductKey, "language"), "");
        EXPECT_EQ(readFile(path), bytes);
        store.WriteSetting(kProductKey, "language", "pl");
        EXPECT_EQ(store.ReadSetting(kProductKey, "language"), "pl");
        EXPECT_EQ(readFile(path + aside), bytes);
        aside = ".broken" + std::to_string(number++);
    }
}

TEST_F(RegistryFixture, FailuresAreStatusCodes) {
    put("{}");
    RegistryFile none(path + "/registry.json");
    EXPECT_EQ(set(none, "a", REG_SZ, "b"), ERROR_WRITE_FAULT);
    EXPECT_EQ(SettingsStore(none).ReadSetting(kProductKey, "a"), "");
    EXPECT_EQ(registry.RegSetValueExA(77, "a", 0, REG_SZ, "b", 1), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(registry.RegCloseKey(77), ERROR_FILE_NOT_FOUND);
    ASSERT_EQ(set(registry, "a", REG_SZ, "small"), ERROR_SUCCESS);
    EXPECT_EQ(set(registry, "a", REG_SZ, std::string(5 << 20, 'x')), ERROR_WRITE_FAULT);
    EXPECT_EQ(set(registry, "b", REG_BINARY, std::string(4 << 20, 'x')), ERROR_WRITE_FAULT);

    QLockFile held(QString::fromStdString(path + ".lock"));
    ASSERT_TRUE(held.lock());
    {
        const RegistryBatch waitsOnce(registry, RegistryAccess::change);
        for (int i = 0; i < 1000; ++i) EXPECT_EQ(set(registry, "a", REG_SZ, "late"), ERROR_WRITE_FAULT);
    }
    EXPECT_EQ(store.ReadSetting(kProductKey, "a"), "small");
    held.unlock();
    dir.write("new/registry.json.lock", "");  // left by a program that was killed
    EXPECT_EQ(set(registry, "a", REG_SZ, "b"), ERROR_SUCCESS);
}

TEST_F(RegistryFixture, AFullDiskKeepsTheOldFileAndOneValueTheOthers) {
    store.WriteSetting(kProductKey, "language", "pl");
    const std::string before = readFile(path);
    rlimit usual{};
    getrlimit(RLIMIT_FSIZE, &usual);
    const rlimit small{2048, usual.rlim_max};
    std::signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &small);
    store.WriteSetting(kProductKey, "language", std::string(4096, 'x'));
    setrlimit(RLIMIT_FSIZE, &usual);
    EXPECT_EQ(readFile(path), before);
    EXPECT_EQ(store.failure(), ERROR_WRITE_FAULT);
    store.ReadSetting(kProductKey, "language");
    EXPECT_EQ(store.failure(), ERROR_WRITE_FAULT);

    Settings settings{.language = std::string(5 << 20, 'x'), .midiPort = 7};
    store.save(settings);
    EXPECT_EQ(store.ReadSetting(kProductKey, "language") + store.ReadSetting(kProductKey, "midi device"), "pl7");
    EXPECT_EQ(store.failure(), ERROR_WRITE_FAULT);
    const auto texts = SettingsStore::texts(settings);
    settings.language = "en";
    store.WriteSetting(kProductKey, "midi device", "of another program");
    store.saveChanges(SettingsStore::texts(settings), texts);
    EXPECT_EQ(store.ReadSetting(kProductKey, "language"), "en");
    EXPECT_EQ(store.ReadSetting(kProductKey, "midi device"), "of another program");
    EXPECT_EQ(store.failure(), ERROR_SUCCESS);
}

TEST_F(RegistryFixture, TwoWritersLoseNothing) {
    constexpr int kActions = 12;
    // Each adds to what it read in the same batch.
    const auto write = [&](const std::string& mark) {
        RegistryFile own(path);
        const SettingsStore marks(own);
        for (int i = 0; i < kActions; ++i) {
            const RegistryBatch batch = marks.batch(RegistryAccess::change);
            marks.WriteSetting(kProductKey, "marks", marks.ReadSetting(kProductKey, "marks") + mark);
        }
    };
    std::thread other(write, "x");
    write("y");
    other.join();
    const std::string marks = store.ReadSetting(kProductKey, "marks");
    for (const char mark : {'x', 'y'}) EXPECT_EQ(std::ranges::count(marks, mark), kActions) << marks;
}

TEST_F(RegistryFixture, DefaultPathFollowsTheEnvironment) {
    const QByteArray before = qgetenv("XDG_CONFIG_HOME");
    qputenv("XDG_CONFIG_HOME", dir.path().c_str());
    EXPECT_EQ(RegistryFile::defaultPath(), dir / "Tessaro/registry.json");
    before.isNull() ? qunsetenv("XDG_CONFIG_HOME") : qputenv("XDG_CONFIG_HOME", before);
}

}  // namespace
}  // namespace melvane
