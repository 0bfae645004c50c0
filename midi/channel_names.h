// What the knobs of a channel are called.
#pragma once

#include <string>

#include "settings/modLang.h"

namespace melvane {

inline std::string channelVolumeName(const modLang& language, int number) {
    return language.lang(LangEntry::channelVolume) + std::to_string(number) +
           language.lang(LangEntry::channelVolumeEnd);
}

// One language has a text of its own before the number, the other an end behind the number.
inline std::string channelBalanceName(const modLang& language, int number) {
    const std::string& text = language.lang(LangEntry::channelBalance);
    return text.starts_with(' ') ? language.lang(LangEntry::channelVolume) + std::to_string(number) + text
                                 : text + std::to_string(number);
}

}  // namespace melvane
