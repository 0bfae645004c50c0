// What the user is told about a run that did not begin or did not end well.
#pragma once

#include <cstdint>
#include <exception>
#include <string>

#include "midi/midi_background.h"
#include "mixing/voice_search.h"
#include "settings/modLang.h"
#include "state/run_state.h"

namespace melvane {

// One line in the current language; "" when nothing failed.
std::string runMessage(const modLang& language, const RunState& run);
// Its part behind the first sentence: the cause with its cure, then what they belong to.
std::string runCause(const modLang& language, const RunState& run);
// What a mix that was finished lacks of its tags, and why; "" when nothing.
std::string tagMessage(const modLang& language, TagFault fault, int cause);
// Why a cover can't be had; "" when it can.
std::string coverCause(const modLang& language, TagFault fault);
// Why a file could not be decoded; "" where that is not the cause.
std::string decodingMessage(const modLang& language, DecodingFailure failure);
// Why a voice's place wasn't found; "" when it was, or when nobody wanted it any more.
std::string searchMessage(const modLang& language, const VoiceFound& found, const std::string& song,
                          const std::string& voice);
// What an error number (<cerrno>) of a file means and what helps; "" when nothing is known of it.
std::string readingCause(const modLang& language, int error);
std::string writingCause(const modLang& language, int error);
// Why a MIDI song can't be played; `cause`: the error number that reading its file ends with, or 0.
std::string midiMessage(const modLang& language, MidiFailure failure, int cause);
// Why the settings are not kept, as SettingsStore::failure() tells it; "" when they are.
std::string settingsMessage(const modLang& language, std::int32_t failure);

}  // namespace melvane
