#include "engine/decode/ffmpeg_log.h"

#include <algorithm>
#include <charconv>

namespace melvane::decode {

namespace {

constexpr std::size_t kLongestLine = 1 << 16;

// Takes a number and, if it follows, `separator` off the front; 0 where there is none.
double takeNumber(std::string_view& text, char separator) {
    double value = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), value);
    text.remove_prefix(static_cast<std::size_t>(read.ptr - text.data()));
    if (text.starts_with(separator)) text.remove_prefix(1);
    return value;
}

}  // namespace

void FfmpegLog::take(std::string_view text) {
    for (const char c : text) {
        if (c == '\n') takeLine(rest_);
        if (c == '\n' || rest_.size() == kLongestLine)
            rest_.clear();
        else
            rest_ += c;
    }
}

void FfmpegLog::takeLine(std::string_view line) {
    constexpr std::string_view kDuration = "  Duration: ";
    constexpr std::string_view kDone = "out_time_us=";
    constexpr double kMicrosecond = 1e-6;
    if (line.starts_with(kDuration)) {
        line.remove_prefix(kDuration.size());
        const double hours = takeNumber(line, ':');
        const double minutes = takeNumber(line, ':');
        duration_ = (hours * 60 + minutes) * 60 + takeNumber(line, ',');
    } else if (line.starts_with(kDone)) {
        line.remove_prefix(kDone.size());
        done_ = takeNumber(line, '\n') * kMicrosecond;
    } else if (line.ends_with(": Input/output error") && !line.starts_with(' ')) {
        // It goes on as if the file ended there. What it tells of the file itself is indented.
        readFailed_ = true;
    }
}

double FfmpegLog::progress() const {
    return duration_ > 0 ? std::clamp(done_ / duration_, 0.0, 1.0) : 0;
}

}  // namespace melvane::decode
