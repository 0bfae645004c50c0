#include "engine/decode/input_file.h"

#include <algorithm>
#include <cstdio>
#include <limits>
#include <utility>

#include "base/paths.h"
#include "engine/decode/native_source.h"

namespace melvane::decode {

InputFile::InputFile(const std::string& utf8Path, CancelFlag cancelled) : cancelled_(std::move(cancelled)) {
    if (!isFile(utf8Path)) throw NotSound("not a file");
    stream_.open(toPath(utf8Path), std::ios::binary);
    stream_.seekg(0, std::ios::end);
    size_ = stream_.tellg();
    if (!stream_ || size_ <= 0) throw NotSound("unreadable or empty");
    stream_.seekg(0);
}

std::size_t InputFile::read(void* out, std::size_t bytes) {
    if (cancelled_ && *cancelled_) failed_ = true;
    if (failed_) return 0;
    char* to = static_cast<char*>(out);
    bytes = static_cast<std::size_t>(std::clamp<std::int64_t>(size_ - position_, 0, static_cast<std::int64_t>(bytes)));
    std::size_t done = 0;
    if (position_ < std::ssize(head_)) done = head_.copy(to, bytes, static_cast<std::size_t>(position_));
    position_ += static_cast<std::int64_t>(done);
    const std::size_t got = readBody(to + done, bytes - done, bodyAt_ + position_ - std::ssize(head_));
    position_ += static_cast<std::int64_t>(got);
    return done + got;
}

// All of it, or the file has failed: where a stream stands after an error, nobody can tell.
std::size_t InputFile::readBody(char* out, std::size_t bytes, std::int64_t at) {
    if (bytes == 0) return 0;
    if (streamAt_ != at) stream_.seekg(at);
    stream_.read(out, static_cast<std::streamsize>(bytes));
    failed_ = !stream_;
    streamAt_ = at + static_cast<std::int64_t>(bytes);
    return failed_ ? 0 : bytes;
}

std::int64_t InputFile::seek(std::int64_t offset, int whence) {
    const std::int64_t base = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? position_ : size_;
    if (offset < -base || offset > std::numeric_limits<std::int64_t>::max() - base) return -1;
    return position_ = base + offset;
}

void InputFile::present(std::string head, std::int64_t from, std::int64_t bytes) {
    head_ = std::move(head);
    bodyAt_ = from;
    size_ = std::ssize(head_) + bytes;
    position_ = 0;
}

}  // namespace melvane::decode
