// ID3 as it is found in songs.
#pragma once

#include <id3v2framefactory.h>
#include <mpegfile.h>

#include "tags/song_tags.h"

namespace melvane {

// Makes the frames of a tag, but leaves compressed ones as they are: a few bytes of those may become any number.
TagLib::ID3v2::FrameFactory* plainFrames();

// The front cover, or else the first picture.
SongTags id3Tags(TagLib::MPEG::File& file);

}  // namespace melvane
