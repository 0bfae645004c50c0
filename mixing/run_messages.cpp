#include "mixing/run_messages.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <optional>

#include "base/cache_folder.h"
#include "base/paths.h"
#include "platform/registry.h"

namespace melvane {

namespace {

constexpr const char* kEncoderName = "lame";
constexpr const char* kDecoderName = "ffmpeg";

// What is said of a failure: a sentence, then a detail with a name.
struct Row {
    RunFailure failure;
    std::optional<LangEntry> sentence;
    std::optional<OwnText> detail = {};
    std::string RunState::*name = nullptr;
};

const Row kRows[] = {
    {RunFailure::none, {}},
    {RunFailure::pathsMissing, LangEntry::pathsMissing},
    {RunFailure::destinationIsSource, LangEntry::mixingNotInitialised, OwnText::destinationIsSource},
    {RunFailure::destinationNotWritable, LangEntry::encodingFailed, OwnText::cannotWriteDestination,
     &RunState::destinationPath},
    {RunFailure::destinationExists, LangEntry::mixingNotInitialised, OwnText::destinationExists,
     &RunState::destinationPath},
    {RunFailure::destinationBusy, LangEntry::mixingNotInitialised, OwnText::destinationBusy,
     &RunState::destinationPath},
    {RunFailure::backgroundUnreadable, LangEntry::mixingNotInitialised, OwnText::cannotOpenBackground,
     &RunState::backgroundPath},
    {RunFailure::vocalUnreadable, LangEntry::mixingNotInitialised, OwnText::cannotOpenVocal, &RunState::vocalPath},
    {RunFailure::backgroundLost, {}, OwnText::backgroundLost, &RunState::backgroundPath},
    {RunFailure::vocalLost, {}, OwnText::vocalLost, &RunState::vocalPath},
    {RunFailure::midiUnplayable, LangEntry::midiPlayFailed},
    {RunFailure::noThread, LangEntry::mixingNotInitialised, OwnText::noThread},
    {RunFailure::captureNotStarted, LangEntry::mixingNotInitialised, OwnText::captureFailed},
    {RunFailure::encoderNotStarted, LangEntry::encodingFailed, OwnText::encoderNotFound},
    {RunFailure::encoderNotRun, LangEntry::encodingFailed, OwnText::encoderNotRun},
    {RunFailure::encoderFailed, LangEntry::encodingFailed, OwnText::encoderFailed, &RunState::destinationPath},
    {RunFailure::mixNotKept, LangEntry::mixingNotInitialised},
};

const Row& rowOf(RunFailure failure) {
    return *std::ranges::find(kRows, failure, &Row::failure);
}

struct Cause {
    int error;
    OwnText reading;
    OwnText writing;
};

constexpr Cause kCauses[] = {
    {ENOENT, OwnText::noSuchFile, OwnText::noSuchFolder},   {ENOTDIR, OwnText::noSuchFile, OwnText::noSuchFolder},
    {ENAMETOOLONG, OwnText::noSuchFile, OwnText::longName}, {EACCES, OwnText::mayNotRead, OwnText::mayNotWrite},
    {EPERM, OwnText::mayNotRead, OwnText::mayNotWrite},     {EROFS, OwnText::mayNotRead, OwnText::mayNotWrite},
    {EMFILE, OwnText::tooManyFiles, OwnText::tooManyFiles}, {ENFILE, OwnText::tooManyFiles, OwnText::tooManyFiles},
    {ELOOP, OwnText::noSuchFile, OwnText::deadLink},        {EISDIR, OwnText::noSuchFile, OwnText::noPlaceForFile},
    {ENOMEM, OwnText::outOfMemory, OwnText::outOfMemory},   {ENOSPC, OwnText::diskFull, OwnText::diskFull},
    {EDQUOT, OwnText::diskFull, OwnText::diskFull},         {EIO, OwnText::diskFails, OwnText::diskFails},
};

bool isUnreadable(RunFailure failure) {
    return failure == RunFailure::backgroundUnreadable || failure == RunFailure::vocalUnreadable;
}

std::optional<OwnText> meaning(int error, OwnText Cause::*sense) {
    const auto* const cause = std::ranges::find(kCauses, error, &Cause::error);
    return cause == std::end(kCauses) ? std::nullopt : std::optional(cause->*sense);
}

std::string meaningText(const modLang& language, int error, OwnText Cause::*sense) {
    const auto text = meaning(error, sense);
    return text ? language.ownText(*text) : "";
}

std::optional<OwnText> causeOf(const RunState& run) {
    const bool reading = isUnreadable(run.failure);
    if (run.cause == 0 && reading) return OwnText::noSoundInFile;
    if (run.cause == 0 && run.failure == RunFailure::encoderFailed) return OwnText::encoderCure;
    return meaning(run.cause, reading ? &Cause::reading : &Cause::writing);
}

void append(std::string& text, const std::string& sentence) {
    if (!text.empty() && !sentence.empty()) text += ' ';
    text += sentence;
}

}  // namespace

std::string readingCause(const modLang& language, int error) {
    return meaningText(language, error, &Cause::reading);
}

std::string writingCause(const modLang& language, int error) {
    return meaningText(language, error, &Cause::writing);
}

std::string runCause(const modLang& language, const RunState& run) {
    const Row& row = rowOf(run.failure);
    std::string text;
    if (run.failure == RunFailure::mixNotKept) return language.ownText(OwnText::noRoomToKeep, toText(cacheFolder()));
    if (run.cause == 0 && isUnreadable(run.failure)) text = decodingMessage(language, run.decoding);
    if (const auto cause = causeOf(run); text.empty() && cause) append(text, language.ownText(*cause, kEncoderName));
    if (row.detail) append(text, language.ownText(*row.detail, row.name ? run.*row.name : kEncoderName));
    if (run.failure != RunFailure::none && !run.partPath.empty())
        append(text, language.ownText(OwnText::mixedUntilThen, run.partPath));
    return text;
}

std::string runMessage(const modLang& language, const RunState& run) {
    const Row& row = rowOf(run.failure);
    std::string text = row.sentence ? language.lang(*row.sentence) : "";
    append(text, runCause(language, run));
    return text;
}

std::string tagMessage(const modLang& language, TagFault fault, int cause) {
    const std::string why = fault == TagFault::notWritten ? writingCause(language, cause) : coverCause(language, fault);
    std::string text = fault == TagFault::none         ? ""
                       : fault == TagFault::notWritten ? language.ownText(OwnText::mixLacksTags)
                                                       : language.ownText(OwnText::mixLacksCover);
    append(text, why);
    return text;
}

std::string coverCause(const modLang& language, TagFault fault) {
    switch (fault) {
        case TagFault::coverUnread:
            return language.ownText(OwnText::coverUnread);
        case TagFault::coverNoPicture:
            return language.ownText(OwnText::coverNoPicture);
        case TagFault::coverTooLarge:
            return language.ownText(OwnText::coverTooLarge);
        case TagFault::none:
        case TagFault::notWritten:
            break;
    }
    return "";
}

std::string decodingMessage(const modLang& language, DecodingFailure failure) {
    switch (failure) {
        case DecodingFailure::none:
        case DecodingFailure::noSound:
            return "";
        case DecodingFailure::notRead:
            return language.ownText(OwnText::diskFails);
        case DecodingFailure::noDecoder:
            return language.ownText(OwnText::needsDecoder, kDecoderName);
        case DecodingFailure::notRun:
            return language.ownText(OwnText::decoderNotRun, kDecoderName);
        case DecodingFailure::noRoom:
            return language.ownText(OwnText::noRoomToDecode, toText(cacheFolder()));
    }
    return "";
}

std::string searchMessage(const modLang& language, const VoiceFound& found, const std::string& song,
                          const std::string& voice) {
    RunState unread;
    switch (found.end) {
        case SearchEnd::found:
        case SearchEnd::givenUp:
            return "";
        case SearchEnd::noTrace:
            return language.ownText(OwnText::noTrace);
        case SearchEnd::songUnreadable:
            unread.failure = RunFailure::backgroundUnreadable;
            break;
        case SearchEnd::voiceUnreadable:
            unread.failure = RunFailure::vocalUnreadable;
            break;
    }
    unread.backgroundPath = song;
    unread.vocalPath = voice;
    unread.cause = found.cause;
    unread.decoding = found.decoding;
    return runCause(language, unread);
}

std::string midiMessage(const modLang& language, MidiFailure failure, int cause) {
    switch (failure) {
        case MidiFailure::none:
            return "";
        case MidiFailure::interfaceNotInitialised:
            return language.lang(LangEntry::midiNotInitialised);
        case MidiFailure::fileNotPlayable: {
            std::string text = language.lang(LangEntry::midiFileNotPlayed);
            append(text, readingCause(language, cause));
            return text;
        }
        case MidiFailure::operationNotApplied:
            return language.lang(LangEntry::midiNotApplied);
    }
    return "";
}

std::string settingsMessage(const modLang& language, std::int32_t failure) {
    if (failure == ERROR_SUCCESS) return "";
    const OwnText cause = failure == ERROR_DISK_FULL ? OwnText::diskFull : OwnText::settingsFolderRefuses;
    return language.ownText(OwnText::settingsNotKept) + " " + language.ownText(cause);
}

}  // namespace melvane
