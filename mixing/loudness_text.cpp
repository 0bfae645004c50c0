#include "mixing/loudness_text.h"

#include <cmath>

#include "state/numbers.h"

namespace melvane {

std::string decibelText(double decibels) {
    constexpr double kSteps = 10;
    // A float's shortest text has one decimal at most then; never -0.
    return numberText(static_cast<float>(std::round(decibels * kSteps) / kSteps + 0.0));
}

std::string loudnessBrief(const modLang& language, const Loudness& loudness) {
    if (loudness.known())
        return decibelText(loudness.lufs) + " LUFS, " + decibelText(loudness.rangeLu) + " LU, " +
               decibelText(loudness.truePeakDb) + " dBTP";
    return language.ownText(loudness.silent() ? OwnText::soundIsSilence : OwnText::noLoudness);
}

std::string loudnessText(const modLang& language, const Loudness& loudness) {
    const std::string peak = language.ownText(OwnText::truePeak, decibelText(loudness.truePeakDb));
    if (loudness.silent()) return loudnessBrief(language, loudness);
    if (!loudness.known()) return loudnessBrief(language, loudness) + ", " + peak;
    return language.ownText(OwnText::loudness, decibelText(loudness.lufs)) + ", " +
           language.ownText(OwnText::loudnessRange, decibelText(loudness.rangeLu)) + ", " + peak;
}

std::string levelsText(const modLang& language, const LevelMatch& match) {
    switch (match.end) {
        case MatchEnd::matched:
            return language.ownText(OwnText::levelsMatched, decibelText(match.voiceLufs - match.songLufs)) + " " +
                   language.ownText(OwnText::levelsTrim, decibelText(match.levels.trim)) + ", " +
                   language.ownText(OwnText::levelsSong, std::to_string(match.levels.volume[0])) + ".";
        case MatchEnd::songSilent:
            return language.ownText(OwnText::levelsNoSong);
        case MatchEnd::voiceSilent:
            return language.ownText(OwnText::levelsNoVoice);
        case MatchEnd::outOfReach:
            break;
    }
    return language.ownText(OwnText::levelsOutOfReach);
}

}  // namespace melvane
