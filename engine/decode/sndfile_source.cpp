#include "engine/decode/sndfile_source.h"

#include <algorithm>
#include <cstdio>

#include "engine/decode/plain_wav.h"

namespace melvane::decode {
namespace {

constexpr std::size_t kBlockFrames = 1024;

InputFile& fileOf(void* file) {
    return *static_cast<InputFile*>(file);
}

SF_VIRTUAL_IO fileAccess() {
    SF_VIRTUAL_IO access{};
    access.get_filelen = [](void* file) -> sf_count_t { return fileOf(file).size(); };
    access.seek = [](sf_count_t offset, int whence, void* file) -> sf_count_t {
        return fileOf(file).seek(offset, whence);
    };
    access.read = [](void* out, sf_count_t bytes, void* file) {
        return static_cast<sf_count_t>(fileOf(file).read(out, static_cast<std::size_t>(bytes)));
    };
    access.tell = [](void* file) -> sf_count_t { return fileOf(file).position(); };
    return access;
}

bool isMpeg(int format) {
    const int coding = format & SF_FORMAT_SUBMASK;
    return coding == SF_FORMAT_MPEG_LAYER_I || coding == SF_FORMAT_MPEG_LAYER_II || coding == SF_FORMAT_MPEG_LAYER_III;
}

}  // namespace

SndfileSource::SndfileSource(const std::string& utf8Path, const CancelFlag& cancelled) : file_(utf8Path, cancelled) {
    readAsPlainWav(file_);
    const SF_INFO info = open();
    // libsndfile estimates the length of MPEG audio in a WAV file, wrongly.
    if (!handle_ || info.channels < 1 || isMpeg(info.format)) throw NotSound("nothing that libsndfile reads");
    if (info.channels != 2) {
        weights_ = stereoWeights(info.channels, ChannelOrder::wav);
        block_.resize(kBlockFrames * weights_.size());
    }
    setClaimedFormat(info.samplerate, info.frames);
}

SF_INFO SndfileSource::open() {
    file_.seek(0, SEEK_SET);
    SF_VIRTUAL_IO access = fileAccess();
    SF_INFO info{};
    handle_.reset(sf_open_virtual(&access, SFM_READ, &info, &file_));
    return info;
}

std::size_t SndfileSource::decode(float* out, std::size_t frames) {
    if (weights_.empty()) {
        const sf_count_t got = sf_readf_float(handle_.get(), out, static_cast<sf_count_t>(frames));
        return static_cast<std::size_t>(std::max<sf_count_t>(got, 0));
    }
    const auto wanted = static_cast<sf_count_t>(std::min(frames, kBlockFrames));
    const sf_count_t got = std::max<sf_count_t>(sf_readf_float(handle_.get(), block_.data(), wanted), 0);
    const float* in = block_.data();
    for (sf_count_t i = 0; i < got; ++i) {
        float left = 0.0F;
        float right = 0.0F;
        for (const StereoWeight& weight : weights_) {
            left += weight.left * *in;
            right += weight.right * *in++;
        }
        *out++ = left;
        *out++ = right;
    }
    return static_cast<std::size_t>(got);
}

void SndfileSource::reposition(std::int64_t frame) {
    if (sf_seek(handle_.get(), frame, SEEK_SET) >= 0) return;
    // A FLAC decoder never recovers from a seek that failed.
    open();
    sf_seek(handle_.get(), frame, SEEK_SET);
}

}  // namespace melvane::decode
