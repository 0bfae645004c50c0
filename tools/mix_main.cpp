// melvane-mix: one mix from the command line, on the stepped clock, without windows or sound device.
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <new>
#include <span>
#include <stdexcept>
#include <string>
#include <utility>

#include "app/headless_mix.h"
#include "app/interrupted_mixes.h"
#include "app/mixer_job.h"
#include "app/start_checks.h"
#include "audio/modAudio.h"
#include "base/paths.h"
#include "desktop/library_file.h"
#include "desktop/local_destinations.h"
#include "desktop/local_documents.h"
#include "desktop/local_file_names.h"
#include "desktop/private_folder.h"
#include "desktop/registry_file.h"
#include "job/job_file.h"
#include "mixing/failure_cause.h"
#include "mixing/loudness_text.h"
#include "mixing/run_messages.h"
#include "mixing/voice_search.h"
#include "music/music.h"
#include "tags/cover.h"
#include "tools/options.h"
#include "tools/reporter.h"

namespace melvane {

namespace {

constexpr int kDone = 0;
constexpr int kCouldNot = 1;
constexpr int kWrongUsage = 2;
constexpr int kSignalBase = 128;

volatile std::sig_atomic_t interruptedBy = 0;

void interrupt(int signal) {
    interruptedBy = signal;
}

void catchInterrupts() {
    struct sigaction action {};
    action.sa_handler = interrupt;
    action.sa_flags = static_cast<int>(SA_RESETHAND);  // a second one ends the program at once
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction before {};
        sigaction(signal, nullptr, &before);
        // Told to outlive its terminal.
        if (signal != SIGHUP || before.sa_handler != SIG_IGN) sigaction(signal, &action, nullptr);
    }
    // The encoder's exit status is wanted, whatever the parent had set.
    std::signal(SIGCHLD, SIG_DFL);
    // A file that may not grow shows as a failed write.
    std::signal(SIGXFSZ, SIG_IGN);
}

std::string existsMessage(const std::string& destination) {
    return destination + " exists already; --overwrite replaces it";
}

// What the options set of the tags, and the rest as it was.
void takeTags(const TagChoice& options, TagChoice& tags) {
    for (std::size_t field = 0; field < kTagFields; ++field)
        if (options.texts[field]) tags.texts[field] = options.texts[field];
    if (options.cover) tags.cover = options.cover;
    if (!options.wanted) tags.wanted = false;
}

// Files, key, place and tags as the options want them, and the rest of their job. Throws std::runtime_error.
Job jobOf(const MixOptions& options, const modLang& language) {
    Job job;
    LocalDocuments documents;
    try {
        if (!options.job.empty()) job = readJobFile(documents, options.job);
    } catch (const JobError& error) {
        throw std::runtime_error(jobMessage(language, error, options.job));
    }
    for (const auto& [given, file] : {std::pair(&options.background, &job.files.background),
                                      {&options.vocal, &job.files.vocal},
                                      {&options.destination, &job.files.destination},
                                      {&options.soundFont, &job.soundFont}})
        if (!given->empty()) *file = *given;
    if (options.key) job.key = *options.key;
    if (options.loudness) job.loudness = static_cast<float>(*options.loudness);
    if (options.trim) job.trim = static_cast<float>(*options.trim);
    const MixOptions::Sync sync = options.sync.value_or(MixOptions::Sync{job.sync, job.place});
    job.sync = options.findsPlace ? 0 : sync.offset;
    job.place = sync.place;
    takeTags(options.tags, job.tags);
    if (job.hasSources() && (options.findSync || !job.files.destination.empty())) return job;
    throw std::runtime_error(options.job + " names no song, voice or destination");
}

// Settings, song and files; false when the song can't be played.
bool prepare(const MixOptions& options, const Job& job, HeadlessMix& headless) {
    Mixer& mixer = headless.mixer();
    RegistryFile registry(RegistryFile::defaultPath());
    const SettingsStore store(registry);
    mixer.Form_Load(options.storedSettings ? &store : nullptr);
    Job whole = options.job.empty() ? takeJob(mixer) : job;
    whole.files = job.files;
    whole.key = job.key;
    whole.trim = job.trim;
    whole.loudness = job.loudness;
    whole.sync = job.sync;
    whole.place = job.place;
    whole.tags = job.tags;
    if (!headless.take(whole)) return false;
    for (const auto& change : options.changes) change(mixer.settings());
    for (const auto& change : options.channelChanges) change(mixer.midi());
    mixer.run().mayReplace = options.overwrite;
    return true;
}

// Puts the voice where its recording tells, or says why not: the exit status.
int lineUp(const MixOptions& options, const Job& job, Mixer& mixer, const modLang& language, AudioLibrary& library,
           Reporter& reporter) {
    RunState& run = mixer.run();
    const auto midi = run.isMidiBackground ? mixer.midi().reader() : nullptr;
    const VoiceFound found = findVoice(
        library, {job.files.background, run.isMidiBackground, midi, job.files.vocal, job.key}, [&](double done) {
            reporter.searching(done);
            return interruptedBy == 0;
        });
    run.voicePlace = found.place();
    if (found.end == SearchEnd::found) {
        options.findSync ? reporter.tellPlace(found) : reporter.placed(found);
        return kDone;
    }
    reporter.failed(found.end == SearchEnd::givenUp
                        ? "interrupted before the voice's place was found"
                        : searchMessage(language, found, job.files.background, job.files.vocal));
    return found.end == SearchEnd::givenUp ? kSignalBase + interruptedBy : kCouldNot;
}

// Sets the levels that fit, or says why there are none: the exit status.
int matchLevels(HeadlessMix& headless, const modLang& language, Reporter& reporter) {
    headless.measuring = [&reporter](double done) { reporter.measuring(done); };
    const auto match = headless.findLevels();
    if (interruptedBy != 0) {
        reporter.failed("interrupted before the levels were found");
        return kSignalBase + interruptedBy;
    }
    if (!match || match->end != MatchEnd::matched) {
        reporter.failed(match ? levelsText(language, *match) : runMessage(language, headless.mixer().run()));
        return kCouldNot;
    }
    headless.mixer().setLevels(match->levels);
    reporter.matched(*match);
    return kDone;
}

int mix(const MixOptions& options, const Job& job, HeadlessMix& headless, const modLang& language,
        AudioLibrary& library, Reporter& reporter) {
    Mixer& mixer = headless.mixer();
    if (!prepare(options, job, headless)) {
        const MidiBackground& midi = mixer.midi();
        reporter.failed(midiMessage(language, midi.failure(), readingError(job.files.background)) + " " +
                        midi.failureText());
        return kCouldNot;
    }
    catchInterrupts();
    if (options.findSync || options.findsPlace) {
        const int found = lineUp(options, job, mixer, language, library, reporter);
        if (found != kDone || options.findSync) return found;
    }
    if (options.matchesLevels)
        if (const int matched = matchLevels(headless, language, reporter); matched != kDone) return matched;
    headless.measuring = [&reporter](double done) { reporter.measuring(done); };
    const HeadlessMix::End end = headless.mix([&](auto done, auto total) { reporter.progress(done, total); });
    const RunState& run = mixer.run();
    if (run.failure != RunFailure::none) {
        const bool exists = run.failure == RunFailure::destinationExists;
        reporter.failed(exists ? existsMessage(job.files.destination) : runMessage(language, run));
        return kCouldNot;
    }
    if (end == HeadlessMix::End::notBegun) {
        reporter.failed("interrupted before the mix began");
        return kSignalBase + interruptedBy;
    }
    const bool interrupted = end == HeadlessMix::End::interrupted;
    reporter.finished(run, mixer.mixingRun().framesDone(), interrupted);
    if (run.tagFault != TagFault::none) reporter.note(tagMessage(language, run.tagFault, run.tagCause));
    if (run.voiceOutsideSong) reporter.note(language.ownText(OwnText::voiceOutsideSong));
    if (run.missesTarget) reporter.note(language.ownText(OwnText::mixMissesTarget, run.lastMixPath));
    return interrupted ? kSignalBase + interruptedBy : kDone;
}

Reporter::Style styleOf(const MixOptions& options) {
    using Style = Reporter::Style;
    if (options.json) return Style::json;
    return options.quiet || !isatty(STDERR_FILENO) ? Style::quiet : Style::bar;
}

bool mayNotReplace(const MixOptions& options, const Job& job) {
    std::error_code error;
    return !options.findSync && !options.overwrite && std::filesystem::exists(toPath(job.files.destination), error);
}

// A job's sounds that have gone make way for the best that are installed.
std::string soundFontOf(const MixOptions& options, const Job& job) {
    return isFile(job.soundFont) ? job.soundFont : options.soundFont;
}

int mixWith(const MixOptions& options, const Job& job, AudioLibrary& library, const LocalFileNames& names,
            Destinations& destinations, modLang& language, Reporter& reporter) {
    music::Music music = music::createMusic(library, {.soundFont = soundFontOf(options, job), .devicePorts = false});
    const Instruments instruments{std::move(music.system), std::move(music.mixer)};
    HeadlessMix headless(
        library, instruments, names, destinations, language, [] { return interruptedBy == 0; },
        HeadlessMix::Unwanted::keepPart);
    headless.waiting = [&] {
        if (const auto share = headless.decoded()) reporter.opening(*share);
    };
    return mix(options, job, headless, language, library, reporter);
}

int run(const MixOptions& options) {
    modLang language;
    Reporter reporter(styleOf(options), language);
    PrivateFolder::removeLeftovers();
    const LocalFileNames names;
    LocalDestinations destinations(LocalDestinations::usualJournal());
    language.InitLanguage(names, "en");
    const Job job = jobOf(options, language);
    LibraryFile file;
    StartResult start =
        startAudioLibrary(file, names, {CardClock::stepped, HeadlessMix::kBlockFrames, names.programDirectory()});
    if (start.message) {
        reporter.failed(language.lang(*start.message));
        return kCouldNot;
    }
    const std::string cover = job.tags.wanted ? job.tags.cover.value_or("") : "";
    if (const TagFault fault = cover.empty() ? TagFault::none : readCover(cover).fault; fault != TagFault::none) {
        reporter.failed(coverCause(language, fault) + " " + language.ownText(OwnText::cannotUseCover, cover));
        return kCouldNot;
    }
    for (const std::string& part : bringBackMixes(destinations, *start.library))
        reporter.note(language.ownText(OwnText::interruptedMix, part));
    if (mayNotReplace(options, job)) {
        reporter.failed(existsMessage(job.files.destination));
        return kCouldNot;
    }
    return mixWith(options, job, *start.library, names, destinations, language, reporter);
}

}  // namespace

}  // namespace melvane

int main(int argc, char** argv) {
    using namespace melvane;
    try {
        const MixOptions options = parseOptions(std::span<const char* const>(argv + 1, argv + std::max(argc, 1)));
        if (options.help || options.version) {
            std::fputs(options.help ? usageText(toolHelp()).c_str() : "melvane-mix " MELVANE_VERSION "\n", stdout);
            return std::fflush(stdout) == 0 ? kDone : kCouldNot;
        }
        const int result = run(options);
        if (std::fflush(stdout) != 0 || std::ferror(stdout))
            throw std::runtime_error("standard output cannot be written");
        return result;
    } catch (const UsageError& error) {
        std::fprintf(stderr, "melvane-mix: %s\nTry melvane-mix --help.\n", error.what());
        return kWrongUsage;
    } catch (const std::bad_alloc&) {
        std::fputs("melvane-mix: out of memory: close other programs\n", stderr);
        return kCouldNot;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "melvane-mix: %s\n", error.what());
        return kCouldNot;
    }
}
