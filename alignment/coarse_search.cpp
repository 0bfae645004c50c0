#include "alignment/coarse_search.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iterator>

namespace melvane {

namespace {

constexpr std::size_t kPiece = 16384;  // frames
constexpr std::size_t kMostPieces = 24;
constexpr std::size_t kMostSpectra = 256;  // kept at once: 34 MB
constexpr std::size_t kCell = 16;          // frames that count as one place
constexpr std::size_t kPieceCells = kPiece / kCell;
constexpr double kSteepest = 150e-6;
constexpr std::size_t kGuesses = 8;
constexpr std::int64_t kApart = 16;   // cells between two guesses
constexpr float kMostOfAPiece = 100;  // mean deviations: no piece decides alone

// Of one piece, how alike it and the song are: [c] when the song's frames from (c - kPieceCells) * kCell on are under
// the piece's first.
using Row = std::vector<float>;

float highest(std::span<const float> values) {
    float most = 0;
    for (const float value : values) most = std::max(most, std::abs(value));
    return most;
}

// All rows become alike in what is chance.
void level(Row& row) {
    double sum = 0;
    for (const float height : row) sum += static_cast<double>(height);
    const auto mean = static_cast<float>(sum / static_cast<double>(row.size()));
    double deviation = 0;
    for (const float height : row) deviation += static_cast<double>(std::abs(height - mean));
    const auto scale = deviation > 0 ? static_cast<float>(static_cast<double>(row.size()) / deviation) : 0.0F;
    for (float& height : row) height = std::min((height - mean) * scale, kMostOfAPiece);
}

// Of the pieces that start there.
std::vector<Row> correlate(Bands song, Bands voice, std::span<const std::int64_t> starts, const GoOn& goOn) {
    Fourier fourier(2 * kPiece);
    std::vector<Spectra> voices;
    for (const std::int64_t start : starts)
        voices.push_back(spectraOf(voice, fourier,
                                   [&](const Trace& band) { readVoice(band, start, fourier.time().first(kPiece)); }));
    const std::size_t blocks = framesOf(song) / kPiece + 2;
    std::vector<Row> rows(starts.size(), Row(blocks * kPieceCells));
    for (std::size_t block = 0; block < blocks; ++block) {
        const std::int64_t first = (static_cast<std::int64_t>(block) - 1) * static_cast<std::int64_t>(kPiece);
        const auto songs = spectraOf(song, fourier, [&](const Trace& band) { readVoice(band, first, fourier.time()); });
        for (std::size_t piece = 0; piece < rows.size(); ++piece) {
            std::ranges::fill(fourier.bins(), Bin());
            for (std::size_t band = 0; band < songs.size(); ++band)
                addCorrelation(fourier.bins(), songs[band], voices[piece][band]);
            fourier.backward();
            for (std::size_t cell = 0; cell < kPieceCells; ++cell)
                rows[piece][block * kPieceCells + cell] = highest(fourier.time().subspan(cell * kCell, kCell));
        }
        if (!goOn(static_cast<double>(block + 1) / static_cast<double>(blocks))) return {};
    }
    std::ranges::for_each(rows, level);
    return rows;
}

// As many pieces at once as memory is to hold.
std::vector<Row> correlateAll(Bands song, Bands voice, const Pieces& pieces, const GoOn& goOn) {
    const std::size_t atOnce = std::max<std::size_t>(kMostSpectra / voice.size(), 1);
    std::vector<Row> rows;
    for (std::size_t first = 0; first < pieces.count(); first += atOnce) {
        const std::size_t count = std::min(atOnce, pieces.count() - first);
        const auto done = [&](std::size_t piece) {
            return static_cast<double>(piece) / static_cast<double>(pieces.count());
        };
        std::vector<Row> some = correlate(song, voice, std::span(pieces.starts).subspan(first, count),
                                          partOf(goOn, done(first), done(first + count)));
        if (some.empty()) return {};
        std::ranges::move(some, std::back_inserter(rows));
    }
    return rows;
}

// Of each lag, `first` cells and up, the steepness at which all pieces together are highest, and how high.
struct Lags {
    std::int64_t first = 0;
    std::vector<float> heights;
    std::vector<float> slopes;
};

// The cell of a row is the piece's start less the lag.
Row sumRows(const std::vector<Row>& rows, const Pieces& pieces, const Line& line, std::int64_t first,
            std::size_t lags) {
    Row sum(lags);
    for (std::size_t piece = 0; piece < rows.size(); ++piece) {
        const Row& row = rows[piece];
        const double start = static_cast<double>(pieces.starts[piece]) - line.at(pieces.middle(piece));
        const std::int64_t cell = std::llround(start / kCell) + static_cast<std::int64_t>(kPieceCells) - first;
        const std::int64_t from = std::max<std::int64_t>(cell - std::ssize(row) + 1, 0);
        const std::int64_t to = std::min(cell + 1, std::ssize(sum));
        for (std::int64_t lag = from; lag < to; ++lag)
            sum[static_cast<std::size_t>(lag)] += row[static_cast<std::size_t>(cell - lag)];
    }
    return sum;
}

Lags sumUp(const std::vector<Row>& rows, const Pieces& pieces, Bands song, Bands voice) {
    const double pivot = static_cast<double>(framesOf(voice)) / 2;
    const std::size_t count = (framesOf(song) + framesOf(voice)) / kCell + 1;
    Lags lags{-static_cast<std::int64_t>(framesOf(song) / kCell), Row(count), Row(count)};
    const int steps = static_cast<int>(std::ceil(kSteepest * pivot / kCell));
    for (int step = -steps; step <= steps; ++step) {
        const double slope = steps > 0 ? kSteepest * step / steps : 0;
        const Row sum = sumRows(rows, pieces, {0, slope, pivot}, lags.first, count);
        for (std::size_t i = 0; i < count; ++i) {
            if (sum[i] <= lags.heights[i]) continue;
            lags.heights[i] = sum[i];
            lags.slopes[i] = static_cast<float>(slope);
        }
    }
    return lags;
}

}  // namespace

std::vector<Line> searchCoarsely(Bands song, Bands voice, const GoOn& goOn) {
    const Pieces pieces = Pieces::of(framesOf(voice), kPiece, kMostPieces, kCell);
    const std::vector<Row> rows = correlateAll(song, voice, pieces, goOn);
    if (rows.empty()) return {};
    Lags lags = sumUp(rows, pieces, song, voice);
    std::vector<Line> guesses;
    while (guesses.size() < kGuesses) {
        const auto best = std::ranges::max_element(lags.heights);
        if (*best <= 0) break;
        const std::int64_t at = best - lags.heights.begin();
        guesses.push_back({static_cast<double>((lags.first + at) * static_cast<std::int64_t>(kCell)),
                           static_cast<double>(lags.slopes[static_cast<std::size_t>(at)]),
                           static_cast<double>(framesOf(voice)) / 2});
        std::fill(lags.heights.begin() + std::max<std::int64_t>(at - kApart, 0),
                  lags.heights.begin() + std::min(at + kApart + 1, std::ssize(lags.heights)), 0.0F);
    }
    return guesses;
}

}  // namespace melvane
