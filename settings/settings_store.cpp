#include "settings/settings_store.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>

#include "state/numbers.h"

namespace melvane {

namespace {

struct Range {
    std::int32_t lowest;
    std::int32_t highest;
};

template <typename T>
constexpr Range kAll{std::numeric_limits<T>::min(), std::numeric_limits<T>::max()};
constexpr Range kInputs{0, std::numeric_limits<std::int16_t>::max()};
constexpr Range kPresets{0, 13};
constexpr Range kSwitch{0, 1};
constexpr Range kPercent[]{{0, 100}, {0, 100}, {0, 100}, {0, 100}};
constexpr Range kBalances[]{{-100, 100}, {-100, 103}};
// Where the windows of all systems can be; also keeps the numbers exact.
constexpr double kFarthestPosition = 32767;

// False when the number is out of range; then `value` stays.
template <typename T>
bool takeNumber(const std::string& text, Range range, T& value) {
    const double number = std::nearbyint(leadingNumber(text));
    if (!(number >= range.lowest && number <= range.highest)) return false;
    value = static_cast<T>(number);
    return true;
}

void takeSwitch(const std::string& text, std::int16_t& value) {
    if (takeNumber(text, kAll<std::int16_t>, value) && value != 0) value = -1;
}

template <typename T>
void takeList(const std::string& text, std::span<const Range> ranges, std::span<T> values) {
    const auto fields = split(text, ',');
    for (std::size_t i = 0; i < std::min(fields.size(), values.size()); ++i)
        takeNumber(fields[i], ranges[i], values[i]);
}

template <typename T>
std::string listText(const T& values) {
    std::string text;
    for (const auto value : values) text += (text.empty() ? "" : ",") + std::to_string(value);
    return text;
}

void takePosition(const std::string& text, Settings& settings) {
    const auto fields = split(text, ',');
    if (fields.size() < 2) return;
    const double left = leadingNumber(fields[0]);
    const double top = leadingNumber(fields[1]);
    if (std::abs(left) > kFarthestPosition || std::abs(top) > kFarthestPosition) return;
    settings.position = WindowPosition{static_cast<float>(left), static_cast<float>(top)};
}

std::string positionText(const Settings& settings) {
    if (!settings.position) return {};
    return numberText(settings.position->left) + ',' + numberText(settings.position->top);
}

constexpr std::size_t kStoredEffects = 4;

void takeEffects(const std::string& text, Settings& settings) {
    const auto groups = split(text, ';');
    for (std::size_t i = 0; i < std::min(groups.size(), kStoredEffects); ++i) {
        const auto fields = split(groups[i], ',');
        takeSwitch(fields[0], settings.EffectState[i].enabled);
        if (fields.size() > 1) takeNumber(fields[1], kPercent[0], settings.EffectState[i].level);
    }
}

std::string effectsText(const Settings& settings) {
    std::string text;
    for (std::size_t i = 0; i < kStoredEffects; ++i) {
        const EffectSwitch& effect = settings.EffectState[i];
        text += (i == 0 ? "" : ";") + std::to_string(-effect.enabled) + ',' + std::to_string(effect.level);
    }
    return text;
}

struct StoredValue {
    const char* name;
    void (*take)(const std::string& text, Settings& settings);
    std::string (*text)(const Settings& settings);
    const char* key = kProductKey;
};

constexpr StoredValue kLanguage{"language", [](const std::string& text, Settings& s) { s.language = text; },
                                [](const Settings& s) { return s.language; }};
constexpr StoredValue kPosition{"positionXY", takePosition, positionText};
constexpr StoredValue kMixDevice{
    "mix device",
    [](const std::string& text, Settings& s) { s.mixDeviceStored = takeNumber(text, kInputs, s.mixDevice); },
    [](const Settings& s) { return std::to_string(s.mixDevice); }};
constexpr StoredValue kForceMixDevice{
    "force mix device",
    [](const std::string& text, Settings& s) { takeNumber(text, kAll<std::int16_t>, s.forceMixDevice); },
    [](const Settings& s) { return std::to_string(s.forceMixDevice); }};
constexpr StoredValue kMidiDevice{
    "midi device", [](const std::string& text, Settings& s) { takeNumber(text, kAll<std::int32_t>, s.midiPort); },
    [](const Settings& s) { return std::to_string(s.midiPort); }};
constexpr StoredValue kPreset{"audio preset",
                              [](const std::string& text, Settings& s) { takeNumber(text, kPresets, s.currentPreset); },
                              [](const Settings& s) { return std::to_string(s.currentPreset); }};
constexpr StoredValue kEffects{"audio effects", takeEffects, effectsText};
constexpr StoredValue kTone{
    "bass & treble", [](const std::string& text, Settings& s) { takeList<std::int16_t>(text, kPercent, s.toneValue); },
    [](const Settings& s) { return listText(s.toneValue); }};
constexpr StoredValue kBalance{
    "balance", [](const std::string& text, Settings& s) { takeList<std::int32_t>(text, kBalances, s.balanceValue); },
    [](const Settings& s) { return listText(s.balanceValue); }};
constexpr StoredValue kVolume{
    "volume", [](const std::string& text, Settings& s) { takeList<std::int16_t>(text, kPercent, s.volume); },
    [](const Settings& s) { return listText(s.volume); }};
constexpr StoredValue kEffectsWindow{
    "effects window", [](const std::string& text, Settings& s) { takeSwitch(text, s.effectsWindowOpen); },
    [](const Settings& s) { return std::to_string(s.effectsWindowOpen); }};
constexpr StoredValue kChannelsWindow{
    "channels window", [](const std::string& text, Settings& s) { takeSwitch(text, s.channelsWindowOpen); },
    [](const Settings& s) { return std::to_string(s.channelsWindowOpen); }};

constexpr StoredValue kLinesUpVoices{
    "line up new voices", [](const std::string& text, Settings& s) { takeNumber(text, kSwitch, s.linesUpVoices); },
    [](const Settings& s) { return std::to_string(int{s.linesUpVoices}); }, R"(software\Tessaro\Melvane\timeline)"};

constexpr const StoredValue* kLoadOrder[] = {
    &kLanguage, &kPosition, &kMixDevice, &kForceMixDevice, &kMidiDevice,    &kPreset,       &kEffects,
    &kTone,     &kBalance,  &kVolume,    &kChannelsWindow, &kEffectsWindow, &kLinesUpVoices};
constexpr const StoredValue* kSaveOrder[] = {&kPosition, &kMixDevice, &kForceMixDevice, &kMidiDevice,     &kTone,
                                             &kBalance,  &kVolume,    &kEffectsWindow,  &kChannelsWindow, &kLanguage,
                                             &kEffects,  &kPreset,    &kLinesUpVoices};

}  // namespace

std::string SettingsStore::ReadSetting(const std::string& subKey, const std::string& valueName) const {
    return readValue(RegistryHive::HKEY_CURRENT_USER, subKey, valueName);
}

void SettingsStore::WriteSetting(const std::string& subKey, const std::string& valueName,
                                 const std::string& text) const {
    writeValue(RegistryHive::HKEY_CURRENT_USER, subKey, valueName, text);
}

void SettingsStore::load(Settings& settings) const {
    const RegistryBatch all = batch(RegistryAccess::read);
    if (const auto directory = ReadSetting(kSiblingKey, "rec directory"); !directory.empty())
        settings.recDirectory = directory;
    for (const StoredValue* value : kLoadOrder)
        if (const auto text = ReadSetting(value->key, value->name); !text.empty()) value->take(text, settings);
}

void SettingsStore::save(const Settings& settings) const {
    const RegistryBatch all = batch(RegistryAccess::change);
    for (const StoredValue* value : kSaveOrder)
        if (const auto text = value->text(settings); !text.empty()) WriteSetting(value->key, value->name, text);
}

std::vector<std::string> SettingsStore::texts(const Settings& settings) {
    std::vector<std::string> texts;
    for (const StoredValue* value : kSaveOrder) texts.push_back(value->text(settings));
    return texts;
}

void SettingsStore::saveChanges(const std::vector<std::string>& texts, const std::vector<std::string>& before) const {
    const RegistryBatch all = batch(RegistryAccess::change);
    for (std::size_t i = 0; i < texts.size(); ++i)
        if (!texts[i].empty() && texts[i] != before[i]) WriteSetting(kSaveOrder[i]->key, kSaveOrder[i]->name, texts[i]);
}

std::string SettingsStore::readValue(RegistryHive hive, const std::string& subKey, const std::string& valueName) const {
    const RegistryBatch once = batch(RegistryAccess::read);
    RegistryKey key = 0;
    registry_.RegOpenKeyA(hive, subKey, key);
    const std::string text = queryValue(key, valueName);
    registry_.RegCloseKey(key);
    return text;
}

void SettingsStore::writeValue(RegistryHive hive, const std::string& subKey, const std::string& valueName,
                               const std::string& text) const {
    const RegistryBatch once = batch(RegistryAccess::change);
    RegistryKey key = 0;
    if (registry_.RegCreateKeyA(hive, subKey, key) != ERROR_SUCCESS) return;
    // No terminating zero is stored; the reader needs none.
    const auto size = static_cast<std::uint32_t>(text.size());
    registry_.RegSetValueExA(key, valueName, 0, REG_SZ, text.data(), size);
    registry_.RegCloseKey(key);
}

std::string SettingsStore::queryValue(RegistryKey key, const std::string& valueName) const {
    std::uint32_t type = 0;
    std::uint32_t size = 0;
    if (registry_.RegQueryValueExA(key, valueName, type, nullptr, size) != ERROR_SUCCESS) return {};
    if (type != REG_SZ && type != REG_BINARY) return {};
    std::string data(std::max(size, std::uint32_t{2}), '\0');
    if (registry_.RegQueryValueExA(key, valueName, type, data.data(), size) != ERROR_SUCCESS) return {};
    if (type == REG_SZ) return data.substr(0, data.find('\0'));
    const auto byte = [&](std::size_t i) { return static_cast<unsigned>(static_cast<unsigned char>(data[i])); };
    return std::to_string(static_cast<std::int16_t>(byte(0) | byte(1) << 8));
}

}  // namespace melvane
