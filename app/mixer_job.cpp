#include "app/mixer_job.h"

#include <filesystem>
#include <utility>

#include "base/paths.h"
#include "state/window_patience.h"

namespace melvane {

namespace {

constexpr std::size_t kLevels = 4;  // the fifth effect has a switch alone

std::string knownName(const Settings& settings) {
    return settings.knownPort.number == settings.midiPort ? settings.knownPort.name : "";
}

void applyEffects(const Job& job, const Job& now, EffectChain& effects) {
    for (std::size_t i = 0; i < job.effects.size(); ++i) {
        const JobEffect& wanted = job.effects[i];
        if (i < kLevels && wanted.level != now.effects[i].level) effects.setEffectLevel(i, wanted.level, true);
        if (wanted.on != now.effects[i].on) effects.setEffectEnabled(i, wanted.on);
    }
    for (std::size_t i = 0; i < job.tone.size(); ++i)
        if (job.tone[i] != now.tone[i]) effects.setTone(i, job.tone[i]);
    for (std::size_t i = 0; i < job.balance.size(); ++i)
        if (job.balance[i] != now.balance[i]) effects.setBalance(i, job.balance[i]);
    if (job.preset != now.preset) effects.ApplyPreset(job.preset);
}

struct FilesThere {
    PathFields files;
    std::vector<std::string> gone;
};

// Takes out of `files` what isn't there. Asks the disk.
FilesThere withoutGone(PathFields files, const std::string& soundFont, const std::string& cover) {
    std::vector<std::string> gone;
    for (std::string* file : {&files.background, &files.vocal})
        if (!file->empty() && !isFile(*file)) gone.push_back(std::exchange(*file, {}));
    for (const std::string& file : {soundFont, cover})
        if (!file.empty() && !isFile(file)) gone.push_back(file);
    std::error_code error;
    if (!files.destination.empty() && !std::filesystem::is_directory(toPath(files.destination).parent_path(), error))
        gone.push_back(std::exchange(files.destination, {}));
    return {std::move(files), std::move(gone)};
}

}  // namespace

Job takeJob(Mixer& mixer) {
    const Settings& settings = mixer.settings();
    Job job;
    job.files = mixer.fields();
    job.place = mixer.run().voicePlace;
    job.loudness = mixer.run().targetLoudness;
    job.trim = mixer.run().voiceTrim;
    job.key = mixer.run().key;
    job.sync = mixer.run().syncOffset;
    job.volume = settings.volume;
    job.tone = settings.toneValue;
    job.balance = settings.balanceValue;
    for (std::size_t i = 0; i < job.effects.size(); ++i)
        job.effects[i] = {settings.EffectState[i].enabled != 0, settings.EffectState[i].level};
    job.preset = settings.currentPreset;
    if (mixer.midi().loaded()) job.channels = mixer.midi().choices();
    if (mixer.midi().loaded()) job.soloed = mixer.midi().state().soloed;
    job.midiPort = settings.midiPort;
    job.midiPortName = knownName(settings);
    job.soundFont = mixer.midi().soundFont();
    job.tags = mixer.tags();
    return job;
}

void applyKnobs(const Job& job, Mixer& mixer) {
    const Job now = takeJob(mixer);
    for (std::size_t i = 0; i < job.volume.size(); ++i)
        if (job.volume[i] != now.volume[i]) mixer.sliders().setVolume(i, job.volume[i]);
    if (job.key != now.key) mixer.sliders().setKey(job.key);
    if (job.sync != now.sync) mixer.sliders().setSync(job.sync);
    if (job.place != now.place) mixer.rehearsal().placeVoice(job.place);
    mixer.tags() = job.tags;
    if (job.trim != now.trim) mixer.rehearsal().trimVoice(job.trim);
    mixer.run().targetLoudness = job.loudness;
    applyEffects(job, now, mixer.effects());
    if (job.channels != now.channels && mixer.midi().loaded()) mixer.midi().choose(job.channels);
    if (job.soloed != mixer.midi().state().soloed && mixer.midi().loaded()) mixer.midi().solo(job.soloed);
}

std::vector<std::string> restoreJob(const Job& job, Mixer& mixer, const DoEvents& doEvents) {
    const auto wanted = [&mixer] { return !mixer.sourceFiles().givenUp(); };
    const auto asked = [files = job.files, font = job.soundFont, cover = job.tags.cover.value_or("")] {
        return withoutGone(files, font, cover);
    };
    const auto there = whileWanted(doEvents, wanted, asked);
    if (!there) return {};
    Settings& settings = mixer.settings();
    settings.midiPort = job.midiPort;
    settings.knownPort = {job.midiPort, job.midiPortName};
    mixer.sourceFiles().restore(there->files);
    applyKnobs(job, mixer);
    return there->gone;
}

}  // namespace melvane
