#include "app/run_messages.h"

namespace melvane {

namespace {

constexpr int kNoPaths = 7;
constexpr int kEncodingFailed = 9;
constexpr int kMidiFileNotPlayed = 30;
constexpr int kMidiNotInitialised = 31;
constexpr int kNotInitialised = 32;
constexpr int kMidiFailed = 33;
constexpr const char* kEncoderName = "lame";

}  // namespace

std::string runMessage(const modLang& language, const RunState& run) {
    const auto line = [&](int entry, OwnText detail, const std::string& name = {}) {
        return language.lang(entry) + " " + language.ownText(detail, name);
    };
    switch (run.failure) {
        case RunFailure::none:
            return "";
        case RunFailure::pathsMissing:
            return language.lang(kNoPaths);
        case RunFailure::midiUnplayable:
            return language.lang(kMidiFailed);
        case RunFailure::destinationIsSource:
            return line(kNotInitialised, OwnText::destinationIsSource);
        case RunFailure::backgroundUnreadable:
            return line(kNotInitialised, OwnText::cannotOpenBackground, run.backgroundPath);
        case RunFailure::vocalUnreadable:
            return line(kNotInitialised, OwnText::cannotOpenVocal, run.vocalPath);
        case RunFailure::captureNotStarted:
            return line(kNotInitialised, OwnText::captureFailed);
        case RunFailure::destinationNotWritable:
            return line(kEncodingFailed, OwnText::cannotWriteDestination, run.destinationPath);
        case RunFailure::encoderNotStarted:
            return line(kEncodingFailed, OwnText::encoderNotFound, kEncoderName);
        case RunFailure::encoderFailed:
            return line(kEncodingFailed, OwnText::encoderFailed, run.destinationPath);
    }
    return "";
}

std::string midiMessage(const modLang& language, MidiFailure failure) {
    switch (failure) {
        case MidiFailure::none:
            return "";
        case MidiFailure::interfaceNotInitialised:
            return language.lang(kMidiNotInitialised);
        case MidiFailure::fileNotPlayable:
            return language.lang(kMidiFileNotPlayed);
    }
    return "";
}

}  // namespace melvane
