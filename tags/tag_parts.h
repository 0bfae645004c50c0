// What all kinds of tags have in common.
#pragma once

#include <tbytevector.h>
#include <tpropertymap.h>
#include <tstring.h>

#include <string>

#include "tags/song_tags.h"

namespace melvane {

inline constexpr int kFrontCover = 3;  // the kind of a picture, in all of them

inline std::string toUtf8(const TagLib::String& text) {
    return text.to8Bit(true);
}

// Of the fields in the order of TagField, by their common names; several values with commas between them.
TagTexts textsOf(const TagLib::PropertyMap& properties);

// Looks through pictures: the first front cover counts, or else the first picture; the others where that is no use.
class CoverSearch {
public:
    void offer(const TagLib::ByteVector& bytes, bool isFront);
    void putInto(SongTags& tags) const;

private:
    CoverRead found_;
    bool isFront_ = false;
};

}  // namespace melvane
