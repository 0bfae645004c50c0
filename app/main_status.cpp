#include "app/main_status.h"

#include "base/paths.h"
#include "mixing/loudness_text.h"
#include "mixing/run_messages.h"
#include "state/numbers.h"

namespace melvane {

namespace {

constexpr double kStalledSeconds = 10;

std::string timesOf(std::int64_t framesDone, std::int64_t framesTotal) {
    return clockText(framesDone / kSampleRate) + " / " + clockText(framesTotal / kSampleRate);
}

}  // namespace

// Where there is little room, the file's name alone; its folder is told on hover.
StatusLine MainStatus::about(OwnText text, const std::string& file, bool warned, bool failed) const {
    const modLang& language = environment_.language;
    return {language.ownText(text, file), language.ownText(text, fileName(file)), warned, failed};
}

StatusLine MainStatus::measured(StatusLine line) const {
    const auto& loudness = mixer_.run().loudness;
    if (!loudness || mixer_.run().lastMixPath.empty()) return line;
    if (line.brief.empty()) line.brief = line.text;
    line.text += " – " + loudnessText(environment_.language, *loudness);
    line.brief += " – " + loudnessBrief(environment_.language, *loudness);
    return line;
}

// What can be done about it comes first.
StatusLine MainStatus::unreadable(OwnText text, const std::string& file) const {
    StatusLine line = about(text, file, false, true);
    const auto failure = environment_.library.decoding(file).failure;
    const std::string cause = decodingMessage(environment_.language, failure);
    if (!cause.empty()) line = {cause + " " + line.text, cause, false, true};
    return line;
}

std::optional<std::string> MainStatus::decoding() const {
    for (const std::string& file : {mixer_.fields().background, mixer_.fields().vocal}) {
        const Decoding decoding = environment_.library.decoding(file);
        if (decoding.running && decoding.progress > 0) return openingShare(decoding.progress);
    }
    return std::nullopt;
}

std::string MainStatus::openingShare(double share) const {
    constexpr int kPercent = 100;
    return environment_.language.ownText(OwnText::openingShare, std::to_string(static_cast<int>(share * kPercent)));
}

std::string MainStatus::opening() const {
    return decoding().value_or(environment_.language.ownText(OwnText::opening));
}

StatusLine MainStatus::line(const Facts& facts) const {
    const modLang& language = environment_.language;
    const MixingRun& mixing = mixer_.mixingRun();
    if (facts.fast) return {fastProgress(*facts.fast)};
    if (mixing.opening() || mixer_.sourceFiles().opening()) return {opening()};
    if (mixing.finishing()) return {language.ownText(OwnText::finishingFile)};
    if (mixer_.rehearsal().playing() && !facts.report.inRehearsal) {
        const bool outside = mixer_.run().voiceOutsideSong;
        return {language.ownText(outside ? OwnText::voiceOutsideSong : OwnText::rehearsing), "", outside};
    }
    if (!mixer_.run().isMixing) return ended(facts);
    const bool warned = mixer_.run().recordsSilence || mixer_.run().voiceOutsideSong || !facts.lostInput.empty() ||
                        !facts.lostPort.empty();
    return {timesOf(mixing.framesDone(), mixing.framesTotal()) + " – " + sound(facts), "", warned};
}

std::string MainStatus::fastProgress(const FastMix& mix) const {
    const modLang& language = environment_.language;
    constexpr double kPercent = 100;
    const bool levels = mix.task() == FastMix::Task::matchLevels;
    if (const auto measured = mix.measured())
        return language.ownText(levels ? OwnText::matchingLevels : OwnText::measuringMix,
                                std::to_string(static_cast<int>(*measured * kPercent)));
    if (mix.framesTotal() == 0) return mix.decoded() > 0 ? openingShare(mix.decoded()) : opening();
    const std::string times = timesOf(mix.framesDone(), mix.framesTotal());
    const auto left = mix.left();
    return times + " – " + language.ownText(OwnText::mixingFast) +
           (left ? " " + language.ownText(OwnText::timeLeft, clockText(left->count())) : "");
}

std::string MainStatus::sound(const Facts& facts) const {
    const modLang& language = environment_.language;
    if (environment_.library.encoderStalled(mixer_.run().recordChannel) >= kStalledSeconds)
        return language.ownText(OwnText::encoderStalled);
    if (const std::string& input = mixer_.input().missingInput(); !input.empty())
        return language.ownText(OwnText::inputGone, input);
    if (mixer_.run().recordsSilence) return language.ownText(OwnText::noMixInput);
    if (!facts.lostInput.empty()) return language.ownText(OwnText::inputLost, facts.lostInput);
    if (!facts.lostPort.empty()) return language.ownText(OwnText::portLost, facts.lostPort);
    if (mixer_.run().voiceOutsideSong) return language.ownText(OwnText::voiceOutsideSong);
    if (mixer_.run().isMidiBackground && !port().empty()) return port();
    // The device opens with the first frame.
    const bool silent = mixer_.mixingRun().framesDone() > 0 && !environment_.library.cardStatus().deviceOpen;
    return language.ownText(silent ? OwnText::playsSilently : OwnText::mixing);
}

// Settings that are not kept are told behind the result, whose colour stays.
StatusLine MainStatus::ended(const Facts& facts) const {
    StatusLine line = result(facts);
    const std::string unsaved = settingsMessage(environment_.language, facts.settingsFailure);
    if (line.text.empty() && !unsaved.empty()) return {unsaved, "", false, true};
    if (line.text.empty()) return {port().empty() ? environment_.language.ownText(OwnText::ready) : port()};
    for (std::string* text : {&line.text, &line.brief})
        if (!unsaved.empty() && !text->empty()) *text += " – " + unsaved;
    return line;
}

// All of them on hover, and the last, which can be listened to, where there is little room.
StatusLine MainStatus::broughtBack(const std::vector<std::string>& files) const {
    if (files.size() == 1) return about(OwnText::interruptedMix, files.back(), true);
    const std::string count =
        environment_.language.ownText(OwnText::interruptedMixes, std::to_string(files.size())) + " ";
    std::string all = files.back();
    for (std::size_t i = files.size() - 1; i > 0; --i) all += "\n" + files[i - 1];
    return {count + all, count + fileName(files.back()), true};
}

StatusLine MainStatus::result(const Facts& facts) const {
    const modLang& language = environment_.language;
    const PathFields& fields = mixer_.fields();
    const RunState& run = mixer_.run();
    const RunReport& report = facts.report;
    if (!report.told && facts.songUnreadable) return unreadable(OwnText::cannotOpenBackground, fields.background);
    if (!report.told && facts.voiceUnreadable) return unreadable(OwnText::cannotOpenVocal, fields.vocal);
    if (!report.told && !report.interrupted.empty()) return broughtBack(report.interrupted);
    if (!report.told) return {decoding().value_or(facts.linedUp)};
    if (report.cancelled) return {language.ownText(OwnText::mixCancelled)};  // however what was given up ended
    if (run.failure != RunFailure::none) return {runMessage(language, run), runCause(language, run), false, true};
    if (report.levels)
        return {levelsText(language, *report.levels), "", false, report.levels->end != MatchEnd::matched};
    if (run.recordsSilence)
        return about(OwnText::mixIsSilent, run.partPath.empty() ? run.destinationPath : run.partPath, true);
    if (!facts.lostInput.empty()) return {language.ownText(OwnText::mixLacksInput, facts.lostInput), "", true};
    if (report.lacksVoice && !run.lastMixPath.empty())
        return measured(about(OwnText::mixLacksVoice, run.lastMixPath, true));
    if (!run.partPath.empty()) return measured(about(OwnText::partKept, run.partPath));
    if (const auto lack = tagMessage(language, run.tagFault, run.tagCause); !lack.empty() && !run.lastMixPath.empty())
        return {lack + " " + run.lastMixPath, lack, true};
    if (report.stopped) return measured({language.ownText(OwnText::stopped)});
    if (!run.lastMixPath.empty() && run.missesTarget)
        return measured(about(OwnText::mixMissesTarget, run.lastMixPath, true));
    if (!run.lastMixPath.empty()) return measured(about(OwnText::mixFinished, run.lastMixPath));
    return {};
}

std::string MainStatus::port() const {
    const MidiBackground& midi = mixer_.midi();
    if (!midi.loaded()) return {};
    if (!midi.missingPort().empty()) return environment_.language.ownText(OwnText::portGone, midi.missingPort());
    return midi.onDevice() ? environment_.language.ownText(OwnText::portOutsideMix) : std::string();
}

}  // namespace melvane
