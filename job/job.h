// All that makes a mix, as one record.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "state/midi_state.h"
#include "state/run_state.h"
#include "state/settings.h"
#include "state/tag_choice.h"
#include "state/voice_place.h"

namespace melvane {

// Of one effect switch of the effects window.
struct JobEffect {
    bool on = false;
    std::int16_t level = 0;  // 0..100

    bool operator==(const JobEffect&) const = default;
};

// Values and their order as in Settings and RunState; "" where a file was not chosen.
struct Job {
    PathFields files;
    VoicePlace place;
    float trim = 0;  // dB
    double key = 0;
    float sync = 0;
    std::optional<float> loudness;  // LUFS that an unheard mix is brought to
    std::array<std::int16_t, 2> volume = Settings{}.volume;
    std::array<std::int16_t, 4> tone = Settings{}.toneValue;
    std::array<std::int32_t, 2> balance = Settings{}.balanceValue;
    std::array<JobEffect, 5> effects;
    std::int16_t preset = 0;
    ChannelTable<ChannelChoice> channels;
    std::uint16_t soloed = 0;  // as MidiState::soloed
    std::int32_t midiPort = Settings{}.midiPort;
    std::string midiPortName;  // "": not known
    std::string soundFont;     // that the song was heard with
    TagChoice tags;

    // Song and voice are chosen.
    bool hasSources() const { return !files.background.empty() && !files.vocal.empty(); }
    bool operator==(const Job&) const = default;
};

// What of a job one control sets.
enum class JobPart {
    volume,
    sync,
    key,
    tone,
    balance,
    effectSwitch,
    effectLevel,
    preset,
    place,
    tags,
    trim,
    loudness,
    channelSwitch,
    channelVolume,
    channelBalance,
    channelInstrument,
    channelSolo,
};

struct JobChange {
    JobPart part;
    std::size_t index;  // of the source, tone, effect or channel; 0 where there is one of it

    bool operator==(const JobChange&) const = default;
};

// What controls have changed between the two; files, port and sounds are none's. Switching a channel changes its
// volume too and is told as that alone.
std::vector<JobChange> changesBetween(const Job& before, const Job& after);

}  // namespace melvane
