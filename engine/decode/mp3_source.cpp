#include "engine/decode/mp3_source.h"

#include <sys/types.h>

#include <algorithm>
#include <cstdio>

namespace melvane::decode {
namespace {

constexpr long kJunkBeforeSound = 65536;  // bytes
// Chance alone finds two frame headers that match, in one random file of 2000; never four in a row.
constexpr int kFramesInARow = 4;
constexpr int kFramesTried = 64;
// A frame may need the bits of up to 511 bytes in front of it, which at the lowest bit rates are many frames.
constexpr long kFramesBeforeSeek = 32;

ssize_t readFile(void* file, void* out, std::size_t bytes) {
    auto& input = *static_cast<InputFile*>(file);
    const std::size_t got = input.read(out, bytes);
    return input.failed() ? -1 : static_cast<ssize_t>(got);
}

off_t seekFile(void* file, off_t offset, int whence) {
    return static_cast<off_t>(static_cast<InputFile*>(file)->seek(offset, whence));
}

bool isFrame(int result) {
    return result == MPG123_OK || result == MPG123_NEW_FORMAT;
}

std::int64_t stateOf(mpg123_handle* handle, mpg123_state key) {
    long value = -1;
    mpg123_getstate(handle, key, &value, nullptr);
    return value;
}

}  // namespace

Mp3Source::Mp3Source(const std::string& utf8Path, const CancelFlag& cancelled)
    : file_(utf8Path, cancelled), handle_(mpg123_new(nullptr, nullptr)) {
    if (!handle_) throw NotSound("no MPEG decoder");
    open();
    checkBeginning();
    long rate = 0;
    if (mpg123_getformat(handle_.get(), &rate, nullptr, nullptr) != MPG123_OK) throw NotSound("no MPEG audio");
    measure(rate);
    reposition(0);
}

void Mp3Source::open() {
    mpg123_handle* const handle = handle_.get();
    // Delay and padding are cut off here: the library forgets them when a file turns out to be truncated.
    mpg123_param(handle, MPG123_REMOVE_FLAGS, MPG123_GAPLESS, 0);
    mpg123_param(handle, MPG123_ADD_FLAGS, MPG123_QUIET | MPG123_FORCE_FLOAT | MPG123_FORCE_STEREO | MPG123_SKIP_ID3V2,
                 0);
    mpg123_param(handle, MPG123_RESYNC_LIMIT, kJunkBeforeSound, 0);
    mpg123_param(handle, MPG123_PREFRAMES, kFramesBeforeSeek, 0);
    if (mpg123_replace_reader_handle(handle, readFile, seekFile, nullptr) != MPG123_OK ||
        mpg123_open_handle(handle, &file_) != MPG123_OK)
        throw NotSound("no MPEG audio");
}

void Mp3Source::checkBeginning() {
    mpg123_handle* const handle = handle_.get();
    int inARow = 0;
    off_t next = 0;
    for (int tried = 0; inARow < kFramesInARow; ++tried) {
        const bool found = tried < kFramesTried && isFrame(mpg123_framebyframe_next(handle));
        // A very short file may end before.
        if (!found && tried > 0 && inARow == tried) return;
        unsigned long header = 0;
        unsigned char* body = nullptr;
        std::size_t bodyBytes = 0;
        if (!found || mpg123_framedata(handle, &header, &body, &bodyBytes) != MPG123_OK)
            throw NotSound("no MPEG audio");
        const off_t position = mpg123_framepos(handle);
        inARow = position == next ? inARow + 1 : 1;
        next = position + static_cast<off_t>(sizeof(std::uint32_t) + bodyBytes);
    }
}

void Mp3Source::measure(long rate) {
    mpg123_handle* const handle = handle_.get();
    const std::int64_t claimed = mpg123_length(handle);
    // Once there is sound, no damage is too long to look for more behind it.
    mpg123_param(handle, MPG123_RESYNC_LIMIT, -1, 0);
    mpg123_scan(handle);
    const std::int64_t decoded = mpg123_length(handle);
    std::int64_t frames = decoded;
    const std::int64_t encoderDelay = stateOf(handle, MPG123_ENC_DELAY);
    if (encoderDelay >= 0) {
        delay_ = encoderDelay + std::max<std::int64_t>(stateOf(handle, MPG123_DEC_DELAY), 0);
        const std::int64_t padding = std::max<std::int64_t>(stateOf(handle, MPG123_ENC_PADDING), 0);
        // The padding is gone from a truncated file, and inside one that had another appended.
        frames = decoded - (decoded == claimed ? encoderDelay + padding : delay_);
    }
    setFormat(static_cast<int>(rate), frames);
}

std::size_t Mp3Source::decode(float* out, std::size_t frames) {
    constexpr std::size_t kFrameBytes = 2 * sizeof(float);
    int result = MPG123_OK;
    while (isFrame(result)) {
        std::size_t bytes = 0;
        result = mpg123_read(handle_.get(), out, frames * kFrameBytes, &bytes);
        if (bytes > 0) return bytes / kFrameBytes;
    }
    return 0;
}

void Mp3Source::reposition(std::int64_t frame) {
    mpg123_seek(handle_.get(), static_cast<off_t>(frame + delay_), SEEK_SET);
}

}  // namespace melvane::decode
