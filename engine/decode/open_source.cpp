#include "engine/decode/open_source.h"

#include <algorithm>
#include <array>
#include <exception>
#include <string_view>

#include "engine/decode/input_file.h"
#include "engine/decode/mp3_source.h"
#include "engine/decode/resampled_source.h"
#include "engine/decode/sndfile_source.h"
#include "engine/decode/vorbis_source.h"

namespace melvane::decode {
namespace {

using Decoder = std::unique_ptr<NativeSource> (*)(const std::string& path, const CancelFlag& cancelled);

template <typename Source>
std::unique_ptr<NativeSource> open(const std::string& path, const CancelFlag& cancelled) {
    return std::make_unique<Source>(path, cancelled);
}

struct Kind {
    std::string_view signature;  // what the file begins with
    std::array<Decoder, 2> decoders;
};

// A WAV file may hold MP3. Nothing tells an MP3 file for sure. Damaged OGG makes libsndfile lose memory, so it gets
// none.
constexpr std::array<Kind, 7> kKinds{{
    {"RIFF", {open<SndfileSource>, open<Mp3Source>}},
    {"OggS", {open<VorbisSource>}},
    {"RIFX", {open<SndfileSource>}},
    {"RF64", {open<SndfileSource>}},
    {"FORM", {open<SndfileSource>}},
    {"fLaC", {open<SndfileSource>}},
    {"", {open<Mp3Source>}},
}};

const Kind& kindOf(const std::string& path) {
    std::array<char, 4> start{};
    InputFile(path).read(start.data(), start.size());
    const std::string_view begin(start.data(), start.size());
    return *std::find_if(kKinds.begin(), kKinds.end(),
                         [begin](const Kind& kind) { return begin.starts_with(kind.signature); });
}

std::unique_ptr<NativeSource> tryOpen(Decoder decoder, const std::string& path, const CancelFlag& cancelled) {
    try {
        return decoder(path, cancelled);
    } catch (const NotSound&) {
        return nullptr;
    }
}

}  // namespace

std::unique_ptr<PcmSource> openSource(const std::string& utf8Path, const CancelFlag& cancelled, double driftPpm) try {
    for (const Decoder decoder : kindOf(utf8Path).decoders) {
        if (!decoder) break;
        auto source = tryOpen(decoder, utf8Path, cancelled);
        // A length that was measured up to an error is wrong.
        if (source) return source->failed() ? nullptr : atCardRate(std::move(source), driftPpm);
    }
    return nullptr;
} catch (const std::exception&) {
    return nullptr;
}

}  // namespace melvane::decode
