#include "app/change_names.h"

#include <algorithm>
#include <array>

#include "midi/channel_names.h"

namespace melvane {

namespace {

constexpr std::array kVolumes = {LangEntry::backgroundVolume, LangEntry::vocalVolume};
constexpr std::array kBalances = {LangEntry::backgroundBalance, LangEntry::vocalBalance};
constexpr std::array kEffects = {OwnText::reverb, OwnText::echo, OwnText::chorus, OwnText::flanger,
                                 OwnText::spareEffect};

// Two of the numbered texts do not say what they are.
std::string toneName(const modLang& language, std::size_t index) {
    switch (index) {
        case 0:
            return language.lang(LangEntry::backgroundBass);
        case 1:
            return language.lang(LangEntry::backgroundTreble);
        default:
            return language.ownText(index == 2 ? OwnText::vocalBass : OwnText::vocalTreble);
    }
}

std::string nameOf(const modLang& language, const JobChange& change) {
    const std::size_t index = change.index;
    const int number = static_cast<int>(index) + 1;
    switch (change.part) {
        case JobPart::volume:
            return language.lang(kVolumes.at(index));
        case JobPart::sync:
            return language.lang(LangEntry::synchronization);
        case JobPart::key:
            return language.ownText(OwnText::keyShift);
        case JobPart::tone:
            return toneName(language, index);
        case JobPart::balance:
            return language.lang(kBalances.at(index));
        case JobPart::effectSwitch:
            return language.ownText(kEffects.at(index));
        case JobPart::effectLevel:
            return language.ownText(OwnText::effectLevel, language.ownText(kEffects.at(index)));
        case JobPart::preset:
            return language.ownText(OwnText::equaliser);
        case JobPart::place:
            return language.ownText(OwnText::voicePlace);
        case JobPart::tags:
            return language.ownText(OwnText::tagsOfMix);
        case JobPart::trim:
            return language.ownText(OwnText::voiceTrim);
        case JobPart::loudness:
            return language.ownText(OwnText::mixLoudness);
        case JobPart::channelSwitch:
            return language.lang(LangEntry::channelSwitch) + std::to_string(number);
        case JobPart::channelVolume:
            return channelVolumeName(language, number);
        case JobPart::channelBalance:
            return channelBalanceName(language, number);
        case JobPart::channelInstrument:
            return language.ownText(OwnText::channelInstrument, std::to_string(number));
        case JobPart::channelSolo:
            return language.ownText(OwnText::channelSolo, std::to_string(number));
    }
    return "";
}

bool isOfChannel(const JobChange& change) {
    return change.part >= JobPart::channelSwitch;
}

}  // namespace

std::string changeName(const modLang& language, const std::vector<JobChange>& changes) {
    if (changes.size() == 1) return nameOf(language, changes.front());
    const bool channels = std::ranges::all_of(changes, isOfChannel);
    return language.ownText(channels ? OwnText::midiChannels : OwnText::severalSettings);
}

}  // namespace melvane
