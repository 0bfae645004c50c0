#include "engine/decode/open_source.h"

#include <algorithm>
#include <array>
#include <exception>
#include <string_view>

#include "engine/decode/decoded_files.h"
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

struct Mark {
    std::size_t at;
    std::string_view bytes;

    bool isIn(std::string_view start) const { return start.substr(std::min(at, start.size())).starts_with(bytes); }
};

struct Kind {
    Mark mark;
    Mark another;
    std::array<Decoder, 2> decoders;
    bool elsewhere = true;  // another program may decode what these refuse

    bool isOurs() const { return decoders.front() != nullptr; }
};

constexpr std::size_t kInPage = 28;  // where the first page of an OGG file says what its stream is

// A WAV file may hold MP3. Nothing tells an MP3 file for sure, so what could pass for one comes before. Damaged OGG
// makes libsndfile lose memory, so it gets none; and where Vorbis is, nobody else is to find sound.
constexpr std::array<Kind, 23> kKinds{{
    {{0, "RIFF"}, {8, "AVI "}, {}},
    {{0, "RIFF"}, {}, {open<SndfileSource>, open<Mp3Source>}},
    {{0, "OggS"}, {kInPage, "OpusHead"}, {}},
    {{0, "OggS"}, {kInPage, "\x7F\x46LAC"}, {}},
    {{0, "OggS"}, {kInPage, "Speex   "}, {}},
    {{0, "OggS"}, {kInPage, "fishead"}, {open<VorbisSource>}},
    {{0, "OggS"}, {kInPage, "\x80theora"}, {open<VorbisSource>}},
    {{0, "OggS"}, {}, {open<VorbisSource>}, false},
    {{0, "RIFX"}, {}, {open<SndfileSource>}},
    {{0, "RF64"}, {}, {open<SndfileSource>}},
    {{0, "FORM"}, {}, {open<SndfileSource>}},
    {{0, "fLaC"}, {}, {open<SndfileSource>}},
    {{4, "ftyp"}, {}, {}},              // MP4 and its kin
    {{0, "\x1A\x45\xDF\xA3"}, {}, {}},  // Matroska, WebM
    {{0, "\x30\x26\xB2\x75"}, {}, {}},  // ASF, WMA
    {{0, "wvpk"}, {}, {}},              // WavPack
    {{0, "\xFF\xF1"}, {}, {}},          // AAC
    {{0, "\xFF\xF9"}, {}, {}},
    {{0, "caff"}, {}, {}},
    {{0, "#!AMR"}, {}, {}},
    {{0, "MAC "}, {}, {}},
    {{0, "TTA1"}, {}, {}},
    {{}, {}, {open<Mp3Source>}},
}};

const Kind& kindOf(const std::string& path) {
    std::array<char, 40> start{};
    InputFile(path).read(start.data(), start.size());
    const std::string_view begin(start.data(), start.size());
    return *std::ranges::find_if(
        kKinds, [begin](const Kind& kind) { return kind.mark.isIn(begin) && kind.another.isIn(begin); });
}

std::unique_ptr<NativeSource> tryOpen(Decoder decoder, const std::string& path, const CancelFlag& cancelled) {
    try {
        return decoder(path, cancelled);
    } catch (const NotSound&) {
        return nullptr;
    }
}

}  // namespace

std::unique_ptr<PcmSource> openSource(const std::string& utf8Path, const CancelFlag& cancelled, double driftPpm,
                                      DecodedFiles* decoded) try {
    const Kind& kind = kindOf(utf8Path);
    std::unique_ptr<NativeSource> source;
    for (const Decoder decoder : kind.decoders)
        if (decoder && !source) source = tryOpen(decoder, utf8Path, cancelled);
    // Where that program is missing, it is not to blame for a damaged file of ours.
    const bool elsewhere = kind.elsewhere && decoded && (!kind.isOurs() || decoded->canDecode());
    if (!source && elsewhere) source = decoded->open(utf8Path, cancelled);
    // A length that was measured up to an error is wrong.
    return !source || source->failed() ? nullptr : atCardRate(std::move(source), driftPpm);
} catch (const std::exception&) {
    return nullptr;
}

}  // namespace melvane::decode
