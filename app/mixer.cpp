#include "app/mixer.h"

#include "mixing/levelled_mix.h"

namespace melvane {

Mixer::Mixer(const Environment& with)
    : library_(with.library),
      input_(with.library, state_.run, state_.settings),
      midi_(with.music, with.systemMixer, state_.run, state_.settings, with.names, with.dialogs, with.doEvents),
      sourceFiles_(state_, midi_, with.language, with.dialogs, with.doEvents),
      effects_(with.library, state_.run, state_.settings, midi_.lines()),
      mixingRun_(with, state_, input_, effects_, midi_),
      rehearsal_(with, state_, mixingRun_.graph(), midi_),
      sliders_(state_.run, state_.settings, mixingRun_.graph()) {}

void Mixer::Form_Load(const SettingsStore* store) {
    input_.SaveUserInput();
    if (store) {
        store->load(state_.settings);
        if (!state_.settings.mixDeviceStored) input_.DetectMixDevice();
    }
    input_.followMixDevice();
    midi_.prepare();
}

std::optional<LevelMatch> Mixer::findLevels(const MeasuringProgress& goOn) {
    return melvane::findLevels(library_, state_, mixingRun_.graph(), midi_, goOn);
}

void Mixer::setLevels(const Levels& levels) {
    for (std::size_t source = 0; source < levels.volume.size(); ++source)
        sliders_.setVolume(source, static_cast<std::int16_t>(levels.volume.at(source)));
    rehearsal_.trimVoice(static_cast<float>(levels.trim));
}

void Mixer::Form_Unload() {
    sourceFiles_.giveUp();
    rehearsal_.end();
    mixingRun_.stopRec();
    midi_.close();
}

}  // namespace melvane
