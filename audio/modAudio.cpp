#include "audio/modAudio.h"

#include "state/errors.h"

namespace melvane {

void SetChannelVolume(AudioLibrary& library, Handle handle, std::int16_t volume) {
    std::uint32_t frequency = 0;
    std::uint32_t oldVolume = 0;
    std::int32_t pan = 0;
    library.BASS_ChannelGetAttributes(handle, frequency, oldVolume, pan);
    library.BASS_ChannelSetAttributes(handle, frequency, static_cast<std::uint32_t>(volume), pan);
}

void SetChannelPan(AudioLibrary& library, Handle handle, std::int32_t pan) {
    std::uint32_t frequency = 0;
    std::uint32_t volume = 0;
    std::int32_t oldPan = 0;
    library.BASS_ChannelGetAttributes(handle, frequency, volume, oldPan);
    library.BASS_ChannelSetAttributes(handle, frequency, volume, pan);
}

bool SetChannelPosition(AudioLibrary& library, Handle handle, std::int32_t position) {
    return library.BASS_ChannelSetPosition(handle, static_cast<std::uint32_t>(position));
}

std::uint32_t LoWord(std::uint32_t value) {
    return value & 0xFFFFU;
}

std::int32_t MakeLong(std::int32_t low, std::int32_t high) {
    checkedCast<std::int32_t>(std::int64_t{high} * 65536);
    return static_cast<std::int32_t>((static_cast<std::uint32_t>(high) & 0xFFFFU) << 16 |
                                     (static_cast<std::uint32_t>(low) & 0xFFFFU));
}

std::string AnsiToString(const char* text) {
    return text ? text : "";
}

std::string GetFileExtension(const std::string& path) {
    const auto point = path.rfind('.');
    return point == std::string::npos ? "" : path.substr(point + 1);
}

std::string GetFileTitle(const std::string& path) {
    for (const char separator : {'/', '\\'}) {
        const auto folderEnd = path.rfind(separator);
        if (folderEnd == std::string::npos) continue;
        const std::string name = path.substr(folderEnd + 1);
        if (const auto point = name.rfind('.'); point != std::string::npos) return name.substr(0, point);
    }
    return "";
}

std::string GetSettingString(const SettingsStore& store, const std::string& key, const std::string& name) {
    return store.ReadSetting(key, name);
}

void SaveSettingString(const SettingsStore& store, const std::string& key, const std::string& name,
                       const std::string& value) {
    store.WriteSetting(key, name, value);
}

std::string lowerCase(std::string text) {
    for (char& c : text)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return text;
}

bool isMidiFile(const std::string& path) {
    const std::string extension = lowerCase(GetFileExtension(path));
    // Not "midi" alone: "rmidi" and its like hold songs too.
    return extension == "kar" || extension == "mid" || extension.ends_with("idi");
}

}  // namespace melvane
