#include "alignment/find_place.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "alignment/follow.h"
#include "alignment/onsets.h"

namespace melvane {

namespace {

constexpr std::size_t kPiece = 65536;      // frames, 6 s
constexpr std::size_t kOnsetPiece = 4096;  // 12 s
constexpr std::size_t kMostPieces = 40;
constexpr std::size_t kMostTried = 24;
constexpr double kQuarter = 4;
constexpr double kLeastForDrift = 30;    // seconds of a recording
constexpr double kRival = 0.7;           // of the best, up to which another place is chance
constexpr std::size_t kSameLag = 16;     // frames by which two places may differ from a repetition
constexpr std::size_t kFineError = 16;   // frames that a quarter of the rate may be wrong
constexpr std::size_t kReflected = 440;  // frames by which the direct sound may be earlier: 40 ms
constexpr double kShareOfSearch = 0.7;   // of the time
constexpr double kDoubtful = 7.5;        // deviations of chance at which it is as likely as not

// How much of the song is the same so many frames later, 0..1.
double repeated(Bands song, double lag) {
    const Pieces pieces = Pieces::of(framesOf(song), kPiece / 4, kMostTried);
    const Followed same = follow(song, song, pieces, {}, kSameLag, 0);
    const Followed later = follow(song, song, pieces, {lag, 0, 0}, kSameLag, 0);
    return same.height > 0 ? later.height / same.height : 0;
}

// Of all guesses the one that most of the recording agrees with; none where another place has nearly as much and the
// song doesn't repeat itself that much: in any song with the same drums there are such places.
std::optional<Followed> best(Bands song, Bands voice, const Pieces& pieces, const std::vector<Line>& guesses) {
    Followed best;
    Followed rival;
    for (const Line& guess : guesses) {
        Followed tried = follow(song, voice, pieces, guess, kCoarseError, 0);
        if (tried.height > best.height) std::swap(tried, best);
        if (tried.height > rival.height) rival = tried;
    }
    if (rival.height <= kRival * best.height) return best;
    const double same = repeated(song, std::abs(rival.line.lag - best.line.lag));
    return rival.height <= (same + 1 - kRival) * best.height ? std::optional(best) : std::nullopt;
}

double certaintyOf(double height) {
    return 1 / (1 + std::pow(kDoubtful / std::max(height, 1e-3), 4));
}

std::optional<FoundPlace> placeOf(const Followed& found, double rate) {
    const double certainty = certaintyOf(found.height);
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
    const auto guesses = searchCoarsely(lowSong, lowVoice, [&](double done) { return goOn(done * kShareOfSearch); });
    if (guesses.empty()) return std::nullopt;
    const auto about = best(lowSong, lowVoice, Pieces::of(framesOf(lowVoice), kPiece / 4, kMostTried), guesses);
    if (!about) return std::nullopt;
    const Line guess{about->line.lag * kQuarter, about->line.slope, about->line.pivot * kQuarter};
    const Pieces pieces = Pieces::of(voice.size(), kPiece, kMostPieces);
    const Followed found = follow({&song, 1}, {&voice, 1}, pieces, guess, kFineError, kReflected);
    return goOn(1) ? placeOf(found, kImprintRate) : std::nullopt;
}

std::optional<FoundPlace> findPlaceByOnsets(const Trace& song, const Trace& voice, const GoOn& goOn) {
    const std::vector<Trace> begins = onsetsOf(song);
    const std::vector<Trace> heard = onsetsOf(voice);
    const auto guesses = searchCoarsely(begins, heard, goOn);
    if (guesses.empty()) return std::nullopt;
    const auto found = best(begins, heard, Pieces::of(framesOf(heard), kOnsetPiece, kMostTried), guesses);
    if (!found) return std::nullopt;
    return placeOf(*found, static_cast<double>(kImprintRate) / kOnsetStep);
}

}  // namespace melvane
