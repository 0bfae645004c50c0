#include "tags/song_tags.h"

#include <asffile.h>
#include <asfpicture.h>
#include <flacfile.h>
#include <mp4file.h>
#include <oggflacfile.h>
#include <opusfile.h>
#include <vorbisfile.h>
#include <xiphcomment.h>

#include <algorithm>
#include <cctype>
#include <cstdint>

#include "tags/id3_tags.h"
#include "tags/karaoke_tags.h"
#include "tags/limited_stream.h"
#include "tags/tag_parts.h"

namespace melvane {

namespace {

constexpr std::int64_t kMostBytes = std::int64_t{48} << 20;
constexpr std::int64_t kMostReads = 4096;  // no nesting is deeper
constexpr std::int64_t kMostPages = 65536;

template <typename Pictures>
void putCover(const Pictures& pictures, SongTags& tags) {
    CoverSearch search;
    for (const TagLib::FLAC::Picture* picture : pictures)
        search.offer(picture->data(), static_cast<int>(picture->type()) == kFrontCover);
    search.putInto(tags);
}

SongTags readMpeg(TagLib::IOStream* stream) {
    TagLib::MPEG::File file(stream, plainFrames(), false);
    return id3Tags(file);
}

SongTags readFlac(TagLib::IOStream* stream) {
    TagLib::FLAC::File file(stream, plainFrames(), false);
    SongTags tags;
    if (const auto* comment = file.xiphComment()) tags.texts = textsOf(comment->properties());
    putCover(file.pictureList(), tags);
    return tags;
}

template <typename File>
SongTags readOgg(TagLib::IOStream* stream) {
    File file(stream, false);
    SongTags tags;
    TagLib::Ogg::XiphComment* const comment = file.tag();
    if (!comment) return tags;
    tags.texts = textsOf(comment->properties());
    putCover(comment->pictureList(), tags);
    return tags;
}

SongTags readMp4(TagLib::IOStream* stream) {
    TagLib::MP4::File file(stream, false);
    SongTags tags;
    if (!file.tag()) return tags;
    tags.texts = textsOf(file.tag()->properties());
    CoverSearch search;
    for (const TagLib::MP4::CoverArt& cover : file.tag()->item("covr").toCoverArtList())
        search.offer(cover.data(), true);
    search.putInto(tags);
    return tags;
}

SongTags readAsf(TagLib::IOStream* stream) {
    TagLib::ASF::File file(stream, false);
    SongTags tags;
    if (!file.tag()) return tags;
    tags.texts = textsOf(file.tag()->properties());
    CoverSearch search;
    for (const TagLib::ASF::Attribute& attribute : file.tag()->attribute("WM/Picture")) {
        const TagLib::ASF::Picture picture = attribute.toPicture();
        if (picture.isValid()) search.offer(picture.picture(), static_cast<int>(picture.type()) == kFrontCover);
    }
    search.putInto(tags);
    return tags;
}

struct Format {
    bool (*is)(TagLib::IOStream*);
    SongTags (*read)(TagLib::IOStream*);
    std::int64_t mostReads = kMostReads;
};

// What is none of the others may begin with anything before its first MPEG frame.
const Format kFormats[] = {
    {TagLib::Ogg::Vorbis::File::isSupported, readOgg<TagLib::Ogg::Vorbis::File>, kMostPages},
    {TagLib::Ogg::Opus::File::isSupported, readOgg<TagLib::Ogg::Opus::File>, kMostPages},
    {TagLib::Ogg::FLAC::File::isSupported, readOgg<TagLib::Ogg::FLAC::File>, kMostPages},
    {TagLib::FLAC::File::isSupported, readFlac},
    {TagLib::MP4::File::isSupported, readMp4},
    {TagLib::ASF::File::isSupported, readAsf},
    {[](TagLib::IOStream*) { return true; }, readMpeg},
};

SongTags readSound(const std::string& path) {
    for (const Format& format : kFormats) {
        LimitedStream stream(path, format.mostReads, kMostBytes);
        if (!stream.isOpen()) return {};
        if (!format.is(&stream)) continue;
        SongTags tags = format.read(&stream);
        if (!tags.cover && stream.exhausted()) tags.fault = TagFault::coverTooLarge;
        return tags;
    }
    return {};
}

SongTags readKaraoke(const std::string& path) {
    LimitedStream stream(path, 1, kMostBytes);
    const TagLib::ByteVector bytes = stream.readBlock(static_cast<unsigned long>(stream.length()));
    const KaraokeTags found = karaokeTags({bytes.data(), bytes.size()});
    SongTags tags;
    tags.texts[kTitleTag] = found.title;
    tags.texts[kArtistTag] = found.artist;
    return tags;
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

}  // namespace

std::string tagLine(std::string text) {
    constexpr auto isControl = [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7F'; };
    std::ranges::replace_if(text, isControl, ' ');
    if (text.size() > kLongestTag) {
        std::size_t length = kLongestTag;
        while (length > 0 && (text[length] & 0xC0) == 0x80) --length;  // no part of a character
        text.resize(length);
    }
    const auto first = text.find_first_not_of(' ');
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(' ') + 1 - first);
}

std::string tagYear(const std::string& text) {
    constexpr std::size_t kDigits = 4;
    const std::string year = tagLine(text).substr(0, kDigits);
    return year.size() == kDigits && std::ranges::all_of(year, isDigit) && year != "0000" ? year : "";
}

SongTags readSongTags(const std::string& file, bool isMidi) {
    SongTags tags = isMidi ? readKaraoke(file) : readSound(file);
    for (std::string& text : tags.texts) text = tagLine(text);
    tags.texts[kYearTag] = tagYear(tags.texts[kYearTag]);
    return tags;
}

}  // namespace melvane
