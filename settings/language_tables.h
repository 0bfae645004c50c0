// The numbered texts of the program in both languages, UTF-8. Numbers that have no row are empty texts. The rows of the
// home page and the help page name pages, for the platform to tell their addresses.
#pragma once

#include <span>

namespace melvane {

inline constexpr int kLanguageEntries = 101;  // 0..100

// The entries that the program shows, by what they are for.
enum class LangEntry : int {
    audioFiles = 0,
    sourcesFirst = 1,
    compressedAudio = 2,
    cannotInitialise = 3,
    libraryMissing = 4,
    wrongVersion = 5,
    interfaceTooOld = 6,
    pathsMissing = 7,
    stopMixingFirst = 8,
    encodingFailed = 9,
    homePage = 10,
    continueToMixer = 13,
    audioSettings = 19,
    language = 20,
    midiDevice = 21,
    mixDevice = 22,
    mixDeviceHint = 23,
    forceMixDevice = 24,
    online = 25,
    helpPage = 26,
    overwrite = 27,
    midiNotApplied = 29,
    midiFileNotPlayed = 30,
    midiNotInitialised = 31,
    mixingNotInitialised = 32,
    midiPlayFailed = 33,
    close = 50,
    browseBackground = 51,
    browseVocal = 52,
    browseDestination = 53,
    backgroundVolume = 54,
    vocalVolume = 55,
    synchronization = 56,
    backgroundBass = 57,
    backgroundTreble = 58,
    vocalBass = 59,
    vocalTreble = 60,
    backgroundBalance = 61,
    vocalBalance = 62,
    channelVolume = 63,
    channelVolumeEnd = 64,
    channelBalance = 65,
    channelSwitch = 66,
    reset = 67,
    switchOffInstead = 81,
    menuHelp = 84,
    menuBackground = 85,
    menuVocal = 86,
    menuDestination = 87,
    preferences = 89,
    menuClose = 90,
    restoreMidi = 91,
};

struct LanguageRow {
    int number;
    const char* polish;
    const char* english;
};

std::span<const LanguageRow> languageRows();

}  // namespace melvane
