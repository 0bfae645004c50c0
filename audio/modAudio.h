// Small helpers around the audio library, setting words and file names.
#pragma once

#include <cstdint>
#include <string>

#include "platform/audio_library.h"
#include "settings/settings_store.h"

namespace melvane {

// Changes only the volume, percent.
void SetChannelVolume(AudioLibrary& library, Handle handle, std::int16_t volume);
// Changes only the pan, -100..100.
void SetChannelPan(AudioLibrary& library, Handle handle, std::int32_t pan);
// `position` in bytes. For what seeks without knowing a library; the windows of today do not.
bool SetChannelPosition(AudioLibrary& library, Handle handle, std::int32_t position);

std::uint32_t LoWord(std::uint32_t value);
// `high` in the upper half, `low` in the lower one. Throws OverflowError when high * 65536 leaves the signed
// 32-bit range.
std::int32_t MakeLong(std::int32_t low, std::int32_t high);

// A copy of a text that the library owns; "" for none.
std::string AnsiToString(const char* text);

// The text behind the last point of the whole path; "" without a point.
std::string GetFileExtension(const std::string& path);
// The file name without folder and last extension; "" for a bare name and for a name without extension.
std::string GetFileTitle(const std::string& path);

// The current user's settings by key and name, for whoever uses these helpers alone; the program asks its store.
std::string GetSettingString(const SettingsStore& store, const std::string& key, const std::string& name);
void SaveSettingString(const SettingsStore& store, const std::string& key, const std::string& name,
                       const std::string& value);

// Of ASCII letters only.
std::string lowerCase(std::string text);

// True for the extensions of MIDI songs, in any case.
bool isMidiFile(const std::string& path);

}  // namespace melvane
