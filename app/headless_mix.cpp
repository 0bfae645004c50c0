#include "app/headless_mix.h"

#include <chrono>
#include <thread>
#include <utility>

#include "app/mixer_job.h"

namespace melvane {

HeadlessMix::HeadlessMix(AudioLibrary& library, const Instruments& instruments, const FileNames& names,
                         Destinations& destinations, modLang& language, std::function<bool()> wanted, Unwanted unwanted)
    : library_(library),
      wanted_(std::move(wanted)),
      unwanted_(unwanted),
      mixer_({library, *instruments.music, *instruments.mixer, names, destinations, dialogs_, shell_, language,
              [this] { rest(); }}) {
    mixer_.mixingRun().measure([this](double done) { return measured(done); });
}

// There are no window events; what the mixer waits for is looked at now and then.
void HeadlessMix::rest() {
    waiting();
    if (!wanted_() && mixer_.mixingRun().busy()) giveUp();
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

std::optional<double> HeadlessMix::decoded() {
    if (!mixer_.mixingRun().opening()) return std::nullopt;
    for (const std::string& file : {mixer_.run().backgroundPath, mixer_.run().vocalPath})
        if (const Decoding decoding = library_.decoding(file); decoding.running) return decoding.progress;
    return std::nullopt;
}

void HeadlessMix::giveUp() {
    unwanted_ == Unwanted::keepPart ? mixer_.mixingRun().stopRec() : mixer_.mixingRun().cancel();
}

// Another recording input than the card's mix has no place on the stepped clock.
bool HeadlessMix::take(const Job& job) {
    mixer_.settings().forceMixDevice = 0;
    mixer_.sourceFiles().restore(job.files);
    applyKnobs(job, mixer_);
    return !mixer_.run().isMidiBackground || mixer_.midi().loaded();
}

bool HeadlessMix::measured(double done) {
    measuring(done);
    return wanted_();
}

std::optional<LevelMatch> HeadlessMix::findLevels() {
    return mixer_.findLevels([this](double done) { return measured(done); });
}

HeadlessMix::End HeadlessMix::mix(const std::function<void(std::int64_t, std::int64_t)>& progress) {
    MixingRun& run = mixer_.mixingRun();
    run.mi_button_Click();
    const bool begun = mixer_.run().isMixing || mixer_.run().failure != RunFailure::none;
    while (mixer_.run().isMixing && wanted_()) {
        library_.stepCard(kBlockFrames);
        run.Timer1_Timer();
        progress(run.framesDone(), run.framesTotal());
    }
    const bool interrupted = mixer_.run().isMixing;
    if (interrupted) giveUp();
    mixer_.Form_Unload();
    if (interrupted) return End::interrupted;
    return begun ? End::told : End::notBegun;
}

}  // namespace melvane
