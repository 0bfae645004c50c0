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
#include <thread>

#include "app/interrupted_mixes.h"
#include "app/mixer.h"
#include "app/start_checks.h"
#include "audio/modAudio.h"
#include "base/paths.h"
#include "desktop/library_file.h"
#include "desktop/local_destinations.h"
#include "desktop/local_file_names.h"
#include "desktop/private_folder.h"
#include "desktop/registry_file.h"
#include "mixing/run_messages.h"
#include "mixing/voice_search.h"
#include "music/music.h"
#include "tools/console_dialogs.h"
#include "tools/options.h"
#include "tools/reporter.h"

namespace melvane {

namespace {

constexpr int kDone = 0;
constexpr int kCouldNot = 1;
constexpr int kWrongUsage = 2;
constexpr int kSignalBase = 128;
constexpr std::uint32_t kBlockFrames = 4096;

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

std::string existsMessage(const MixOptions& options) {
    return options.destination + " exists already; --overwrite replaces it";
}

// Settings, song and files; false when the song can't be played.
bool prepare(const MixOptions& options, Mixer& mixer) {
    RegistryFile registry(RegistryFile::defaultPath());
    const SettingsStore store(registry);
    mixer.Form_Load(options.storedSettings ? &store : nullptr);
    // Another recording input than the card's mix has no place on the stepped clock.
    mixer.settings().forceMixDevice = 0;
    for (const auto& change : options.changes) change(mixer.settings());
    mixer.run().key = options.key;
    mixer.run().syncOffset = options.syncOffset;
    mixer.run().voicePlace = options.voicePlace;
    mixer.sourceFiles().chooseBackground(options.background);
    if (mixer.run().isMidiBackground && !mixer.midi().loaded()) return false;
    for (const auto& change : options.channelChanges) change(mixer.midi());
    mixer.fields().vocal = options.vocal;
    mixer.fields().destination = options.destination;
    mixer.run().mayReplace = options.overwrite;
    return true;
}

// Puts the voice where its recording tells, or says why not: the exit status.
int lineUp(const MixOptions& options, Mixer& mixer, const modLang& language, AudioLibrary& library, MusicSystem& music,
           Reporter& reporter) {
    RunState& run = mixer.run();
    const std::string midi = run.isMidiBackground ? mixer.midi().state().midiBytes : "";
    const VoiceFound found = findVoice(library, music, {options.background, midi, options.vocal, options.key},
                                       [](double) { return interruptedBy == 0; });
    run.voicePlace = found.place();
    if (found.end == SearchEnd::found) {
        options.findSync ? reporter.tellPlace(found) : reporter.placed(found);
        return kDone;
    }
    reporter.failed(found.end == SearchEnd::givenUp
                        ? "interrupted before the voice's place was found"
                        : searchMessage(language, found.end, options.background, options.vocal));
    return found.end == SearchEnd::givenUp ? kSignalBase + interruptedBy : kCouldNot;
}

int mix(const MixOptions& options, Mixer& mixer, const modLang& language, AudioLibrary& library, MusicSystem& music,
        Reporter& reporter) {
    if (!prepare(options, mixer)) {
        const MidiBackground& midi = mixer.midi();
        reporter.failed(midiMessage(language, midi.failure()) + " " + midi.failureText());
        return kCouldNot;
    }
    catchInterrupts();
    if (options.findSync || options.findsPlace) {
        const int found = lineUp(options, mixer, language, library, music, reporter);
        if (found != kDone || options.findSync) return found;
    }
    MixingRun& run = mixer.mixingRun();
    run.mi_button_Click();
    if (interruptedBy && !mixer.run().isMixing && mixer.run().failure == RunFailure::none) {
        reporter.failed("interrupted before the mix began");
        return kSignalBase + interruptedBy;
    }
    while (mixer.run().isMixing && !interruptedBy) {
        library.stepCard(kBlockFrames);
        run.Timer1_Timer();
        reporter.progress(run.framesDone(), run.framesTotal());
    }
    const bool interrupted = mixer.run().isMixing;
    mixer.Form_Unload();
    if (mixer.run().failure != RunFailure::none) {
        const bool exists = mixer.run().failure == RunFailure::destinationExists;
        reporter.failed(exists ? existsMessage(options) : runMessage(language, mixer.run()));
        return kCouldNot;
    }
    reporter.finished(mixer.run().lastMixPath, run.framesDone(), interrupted);
    return interrupted ? kSignalBase + interruptedBy : kDone;
}

Reporter::Style styleOf(const MixOptions& options) {
    using Style = Reporter::Style;
    if (options.json) return Style::json;
    return options.quiet || !isatty(STDERR_FILENO) ? Style::quiet : Style::bar;
}

bool mayNotReplace(const MixOptions& options) {
    std::error_code error;
    return !options.overwrite && std::filesystem::exists(toPath(options.destination), error);
}

// While song and voice are being opened.
void duringOpening(MixingRun& run, const RunState& state, const AudioLibrary& library, Reporter& reporter) {
    if (interruptedBy && run.busy()) run.stopRec();
    for (const std::string& file : {state.backgroundPath, state.vocalPath}) {
        const Decoding decoding = library.decoding(file);
        if (run.opening() && decoding.running) reporter.opening(decoding.progress);
    }
}

int mixWith(const MixOptions& options, AudioLibrary& library, const LocalFileNames& names, Destinations& destinations,
            modLang& language, Reporter& reporter) {
    ConsoleDialogs dialogs;
    ConsoleShell shell;
    Mixer* running = nullptr;
    const auto doEvents = [&] {
        if (running) duringOpening(running->mixingRun(), running->run(), library, reporter);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    };
    const music::Music music = music::createMusic(library, {.soundFont = options.soundFont, .devicePorts = false});
    Mixer mixer({library, *music.system, *music.mixer, names, destinations, dialogs, shell, language, doEvents});
    running = &mixer;
    return mix(options, mixer, language, library, *music.system, reporter);
}

int run(const MixOptions& options) {
    Reporter reporter(styleOf(options));
    modLang language;
    PrivateFolder::removeLeftovers();
    const LocalFileNames names;
    LocalDestinations destinations(LocalDestinations::usualJournal());
    language.InitLanguage(names.systemDirectory(), "en");
    LibraryFile file;
    StartResult start = startAudioLibrary(file, names, {CardClock::stepped, kBlockFrames, names.programDirectory()});
    if (start.message) {
        reporter.failed(language.lang(*start.message));
        return kCouldNot;
    }
    for (const std::string& part : bringBackMixes(destinations, *start.library))
        reporter.note(language.ownText(OwnText::interruptedMix, part));
    if (mayNotReplace(options)) {
        reporter.failed(existsMessage(options));
        return kCouldNot;
    }
    return mixWith(options, *start.library, names, destinations, language, reporter);
}

}  // namespace

}  // namespace melvane

int main(int argc, char** argv) {
    using namespace melvane;
    try {
        const MixOptions options = parseOptions(std::span<const char* const>(argv + 1, argv + std::max(argc, 1)));
        if (options.help || options.version) {
            std::fputs(options.help ? usageText().c_str() : "melvane-mix " MELVANE_VERSION "\n", stdout);
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
