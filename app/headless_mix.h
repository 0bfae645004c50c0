// A mix without windows and without a sound device: on a card of its own, as fast as the processor allows. Used on one
// thread, any one.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

#include "app/mixer.h"
#include "app/silent_desktop.h"
#include "job/job.h"
#include "loudness/level_search.h"
#include "platform/audio_library_file.h"

namespace melvane {

struct Instruments {
    std::unique_ptr<MusicSystem> music;
    std::unique_ptr<SystemMixer> mixer;
};

// What such a mix stands on; everything outlives it.
struct Workshop {
    AudioLibraryFile& libraryFile;
    std::function<Instruments(AudioLibrary&)> createMusic;  // without the ports of the machine
    const FileNames& names;
    Destinations& destinations;
};

class HeadlessMix {
public:
    static constexpr std::uint32_t kBlockFrames = 4096;

    enum class Unwanted { keepPart, leaveNothing };

    // `library` is initialised, on the stepped clock. When it is no longer `wanted`, what waits is given up and what
    // was mixed is dealt with as `unwanted` says.
    HeadlessMix(AudioLibrary& library, const Instruments& instruments, const FileNames& names,
                Destinations& destinations, modLang& language, std::function<bool()> wanted, Unwanted unwanted);

    // Called now and then while something is waited for.
    std::function<void()> waiting = [] {};

    // How far song or voice is decoded while they are being opened, 0..1.
    std::optional<double> decoded();
    // Told how much of what comes before a mix was measured, 0..1.
    std::function<void(double done)> measuring = [](double) {};

    // Takes the files and settings of the mix.
    Mixer& mixer() { return mixer_; }

    // The files and settings of `job`, with the built-in synthesiser. False when the MIDI song can't be played.
    bool take(const Job& job);

    enum class End { told, interrupted, notBegun };  // told: by RunState
    // Mixes them while it is wanted; `progress` is told what is done, in frames of so many.
    End mix(const std::function<void(std::int64_t done, std::int64_t total)>& progress);

    // The levels with which song and voice fit each other. Nothing: RunState tells why, unless it isn't wanted.
    std::optional<LevelMatch> findLevels();

private:
    bool measured(double done);
    void rest();
    void giveUp();

    AudioLibrary& library_;
    const std::function<bool()> wanted_;
    const Unwanted unwanted_;
    SilentDialogs dialogs_;
    SilentShell shell_;
    Mixer mixer_;
};

}  // namespace melvane
