#include "music/chase.h"

#include <algorithm>
#include <ranges>

#include "music/midi_messages.h"

namespace melvane::music {

namespace {

// Means something only together with the messages around it.
bool standsWithOthers(std::uint8_t status, std::uint8_t controller) {
    const int kind = status & 0xF0;
    if (kind != kControlChange) return kind == kProgramChange;
    return controller == kBankHigh || controller == kBankLow || controller == kDataEntry ||
           controller == kDataEntry + kFine || (controller >= kDataIncrement && controller <= kParameterHigh);
}

}  // namespace

void Chase::send(std::int64_t, std::uint8_t status, std::uint8_t data1, std::uint8_t data2) {
    const int channel = status & 0x0F;
    switch (status & 0xF0) {
        case kNoteOn:
            if (data2 > 0) return strike(channel, data1, data2);
            return release(channel, data1);
        case kNoteOff:
            return release(channel, data1);
        case kKeyPressure:
            return;
        case kControlChange:
            return control(channel, data1, data2);
        default:
            keep(status, data1, data2);
    }
}

void Chase::sendSysex(std::int64_t, std::span<const std::uint8_t> message) {
    if (isReset(message)) {
        messages_.clear();
        notes_.clear();
        pedals_ = {};
    }
    messages_.push_back({kSystemExclusive, 0, 0, {message.begin(), message.end()}});
}

void Chase::strike(int channel, std::uint8_t key, std::uint8_t velocity) {
    std::erase_if(notes_, [&](const Note& n) { return n.channel == channel && n.key == key; });
    notes_.push_back({channel, key, velocity, true});
}

void Chase::release(int channel, std::uint8_t key) {
    for (Note& note : notes_) note.down = note.down && !(note.channel == channel && note.key == key);
    if (!pedals_[static_cast<std::size_t>(channel)]) pedalUp(channel);
}

void Chase::pedalUp(int channel) {
    pedals_[static_cast<std::size_t>(channel)] = false;
    std::erase_if(notes_, [&](const Note& n) { return n.channel == channel && !n.down; });
}

void Chase::control(int channel, std::uint8_t controller, std::uint8_t value) {
    const bool endsNotes = controller == kAllSoundOff || controller >= kAllNotesOff;
    if (endsNotes) std::erase_if(notes_, [&](const Note& n) { return n.channel == channel; });
    if (controller == kResetControllers || (controller == kSustain && value < 64)) pedalUp(channel);
    if (controller == kSustain && value >= 64) pedals_[static_cast<std::size_t>(channel)] = true;
    keep(onChannel(kControlChange, channel), controller, value);
}

void Chase::keep(std::uint8_t status, std::uint8_t data1, std::uint8_t data2) {
    const bool controls = (status & 0xF0) == kControlChange;
    if (!standsWithOthers(status, data1))
        std::erase_if(messages_,
                      [&](const Message& m) { return m.status == status && (!controls || m.data1 == data1); });
    messages_.push_back({status, data1, data2, {}});
}

void Chase::tell(MidiSink& sink, std::int64_t frame) const {
    for (const Message& m : messages_) {
        if (m.status == kSystemExclusive)
            sink.sendSysex(frame, m.sysex);
        else
            sink.send(frame, m.status, m.data1, m.data2);
    }
    for (const Note& note : notes_) {
        sink.send(frame, onChannel(kNoteOn, note.channel), note.key, note.velocity);
        if (!note.down) sink.send(frame, onChannel(kNoteOff, note.channel), note.key, kReleaseVelocity);
    }
}

}  // namespace melvane::music
