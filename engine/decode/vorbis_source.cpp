#include "engine/decode/vorbis_source.h"

#include <algorithm>

#include "engine/decode/vorbis_books.h"

namespace melvane::decode {
namespace {

std::size_t readFile(void* out, std::size_t size, std::size_t count, void* file) {
    return static_cast<InputFile*>(file)->read(out, size * count) / size;
}

int seekFile(void* file, ogg_int64_t offset, int whence) {
    return static_cast<InputFile*>(file)->seek(offset, whence) < 0 ? -1 : 0;
}

long tellFile(void* file) {
    return static_cast<long>(static_cast<InputFile*>(file)->position());
}

}  // namespace

VorbisSource::VorbisSource(const std::string& utf8Path, const CancelFlag& cancelled) : file_(utf8Path, cancelled) {
    if (!hasUsualBooks(file_)) throw NotSound("no Vorbis that an encoder made");
    if (ov_open_callbacks(&file_, &stream_, nullptr, 0, {readFile, seekFile, nullptr, tellFile}) != 0)
        throw NotSound("no Vorbis stream");
    try {
        setClaimedFormat(static_cast<int>(ov_info(&stream_, 0)->rate), claimedFrames());
    } catch (...) {
        ov_clear(&stream_);
        throw;
    }
}

VorbisSource::~VorbisSource() {
    ov_clear(&stream_);
}

std::int64_t VorbisSource::claimedFrames() {
    std::int64_t frames = 0;
    for (int link = 0; link < ov_streams(&stream_); ++link) {
        if (ov_info(&stream_, link)->rate != ov_info(&stream_, 0)->rate) break;
        frames += std::max<std::int64_t>(ov_pcm_total(&stream_, link), 0);
    }
    return frames;
}

std::size_t VorbisSource::decode(float* out, std::size_t frames) {
    constexpr std::size_t kMost = 4096;
    float** channels = nullptr;
    int link = 0;
    long got = broken_ ? 0 : OV_HOLE;
    while (got == OV_HOLE) got = ov_read_float(&stream_, &channels, static_cast<int>(std::min(frames, kMost)), &link);
    broken_ = broken_ || got == OV_EBADLINK;
    if (got <= 0) return 0;

    const int channelCount = ov_info(&stream_, link)->channels;
    if (std::ssize(weights_) != channelCount) weights_ = stereoWeights(channelCount, ChannelOrder::vorbis);
    std::fill_n(out, 2 * got, 0.0F);
    for (std::size_t c = 0; c < weights_.size(); ++c) {
        for (long i = 0; i < got; ++i) {
            out[2 * i] += weights_[c].left * channels[c][i];
            out[2 * i + 1] += weights_[c].right * channels[c][i];
        }
    }
    return static_cast<std::size_t>(got);
}

void VorbisSource::reposition(std::int64_t frame) {
    // The library takes a set-up that it has refused for a good one when it is asked again.
    if (!broken_) broken_ = ov_pcm_seek(&stream_, frame) == OV_EBADLINK;
}

}  // namespace melvane::decode
