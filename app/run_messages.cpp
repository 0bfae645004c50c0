#include "app/run_messages.h"

#include <new>
#include <stdexcept>

#include "platform/registry.h"
#include "state/errors.h"

namespace melvane {

namespace {

constexpr const char* kEncoderName = "lame";

std::string failureMessage(const modLang& language, const RunState& run) {
    const auto line = [&](LangEntry entry, OwnText detail, const std::string& name = {}) {
        return language.lang(entry) + " " + language.ownText(detail, name);
    };
    switch (run.failure) {
        case RunFailure::none:
            return "";
        case RunFailure::pathsMissing:
            return language.lang(LangEntry::pathsMissing);
        case RunFailure::midiUnplayable:
            return language.lang(LangEntry::midiPlayFailed);
        case RunFailure::destinationIsSource:
            return line(LangEntry::mixingNotInitialised, OwnText::destinationIsSource);
        case RunFailure::backgroundUnreadable:
            return line(LangEntry::mixingNotInitialised, OwnText::cannotOpenBackground, run.backgroundPath);
        case RunFailure::vocalUnreadable:
            return line(LangEntry::mixingNotInitialised, OwnText::cannotOpenVocal, run.vocalPath);
        case RunFailure::backgroundLost:
            return language.ownText(OwnText::backgroundLost, run.backgroundPath);
        case RunFailure::vocalLost:
            return language.ownText(OwnText::vocalLost, run.vocalPath);
        case RunFailure::noThread:
            return line(LangEntry::mixingNotInitialised, OwnText::noThread);
        case RunFailure::captureNotStarted:
            return line(LangEntry::mixingNotInitialised, OwnText::captureFailed);
        case RunFailure::destinationNotWritable:
            return line(LangEntry::encodingFailed, OwnText::cannotWriteDestination, run.destinationPath);
        case RunFailure::destinationExists:
            return line(LangEntry::mixingNotInitialised, OwnText::destinationExists, run.destinationPath);
        case RunFailure::destinationBusy:
            return line(LangEntry::mixingNotInitialised, OwnText::destinationBusy, run.destinationPath);
        case RunFailure::encoderNotStarted:
            return line(LangEntry::encodingFailed, OwnText::encoderNotFound, kEncoderName);
        case RunFailure::encoderFailed:
            return line(LangEntry::encodingFailed, OwnText::encoderFailed, run.destinationPath);
    }
    return "";
}

}  // namespace

std::string runMessage(const modLang& language, const RunState& run) {
    const std::string message = failureMessage(language, run);
    if (message.empty() || run.partPath.empty()) return message;
    return message + " " + language.ownText(OwnText::mixedUntilThen, run.partPath);
}

std::string errorMessage(const modLang& language, const std::exception& error) {
    if (dynamic_cast<const OverflowError*>(&error)) return language.ownText(OwnText::numberTooLarge);
    if (dynamic_cast<const std::bad_alloc*>(&error)) return language.ownText(OwnText::outOfMemory);
    if (dynamic_cast<const std::logic_error*>(&error)) return language.ownText(OwnText::internalError);
    return language.ownText(OwnText::unexpectedError, error.what());
}

std::string midiMessage(const modLang& language, MidiFailure failure) {
    switch (failure) {
        case MidiFailure::none:
            return "";
        case MidiFailure::interfaceNotInitialised:
            return language.lang(LangEntry::midiNotInitialised);
        case MidiFailure::fileNotPlayable:
            return language.lang(LangEntry::midiFileNotPlayed);
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
