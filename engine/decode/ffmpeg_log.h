// What ffmpeg says while it works.
#pragma once

#include <string>
#include <string_view>

namespace melvane::decode {

class FfmpegLog {
public:
    // Takes the next bytes of it, in pieces of any size.
    void take(std::string_view text);
    // The share that is done, 0..1; 0 where the length isn't known.
    double progress() const;
    // It says that it could not read on.
    bool readFailed() const { return readFailed_; }

private:
    void takeLine(std::string_view line);

    std::string rest_;     // of a line that is not complete
    double duration_ = 0;  // seconds
    double done_ = 0;
    bool readFailed_ = false;
};

}  // namespace melvane::decode
