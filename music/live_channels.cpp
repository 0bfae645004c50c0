#include "music/live_channels.h"

#include "music/visitor.h"

namespace melvane::music {

void sendPatch(MidiSink& sink, std::int64_t frame, int channel, const Patch& patch) {
    sink.send(frame, onChannel(kControlChange, channel), kBankHigh, patch.bankHigh);
    sink.send(frame, onChannel(kControlChange, channel), kBankLow, patch.bankLow);
    sink.send(frame, onChannel(kProgramChange, channel), patch.program, 0);
}

void sendMasterVolume(MidiSink& sink, std::int64_t frame, int value) {
    const auto low = static_cast<std::uint8_t>(value & 0x7F);
    const auto high = static_cast<std::uint8_t>(value >> 7);
    sink.sendSysex(frame,
                   std::array<std::uint8_t, 8>{kSystemExclusive, 0x7F, 0x7F, 0x04, 0x01, low, high, kExclusiveEnd});
}

void LiveChannels::keep(const LiveMessage& message) {
    std::visit(Visitor{
                   [&](const PatchMessage& m) { channels_[m.channel].patch = m.patch; },
                   [&](const ShortMessage& m) { keepShort(m); },
                   [&](const TransposeMessage& m) {
                       if (m.channel != kPercussionChannel) channels_[m.channel].semitones = m.semitones;
                   },
                   [&](const SoloMessage& m) { soloed_ = m.channels; },
                   [&](const LiftMessage&) {
                       for (Channel& channel : channels_) channel = {.semitones = channel.semitones};
                   },
                   [&](const MasterVolumeMessage& m) { masterVolume_ = m.value; },
               },
               message);
}

void LiveChannels::keepShort(const ShortMessage& message) {
    if ((message.status & 0xF0) != kControlChange) return;
    Channel& channel = channels_[message.status & 0x0F];
    if (message.data1 == kVolumeController) channel.volume = message.data2;
    if (message.data1 == kBalanceController) channel.balance = message.data2;
}

bool LiveChannels::overrides(const SongEvent& event) const {
    const Channel& channel = channels_[event.status & 0x0F];
    const int kind = event.status & 0xF0;
    if (kind == kProgramChange) return channel.patch.has_value();
    if (kind != kControlChange) return false;
    switch (event.data1) {
        case kBankHigh:
        case kBankLow:
            return channel.patch.has_value();
        case kVolumeController:
        case kVolumeController + kFine:
            return channel.volume.has_value() || silenced(event.status & 0x0F);
        case kBalanceController:
        case kBalanceController + kFine:
            return channel.balance.has_value();
        default:
            return false;
    }
}

bool LiveChannels::silences(const ShortMessage& message) const {
    return (message.status & 0xF0) == kControlChange && message.data1 == kVolumeController &&
           silenced(message.status & 0x0F);
}

void LiveChannels::sendVolumes(MidiSink& sink, std::int64_t frame) const {
    for (int channel = 0; channel < kMidiChannels; ++channel) sendVolume(sink, frame, channel);
}

void LiveChannels::sendVolume(MidiSink& sink, std::int64_t frame, int channel) const {
    const std::optional<std::uint8_t> volume =
        silenced(channel) ? std::uint8_t{0} : channels_[static_cast<std::size_t>(channel)].volume;
    if (volume) sink.send(frame, onChannel(kControlChange, channel), kVolumeController, *volume);
}

void LiveChannels::sendSettings(MidiSink& sink, std::int64_t frame, int index) const {
    const Channel& channel = channels_[static_cast<std::size_t>(index)];
    const std::uint8_t control = onChannel(kControlChange, index);
    if (channel.patch) sendPatch(sink, frame, index, *channel.patch);
    sendVolume(sink, frame, index);
    if (channel.balance) sink.send(frame, control, kBalanceController, *channel.balance);
}

void LiveChannels::sendSettings(MidiSink& sink, std::int64_t frame) const {
    for (int channel = 0; channel < kMidiChannels; ++channel) sendSettings(sink, frame, channel);
    if (masterVolume_) sendMasterVolume(sink, frame, *masterVolume_);
}

}  // namespace melvane::music
