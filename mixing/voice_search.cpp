#include "mixing/voice_search.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "alignment/find_place.h"
#include "mixing/failure_cause.h"

namespace melvane {

namespace {

using Source = std::unique_ptr<PcmSource>;
using Imprint = std::shared_ptr<const Trace>;

constexpr std::int64_t kStep = kSampleRate / kImprintRate;
constexpr std::size_t kLeastPart = std::size_t{150} * kImprintRate;  // frames of a voice, looked at without gaps

// Song or voice, of which a part is looked at. Lengths are frames of an imprint.
class Sound {
public:
    explicit Sound(Imprint whole) : whole_(std::move(whole)), frames_(whole_->size()) {}
    explicit Sound(Source source)
        : source_(std::move(source)),
          frames_(source_ ? static_cast<std::size_t>((source_->frames() + kStep - 1) / kStep) : 0) {}

    bool isOpen() const { return whole_ || source_; }
    std::size_t frames() const { return frames_; }
    const Trace& part() const { return *part_; }

    // Makes the frames from `first` on, so many at most, the part; unless they are. False when they could not be read,
    // or were given up.
    bool take(std::size_t first, std::size_t length, const GoOn& goOn) {
        if (part_ && first == first_) return goOn(1);
        part_.reset();  // one at a time
        first_ = first;
        part_ = whole_ ? cut(length) : read(length, goOn);
        return part_ && goOn(1);
    }

private:
    Imprint cut(std::size_t length) const {
        if (first_ == 0 && length >= frames_) return whole_;
        const auto begin = whole_->begin() + static_cast<std::ptrdiff_t>(first_);
        return std::make_shared<Trace>(begin, begin + static_cast<std::ptrdiff_t>(std::min(length, frames_ - first_)));
    }
    Imprint read(std::size_t length, const GoOn& goOn) const {
        constexpr std::size_t kBlock = 65536;
        std::vector<float> block(2 * kBlock);
        ImprintMaker maker;
        const std::size_t wanted = std::min(length, frames_ - first_) * kStep;
        std::size_t done = 0;
        source_->seek(static_cast<std::int64_t>(first_) * kStep);
        while (const std::size_t got = source_->read(block.data(), std::min(kBlock, wanted - done))) {
            maker.add(block.data(), got);
            done += got;
            if (!goOn(static_cast<double>(done) / static_cast<double>(wanted))) return nullptr;
        }
        return source_->failed() ? nullptr : std::make_shared<Trace>(maker.take());
    }

    Imprint whole_;
    Source source_;
    std::size_t frames_;
    std::size_t first_ = 0;
    Imprint part_;
};

// Where parts of that length begin, each in the middle of the one before, that together are a whole sound: what is half
// as long lies in one of them.
std::vector<std::size_t> partsOf(std::size_t frames, std::size_t length) {
    std::vector<std::size_t> starts{0};
    while (starts.back() + length < frames) starts.push_back(starts.back() + length / 2);
    return starts;
}

class Search {
public:
    Search(AudioLibrary& library, const VoiceSearch& search, const GoOn& goOn)
        : library_(library), search_(search), goOn_([this, &goOn](double done) {
              done_ = std::max(done_, done);
              return goOn(done_);
          }) {}

    VoiceFound run() {
        Sound voice = open(search_.voice, search_.voiceImprint, partOf(goOn_, 0, 0.1));
        if (!voice.isOpen()) return unreadable(SearchEnd::voiceUnreadable);
        const double half = search_.key == 0 ? 1 : 0.5;
        VoiceFound found = findIn(voice, 0, partOf(goOn_, 0.1, half));
        if (found.end == SearchEnd::noTrace && search_.key != 0)
            found = findIn(voice, search_.key, partOf(goOn_, half, 1));
        if (found.end == SearchEnd::found || found.end == SearchEnd::noTrace) goOn_(1);
        return found;
    }

private:
    bool wanted() const { return goOn_(0); }
    VoiceFound unreadable(SearchEnd end) const {
        if (!wanted()) return {SearchEnd::givenUp};
        const std::string& file = end == SearchEnd::voiceUnreadable ? search_.voice : search_.song;
        return {.end = end, .cause = readingError(file), .decoding = library_.decoding(file).failure};
    }

    Source openFile(const std::string& file) const {
        return library_.openReader(file, [this] { return wanted(); });
    }
    Sound open(const std::string& file, const VoiceSearch::ImprintOf& imprint, const GoOn& goOn) const {
        Imprint whole = imprint ? imprint(goOn) : nullptr;
        return whole ? Sound(std::move(whole)) : Sound(wanted() ? openFile(file) : nullptr);
    }
    Sound openSong(double key, const GoOn& goOn) const {
        if (!search_.isMidi && key == 0) return open(search_.song, search_.songImprint, goOn);
        if (!search_.isMidi) return Sound(library_.inKey(openFile(search_.song), key));
        try {
            return Sound(search_.midi ? search_.midi(static_cast<int>(std::lround(key))) : nullptr);
        } catch (const MusicError&) {
            return Sound(Source());
        }
    }

    // Of all parts of both the two that tell most.
    VoiceFound findIn(Sound& voice, double key, const GoOn& goOn) const {
        Sound song = openSong(key, partOf(goOn, 0, 0.2));
        if (!song.isOpen()) return unreadable(SearchEnd::songUnreadable);
        const std::size_t length = std::clamp(2 * song.frames(), kLeastPart, kLongestImprint);
        const auto songParts = partsOf(song.frames(), kLongestImprint);
        const auto voiceParts = partsOf(voice.frames(), length);
        const auto pairs = static_cast<double>(songParts.size() * voiceParts.size());
        VoiceFound best;
        double pair = 0;
        for (const std::size_t s : songParts)
            for (const std::size_t v : voiceParts) {
                const GoOn part = partOf(goOn, 0.2 + 0.8 * pair / pairs, 0.2 + 0.8 * (pair + 1) / pairs);
                if (!song.take(s, kLongestImprint, partOf(part, 0, 0.4))) return unreadable(SearchEnd::songUnreadable);
                if (!voice.take(v, length, partOf(part, 0.4, 0.6))) return unreadable(SearchEnd::voiceUnreadable);
                const VoiceFound found = findInParts(song, s, voice, v, key != 0, partOf(part, 0.6, 1));
                if (!wanted()) return {SearchEnd::givenUp};
                if (found.certainty > best.certainty) best = found;
                ++pair;
            }
        return best;
    }
    static VoiceFound findInParts(const Sound& song, std::size_t songFirst, const Sound& voice, std::size_t voiceFirst,
                                  bool byShades, const GoOn& goOn) {
        auto place = findPlace(song.part(), voice.part(), partOf(goOn, 0, byShades ? 0.5 : 1));
        if (!place && byShades) place = findPlaceByShades(song.part(), voice.part(), partOf(goOn, 0.5, 1));
        if (!place) return {};
        const double earlier = static_cast<double>(voiceFirst) / (1 + place->driftPpm * 1e-6);
        const double sync = place->sync + (earlier - static_cast<double>(songFirst)) / kImprintRate;
        return {SearchEnd::found, sync, place->driftPpm, place->certainty};
    }

    AudioLibrary& library_;
    const VoiceSearch& search_;
    double done_ = 0;
    const GoOn goOn_;
};

}  // namespace

VoicePlace VoiceFound::place() const {
    return {std::llround(sync * kSampleRate), driftPpm};
}

VoiceFound findVoice(AudioLibrary& library, const VoiceSearch& search, const GoOn& goOn) {
    return Search(library, search, goOn).run();
}

}  // namespace melvane
