// What MidiBackground does with the channels and the volume of a song.
#include "midi/midi_background.h"
#include "state/errors.h"

namespace melvane {

namespace {

// A moment behind the patch that is sent with it, which may reset the volume.
constexpr std::int64_t kVolumeTime = 10;
constexpr std::int32_t kVolumeStep = 42;  // hundredths of a decibel for each percent
constexpr std::int32_t kLowestVolume = -3000;

std::uint8_t lowByte(std::int16_t value) {
    return static_cast<std::uint8_t>(value);
}

}  // namespace

// Without a performance there is nobody to tell; the table is what the next one starts from.
template <typename Message>
void MidiBackground::tell(Message message) {
    attempt(MidiFailure::operationNotApplied, [&] {
        if (performance_) message(*performance_);
    });
}

void MidiBackground::sendInstrument(std::int16_t channel) {
    const std::uint8_t instrument = lowByte(state_.ChannelInfo[channel].instrument);
    if (performance_) performance_->sendPatch(0, kReferenceTime, lowByte(channel), instrument, 0, 0);
}

void MidiBackground::sendController(std::int64_t time, std::int16_t channel, std::uint8_t controller,
                                    std::int16_t value) {
    if (performance_)
        performance_->sendMidi(time, kReferenceTime, lowByte(channel), kControlChange, controller, lowByte(value));
}

void MidiBackground::sendVolume(std::int16_t channel) {
    sendController(kVolumeTime, channel, kVolumeController, state_.ChannelInfo[channel].volume);
}

void MidiBackground::sendBalance(std::int16_t channel) {
    sendController(0, channel, kBalanceController, state_.ChannelInfo[channel].balance);
}

void MidiBackground::setChannelInstrument(std::int16_t channel, std::int16_t instrument) {
    attempt(MidiFailure::operationNotApplied, [&] {
        state_.ChannelInfo[channel].instrument = instrument;
        state_.touched[channel].instrument = true;
        sendInstrument(channel);
    });
}

void MidiBackground::setChannelVolume(std::int16_t channel, std::int16_t volume) {
    attempt(MidiFailure::operationNotApplied, [&] {
        state_.ChannelInfo[channel].volume = volume;
        state_.touched[channel].volume = true;
        sendVolume(channel);
    });
}

void MidiBackground::setChannelBalance(std::int16_t channel, std::int16_t balance) {
    attempt(MidiFailure::operationNotApplied, [&] {
        state_.ChannelInfo[channel].balance = balance;
        state_.touched[channel].balance = true;
        sendBalance(channel);
    });
}

void MidiBackground::switchChannel(std::int16_t channel, std::int16_t volume, bool on) {
    setChannelVolume(channel, volume);
    state_.ChannelInfo[channel].switchedOn = asFlag(on);
}

std::int16_t MidiBackground::GetInstrument(std::int16_t channel) const {
    return state_.ChannelInfo[channel].instrument;
}

void MidiBackground::SetMidiVolume() {
    const auto loud = checkedCast<std::int16_t>(std::int32_t{settings_.volume[0]} * kVolumeStep);
    const auto master = checkedCast<std::int16_t>(loud + kLowestVolume);
    tell([&](MusicPerformance& performance) { performance.setMasterVolume(master); });
}

double MidiBackground::volumeDecibels(int percent) {
    constexpr double kHundredths = 100;
    return (percent * kVolumeStep + kLowestVolume) / kHundredths;
}

void MidiBackground::transpose(double key) {
    tell([&](MusicPerformance& performance) {
        const int semitones = soundingKey(key);
        for (std::int16_t c = 0; c < kMidiChannels; ++c)
            if (c != kPercussionChannel && state_.ChannelInfo[c].channelNumber != kUnusedChannel)
                performance.sendTranspose(0, kReferenceTime, lowByte(c), semitones);
    });
}

void MidiBackground::SetSingleChannel(std::int16_t channel, bool on, std::int16_t volume, std::int16_t balance,
                                      std::int16_t instrument) {
    ChannelSettings& row = state_.ChannelInfo[channel];
    if (row.channelNumber == kUnusedChannel) return;
    row.instrumentChanged = row.volumeChanged = row.balanceChanged = asFlag(true);
    row.instrument = instrument;
    row.volume = on ? volume : std::int16_t{0};
    row.balance = balance;
    row.switchedOn = asFlag(on);
    const InitialSettings& initial = state_.InitialChannel[channel];
    TouchedSettings& touched = state_.touched[channel];
    touched.instrument |= row.instrument != initial.instrument;
    touched.volume |= row.volume != initial.volume;
    touched.balance |= row.balance != initial.balance;
}

void MidiBackground::ApplyChannelSettings() {
    attempt(MidiFailure::operationNotApplied, [&] {
        for (std::int16_t c = 0; c < kMidiChannels; ++c) {
            const ChannelSettings& row = state_.ChannelInfo[c];
            if (row.channelNumber == kUnusedChannel) continue;
            if (row.instrumentChanged) sendInstrument(c);
            if (row.volumeChanged) {
                sendVolume(c);
                doEvents_();
            }
            if (row.balanceChanged) sendBalance(c);
        }
    });
}

void MidiBackground::solo(std::uint16_t channels) {
    state_.soloed = channels;
    tell([&](MusicPerformance& performance) { performance.solo(channels); });
}

void MidiBackground::MidiRestore() {
    if (!state_.midiLoaded) return;
    for (std::int16_t c = 0; c < kMidiChannels; ++c) {
        ChannelSettings& row = state_.ChannelInfo[c];
        if (row.channelNumber == kUnusedChannel) continue;
        const InitialSettings& initial = state_.InitialChannel[c];
        row.shown = asFlag(true);
        SetSingleChannel(c, true, initial.volume, initial.balance, initial.instrument);
    }
    state_.touched = {};
    tell([](MusicPerformance& performance) { performance.liftChannelSettings(); });
    updateChannels();
}

ChannelTable<ChannelChoice> MidiBackground::choices() const {
    ChannelTable<ChannelChoice> choices;
    for (std::int16_t c = 0; c < kMidiChannels; ++c) {
        const ChannelSettings& row = state_.ChannelInfo[c];
        const TouchedSettings& touched = state_.touched[c];
        const auto chosen = [](bool set, std::int16_t value) { return set ? std::optional(value) : std::nullopt; };
        choices[c] = {row.channelNumber == kUnusedChannel || row.switchedOn != 0,
                      chosen(touched.instrument, row.instrument), chosen(touched.volume, row.volume),
                      chosen(touched.balance, row.balance)};
    }
    return choices;
}

// A setting goes back to the song's with all the others.
void MidiBackground::choose(const ChannelTable<ChannelChoice>& wanted) {
    const auto before = choices();
    const auto goesBack = [&](std::int16_t c) {
        const ChannelChoice& was = before[c];
        const ChannelChoice& is = wanted[c];
        return (was.instrument && !is.instrument) || (was.volume && !is.volume) || (was.balance && !is.balance);
    };
    for (std::int16_t c = 0; c < kMidiChannels; ++c)
        if (goesBack(c)) {
            MidiRestore();
            break;
        }
    const auto now = choices();
    for (std::int16_t c = 0; c < kMidiChannels; ++c) {
        const ChannelChoice& is = wanted[c];
        if (is.instrument && is.instrument != now[c].instrument) setChannelInstrument(c, *is.instrument);
        if (is.volume && (is.volume != now[c].volume || is.on != now[c].on)) switchChannel(c, *is.volume, is.on);
        if (is.balance && is.balance != now[c].balance) setChannelBalance(c, *is.balance);
    }
    updateChannels();
}

void MidiBackground::applyVolumeAndBalance() {
    SetMidiVolume();
    lines_.SetSynthBalance();
}

void MidiBackground::setTone() {
    lines_.SetSpeakerBass();
    lines_.SetSpeakerTreble();
}

void MidiBackground::restoreTone() {
    lines_.RestoreSpeakerBass();
    lines_.RestoreSpeakerTreble();
}

}  // namespace melvane
