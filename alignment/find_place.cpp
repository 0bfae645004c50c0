#include "alignment/find_place.h"

#include <algorithm>
#include <cmath>

#include "alignment/follow.h"

namespace melvane {

namespace {

constexpr std::size_t kPiece = 65536;  // frames, 6 s
constexpr std::size_t kMostPieces = 40;
constexpr std::size_t kMostTried = 24;
constexpr double kQuarter = 4;
constexpr std::size_t kFineError = 16;   // frames that a quarter of the rate may be wrong
constexpr std::size_t kReflected = 440;  // frames by which the direct sound may be earlier: 40 ms
constexpr double kShareOfSearch = 0.7;   // of the time
constexpr double kDoubtful = 9;          // deviations of chance at which it is as likely as not

// Of all guesses the one that most of the recording agrees with.
Followed best(const Trace& song, const Trace& voice, const std::vector<Line>& guesses) {
    const Pieces pieces = Pieces::of(voice.size(), kPiece / 4, kMostTried);
    Followed best;
    for (const Line& guess : guesses) {
        const Followed tried = follow(song, voice, pieces, guess, kCoarseError, 0);
        if (tried.height > best.height) best = tried;
    }
    return best;
}

double certaintyOf(double height) {
    return 1 / (1 + std::pow(kDoubtful / std::max(height, 1e-3), 4));
}

}  // namespace

std::optional<FoundPlace> findPlace(const Trace& song, const Trace& voice, const GoOn& goOn) {
    const Trace lowSong = quarter(song);
    const Trace lowVoice = quarter(voice);
    const auto guesses = searchCoarsely(lowSong, lowVoice, [&](double done) { return goOn(done * kShareOfSearch); });
    if (guesses.empty()) return std::nullopt;
    const Followed about = best(lowSong, lowVoice, guesses);
    const Line guess{about.line.lag * kQuarter, about.line.slope, about.line.pivot * kQuarter};
    const Pieces pieces = Pieces::of(voice.size(), kPiece, kMostPieces);
    const Followed found = follow(song, voice, pieces, guess, kFineError, kReflected);
    const double certainty = certaintyOf(found.height);
    if (!goOn(1) || certainty < kCertain) return std::nullopt;
    // The recording's frame r is the song's r - at(r): the song's rate in it is 1 - slope, and its frame 0 is where
    // r (1 - slope) is what stands here.
    const double slope = found.line.slope;
    return FoundPlace{(found.line.lag - slope * found.line.pivot) / kImprintRate, slope / (1 - slope) * 1e6, certainty};
}

}  // namespace melvane
