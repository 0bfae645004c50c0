// What the program keeps from one start to the next, with the values it has before anything was stored.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "state/known_device.h"

namespace melvane {

// Left and top of a window, in pixels of the screen.
struct WindowPosition {
    float left = 0;
    float top = 0;

    bool operator==(const WindowPosition&) const = default;
};

// One effect switch of the effects window.
struct EffectSwitch {
    std::int16_t enabled = 0;    // 0 or -1
    std::int32_t parameter = 0;  // what the effect is given, derived from level by its owner; never stored
    std::int16_t level = 0;      // 0..100

    bool operator==(const EffectSwitch&) const = default;
};

struct Settings {
    std::string recDirectory;                // UTF-8; empty: unset
    std::string language = "en";             // UI language code
    std::optional<WindowPosition> position;  // none: the window's own start position
    std::int16_t mixDevice = 0;              // recording input number, 0..32767
    bool mixDeviceStored = false;            // false: nothing usable was stored, the input is to be detected
    std::int16_t forceMixDevice = 0;         // 1: always use mixDevice
    std::int32_t midiPort = -5;              // MIDI output port; -5: choose automatically
    // What these two numbers stand for, in this session; never stored.
    KnownDevice knownInput;
    KnownDevice knownPort;
    std::int16_t currentPreset = 0;           // 0..13
    std::array<EffectSwitch, 5> EffectState;  // reverb, echo, chorus, flanger; the fifth is not stored
    // Background bass and treble, vocal bass and treble; 0 (full boost) .. 50 (flat) .. 100 (full cut).
    std::array<std::int16_t, 4> toneValue{50, 50, 50, 50};
    std::array<std::int32_t, 2> balanceValue{0, 0};  // background, vocal; -100..100, vocal to 103
    std::array<std::int16_t, 2> volume{100, 100};    // background, vocal; percent
    std::int16_t effectsWindowOpen = 0;              // 0 or -1
    std::int16_t channelsWindowOpen = 0;             // 0 or -1
    bool linesUpVoices = true;                       // new voices, by themselves

    bool operator==(const Settings&) const = default;
};

}  // namespace melvane
