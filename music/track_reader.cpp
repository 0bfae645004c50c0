#include "music/track_reader.h"

#include <algorithm>

#include "music/midi_bytes.h"
#include "music/midi_messages.h"

namespace melvane::music {
namespace {

constexpr std::uint8_t kMeta = 0xFF;
constexpr std::uint8_t kMetaTrackName = 0x03;
constexpr std::uint8_t kMetaEndOfTrack = 0x2F;
constexpr std::uint8_t kMetaTempo = 0x51;

class TrackReader {
public:
    TrackReader(std::span<const std::uint8_t> track, std::vector<TrackEvent>& events,
                std::vector<std::vector<std::uint8_t>>& sysex)
        : bytes_(track), events_(events), sysex_(sysex) {}

    const std::string& name() const { return name_; }

    void read(std::size_t maxEvents) {
        while (!ended_ && !bytes_.empty() && events_.size() < maxEvents) {
            tick_ += bytes_.variableLength();
            readEvent();
            if (bytes_.overrun()) break;
        }
        endMessage();
    }

private:
    void readEvent() {
        if (bytes_.dataByteNext()) {
            // Many files go on with the status in front of a meta event, so that only another one takes its place. A
            // data byte without any is passed over.
            if (runningStatus_ == 0)
                bytes_.byte();
            else
                readChannelEvent();
            return;
        }
        const std::uint8_t status = bytes_.byte();
        if (status == kMeta) {
            readMeta();
        } else if (status == kSystemExclusive || status == kExclusiveEnd) {
            readSysex(status);
        } else if (status >= kNoteOff && status < kSystemExclusive) {
            runningStatus_ = status;
            readChannelEvent();
        }
    }

    void readChannelEvent() {
        endMessage();
        const std::uint8_t data1 = bytes_.byte();
        const std::uint8_t data2 = dataBytes(runningStatus_) == 1 ? std::uint8_t{0} : bytes_.byte();
        if (bytes_.overrun() || data1 >= 0x80 || data2 >= 0x80) return;
        events_.push_back({tick_, 0, TrackEventKind::kChannel, runningStatus_, data1, data2});
    }

    void readMeta() {
        const std::uint8_t type = bytes_.byte();
        const auto bytes = bytes_.take(bytes_.variableLength());
        MidiBytes content(bytes);
        if (type == kMetaEndOfTrack) {
            ended_ = true;
            events_.push_back({tick_, 0, TrackEventKind::kEndOfTrack});
        } else if (type == kMetaTrackName && name_.empty()) {
            name_.assign(bytes.begin(), bytes.end());
        } else if (type == kMetaTempo) {
            const std::uint32_t tempo = content.bigEndian(3);
            if (!content.overrun()) events_.push_back({tick_, tempo, TrackEventKind::kTempo});
        }
    }

    // A message comes in one packet of 0xF0 or goes on in packets of 0xF7, which may also hold a whole one.
    void readSysex(std::uint8_t status) {
        const auto content = bytes_.take(bytes_.variableLength());
        if (bytes_.overrun()) {
            message_.clear();
            return;
        }
        if (status == kSystemExclusive) {
            endMessage();
            message_.push_back(kSystemExclusive);
        } else if (message_.empty() && (content.empty() || content.front() != kSystemExclusive)) {
            return;
        }
        message_.insert(message_.end(), content.begin(), content.end());
        messageTick_ = tick_;
        if (message_.back() == kExclusiveEnd) endMessage();
    }

    // Some files leave out the last byte of a message.
    void endMessage() {
        if (message_.empty()) return;
        if (message_.back() != kExclusiveEnd) message_.push_back(kExclusiveEnd);
        const bool whole = std::all_of(message_.begin() + 1, message_.end() - 1, [](auto byte) { return byte < 0x80; });
        if (whole && message_.size() > 2) {
            events_.push_back({messageTick_, static_cast<std::uint32_t>(sysex_.size()), TrackEventKind::kSysex});
            sysex_.push_back(message_);
        }
        message_.clear();
    }

    MidiBytes bytes_;
    std::vector<TrackEvent>& events_;
    std::vector<std::vector<std::uint8_t>>& sysex_;
    std::string name_;
    std::int64_t tick_ = 0;
    std::uint8_t runningStatus_ = 0;
    std::vector<std::uint8_t> message_;  // the packets so far of one that is not over
    std::int64_t messageTick_ = 0;       // of the last of them
    bool ended_ = false;
};

}  // namespace

std::string readTrack(std::span<const std::uint8_t> track, std::size_t maxEvents, std::vector<TrackEvent>& events,
                      std::vector<std::vector<std::uint8_t>>& sysex) {
    TrackReader reader(track, events, sysex);
    reader.read(maxEvents);
    return reader.name();
}

}  // namespace melvane::music
