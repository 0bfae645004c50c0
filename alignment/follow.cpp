#include "alignment/follow.h"

#include <algorithm>
#include <cmath>

namespace melvane {

namespace {

constexpr double kSteepest = 200e-6;  // off the guess
constexpr double kFewestSteps = 50;   // up to there
constexpr float kDirect = 0.5F;       // of what is heard best, from which on it is the direct sound
constexpr double kRest = 0.1;         // of the mean power: what is fainter is not made louder
constexpr std::size_t kOff = 8;       // frames that the line may be wrong

// How alike voice and song are, by how many frames later than guessed; in deviations of chance.
using Row = std::vector<float>;

// The deviation that the correlation of these bins has in the middle.
double chanceOf(std::span<const Bin> bins) {
    double power = 0;
    for (const Bin bin : bins) power += static_cast<double>(std::norm(bin));
    return 2 * std::sqrt(power);
}

void takeSong(Fourier& fourier, const Trace& song, const Line& line, std::int64_t start, std::size_t length,
              std::vector<Bin>& spectrum) {
    std::ranges::fill(fourier.time(), 0.0F);
    readSong(song, line, start, fourier.time().first(length));
    fourier.forward();
    std::ranges::copy(fourier.bins(), spectrum.begin());
}

// With `reach` frames around it; into the transform's bins.
void takeVoice(Fourier& fourier, const Trace& voice, std::int64_t start, std::size_t length, std::size_t reach) {
    std::ranges::fill(fourier.time(), 0.0F);
    readVoice(voice, start - static_cast<std::int64_t>(reach), fourier.time().first(length + 2 * reach));
    fourier.forward();
}

// [reach] of a row is the guess.
std::vector<Row> correlatePieces(Bands song, Bands voice, const Pieces& pieces, const Line& guess, std::size_t reach) {
    const std::size_t length = pieces.length;
    Fourier fourier(2 * length);
    const auto time = fourier.time();
    std::vector<Bin> spectrum(length + 1);
    std::vector<Bin> sum(length + 1);
    std::vector<float> power(length + 1);
    std::vector<Row> rows;
    for (const std::int64_t start : pieces.starts) {
        std::ranges::fill(sum, Bin());
        for (std::size_t band = 0; band < song.size(); ++band) {
            takeSong(fourier, song[band], guess, start, length, spectrum);
            std::ranges::fill(power, 0.0F);
            addPower(power, spectrum);
            takeOffTones(spectrum, power);
            takeVoice(fourier, voice[band], start, length, reach);
            addCorrelation(sum, fourier.bins(), spectrum);
        }
        std::ranges::copy(sum, fourier.bins().begin());
        const double chance = chanceOf(fourier.bins());
        fourier.backward();
        Row row(time.begin(), time.begin() + static_cast<std::ptrdiff_t>(2 * reach + 1));
        for (float& value : row) value *= chance > 0 ? static_cast<float>(1 / chance) : 0.0F;
        rows.push_back(std::move(row));
    }
    return rows;
}

// By the cubic through the four frames around.
float between(const Row& row, double at) {
    const double floor = std::floor(at);
    const auto i = static_cast<std::int64_t>(floor);
    if (i < 1 || i + 2 >= std::ssize(row)) return 0;
    const auto t = static_cast<float>(at - floor);
    const float* const y = &row[static_cast<std::size_t>(i - 1)];
    return y[1] +
           t / 2 * (y[2] - y[0] + t * (2 * y[0] - 5 * y[1] + 4 * y[2] - y[3] + t * (3 * (y[1] - y[2]) + y[3] - y[0])));
}

// How far off the guess a line is in the middle of a piece.
double turned(const Pieces& pieces, const Line& guess, double slope, std::size_t piece) {
    return slope * (pieces.middle(piece) - guess.pivot);
}

// Without their polarity, which a microphone may turn; in deviations of chance again.
Row sumAlong(const std::vector<Row>& rows, const Pieces& pieces, const Line& guess, double slope) {
    Row sum(rows.front().size());
    for (std::size_t piece = 0; piece < rows.size(); ++piece) {
        const double turn = turned(pieces, guess, slope, piece);
        for (std::size_t i = 0; i < sum.size(); ++i) sum[i] += between(rows[piece], static_cast<double>(i) + turn);
    }
    for (float& value : sum) value = std::abs(value) / std::sqrt(static_cast<float>(rows.size()));
    return sum;
}

// Of the values around [at]: where between them the top is, -0.5..0.5.
template <typename Values>
double topBeside(const Values& values, std::size_t at) {
    if (at == 0 || at + 1 >= values.size()) return 0;
    const auto before = static_cast<double>(values[at - 1]);
    const auto behind = static_cast<double>(values[at + 1]);
    const double bend = before - 2 * static_cast<double>(values[at]) + behind;
    return bend < 0 ? std::clamp((before - behind) / (2 * bend), -0.5, 0.5) : 0;
}

// Of the top, which is rarely at a frame.
double heightOf(const Row& response) {
    const auto top = static_cast<std::size_t>(std::ranges::max_element(response) - response.begin());
    const double beside = topBeside(response, top);
    const double turn =
        top == 0 || top + 1 >= response.size() ? 0 : static_cast<double>(response[top + 1] - response[top - 1]);
    return static_cast<double>(response[top]) + beside * turn / 4;
}

// What the guess lacks in steepness: where all pieces together are highest, less the deviations by which that is
// unusual.
double findTurn(const std::vector<Row>& rows, const Pieces& pieces, const Line& guess, std::size_t error,
                double usual) {
    const double span = pieces.middle(pieces.count() - 1) - guess.pivot;
    if (pieces.count() < 2 || span <= 0) return 0;
    const double stepsAFrame = std::max(1.0, kFewestSteps / (kSteepest * span));
    const double most = std::min(static_cast<double>(error), kSteepest * span);
    const int steps = static_cast<int>(std::ceil(most * stepsAFrame));
    std::vector<double> heights;
    for (int step = -steps; step <= steps; ++step) {
        const double slope = step / stepsAFrame / span;
        const double height = heightOf(sumAlong(rows, pieces, guess, slope));
        const double strange = (guess.slope + slope) / usual;
        heights.push_back(std::sqrt(std::max(height * height - strange * strange, 0.0)));
    }
    const auto best = static_cast<std::size_t>(std::ranges::max_element(heights) - heights.begin());
    return (static_cast<double>(best) - steps + topBeside(heights, best)) / stepsAFrame / span;
}

// What of the song is heard how many frames later, all pieces together: so the song's own tones, which change, are
// known well enough to be divided out. [reach] is the line.
Row impulseOf(Bands song, Bands voice, const Pieces& pieces, const Line& line, std::size_t reach) {
    const std::size_t length = pieces.length;
    Fourier fourier(2 * length);
    const auto time = fourier.time();
    std::vector<Bin> spectrum(length + 1);
    std::vector<Bin> sum(length + 1);
    std::vector<float> power(length + 1);
    for (const std::int64_t start : pieces.starts)
        for (std::size_t band = 0; band < song.size(); ++band) {
            takeSong(fourier, song[band], line, start, length, spectrum);
            addPower(power, spectrum);
            takeVoice(fourier, voice[band], start, length, reach);
            addCorrelation(sum, fourier.bins(), spectrum);
        }
    double mean = 0;
    for (const float each : power) mean += static_cast<double>(each) / static_cast<double>(power.size());
    for (std::size_t i = 0; i < sum.size(); ++i)
        fourier.bins()[i] = sum[i] / (power[i] + static_cast<float>(kRest * mean) + 1e-9F);
    fourier.backward();
    Row impulse(time.begin(), time.begin() + static_cast<std::ptrdiff_t>(2 * reach + 1));
    for (float& value : impulse) value = std::abs(value);
    return impulse;
}

// The first that is nearly as strong as the strongest, whose reflections may be stronger.
std::size_t findDirect(const Row& response, std::size_t top, std::size_t before) {
    std::size_t at = top - std::min(before, top);
    while (at < top && (response[at] < kDirect * response[top] || response[at] < response[at + 1])) ++at;
    return at;
}

}  // namespace

Followed follow(Bands song, Bands voice, const Pieces& pieces, const Line& guess, std::size_t error, double usual) {
    const std::vector<Row> rows = correlatePieces(song, voice, pieces, guess, error);
    const double slope = findTurn(rows, pieces, guess, error, usual);
    const Row response = sumAlong(rows, pieces, guess, slope);
    const auto top = static_cast<std::size_t>(std::ranges::max_element(response) - response.begin());
    const double lag = static_cast<double>(top) + topBeside(response, top) - static_cast<double>(error);
    return {{guess.lag + lag, guess.slope + slope, guess.pivot}, static_cast<double>(response[top])};
}

Line lineOfDirect(Bands song, Bands voice, const Pieces& pieces, const Line& heard, std::size_t before) {
    const Line line{std::round(heard.lag), heard.slope, heard.pivot};
    const std::size_t reach = before + kOff;
    const Row impulse = impulseOf(song, voice, pieces, line, reach);
    const auto near = impulse.begin() + static_cast<std::ptrdiff_t>(before);
    const auto top = static_cast<std::size_t>(std::max_element(near, impulse.end()) - impulse.begin());
    const std::size_t direct = findDirect(impulse, top, before);
    const double lag = static_cast<double>(direct) + topBeside(impulse, direct) - static_cast<double>(reach);
    return {line.lag + lag, line.slope, line.pivot};
}

}  // namespace melvane
