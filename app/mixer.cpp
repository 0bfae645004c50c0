#include "app/mixer.h"

namespace melvane {

Mixer::Mixer(const Environment& environment)
    : input_(environment.library, run_, settings_),
      sourceFiles_(fields_, settings_, environment.language, environment.dialogs),
      effects_(environment.library, run_, settings_),
      mixingRun_(environment.library, run_, fields_, settings_, input_, effects_, environment.language,
                 environment.dialogs, environment.names, environment.doEvents),
      sliders_(run_, settings_, mixingRun_) {}

void Mixer::Form_Load(const SettingsStore* store) {
    input_.SaveUserInput();
    if (!store) return;
    store->load(settings_);
    if (!settings_.mixDeviceStored) input_.DetectMixDevice();
}

void Mixer::Form_Unload(const SettingsStore* store) {
    mixingRun_.stopRec();
    if (store) store->save(settings_);
}

}  // namespace melvane
