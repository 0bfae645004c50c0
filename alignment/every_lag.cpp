#include "alignment/every_lag.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace melvane {

namespace {

constexpr std::int64_t kSamePlace = 100;  // frames between two places at least
constexpr std::size_t kGrain = 64;        // frames of the song whose power is counted together
constexpr std::int64_t kTaps = 8;         // frames on either side that tell what is between two
constexpr double kLeastOfPeak = 0.6;      // that the frame beside it has
constexpr double kLeastUnder = 0.5;       // of the most that lies under a recording's pieces

// [i] is the lag first + i.
struct Response {
    std::int64_t first = 0;
    std::vector<float> values;
};

// How far later than in the middle a line has a piece.
double turnOf(const Pieces& pieces, const Line& line, std::size_t piece) {
    return line.slope * (pieces.middle(piece) - line.pivot);
}

// A piece of the voice with the line's slope taken off.
void readStraight(const Trace& voice, const Pieces& pieces, const Line& line, std::size_t piece, std::span<float> out) {
    readSong(voice, {0, -line.slope, pieces.middle(piece)}, pieces.starts[piece], out);
}

// Moves a sound to be `frames` earlier.
void bringForward(std::span<Bin> bins, double frames) {
    const double turn = std::numbers::pi * frames / static_cast<double>(bins.size() - 1);
    for (std::size_t i = 0; i < bins.size(); ++i) bins[i] *= Bin(std::polar(1.0, turn * static_cast<double>(i)));
}

// Of the whole song, a block after the other, band by band: one that is half silent is worth no more for that.
std::vector<std::vector<float>> powersOf(Bands song, Fourier& fourier) {
    std::vector<std::vector<float>> powers(song.size(), std::vector<float>(fourier.bins().size()));
    for (std::size_t first = 0; first < framesOf(song); first += fourier.time().size()) {
        const Spectra block = spectraOf(song, fourier, [&](const Trace& band) {
            readVoice(band, static_cast<std::int64_t>(first), fourier.time());
        });
        for (std::size_t band = 0; band < song.size(); ++band) addPower(powers[band], block[band]);
    }
    return powers;
}

// The correlation of one piece with a block of the song adds to the lags at which the block is under it.
void addBlock(Response& sum, std::span<const float> correlation, std::int64_t pieceStart, std::int64_t blockStart) {
    const std::int64_t highest = pieceStart - blockStart - sum.first;
    for (std::int64_t i = 0; i < std::ssize(correlation); ++i) {
        const std::int64_t at = highest - i;
        if (at >= 0 && at < std::ssize(sum.values))
            sum.values[static_cast<std::size_t>(at)] += correlation[static_cast<std::size_t>(i)];
    }
}

// How much of a song there is up to a frame.
class Power {
public:
    explicit Power(Bands song) : sums_(framesOf(song) / kGrain + 2) {
        for (const Trace& band : song)
            for (std::size_t i = 0; i < band.size(); ++i)
                sums_[i / kGrain + 1] += static_cast<double>(band[i]) * band[i];
        for (std::size_t i = 1; i < sums_.size(); ++i) sums_[i] += sums_[i - 1];
    }
    double between(std::int64_t from, std::int64_t to) const { return upTo(to) - upTo(from); }

private:
    double upTo(std::int64_t frame) const {
        return sums_[static_cast<std::size_t>(
            std::clamp<std::int64_t>(frame / static_cast<std::int64_t>(kGrain), 0, std::ssize(sums_) - 1))];
    }
    std::vector<double> sums_;
};

// What a place says to be heard, and isn't, counts against it. Deviations of chance.
void levelOut(Response& response, Bands song, const Pieces& pieces, const Line& line) {
    const Power power(song);
    std::vector<double> under;  // the pieces, by lag
    for (std::int64_t i = 0; i < std::ssize(response.values); i += static_cast<std::int64_t>(kGrain)) {
        double sum = 0;
        for (std::size_t piece = 0; piece < pieces.count(); ++piece) {
            const std::int64_t first =
                pieces.starts[piece] - std::llround(turnOf(pieces, line, piece)) - response.first - i;
            sum += power.between(first, first + static_cast<std::int64_t>(pieces.length));
        }
        under.push_back(sum);
    }
    const double least = kLeastUnder * std::ranges::max(under) + 1e-9;
    double chance = 0;
    for (std::size_t i = 0; i < response.values.size(); ++i) {
        float& value = response.values[i];
        value /= static_cast<float>(std::sqrt(std::max(under[i / kGrain], least)));
        chance += static_cast<double>(value) * static_cast<double>(value);
    }
    chance = std::sqrt(chance / static_cast<double>(response.values.size()));
    for (float& value : response.values) value *= chance > 0 ? static_cast<float>(1 / chance) : 0.0F;
}

// Between two frames, `part` behind the first: a place is rarely at a frame.
double between(const std::vector<float>& values, std::int64_t i, double part) {
    double sum = 0;
    for (std::int64_t k = std::max<std::int64_t>(i - kTaps + 1, 0); k <= std::min(i + kTaps, std::ssize(values) - 1);
         ++k) {
        const double t = std::numbers::pi * (static_cast<double>(i - k) + part);
        const double tap = std::abs(t) < 1e-9 ? 1 : std::sin(t) / t * (0.5 + 0.5 * std::cos(t / kTaps));
        sum += tap * static_cast<double>(values[static_cast<std::size_t>(k)]);
    }
    return std::abs(sum);
}

Peak highestOf(const Response& response, std::int64_t except) {
    Peak peak;
    for (std::int64_t i = 0; i < std::ssize(response.values); ++i) {
        const auto height = static_cast<double>(std::abs(response.values[static_cast<std::size_t>(i)]));
        if (height < kLeastOfPeak * peak.height || (except >= 0 && std::abs(i - except) < kSamePlace)) continue;
        for (const double part : {-0.5, -0.25, 0.0, 0.25, 0.5})
            peak = std::max(peak, {static_cast<double>(response.first + i), between(response.values, i, part)},
                            [](const Peak& a, const Peak& b) { return a.height < b.height; });
    }
    return peak;
}

}  // namespace

Peaks searchEverywhere(Bands song, Bands voice, const Pieces& pieces, const Line& line, const GoOn& goOn) {
    const std::size_t length = pieces.length;
    const auto step = static_cast<std::int64_t>(length);
    Fourier fourier(2 * length);
    std::vector<Spectra> voices;
    for (std::size_t piece = 0; piece < pieces.count(); ++piece) {
        voices.push_back(spectraOf(voice, fourier, [&](const Trace& band) {
            readStraight(band, pieces, line, piece, fourier.time().first(length));
        }));
        const double turn = turnOf(pieces, line, piece);
        for (std::vector<Bin>& spectrum : voices.back()) bringForward(spectrum, turn - std::round(turn));
    }
    Response sum{-static_cast<std::int64_t>(framesOf(song)), std::vector<float>(framesOf(song) + framesOf(voice) + 1)};
    const std::size_t blocks = framesOf(song) / length + 2;
    const auto powers = powersOf(song, fourier);
    for (std::size_t block = 0; block < blocks; ++block) {
        const std::int64_t first = (static_cast<std::int64_t>(block) - 1) * step;
        Spectra songs = spectraOf(song, fourier, [&](const Trace& band) { readVoice(band, first, fourier.time()); });
        for (std::size_t band = 0; band < songs.size(); ++band) takeOffTones(songs[band], powers[band]);
        for (std::size_t piece = 0; piece < pieces.count(); ++piece) {
            std::ranges::fill(fourier.bins(), Bin());
            for (std::size_t band = 0; band < songs.size(); ++band)
                addCorrelation(fourier.bins(), songs[band], voices[piece][band]);
            fourier.backward();
            addBlock(sum, fourier.time().first(length),
                     pieces.starts[piece] - std::llround(turnOf(pieces, line, piece)), first);
        }
        if (!goOn(static_cast<double>(block + 1) / static_cast<double>(blocks))) return {};
    }
    levelOut(sum, song, pieces, line);
    const Peak best = highestOf(sum, -1);
    return {best, highestOf(sum, std::llround(best.lag) - sum.first)};
}

}  // namespace melvane
