#include <gtest/gtest.h>

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QString>
#include <QTemporaryDir>
#include <cmath>
#include <cstring>
#include <limits>
#include <map>
#include <string>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

#include "desktop/registry_file.h"
#include "settings/settings_store.h"
#include "state/numbers.h"
#include "state/settings.h"

namespace melvane {
namespace {

using std::string_literals::operator""s;

constexpr auto kUser = RegistryHive::HKEY_CURRENT_USER;

class FakeRegistry : public Registry {
public:
    struct Value {
        std::uint32_t type;
        std::string data;
    };
    std::map<std::string, std::map<std::string, Value>> keys;
    std::vector<std::string> calls;
    int openHandles = 0;

    std::int32_t RegOpenKeyA(RegistryHive, const std::string& subKey, RegistryKey& key) override {
        calls.push_back("open " + subKey);
        return keys.contains(subKey) ? give(subKey, key) : ERROR_FILE_NOT_FOUND;
    }
    std::int32_t RegCreateKeyA(RegistryHive, const std::string& subKey, RegistryKey& key) override {
        return give(subKey, key);
    }
    std::int32_t RegSetValueExA(RegistryKey, const std::string& name, std::uint32_t, std::uint32_t type,
                                const void* data, std::uint32_t size) override {
        calls.push_back("write " + name);
        keys[current_][name] = {type, std::string(static_cast<const char*>(data), size)};
        return ERROR_SUCCESS;
    }
    std::int32_t RegQueryValueExA(RegistryKey key, const std::string& name, std::uint32_t& type, void* data,
                                  std::uint32_t& size) override {
        if (data == nullptr) calls.push_back("read " + name);
        if (key == 0 || !keys[current_].contains(name)) return ERROR_FILE_NOT_FOUND;
        const Value& value = keys[current_][name];
        const auto room = std::exchange(size, static_cast<std::uint32_t>(value.data.size()));
        type = value.type;
        if (data == nullptr) return ERROR_SUCCESS;
        if (room < size) return ERROR_MORE_DATA;
        std::memcpy(data, value.data.data(), size);
        return ERROR_SUCCESS;
    }
    std::int32_t RegCloseKey(RegistryKey key) override {
        if (key != 0) --openHandles;
        return ERROR_SUCCESS;
    }

private:
    std::int32_t give(const std::string& subKey, RegistryKey& key) {
        current_ = subKey;
        key = 1;
        ++openHandles;
        return ERROR_SUCCESS;
    }
    std::string current_;
};

Settings changedSettings() {
    Settings s;
    s.language = "pl";
    s.position = WindowPosition{-12.5F, 100000.0F / 7};
    s.mixDevice = 3;
    s.mixDeviceStored = true;
    s.forceMixDevice = 1;
    s.midiPort = 70000;
    s.currentPreset = 13;
    s.EffectState[0] = {-1, 0, 40};
    s.EffectState[3] = {0, 0, 100};
    s.toneValue = {0, 100, 1, 99};
    s.balanceValue = {-100, 103};
    s.volume = {0, 42};
    s.effectsWindowOpen = -1;
    return s;
}

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

TEST(SettingsStore, ReadsTextsAndBinariesOnly) {
    const std::tuple<std::uint32_t, std::string, std::string> cases[] = {{REG_SZ, "żółw\0rest"s, "żółw"},
                                                                         {REG_SZ, "whole", "whole"},
                                                                         {REG_SZ, "", ""},
                                                                         {REG_SZ, "\0x"s, ""},
                                                                         {REG_BINARY, "\x05\0\0\0"s, "5"},
                                                                         {REG_BINARY, "\xFE\xFF"s, "-2"},
                                                                         {REG_BINARY, "\x39\x30\x07\x07"s, "12345"},
                                                                         {REG_BINARY, "\x07"s, "7"},
                                                                         {REG_DWORD, "\x05\0\0\0"s, ""},
                                                                         {7, "text", ""}};
    FakeRegistry registry;
    const SettingsStore store(registry);
    for (const auto& [type, data, text] : cases) {
        registry.keys["key"]["name"] = {type, data};
        EXPECT_EQ(store.ReadSetting("key", "name"), text) << type;
    }
    EXPECT_EQ(store.ReadSetting("key", "other"), "");
    EXPECT_EQ(store.ReadSetting("other", "name"), "");
    EXPECT_EQ(registry.openHandles, 0);
}

TEST(SettingsStore, WritesTheTableOfValuesInOrder) {
    FakeRegistry registry;
    Settings settings;
    settings.position = WindowPosition{10, 20.5F};
    settings.EffectState[0] = {-1, 12, 40};
    settings.EffectState[4].enabled = -1;
    settings.channelsWindowOpen = -1;
    settings.recDirectory = "/songs";
    SettingsStore(registry).save(settings);

    const std::pair<std::string, std::string> expected[] = {{"positionXY", "10,20.5"},
                                                            {"mix device", "0"},
                                                            {"force mix device", "0"},
                                                            {"midi device", "-5"},
                                                            {"bass & treble", "50,50,50,50"},
                                                            {"balance", "0,0"},
                                                            {"volume", "100,100"},
                                                            {"effects window", "0"},
                                                            {"channels window", "-1"},
                                                            {"language", "en"},
                                                            {"audio effects", "1,40;0,0;0,0;0,0"},
                                                            {"audio preset", "0"}};
    std::vector<std::string> calls;
    for (const auto& [name, text] : expected) {
        calls.push_back("write " + name);
        EXPECT_EQ(registry.keys[kProductKey][name].data, text) << name;
        EXPECT_EQ(registry.keys[kProductKey][name].type, REG_SZ) << name;
    }
    EXPECT_EQ(registry.calls, calls);
    EXPECT_EQ(registry.keys.size(), 1U);
    EXPECT_EQ(registry.openHandles, 0);
}

TEST(SettingsStore, LoadsInOrderAndKeepsDefaultsWithoutKeys) {
    FakeRegistry registry;
    Settings settings;
    SettingsStore(registry).load(settings);
    EXPECT_EQ(settings, Settings());

    std::vector<std::string> calls;
    for (const std::string name :
         {"rec directory", "language", "positionXY", "mix device", "force mix device", "midi device", "audio preset",
          "audio effects", "bass & treble", "balance", "volume", "channels window", "effects window"}) {
        calls.push_back("open "s + (name == "rec directory" ? kSiblingKey : kProductKey));
        calls.push_back("read " + name);
    }
    EXPECT_EQ(registry.calls, calls);
}

TEST(SettingsStore, HandEditedValuesSpoilOnlyTheirField) {
    struct Case {
        const char* name;
        std::string text;
        void (*expect)(Settings&);
    };
    const Case cases[] = {
        {"language", "de", [](Settings& s) { s.language = "de"; }},
        {"positionXY", "12", [](Settings&) {}},
        {"positionXY", "1e30,5", [](Settings&) {}},
        {"positionXY", "x, 7.25,9",
         [](Settings& s) {
             s.position = WindowPosition{0, 7.25F};
         }},
        {"mix device", "many", [](Settings& s) { s.mixDeviceStored = true; }},
        {"mix device", "2.5 or so", [](Settings& s) { s.mixDevice = 2, s.mixDeviceStored = true; }},
        {"mix device", "-1", [](Settings&) {}},
        {"mix device", "32768", [](Settings&) {}},
        {"force mix device", "99999", [](Settings&) {}},
        {"midi device", "-2147483648", [](Settings& s) { s.midiPort = std::numeric_limits<std::int32_t>::min(); }},
        {"midi device", "2147483648", [](Settings&) {}},
        {"audio preset", "14", [](Settings&) {}},
        {"audio effects", ";1,40,9;-1;1,101;1,50;;;",
         [](Settings& s) {
             s.EffectState[1] = {-1, 0, 40};
             s.EffectState[2].enabled = -1;
             s.EffectState[3].enabled = -1;
         }},
        {"bass & treble", "101,-1,7", [](Settings& s) { s.toneValue[2] = 7; }},
        {"balance", "103,103,5,5", [](Settings& s) { s.balanceValue[1] = 103; }},
        {"volume", std::string(1 << 20, ','),
         [](Settings& s) {
             s.volume = {0, 0};
         }},
        {"volume", "1e999", [](Settings&) {}},
        {"effects window", "5", [](Settings& s) { s.effectsWindowOpen = -1; }},
        {"channels window", "70000", [](Settings&) {}},
    };
    for (const Case& c : cases) {
        FakeRegistry registry;
        registry.keys[kProductKey][c.name] = {REG_SZ, c.text};
        Settings settings;
        Settings expected;
        SettingsStore(registry).load(settings);
        c.expect(expected);
        EXPECT_EQ(settings, expected) << c.name << ": " << c.text.substr(0, 40);
    }
}

class RegistryFileTest : public testing::Test {
protected:
    std::string path(const char* name = "Zażółć 設定/registry.json") const {
        return directory_.filePath(QString::fromUtf8(name)).toStdString();
    }
    void put(const QByteArray& bytes) const {
        QDir().mkpath(QFileInfo(QString::fromStdString(path())).path());
        QFile file(QString::fromStdString(path()));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    QByteArray fileBytes(const std::string& suffix = {}) const {
        QFile file(QString::fromStdString(path() + suffix));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    static std::int32_t set(Registry& registry, const std::string& name, std::uint32_t type, const std::string& data,
                            const char* keyPath = kProductKey) {
        RegistryKey key = 0;
        if (const auto result = registry.RegCreateKeyA(kUser, keyPath, key); result != ERROR_SUCCESS) return result;
        const auto size = static_cast<std::uint32_t>(data.size());
        const auto result = registry.RegSetValueExA(key, name, 0, type, data.data(), size);
        EXPECT_EQ(registry.RegCloseKey(key), ERROR_SUCCESS);
        return result;
    }

    QTemporaryDir directory_;
};

TEST_F(RegistryFileTest, SettingsSurviveARestart) {
    RegistryFile first(path());
    Settings expected = changedSettings();
    SettingsStore(first).save(expected);
    SettingsStore(first).WriteSetting(kSiblingKey, "rec directory", "/home/Żaneta/歌");
    expected.recDirectory = "/home/Żaneta/歌";

    RegistryFile second(path());
    Settings loaded;
    SettingsStore(second).load(loaded);
    EXPECT_EQ(loaded, expected);
}

TEST_F(RegistryFileTest, BytesAndTypesSurviveAndNamesIgnoreAsciiCase) {
    std::string allBytes;
    for (int i = 0; i < 256; ++i) allBytes += static_cast<char>(i);
    const std::pair<std::uint32_t, std::string> cases[] = {
        {REG_SZ, ""},       {REG_SZ, "zażółć \"\\ \n\x7F"}, {REG_SZ, "\xEF\xBB\xBF mark"}, {REG_SZ, "zero\0in"s},
        {REG_SZ, allBytes}, {REG_BINARY, allBytes},         {REG_DWORD, "\x01\0\0\0"s},    {0xFFFFFFFF, "odd"}};
    for (const auto& [type, data] : cases) {
        RegistryFile writer(path());
        ASSERT_EQ(set(writer, "Mix Device", type, data), ERROR_SUCCESS);

        RegistryFile reader(path());
        RegistryKey key = 0;
        ASSERT_EQ(reader.RegOpenKeyA(kUser, R"(SOFTWARE\tessaro\MELVANE)", key), ERROR_SUCCESS);
        std::uint32_t readType = 0;
        std::uint32_t size = 0;
        ASSERT_EQ(reader.RegQueryValueExA(key, "mix dEVICE", readType, nullptr, size), ERROR_SUCCESS);
        EXPECT_EQ(readType, type);
        ASSERT_EQ(size, data.size());
        std::string room(size, '?');
        EXPECT_EQ(reader.RegQueryValueExA(key, "mix device", readType, room.data(), size), ERROR_SUCCESS);
        EXPECT_EQ(room, data);
        if (size > 0) {
            --size;
            EXPECT_EQ(reader.RegQueryValueExA(key, "mix device", readType, room.data(), size), ERROR_MORE_DATA);
            EXPECT_EQ(size, data.size());
        }
        EXPECT_EQ(reader.RegCloseKey(key), ERROR_SUCCESS);
        EXPECT_EQ(reader.RegQueryValueExA(key, "mix device", readType, nullptr, size), ERROR_FILE_NOT_FOUND);
        EXPECT_EQ(reader.RegOpenKeyA(kUser, "software\\Tessaro\\M\xC4\x98LVANE", key), ERROR_FILE_NOT_FOUND);
        EXPECT_EQ(key, 0U);
    }
    EXPECT_EQ(fileBytes().count("evice"), 1);
}

TEST_F(RegistryFileTest, EntriesThatAreNotUnderstoodAreKept) {
    put(R"({"HKEY_CURRENT_USER\\software\\Tessaro\\MELVANE":
        {"a": 5, "b": {"type": -1, "base64": ""}, "c": {"type": 1, "base64": "?"}, "d": [null], "e": "old"},
        "other": {"x": true}})");
    RegistryFile registry(path());
    const SettingsStore store(registry);
    for (const char* name : {"a", "b", "c", "d", "x"}) EXPECT_EQ(store.ReadSetting(kProductKey, name), "") << name;
    store.WriteSetting(kProductKey, "E", "new");
    EXPECT_EQ(store.ReadSetting(kProductKey, "e"), "new");
    const QByteArray compact = fileBytes().simplified().replace(" ", "");
    for (const char* part : {R"("a":5)", R"("b":{"base64":"","type":-1})", R"("c":{"base64":"?","type":1})",
                             R"("d":[null])", R"("other":{"x":true})"})
        EXPECT_TRUE(compact.contains(part)) << part;
}

TEST_F(RegistryFileTest, WhatIsNoRegistryReadsAsNothingAndIsKeptAside) {
    const QByteArray cases[] = {"",
                                "{\"HKEY",
                                "[1]",
                                "{\"a\": 1}",
                                QByteArray("\0\xFF", 2),
                                QByteArray(2000, '['),
                                "{}" + QByteArray(5 << 20, ' ')};
    std::string suffix = ".broken";
    for (const QByteArray& bytes : cases) {
        put(bytes);
        RegistryFile registry(path());
        EXPECT_EQ(SettingsStore(registry).ReadSetting(kProductKey, "language"), "");
        EXPECT_EQ(fileBytes(), bytes);
        SettingsStore(registry).WriteSetting(kProductKey, "language", "pl");
        EXPECT_EQ(SettingsStore(registry).ReadSetting(kProductKey, "language"), "pl");
        EXPECT_EQ(fileBytes(suffix), bytes) << suffix;
        suffix = ".broken" + std::to_string(suffix == ".broken" ? 2 : std::stoi(suffix.substr(7)) + 1);
    }
}

TEST_F(RegistryFileTest, FailuresAreStatusCodes) {
    put("{}");
    RegistryFile under(path() + "/registry.json");  // below a file
    EXPECT_EQ(set(under, "a", REG_SZ, "b"), ERROR_WRITE_FAULT);

    QDir().mkpath(QString::fromStdString(path("folder")));
    RegistryFile folder(path("folder"));
    EXPECT_EQ(set(folder, "a", REG_SZ, "b"), ERROR_WRITE_FAULT);
    EXPECT_EQ(SettingsStore(folder).ReadSetting(kProductKey, "a"), "");
    EXPECT_TRUE(QFileInfo(QString::fromStdString(path("folder"))).isDir());

    RegistryFile registry(path());
    EXPECT_EQ(registry.RegSetValueExA(77, "a", 0, REG_SZ, "b", 1), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(registry.RegCloseKey(77), ERROR_FILE_NOT_FOUND);
    ASSERT_EQ(set(registry, "a", REG_SZ, "small"), ERROR_SUCCESS);
    EXPECT_EQ(set(registry, "a", REG_SZ, std::string(5 << 20, 'x')), ERROR_WRITE_FAULT);
    EXPECT_EQ(set(registry, "b", REG_BINARY, std::string(4 << 20, 'x')), ERROR_WRITE_FAULT);

    QLockFile held(QString::fromStdString(path() + ".lock"));
    ASSERT_TRUE(held.lock());
    EXPECT_EQ(set(registry, "a", REG_SZ, "late"), ERROR_WRITE_FAULT);
    EXPECT_EQ(SettingsStore(registry).ReadSetting(kProductKey, "a"), "small");
}

TEST_F(RegistryFileTest, ALockLeftByAKilledProgramIsNoHindrance) {
    put("{}");
    QFile left(QString::fromStdString(path() + ".lock"));
    ASSERT_TRUE(left.open(QIODevice::WriteOnly));
    left.close();
    RegistryFile registry(path());
    EXPECT_EQ(set(registry, "a", REG_SZ, "b"), ERROR_SUCCESS);
}

TEST_F(RegistryFileTest, TwoWritersLoseNothing) {
    constexpr int kValues = 12;
    const auto write = [&](const std::string& prefix) {
        RegistryFile registry(path());
        for (int i = 0; i < kValues; ++i)
            EXPECT_EQ(set(registry, prefix + std::to_string(i), REG_SZ, prefix), ERROR_SUCCESS);
    };
    std::thread other(write, "other");
    write("own");
    other.join();
    RegistryFile registry(path());
    for (const std::string prefix : {"own", "other"})
        for (int i = 0; i < kValues; ++i)
            EXPECT_EQ(SettingsStore(registry).ReadSetting(kProductKey, prefix + std::to_string(i)), prefix) << i;
}

TEST_F(RegistryFileTest, DefaultPathFollowsTheEnvironment) {
    const QByteArray before = qgetenv("XDG_CONFIG_HOME");
    qputenv("XDG_CONFIG_HOME", directory_.path().toUtf8());
    EXPECT_EQ(RegistryFile::defaultPath(), path("Tessaro/registry.json"));
    before.isNull() ? qunsetenv("XDG_CONFIG_HOME") : qputenv("XDG_CONFIG_HOME", before);
}

}  // namespace
}  // namespace melvane
