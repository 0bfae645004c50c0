// Which recording input a mix is captured from, and the user's own input put back afterwards.
#pragma once

#include <string>
#include <vector>

#include "platform/audio_library.h"
#include "state/run_state.h"
#include "state/settings.h"

namespace melvane {

class RecordingInput {
public:
    RecordingInput(AudioLibrary& library, RunState& run, Settings& settings)
        : library_(library), run_(run), settings_(settings) {}

    // Remembers the input that is on, the last one where several are.
    void SaveUserInput();
    // Sets mixDevice to the card's mix as far as the names tell. Leaves every input off.
    void DetectMixDevice();
    // Finds mixDevice again under its present number. False when it has gone.
    bool followMixDevice();
    // Switches the inputs for a run: the forced one, or those whose names say that they carry the card's mix.
    void SelectMixInput();
    void RestoreUserInput();
    bool anyOn() const;
    std::vector<std::string> namesOn() const;
    // A run would record the card's mix and nothing else.
    bool recordsCard() const;
    // The forced input that has gone, so that SelectMixInput switched none on; empty otherwise.
    const std::string& missingInput() const { return missingInput_; }

private:
    // Calls visit(n) for each input in order. Throws OverflowError past input 32767.
    template <typename Visit>
    void forEachInput(Visit visit) const;
    std::vector<std::string> names() const;
    bool hasMixName(int input) const;
    bool isAnalogue(int input) const;
    void disable(int input);
    void enable(int input, std::uint32_t level);

    AudioLibrary& library_;
    RunState& run_;
    Settings& settings_;
    KnownDevice savedInput_;
    std::string missingInput_;
};

}  // namespace melvane
