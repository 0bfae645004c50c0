#include "alignment/find_place.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <utility>

#include "alignment/every_lag.h"
#include "alignment/follow.h"
#include "alignment/onsets.h"
#include "alignment/shades.h"

namespace melvane {

namespace {

constexpr std::size_t kPiece = 65536;      // frames, 6 s
constexpr std::size_t kOnsetPiece = 4096;  // 12 s
constexpr std::size_t kShadePiece = 2048;  // 12 s
constexpr std::size_t kMostPieces = 40;
constexpr std::size_t kMostTried = 24;
constexpr double kQuarter = 4;
constexpr double kLeastForDrift = 30;    // seconds of a recording
constexpr double kAhead = 1.4;           // deviations of the chance that two places don't share
constexpr double kRival = 0.7;           // of the best, up to which another place is chance
constexpr double kChance = 7;            // deviations, up to which any rival is chance
constexpr double kMoreThanSong = 0.5;    // by which a rival may have more than the song repeats itself
constexpr double kTwin = 0.85;           // of the best, from which on a rival
constexpr double kMoreThanLoop = 0.22;   // may have only this more
constexpr double kPlainOnsets = 25;      // deviations from which on onsets decide,
constexpr double kMoreOnsets = 1.15;     // and by how many times the most of another place
constexpr std::size_t kSameLag = 16;     // frames by which two places may differ from a repetition
constexpr std::size_t kFineError = 16;   // frames that a quarter of the rate may be wrong
constexpr double kUsualDrift = 50e-6;    // of recorders
constexpr std::size_t kReflected = 440;  // frames by which the direct sound may be earlier: 40 ms
constexpr double kShareOfSearch = 0.7;   // of the time
// Deviations of chance at which a place is as likely as not.
constexpr double kDoubtfulOfASecond = 1.1;
constexpr double kLeastDoubtful = 6;
constexpr double kMostDoubtful = 12;
constexpr double kMostDoubtfulShades = 8;  // in which drums tell no more than any other sound

// Of all guesses the one that most of the recording agrees with.
Followed bestOf(Bands song, Bands voice, const Pieces& pieces, const std::vector<Line>& guesses) {
    Followed best;
    for (const Line& guess : guesses) {
        Followed tried = follow(song, voice, pieces, guess, kCoarseError);
        if (tried.height > best.height) std::swap(tried, best);
    }
    return best;
}

// How much of the song is the same so many frames later, 0..1; from pieces of `length`.
double repeated(Bands song, double lag, std::size_t length) {
    const Pieces pieces = Pieces::of(framesOf(song), length, kMostTried);
    const Followed same = follow(song, song, pieces, {}, kSameLag);
    const Followed later = follow(song, song, pieces, {lag, 0, 0}, kSameLag);
    return same.height > 0 ? later.height / same.height : 0;
}

// Whether the best place is far enough above its rival, as there is one in a song that repeats itself and in any song
// with the same drums. What both explain has the same chance in both, so only the rest counts; and drums alone repeat
// themselves more than the song does. Of a loop that is heard as well as the best the song must be that loop again: if
// not, neither is what was recorded, as of a song that is played from its notes once more.
bool isClear(Bands song, const Peaks& peaks, std::size_t length) {
    const double ahead = peaks.best.height - peaks.rival.height;
    const double chance = std::sqrt(2 * ahead / std::max(peaks.best.height, 1e-9));
    if (ahead <= kAhead * chance) return false;
    const double share = peaks.rival.height / peaks.best.height;
    if (peaks.rival.height <= kChance || share <= kRival) return true;
    const double more = share - repeated(song, std::abs(peaks.rival.lag - peaks.best.lag), length);
    return more <= (share > kTwin ? kMoreThanLoop : kMoreThanSong);
}

// None where no place is the only one.
std::optional<Followed> theOnlyOne(Bands song, Bands voice, const Pieces& pieces, const std::vector<Line>& guesses,
                                   const GoOn& goOn) {
    const Followed best = bestOf(song, voice, pieces, guesses);
    const Peaks peaks = searchEverywhere(song, voice, pieces, best.line, goOn);
    if (!isClear(song, peaks, pieces.length)) return std::nullopt;
    if (std::abs(peaks.best.lag - best.line.lag) <= kSameLag) return best;
    return follow(song, voice, pieces, {peaks.best.lag, best.line.slope, best.line.pivot}, kSameLag);
}

// Of a song that is played from its notes once more each note comes a little early or late, so that a loop of it may
// sound more like the recording than what was recorded: the guess on which by far most begins at the same time, if
// there is one.
std::optional<Followed> byOnsets(const Trace& song, const Trace& voice, Bands lowSong, Bands lowVoice,
                                 const Pieces& pieces, const std::vector<Line>& guesses) {
    constexpr double kSteps = kQuarter / kOnsetStep;
    const std::vector<Trace> begins = onsetsOf(song);
    const std::vector<Trace> heard = onsetsOf(voice);
    const Pieces onsetPieces = Pieces::of(framesOf(heard), kOnsetPiece, kMostTried);
    std::vector<std::pair<double, const Line*>> heights{{0, nullptr}};
    for (const Line& guess : guesses) {
        const Line line{guess.lag * kSteps, guess.slope, guess.pivot * kSteps};
        heights.emplace_back(follow(begins, heard, onsetPieces, line, kSameLag).height, &guess);
    }
    std::ranges::sort(heights, std::greater());
    if (heights[0].first < std::max(kPlainOnsets, kMoreOnsets * heights[1].first)) return std::nullopt;
    return follow(lowSong, lowVoice, pieces, *heights[0].second, kCoarseError);
}

// A song of another voice may have the same drums, and the longer it is heard, the more they tell.
double certaintyOf(double height, double seconds, double mostDoubtful) {
    const double doubtful = std::clamp(kDoubtfulOfASecond * std::sqrt(seconds), kLeastDoubtful, mostDoubtful);
    return 1 / (1 + std::pow(doubtful / std::max(height, 1e-3), 4));
}

std::optional<FoundPlace> placeOf(const Followed& found, const Pieces& pieces, double rate, double mostDoubtful) {
    const double heard = static_cast<double>(pieces.count() * pieces.length) / rate;
    const double certainty = certaintyOf(found.height, heard, mostDoubtful);
    if (certainty < kCertain) return std::nullopt;
    // The recording's frame r is the song's r - at(r): the song's rate in it is 1 - slope, and its frame 0 is where
    // r (1 - slope) is what stands here.
    const double slope = found.line.pivot >= kLeastForDrift / 2 * rate ? found.line.slope : 0;
    return FoundPlace{(found.line.lag - slope * found.line.pivot) / rate, slope / (1 - slope) * 1e6, certainty};
}

}  // namespace

std::optional<FoundPlace> findPlace(const Trace& song, const Trace& voice, const GoOn& goOn) {
    const std::vector<Trace> lowSong{quarter(song)};
    const std::vector<Trace> lowVoice{quarter(voice)};
    const auto guesses = searchCoarsely(lowSong, lowVoice, partOf(goOn, 0, kShareOfSearch));
    if (guesses.empty()) return std::nullopt;
    const Pieces lowPieces = Pieces::of(framesOf(lowVoice), kPiece / 4, kMostTried);
    auto about = theOnlyOne(lowSong, lowVoice, lowPieces, guesses, partOf(goOn, kShareOfSearch, 1));
    if (!about && goOn(1)) about = byOnsets(song, voice, lowSong, lowVoice, lowPieces, guesses);
    if (!about) return std::nullopt;
    const Line guess{about->line.lag * kQuarter, about->line.slope, about->line.pivot * kQuarter};
    const Pieces pieces = Pieces::of(voice.size(), kPiece, kMostPieces);
    Followed found = follow({&song, 1}, {&voice, 1}, pieces, guess, kFineError);
    found.line = lineOfDirect({&song, 1}, {&voice, 1}, pieces, found.line, kReflected);
    return goOn(1) ? placeOf(found, pieces, kImprintRate, kMostDoubtful) : std::nullopt;
}

std::optional<FoundPlace> findPlaceByShades(const Trace& song, const Trace& voice, const GoOn& goOn) {
    const std::vector<Trace> wanted = shadesOf(song);
    const std::vector<Trace> heard = shadesOf(voice);
    auto guesses = searchCoarsely(wanted, heard, partOf(goOn, 0, kShareOfSearch));
    for (Line& guess : guesses) guess.slope = 0;  // below what its places tell
    if (guesses.empty()) return std::nullopt;
    const Pieces pieces = Pieces::of(framesOf(heard), kShadePiece, kMostTried);
    const auto about = theOnlyOne(wanted, heard, pieces, guesses, partOf(goOn, kShareOfSearch, 1));
    if (!about) return std::nullopt;
    const Followed found =
        follow(wanted, heard, pieces, {about->line.lag, 0, about->line.pivot}, kSameLag, kUsualDrift);
    return placeOf(found, pieces, static_cast<double>(kImprintRate) / kShadeStep, kMostDoubtfulShades);
}

}  // namespace melvane
