#include "tags/id3_tags.h"

#include <attachedpictureframe.h>
#include <id3v1tag.h>
#include <id3v2tag.h>
#include <textidentificationframe.h>

#include <vector>

#include "tags/foreign_text.h"
#include "tags/tag_parts.h"

namespace melvane {

namespace {

namespace id3 = TagLib::ID3v2;

constexpr const char* kFrames[] = {"TIT2", "TPE1", "TALB", "TDRC", "TCON"};

// The library names a frame's header to those alone that make frames.
struct FrameParts : id3::Frame {
    using Header = id3::Frame::Header;
};

class PlainFrames : public id3::FrameFactory {
protected:
    bool updateFrame(FrameParts::Header* header) const override {
        if (!header->compression()) return FrameFactory::updateFrame(header);
        const unsigned int size = header->frameSize();
        header->setData(header->frameID() + TagLib::ByteVector(6, '\0'), header->version());
        header->setFrameSize(size);
        return false;
    }
};

// Of which the coding has to be guessed: as old programs wrote it, in whatever their system had.
bool isUnmarked(const id3::FrameList& frames) {
    const auto* const text =
        frames.isEmpty() ? nullptr : dynamic_cast<const id3::TextIdentificationFrame*>(frames.front());
    return text && text->textEncoding() == TagLib::String::Latin1;
}

CoverSearch coverOf(const id3::Tag& tag) {
    CoverSearch search;
    const id3::FrameList& frames = tag.frameList("APIC");
    for (const id3::Frame* frame : frames)
        if (const auto* picture = dynamic_cast<const id3::AttachedPictureFrame*>(frame))
            search.offer(picture->picture(), static_cast<int>(picture->type()) == kFrontCover);
    return search;
}

// The bytes of these fields stand for characters of Latin 1.
class Unmarked {
public:
    void add(std::size_t field, const TagLib::String& text) {
        fields_.push_back(field);
        bytes_.push_back(text.to8Bit(false));
    }
    void putInto(TagTexts& texts) const {
        const std::vector<std::string> utf8 = guessedUtf8(bytes_);
        for (std::size_t i = 0; i < fields_.size(); ++i) texts[fields_[i]] = utf8[i];
    }

private:
    std::vector<std::size_t> fields_;
    std::vector<std::string> bytes_;
};

}  // namespace

id3::FrameFactory* plainFrames() {
    static PlainFrames factory;
    return &factory;
}

SongTags id3Tags(TagLib::MPEG::File& file) {
    SongTags tags;
    Unmarked unmarked;
    if (id3::Tag* const tag = file.ID3v2Tag()) {
        tags.texts = textsOf(tag->properties());
        for (std::size_t field = 0; field < kTagFields; ++field)
            if (isUnmarked(tag->frameList(kFrames[field])))
                unmarked.add(field, TagLib::String(tags.texts[field], TagLib::String::UTF8));
        coverOf(*tag).putInto(tags);
    }
    // The older tag holds the beginnings of its texts alone.
    if (TagLib::ID3v1::Tag* const old = file.ID3v1Tag()) {
        const TagTexts texts = textsOf(old->properties());
        for (std::size_t field = 0; field < kTagFields; ++field)
            if (tags.texts[field].empty()) unmarked.add(field, TagLib::String(texts[field], TagLib::String::UTF8));
    }
    unmarked.putInto(tags.texts);
    return tags;
}

}  // namespace melvane
