#include "app/mixer.h"

namespace melvane {

Mixer::Mixer(const Environment& with)
    : input_(with.library, run_, settings_),
      midi_(with.music, with.systemMixer, run_, settings_, with.names, with.dialogs, with.doEvents),
      sourceFiles_(run_, fields_, settings_, midi_, with.language, with.dialogs),
      effects_(with.library, run_, settings_, midi_.lines),
      mixingRun_({with.library, run_, fields_, settings_, input_, effects_, midi_, with.language, with.dialogs,
                  with.names, with.doEvents}),
      sliders_(run_, settings_, mixingRun_) {}

void Mixer::Form_Load(const SettingsStore* store) {
    input_.SaveUserInput();
    if (store) {
        store->load(settings_);
        if (!settings_.mixDeviceStored) input_.DetectMixDevice();
    }
    midi_.prepare();
}

void Mixer::Form_Unload() {
    mixingRun_.stopRec();
    midi_.close();
}

}  // namespace melvane
