#include "midi/channel_reader.h"

#include <cstddef>

namespace melvane {

namespace {

constexpr std::int16_t kUsedState = 2;
constexpr std::int16_t kDefaultVolume = 100;
constexpr std::int16_t kCentre = 64;
constexpr std::int16_t kHighestVolume = 127;
// Behind the song's header and the beginning of its first track.
constexpr std::size_t kFirstMessage = 21;

// One message that is searched for, and the data byte behind it.
class MessageSearch {
public:
    MessageSearch(std::string_view bytes, std::string_view message)
        : bytes_(bytes), beforeData_(bytes.substr(0, bytes.empty() ? 0 : bytes.size() - 1)), message_(message) {}

    // To the next one; false when there is none.
    bool next() {
        const std::size_t hit = beforeData_.find(message_, from_);
        if (hit == std::string_view::npos) return false;
        data_ = static_cast<std::uint8_t>(bytes_[hit + message_.size()]);
        from_ = hit + 1;
        return true;
    }
    std::int16_t data() const { return data_; }

private:
    std::string_view bytes_;
    std::string_view beforeData_;
    std::string_view message_;
    std::size_t from_ = kFirstMessage;
    std::int16_t data_ = 0;
};

void readInstrument(MessageSearch search, ChannelSettings& channel) {
    while (search.next()) {
        if (search.data() == 0) continue;  // the first program is never taken
        channel.instrument = search.data();
        return;
    }
}

void readVolume(MessageSearch search, ChannelSettings& channel) {
    channel.volume = kDefaultVolume;
    while (search.next()) {
        if (search.data() == 0 || search.data() >= kHighestVolume) continue;
        channel.volume = search.data();
        return;
    }
}

// The second one counts as it is.
void readBalance(MessageSearch search, ChannelSettings& channel) {
    channel.balance = kCentre;
    if (!search.next()) return;
    const bool usable = search.data() > 0 && search.data() <= kHighestVolume;
    if (!usable) search.next();
    channel.balance = search.data();
}

char status(int kind, std::int16_t channel) {
    return static_cast<char>(kind + channel);
}

void readChannel(std::string_view bytes, std::int16_t c, ChannelSettings& channel) {
    channel.channelNumber = kUnusedChannel;
    if (bytes.find(status(kNoteOn, c)) == std::string_view::npos) return;
    channel.channelNumber = static_cast<std::int16_t>(c + 1);
    const char program[] = {status(kProgramChange, c)};
    const char volume[] = {status(kControlChange, c), kVolumeController};
    const char balance[] = {status(kControlChange, c), kBalanceController};
    readInstrument({bytes, {program, sizeof program}}, channel);
    readVolume({bytes, {volume, sizeof volume}}, channel);
    readBalance({bytes, {balance, sizeof balance}}, channel);
}

}  // namespace

void readChannels(std::string_view bytes, MidiState& state, const DoEvents& doEvents) {
    for (std::int16_t c = 0; c < kMidiChannels; ++c) readChannel(bytes, c, state.ChannelInfo[c]);

    for (std::int16_t c = 0; c < kMidiChannels; ++c) {
        ChannelSettings& channel = state.ChannelInfo[c];
        channel.instrumentChanged = channel.volumeChanged = channel.balanceChanged = 0;
        if (channel.channelNumber >= 0) channel.state = kUsedState;
        channel.shown = channel.switchedOn = asFlag(true);
        state.InitialChannel[c] = {channel.volume, channel.balance, channel.instrument};
        doEvents();
        if (channel.channelNumber < 0) channel.shown = channel.switchedOn = 0;
    }
}

}  // namespace melvane
