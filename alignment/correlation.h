// How alike pieces of a recording and a song are, by how far the one is moved against the other.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "alignment/fourier.h"
#include "alignment/imprint.h"

namespace melvane {

// A sound in one band or several, equally long and at the same rate.
using Bands = std::span<const Trace>;

inline std::size_t framesOf(Bands bands) {
    return bands.front().size();
}

// Equally long pieces of a voice, evenly spread over it; the only one of a short voice reaches beyond its end.
struct Pieces {
    std::vector<std::int64_t> starts;
    std::size_t length = 0;  // a power of two

    // At most `most`, one behind the other where that is enough. They start at multiples of `grid`.
    static Pieces of(std::size_t frames, std::size_t length, std::size_t most, std::size_t grid = 1);
    std::size_t count() const { return starts.size(); }
    double middle(std::size_t piece) const {
        return static_cast<double>(starts[piece]) + static_cast<double>(length) / 2;
    }
};

// Where a recording has a song: under its frame r stands the song's frame r - at(r).
struct Line {
    double lag = 0;    // at the pivot
    double slope = 0;  // frames a frame
    double pivot = 0;

    double at(double frame) const { return lag + slope * (frame - pivot); }
};

// The voice's samples from `first` on.
void readVoice(const Trace& voice, std::int64_t first, std::span<float> out);
// The song's samples under the voice's from `first` on.
void readSong(const Trace& song, const Line& line, std::int64_t first, std::span<float> out);

// The spectra of the bands; `read` puts a band into the transform's time, which is silent.
using Spectra = std::vector<std::vector<Bin>>;
template <typename Read>
Spectra spectraOf(Bands bands, Fourier& fourier, Read read) {
    Spectra spectra;
    for (const Trace& band : bands) {
        std::ranges::fill(fourier.time(), 0.0F);
        read(band);
        fourier.forward();
        spectra.emplace_back(fourier.bins().begin(), fourier.bins().end());
    }
    return spectra;
}

// Divides a song's spectrum by the power that it has around each frequency: its own tones would be alike at every
// period of theirs.
void takeOffTones(std::span<Bin> bins, std::span<const float> power);
void addPower(std::span<float> sum, std::span<const Bin> bins);

// Adds to the bins of a correlation those of two sounds, by how much later the first is.
void addCorrelation(std::span<Bin> sum, std::span<const Bin> first, std::span<const Bin> second);

}  // namespace melvane
