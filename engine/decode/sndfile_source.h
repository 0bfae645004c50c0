// WAV and whatever else libsndfile reads, except for MPEG audio.
#pragma once

#include <sndfile.h>

#include <memory>
#include <string>
#include <vector>

#include "engine/decode/input_file.h"
#include "engine/decode/native_source.h"
#include "engine/decode/stereo_fold.h"

namespace melvane::decode {

// Integer samples of n bits come out as sample / 2^(n-1), exactly up to 24 bits. The data that are in a WAV
// file count, not the length in its header.
class SndfileSource : public NativeSource {
public:
    // Throws NotSound.
    explicit SndfileSource(const std::string& utf8Path, const CancelFlag& cancelled = {});
    bool failed() const override { return file_.failed(); }

private:
    struct Close {
        void operator()(SNDFILE* handle) const { sf_close(handle); }
    };

    SF_INFO open();
    std::size_t decode(float* out, std::size_t frames) override;
    void reposition(std::int64_t frame) override;

    InputFile file_;
    std::unique_ptr<SNDFILE, Close> handle_;
    std::vector<StereoWeight> weights_;
    std::vector<float> block_;  // in the file's channels; empty for a stereo file
};

}  // namespace melvane::decode
