// The mixer lines of the MIDI synthesiser: its volume, split into left and right, is the balance of a MIDI background,
// and the tone of the speakers is its tone. Nothing here reports a line that is missing: what it should have done
// returns false. Used on the user-interface thread.
#pragma once

#include <cstdint>

#include "platform/dialogs.h"
#include "platform/system_mixer.h"
#include "state/settings.h"

namespace melvane {

// What the program knows of the mixer. Flags are -1 (true) or 0.
struct MixerLines {
    MixerHandle hMixer = 0;
    MIXERCONTROL synthVolumeControl;
    MIXERCONTROL speakerBassControl;
    MIXERCONTROL speakerTrebleControl;
    std::int16_t lastFound = 0;
    std::int32_t lastReadValue = 0;
    std::uint32_t lastMixerResult = kMixerNoError;  // of reading or writing a value
    std::int32_t leftLevel = 0;                     // of the synthesiser, 0..32767
    std::int32_t rightLevel = 0;
    std::int32_t savedSpeakerBass = 0;  // 0..65535; -1: could not be read
    std::int32_t savedSpeakerTreble = 0;
};

class mod_Mixer {
public:
    mod_Mixer(SystemMixer& mixer, const Settings& settings, Dialogs& dialogs)
        : mixer_(mixer), settings_(settings), dialogs_(dialogs) {}

    // Opens the mixer and looks for the three controls; a box tells when there is no mixer. Always 0.
    std::int16_t OpenMixer();
    // Remembers the tone of the speakers as it is now.
    void keepSpeakerTone();

    // The first control of the type on the line of the component type. A control that is not there stays as it was.
    bool GetMixerControl(MixerHandle hMixer, std::uint32_t componentType, std::uint32_t controlType,
                         MIXERCONTROL& control);
    // 0..65535, or -1 when it can't be read.
    std::int32_t GetControlValue(MixerHandle hMixer, const MIXERCONTROL& control);
    bool SetControlValue(MixerHandle hMixer, const MIXERCONTROL& control, std::int32_t value);
    bool SetControlValueStereo(MixerHandle hMixer, const MIXERCONTROL& control, std::int32_t left, std::int32_t right);

    // The background's balance. Throws OverflowError for one beyond 32-bit arithmetic.
    bool SetSynthBalance();
    // The background's bass and treble. Throw InvalidArgumentError for a level outside 0..100.
    bool SetSpeakerBass();
    bool SetSpeakerTreble();
    std::int32_t GetSpeakerBass();
    std::int32_t GetSpeakerTreble();
    // Writes the mirror of the value that was kept, as the tone itself is written mirrored.
    bool RestoreSpeakerBass();
    bool RestoreSpeakerTreble();

    const MixerLines& lines() const { return lines_; }

private:
    void findControl(std::uint32_t componentType, std::uint32_t controlType, MIXERCONTROL& control);
    bool setDetails(MixerHandle hMixer, const MIXERCONTROLDETAILS& details);

    SystemMixer& mixer_;
    const Settings& settings_;
    Dialogs& dialogs_;
    MixerLines lines_;
};

}  // namespace melvane
