// Documents of jobs.
#include "job/job_text.h"
#include "tests/fuzz/door.h"

void melvane::fuzz::attack(std::string_view bytes) try {
    const Job job = readJobText(bytes, "/folder");
    Settings settings;
    settings.volume = job.volume;
    settings.toneValue = job.tone;
    settings.balanceValue = job.balance;
    settings.currentPreset = job.preset;
    for (std::size_t i = 0; i < job.effects.size(); ++i) settings.EffectState[i].level = job.effects[i].level;
    requireUsable(settings);
    require(job.key >= -5 && job.key <= 5 && job.sync >= -0.6F && job.sync <= 0.6F);
    // Names with bytes that are no text don't come back.
    Job again = readJobText(jobText(job, ""), "");
    again.files = job.files;
    again.soundFont = job.soundFont;
    require(again == job);
} catch (const JobError&) {
}
