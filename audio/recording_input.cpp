#include "audio/recording_input.h"

#include "audio/modAudio.h"
#include "state/errors.h"

namespace melvane {

namespace {
constexpr std::uint32_t kFullLevel = 100;
constexpr std::int16_t kForced = 1;
}  // namespace

template <typename Visit>
void RecordingInput::forEachInput(Visit visit) const {
    for (std::int16_t n = 0; library_.BASS_RecordGetInputName(n); n = checkedCast<std::int16_t>(n + 1)) visit(n);
}

std::vector<std::string> RecordingInput::names() const {
    std::vector<std::string> names;
    forEachInput([&](int n) { names.push_back(AnsiToString(library_.BASS_RecordGetInputName(n))); });
    return names;
}

bool RecordingInput::followMixDevice() {
    return followDevice(settings_.knownInput, settings_.mixDevice, names());
}

bool RecordingInput::hasMixName(int input) const {
    const std::string name = AnsiToString(library_.BASS_RecordGetInputName(input));
    return name.find("Stereo") != std::string::npos || name.find("Hear") != std::string::npos;
}

bool RecordingInput::isAnalogue(int input) const {
    return (library_.BASS_RecordGetInput(input) & BASS_INPUT_TYPE_MASK) == BASS_INPUT_TYPE_ANALOG;
}

void RecordingInput::disable(int input) {
    library_.BASS_RecordSetInput(input, BASS_INPUT_OFF);
}

void RecordingInput::enable(int input, std::uint32_t level) {
    library_.BASS_RecordSetInput(input, BASS_INPUT_ON);
    library_.BASS_RecordSetInput(input, BASS_INPUT_LEVEL | level);
}

void RecordingInput::SaveUserInput() {
    forEachInput([this](int n) {
        const std::uint32_t setting = library_.BASS_RecordGetInput(n);
        if (setting & BASS_INPUT_OFF) return;
        run_.savedInput = n;
        run_.savedLevel = static_cast<std::int32_t>(LoWord(setting));
    });
    savedInput_ = {};
    followDevice(savedInput_, run_.savedInput, names());
}

void RecordingInput::DetectMixDevice() {
    bool found = false;
    const auto take = [&](int n) {
        settings_.mixDevice = static_cast<std::int16_t>(n);
        found = true;
    };
    forEachInput([&](int n) {
        const bool analogue = isAnalogue(n);
        disable(n);
        if (analogue && hasMixName(n)) take(n);
    });
    if (found) return;
    forEachInput([&](int n) {
        disable(n);
        if (hasMixName(n)) take(n);
    });
}

void RecordingInput::SelectMixInput() {
    missingInput_.clear();
    if (settings_.forceMixDevice == kForced) {
        forEachInput([this](int n) { disable(n); });
        if (followMixDevice()) return enable(settings_.mixDevice, kFullLevel);
        missingInput_ = settings_.knownInput.name;
        return;
    }
    bool found = false;
    forEachInput([&](int n) {
        const bool analogue = isAnalogue(n);
        disable(n);
        if (!analogue || !hasMixName(n)) return;
        enable(n, kFullLevel);
        found = true;
    });
    if (found) return;
    // Once for every input, but always the first one: the card's mix is looked for nowhere else.
    forEachInput([this](int n) {
        library_.BASS_RecordGetInput(n);
        disable(0);
        if (hasMixName(0)) enable(0, kFullLevel);
    });
}

bool RecordingInput::recordsCard() const {
    const auto isCard = [this](int n) { return isAnalogue(n) && hasMixName(n); };
    if (settings_.forceMixDevice == kForced) return isCard(settings_.mixDevice);
    for (int n = 0; library_.BASS_RecordGetInputName(n); ++n)
        if (isCard(n)) return true;
    return false;
}

bool RecordingInput::anyOn() const {
    bool on = false;
    forEachInput([&](int n) { on = on || !(library_.BASS_RecordGetInput(n) & BASS_INPUT_OFF); });
    return on;
}

std::vector<std::string> RecordingInput::namesOn() const {
    std::vector<std::string> on;
    forEachInput([&](int n) {
        if (!(library_.BASS_RecordGetInput(n) & BASS_INPUT_OFF))
            on.push_back(AnsiToString(library_.BASS_RecordGetInputName(n)));
    });
    return on;
}

void RecordingInput::RestoreUserInput() {
    forEachInput([this](int n) { disable(n); });
    if (followDevice(savedInput_, run_.savedInput, names()))
        enable(run_.savedInput, static_cast<std::uint32_t>(run_.savedLevel));
}

}  // namespace melvane
