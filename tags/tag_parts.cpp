#include "tags/tag_parts.h"

#include <utility>

namespace melvane {

namespace {
constexpr const char* kNames[] = {"TITLE", "ARTIST", "ALBUM", "DATE", "GENRE"};
}

TagTexts textsOf(const TagLib::PropertyMap& properties) {
    TagTexts texts;
    for (std::size_t field = 0; field < kTagFields; ++field)
        if (const auto found = properties.find(kNames[field]); found != properties.end())
            texts[field] = toUtf8(found->second.toString(", "));
    return texts;
}

void CoverSearch::offer(const TagLib::ByteVector& bytes, bool isFront) {
    if (bytes.isEmpty() || (found_.cover && (isFront_ || !isFront))) return;
    CoverRead read = bytes.size() > kLargestCover ? CoverRead{nullptr, TagFault::coverTooLarge}
                                                  : takeCover(std::string(bytes.data(), bytes.size()));
    if (!read.cover && (found_.cover || found_.fault != TagFault::none)) return;
    found_ = std::move(read);
    isFront_ = isFront;
}

void CoverSearch::putInto(SongTags& tags) const {
    tags.cover = found_.cover;
    tags.fault = found_.fault;
}

}  // namespace melvane
