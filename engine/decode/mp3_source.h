// MP3 (and the other MPEG audio layers), through libmpg123.
#pragma once

#include <mpg123.h>

#include <memory>
#include <string>

#include "engine/decode/input_file.h"
#include "engine/decode/native_source.h"

namespace melvane::decode {

// The whole file is scanned when it is opened, so the length never rests on what a header claims. Where the
// encoder left its delay and padding in the file, both are cut off; also in a file that is truncated.
// Damaged parts are skipped.
class Mp3Source : public NativeSource {
public:
    // Throws NotSound.
    explicit Mp3Source(const std::string& utf8Path, const CancelFlag& cancelled = {});
    bool failed() const override { return file_.failed(); }

private:
    struct Delete {
        void operator()(mpg123_handle* handle) const { mpg123_delete(handle); }
    };

    void open();
    void checkBeginning();
    void measure(long rate);
    std::size_t decode(float* out, std::size_t frames) override;
    void reposition(std::int64_t frame) override;

    InputFile file_;
    std::unique_ptr<mpg123_handle, Delete> handle_;
    std::int64_t delay_ = 0;  // decoded frames before the first one that is heard
};

}  // namespace melvane::decode
