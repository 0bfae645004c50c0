#include "tags/mix_tag.h"

#include <attachedpictureframe.h>
#include <id3v2tag.h>
#include <textidentificationframe.h>

#include <algorithm>

namespace melvane {

namespace {

namespace id3 = TagLib::ID3v2;
using TagLib::String;

// The date becomes a year in this version.
constexpr const char* kFrames[] = {"TIT2", "TPE1", "TALB", "TDRC", "TCON"};

TagTexts chosenTexts(const SongTags& song, const TagChoice& choice) {
    TagTexts texts;
    for (std::size_t field = 0; field < kTagFields; ++field)
        texts[field] = choice.texts[field] ? tagLine(*choice.texts[field]) : song.texts[field];
    texts[kYearTag] = tagYear(texts[kYearTag]);
    return texts;
}

}  // namespace

std::string renderTag(const TagTexts& texts, const Cover* cover) {
    if (!cover && std::ranges::all_of(texts, &std::string::empty)) return "";
    id3::Tag tag;  // owns its frames
    for (std::size_t field = 0; field < kTagFields; ++field) {
        if (texts[field].empty()) continue;
        auto* frame = new id3::TextIdentificationFrame(kFrames[field], String::UTF16);
        frame->setText(String(texts[field], String::UTF8));
        tag.addFrame(frame);
    }
    if (cover) {
        auto* frame = new id3::AttachedPictureFrame;
        frame->setType(id3::AttachedPictureFrame::FrontCover);
        frame->setMimeType(cover->mime);
        frame->setPicture({cover->bytes.data(), static_cast<unsigned int>(cover->bytes.size())});
        tag.addFrame(frame);
    }
    const TagLib::ByteVector bytes = tag.render(id3::v3);
    return {bytes.data(), bytes.size()};
}

CoverRead chosenCover(const SongTags& song, const TagChoice& choice) {
    if (!choice.cover) return {song.cover, song.fault};
    return choice.cover->empty() ? CoverRead{} : readCover(*choice.cover);
}

MixTag makeMixTag(const std::string& song, bool isMidi, const TagChoice& choice) {
    if (!choice.wanted) return {};
    const SongTags tags = readSongTags(song, isMidi);
    const CoverRead cover = chosenCover(tags, choice);
    return {renderTag(chosenTexts(tags, choice), cover.cover.get()), cover.fault};
}

}  // namespace melvane
