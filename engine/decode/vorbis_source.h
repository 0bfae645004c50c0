// OGG Vorbis, through libvorbisfile: the seeks of libsndfile 1.2.0 begin without the overlap of the block
// before, land beside the place in the last page, and its length is unknown in a truncated file.
#pragma once

// The header would define callbacks that nobody uses.
#define OV_EXCLUDE_STATIC_CALLBACKS
#include <vorbis/vorbisfile.h>
#undef OV_EXCLUDE_STATIC_CALLBACKS

#include <string>
#include <vector>

#include "engine/decode/input_file.h"
#include "engine/decode/native_source.h"
#include "engine/decode/stereo_fold.h"

namespace melvane::decode {

// Plays all links of a chained stream, up to the first one that has another sample rate.
class VorbisSource : public NativeSource {
public:
    // Throws NotSound.
    explicit VorbisSource(const std::string& utf8Path, const CancelFlag& cancelled = {});
    ~VorbisSource() override;
    VorbisSource(const VorbisSource&) = delete;
    VorbisSource& operator=(const VorbisSource&) = delete;
    bool failed() const override { return file_.failed(); }

private:
    std::int64_t claimedFrames();
    std::size_t decode(float* out, std::size_t frames) override;
    void reposition(std::int64_t frame) override;

    InputFile file_;
    OggVorbis_File stream_{};
    bool broken_ = false;  // not to be decoded
    std::vector<StereoWeight> weights_;
};

}  // namespace melvane::decode
