#include "tags/limited_stream.h"

#include <algorithm>
#include <limits>

#include "base/paths.h"

namespace melvane {

LimitedStream::LimitedStream(const std::string& file, std::int64_t mostReads, std::int64_t mostBytes)
    : readsLeft_(mostReads), bytesLeft_(mostBytes) {
    if (!isFile(file)) return;
    file_.open(toPath(file), std::ios::binary | std::ios::ate);
    size_ = std::max<std::int64_t>(file_.tellg(), 0);
}

TagLib::ByteVector LimitedStream::readBlock(unsigned long length) {
    const auto asked = static_cast<std::int64_t>(
        std::min<unsigned long>(length, static_cast<unsigned long>(std::numeric_limits<std::int64_t>::max())));
    const std::int64_t there = std::clamp<std::int64_t>(size_ - place_, 0, asked);
    const std::int64_t given = readsLeft_ > 0 ? std::min(there, bytesLeft_) : 0;
    if (given < there && readsLeft_ > 0) exhausted_ = true;
    if (given <= 0) return {};
    --readsLeft_;
    TagLib::ByteVector bytes(static_cast<unsigned int>(given), '\0');
    file_.clear();
    file_.seekg(place_);
    file_.read(bytes.data(), given);
    bytes.resize(static_cast<unsigned int>(file_.gcount()));
    place_ += file_.gcount();
    bytesLeft_ -= file_.gcount();
    return bytes;
}

void LimitedStream::seek(long offset, Position origin) {
    const std::int64_t from = origin == Beginning ? 0 : origin == Current ? place_ : size_;
    place_ = std::max<std::int64_t>(from + offset, 0);
}

}  // namespace melvane
