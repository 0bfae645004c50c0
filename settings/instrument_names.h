// Short English names of the instruments, the same in both languages.
#pragma once

#include <string>

#include "platform/midi_messages.h"

namespace melvane {

// Name of program 0..127 or kPercussionInstrument; empty for any other number.
std::string GetInstrumentName(int program);

}  // namespace melvane
