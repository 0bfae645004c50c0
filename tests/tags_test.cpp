// What songs say of themselves, however they say it, and the bytes that a mix says it with.
#include <attachedpictureframe.h>
#include <gtest/gtest.h>
#include <id3v2tag.h>
#include <textidentificationframe.h>

#include <filesystem>

#include "tags/foreign_text.h"
#include "tags/karaoke_tags.h"
#include "tags/mix_tag.h"
#include "tests/temp_dir.h"

namespace melvane {
namespace {

using namespace melvane::test;
using namespace std::string_literals;
namespace id3 = TagLib::ID3v2;

const std::string kJpeg = "\xFF\xD8\xFF\xE0 a picture";
const std::string kPng = "\x89PNG\r\n\x1A\n another";
constexpr const char* kNames[] = {"TIT2", "TPE1", "TALB", "TDRC", "TCON"};
// Polish, Japanese, beyond 16 bits, and ASCII.
const TagTexts kTexts = {"Zażółć gęślą jaźń", "美空ひばり", "Płyta 🎤", "1999", "Pop"};

std::string bytesOf(const id3::Tag& tag, id3::Version version) {
    const TagLib::ByteVector bytes = tag.render(version);
    return {bytes.data(), bytes.size()};
}

void addText(id3::Tag& tag, std::size_t field, const TagLib::String& text, TagLib::String::Type coding) {
    auto* frame = new id3::TextIdentificationFrame(kNames[field], coding);
    frame->setText(text);
    tag.addFrame(frame);
}

void addPicture(id3::Tag& tag, const std::string& bytes, id3::AttachedPictureFrame::Type type) {
    auto* frame = new id3::AttachedPictureFrame;
    frame->setType(type);
    frame->setPicture({bytes.data(), static_cast<unsigned int>(bytes.size())});
    tag.addFrame(frame);
}

struct TagsFixture : testing::Test {
    TempDir dir;

    SongTags read(const std::string& bytes) { return readSongTags(dir.write("song", bytes), false); }
};

TEST_F(TagsFixture, AMixSaysWhatItsSongSays) {
    const Cover cover{kPng, "image/png"};
    const std::string tag = renderTag(kTexts, &cover);
    EXPECT_EQ(tag.substr(0, 6), "ID3\3\0\0"s);
    EXPECT_EQ(tag, renderTag(kTexts, &cover)) << "always the same";
    EXPECT_EQ(tag.find("TDTG"), std::string::npos);
    const std::string song = dir.write("mix.mp3", tag + "sound");
    const SongTags back = readSongTags(song, false);
    EXPECT_EQ(back.texts, kTexts);
    ASSERT_TRUE(back.cover);
    EXPECT_EQ(back.cover->bytes, kPng);
    EXPECT_STREQ(back.cover->mime, "image/png");
    EXPECT_EQ(makeMixTag(song, false, {}).bytes, tag);

    TagChoice choice;
    choice.texts[kTitleTag] = " Other\ntitle ";
    choice.texts[kAlbumTag] = choice.texts[kGenreTag] = "";
    choice.texts[kYearTag] = "19";
    choice.cover = dir.write("cover.jpg", kJpeg);
    const Cover other{kJpeg, "image/jpeg"};
    EXPECT_EQ(makeMixTag(song, false, choice).bytes,
              renderTag({"Other title", kTexts[kArtistTag], "", "", ""}, &other));
    for (const auto& [bytes, fault] :
         {std::pair("GIF89a"s, TagFault::coverNoPicture), {kJpeg.substr(0, 2), TagFault::coverNoPicture}}) {
        choice.cover = dir.write("cover.jpg", bytes);
        EXPECT_EQ(makeMixTag(song, false, choice).fault, fault);
    }
    std::filesystem::resize_file(dir.write("cover.jpg", kJpeg), kLargestCover + 1);
    EXPECT_EQ(makeMixTag(song, false, choice).fault, TagFault::coverTooLarge);
    std::filesystem::resize_file(*choice.cover, kLargestCover);
    const MixTag largest = makeMixTag(song, false, choice);
    EXPECT_GT(largest.bytes.size(), kLargestCover);
    EXPECT_EQ(read(largest.bytes).cover->bytes.size(), kLargestCover);
    choice.cover = dir / "gone.jpg";
    EXPECT_EQ(makeMixTag(song, false, choice).fault, TagFault::coverUnread);
    choice.cover = "";
    EXPECT_EQ(makeMixTag(song, false, choice).fault, TagFault::none);
    choice.wanted = false;
    EXPECT_EQ(makeMixTag(song, false, choice).bytes, "");
    EXPECT_EQ(makeMixTag(dir / "gone.mp3", false, {}).bytes, "");
}

TEST_F(TagsFixture, OldAndNewId3IsReadAndTheFrontCoverCounts) {
    for (const id3::Version version : {id3::v3, id3::v4}) {
        id3::Tag tag;
        for (std::size_t i = 0; i < kTagFields; ++i)
            addText(tag, i, {kTexts[i], TagLib::String::UTF8},
                    version == id3::v4 ? TagLib::String::UTF8 : TagLib::String::UTF16);
        addPicture(tag, "GIF89a", id3::AttachedPictureFrame::Artist);
        addPicture(tag, kPng, id3::AttachedPictureFrame::Artist);
        addPicture(tag, kJpeg, id3::AttachedPictureFrame::FrontCover);
        const SongTags back = read(bytesOf(tag, version) + "sound");
        EXPECT_EQ(back.texts, kTexts);
        EXPECT_EQ(back.cover ? back.cover->bytes : "", kJpeg);
        EXPECT_EQ(back.fault, TagFault::none);
    }
    std::string old = "TAG" + "Za\xBF\xF3\xB3\xE6"s;  // the title in Windows 1250
    old.resize(128);
    old.back() = 17;
    EXPECT_EQ(read("sound" + old).texts, (TagTexts{"Zażółć", "", "", "", "Rock"}));
    // What is marked as Unicode is what it says, though its characters look like another coding's bytes.
    for (const auto& [coding, expected] :
         {std::pair(TagLib::String::Latin1, "Miłość"), {TagLib::String::UTF16, "Mi³o\u009C\u00E6"}}) {
        id3::Tag tag;
        addText(tag, kTitleTag, "Mi\xB3o\x9C\xE6", coding);
        EXPECT_EQ(read(bytesOf(tag, id3::v3)).texts[kTitleTag], expected);
    }
}

TEST_F(TagsFixture, WhatClaimsTooMuchCostsLittle) {
    id3::Tag tag;
    addText(tag, kTitleTag, "Title", TagLib::String::Latin1);
    addPicture(tag, kJpeg + std::string(kLargestCover, 'x'), id3::AttachedPictureFrame::FrontCover);
    const SongTags large = read(bytesOf(tag, id3::v3));
    EXPECT_EQ(large.texts[kTitleTag], "Title");
    EXPECT_FALSE(large.cover);
    EXPECT_EQ(large.fault, TagFault::coverTooLarge);

    // A tag of 200 MB that is cut off, in a file without contents.
    std::filesystem::resize_file(dir.write("song", "ID3\3\0\0\x60\0\0\0TIT2\0\0\0\6\0\0\0Title"s), 210 << 20);
    EXPECT_EQ(readSongTags(dir / "song", false).texts[kTitleTag], "Title");
    // A compressed frame, and one behind it.
    const std::string frames = "TALB\0\0\0\x0C\0\x80\0\1\0\0x\x9C\3\0\0\0\0\1"s + "TIT2\0\0\0\6\0\0\0Title"s;
    EXPECT_EQ(read("ID3\3\0\0\0\0\0"s + static_cast<char>(frames.size()) + frames).texts,
              (TagTexts{"Title", "", "", "", ""}));
    // Boxes within boxes.
    std::string nested =
        "\0\0\0\x14"
        "ftypM4A \0\0\0\0M4A "s;
    for (int i = 200000; i > 0; --i) {
        const std::uint32_t size = static_cast<std::uint32_t>(i) * 8;
        for (const int shift : {24, 16, 8, 0}) nested += static_cast<char>(size >> shift & 0xFF);
        nested += "moov";
    }
    EXPECT_EQ(read(nested).texts, TagTexts());
}

TEST(ForeignTexts, AreGuessedFromAllOfAFile) {
    const auto guess = [](const std::string& text) { return guessedUtf8({"plain", text}).back(); };
    EXPECT_EQ(guess("Zażółć 演歌"), "Zażółć 演歌");
    EXPECT_EQ(guess("Zg\xB3o\x9C si\xEA"), "Zgłoś się");
    EXPECT_EQ(guess("Zg\xB3o\xB6 si\xEA"), "Zgłoś się");
    EXPECT_EQ(guess("\x92\xC3\x8C\x79\x8A\x43\x8B\xAC"), "津軽海峡");
    EXPECT_EQ(guess("\x83\x4A\x83\x89\x83I\x83P"), "カラオケ");
    EXPECT_EQ(guess("Don\x92t, caf\xE9 M\xE4"
                    "dchen f\xEAte"),
              "Don’t, café Mädchen fête");
    EXPECT_EQ(guess("\x81"), "\u0081") << "no such character there";
    EXPECT_EQ(guessedUtf8({"Mi\xB3o\x9C\xE6", "Kr\xEAg"}).back(), "Kręg") << "by what the other proves";
}

TEST(KaraokeTags, AreTheFirstTwoTitleLines) {
    const auto event = [](const std::string& text) { return "\0\xFF\1"s + static_cast<char>(text.size()) + text; };
    const std::string lines = event("@KMIDI KARAOKE") + event("@LPOL") + event("@TMi\xB3o\x9C\xE6") + event("La") +
                              event("@TKto\x9C") + event("@TOthers");
    const KaraokeTags tags = karaokeTags("MThd" + lines);
    EXPECT_EQ(tags.title, "Miłość");
    EXPECT_EQ(tags.artist, "Ktoś");
    for (std::size_t length = 0; length < lines.size(); ++length) karaokeTags(lines.substr(0, length));
    EXPECT_EQ(karaokeTags("\xFF\1\1@T\xFF\1\x7F@T").title, "") << "longer than the file";
}

}  // namespace
}  // namespace melvane
