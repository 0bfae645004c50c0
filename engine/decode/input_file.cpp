#include "engine/decode/input_file.h"

#include <algorithm>
#include <cstdio>
#include <limits>
#include <utility>

#include "base/paths.h"
#include "engine/decode/native_source.h"

namespace melvane::decode {

InputFile::InputFile(const std::string& utf8Path) {
    if (!isFile(utf8Path)) throw NotSound("not a file");
    stream_.open(toPath(utf8Path), std::ios::binary);
    stream_.seekg(0, std::ios::end);
    size_ = stream_.tellg();
    if (!stream_ || size_ <= 0) throw NotSound("unreadable or empty");
    stream_.seekg(0);
}

std::size_t InputFile::read(void* out, std::size_t bytes) {
    stream_.read(static_cast<char*>(out), static_cast<std::streamsize>(bytes));
    const std::streamsize got = stream_.gcount();
    stream_.clear();
    for (const Overlay& overlay : overlays_) {
        const std::int64_t from = std::max(overlay.offset, position_);
        const std::int64_t to = std::min(overlay.offset + std::ssize(overlay.bytes), position_ + got);
        if (from < to)
            std::copy_n(overlay.bytes.begin() + (from - overlay.offset), to - from,
                        static_cast<char*>(out) + (from - position_));
    }
    position_ += got;
    return static_cast<std::size_t>(got);
}

std::int64_t InputFile::seek(std::int64_t offset, int whence) {
    const std::int64_t base = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? position_ : size_;
    if (offset < -base || offset > std::numeric_limits<std::int64_t>::max() - base) return -1;
    if (base + offset != position_) {
        position_ = base + offset;
        stream_.seekg(position_);
    }
    return position_;
}

void InputFile::overlay(std::int64_t offset, std::string bytes) {
    overlays_.push_back({offset, std::move(bytes)});
}

}  // namespace melvane::decode
