#include "midi/channel_settings.h"

#include <exception>

#include "state/errors.h"

namespace melvane {

namespace {

constexpr std::int16_t kTrue = -1;
constexpr std::int16_t kUnused = -1;
constexpr std::int64_t kVolumeTime = 10;
constexpr std::int32_t kVolumeStep = 42;  // hundredths of a decibel for each percent
constexpr std::int32_t kSilence = -3000;

std::uint8_t lowByte(std::int16_t value) {
    return static_cast<std::uint8_t>(value);
}

template <typename Action>
void untilFailure(Action action) {
    try {
        action();
    } catch (const std::exception&) {
    }
}

}  // namespace

MusicPerformance& MidiChannels::performance() {
    if (!device_.performance) throw MusicError("no song is loaded");
    return *device_.performance;
}

void MidiChannels::sendInstrument(std::int16_t channel) {
    performance().sendPatch(0, kReferenceTime, lowByte(channel), lowByte(state_.ChannelInfo[channel].instrument), 0, 0);
}

void MidiChannels::sendVolume(std::int16_t channel) {
    performance().sendMidi(kVolumeTime, kReferenceTime, lowByte(channel), kControlChange, kVolumeController,
                           lowByte(state_.ChannelInfo[channel].volume));
}

void MidiChannels::sendBalance(std::int16_t channel) {
    performance().sendMidi(0, kReferenceTime, lowByte(channel), kControlChange, kBalanceController,
                           lowByte(state_.ChannelInfo[channel].balance));
}

void MidiChannels::setChannelInstrument(std::int16_t channel, std::int16_t instrument) {
    untilFailure([&] {
        state_.ChannelInfo[channel].instrument = instrument;
        sendInstrument(channel);
    });
}

void MidiChannels::setChannelVolume(std::int16_t channel, std::int16_t volume) {
    untilFailure([&] {
        state_.ChannelInfo[channel].volume = volume;
        sendVolume(channel);
    });
}

void MidiChannels::setChannelBalance(std::int16_t channel, std::int16_t balance) {
    untilFailure([&] {
        state_.ChannelInfo[channel].balance = balance;
        sendBalance(channel);
    });
}

void MidiChannels::switchChannel(std::int16_t channel, std::int16_t volume, bool on) {
    setChannelVolume(channel, volume);
    state_.ChannelInfo[channel].switchedOn = on ? kTrue : std::int16_t{0};
}

std::int16_t MidiChannels::GetInstrument(std::int16_t channel) const {
    return state_.ChannelInfo[channel].instrument;
}

void MidiChannels::SetMidiVolume() {
    const auto loud = checkedCast<std::int16_t>(std::int32_t{settings_.volume[0]} * kVolumeStep);
    const auto master = checkedCast<std::int16_t>(loud + kSilence);
    untilFailure([&] { performance().setMasterVolume(master); });
}

void MidiChannels::transpose(double key) {
    untilFailure([&] {
        const int semitones = roundedCast<int>(key);
        for (std::int16_t c = 0; c < kMidiChannels; ++c)
            if (c != kPercussionChannel && state_.ChannelInfo[c].channelNumber != kUnused)
                performance().sendTranspose(0, kReferenceTime, lowByte(c), semitones);
    });
}

void MidiChannels::SetSingleChannel(std::int16_t channel, bool on, std::int16_t volume, std::int16_t balance,
                                    std::int16_t instrument) {
    ChannelSettings& row = state_.ChannelInfo[channel];
    if (row.channelNumber == kUnused) return;
    row.instrumentChanged = row.volumeChanged = row.balanceChanged = kTrue;
    row.instrument = instrument;
    row.volume = on ? volume : std::int16_t{0};
    row.balance = balance;
    row.switchedOn = on ? kTrue : std::int16_t{0};
}

void MidiChannels::ApplyChannelSettings() {
    untilFailure([&] {
        for (std::int16_t c = 0; c < kMidiChannels; ++c) {
            const ChannelSettings& row = state_.ChannelInfo[c];
            if (row.channelNumber == kUnused) continue;
            if (row.instrumentChanged) sendInstrument(c);
            if (row.volumeChanged) {
                sendVolume(c);
                doEvents_();
            }
            if (row.balanceChanged) sendBalance(c);
        }
    });
}

void MidiChannels::MidiRestore() {
    if (!state_.midiLoaded) return;
    for (std::int16_t c = 0; c < kMidiChannels; ++c) {
        ChannelSettings& row = state_.ChannelInfo[c];
        if (row.channelNumber == kUnused) continue;
        const InitialSettings& initial = state_.InitialChannel[c];
        row.shown = kTrue;
        SetSingleChannel(c, true, initial.volume, initial.balance, initial.instrument);
    }
    untilFailure([&] { performance().liftChannelSettings(); });
    updateChannels();
}

}  // namespace melvane
