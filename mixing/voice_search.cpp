#include "mixing/voice_search.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>
#include <vector>

#include "alignment/find_place.h"
#include "mixing/failure_cause.h"

namespace melvane {

namespace {

using Source = std::unique_ptr<PcmSource>;

// None when it could not be read, or not to its end because it was given up.
std::optional<Trace> imprintOf(const Source& source, const GoOn& goOn) {
    constexpr std::size_t kBlock = 65536;
    if (!source) return std::nullopt;
    ImprintMaker maker;
    std::vector<float> block(2 * kBlock);
    std::int64_t read = 0;
    while (const std::size_t got = source->read(block.data(), kBlock)) {
        maker.add(block.data(), got);
        read += static_cast<std::int64_t>(got);
        if (!goOn(static_cast<double>(read) / static_cast<double>(std::max(read, source->frames()))))
            return std::nullopt;
    }
    if (source->failed()) return std::nullopt;
    return maker.take();
}

class Search {
public:
    Search(AudioLibrary& library, const VoiceSearch& search, const GoOn& goOn)
        : library_(library), search_(search), goOn_(goOn) {}

    VoiceFound run() {
        const auto voice = imprintOf(open(search_.voice), partOf(goOn_, 0, 0.2));
        if (!voice) return unreadable(SearchEnd::voiceUnreadable, search_.voice);
        const double half = search_.key == 0 ? 1 : 0.5;
        VoiceFound found = findIn(*voice, 0, partOf(goOn_, 0.2, half));
        if (found.end == SearchEnd::noTrace && search_.key != 0)
            found = findIn(*voice, search_.key, partOf(goOn_, half, 1));
        return found;
    }

private:
    bool wanted() const { return goOn_(0); }
    VoiceFound failed(SearchEnd end) const { return {wanted() ? end : SearchEnd::givenUp}; }
    VoiceFound unreadable(SearchEnd end, const std::string& file) const {
        VoiceFound found = failed(end);
        if (found.end != end) return found;
        found.cause = readingError(file);
        found.decoding = library_.decoding(file).failure;
        return found;
    }
    Source open(const std::string& file) const {
        return library_.openReader(file, [this] { return wanted(); });
    }
    Source openSong(double key) const {
        if (!search_.isMidi) return library_.inKey(open(search_.song), key);
        try {
            return search_.midi ? search_.midi(static_cast<int>(std::lround(key))) : nullptr;
        } catch (const MusicError&) {
            return nullptr;
        }
    }
    VoiceFound findIn(const Trace& voice, double key, const GoOn& goOn) const {
        const auto song = imprintOf(openSong(key), partOf(goOn, 0, 0.6));
        if (!song) return unreadable(SearchEnd::songUnreadable, search_.song);
        auto place = findPlace(*song, voice, partOf(goOn, 0.6, 0.8));
        if (!place && key != 0) place = findPlaceByOnsets(*song, voice, partOf(goOn, 0.8, 1));
        if (!place) return failed(SearchEnd::noTrace);
        return {SearchEnd::found, place->sync, place->driftPpm, place->certainty};
    }

    AudioLibrary& library_;
    const VoiceSearch& search_;
    const GoOn& goOn_;
};

}  // namespace

VoicePlace VoiceFound::place() const {
    return {std::llround(sync * kSampleRate), driftPpm};
}

VoiceFound findVoice(AudioLibrary& library, const VoiceSearch& search, const GoOn& goOn) {
    return Search(library, search, goOn).run();
}

}  // namespace melvane
