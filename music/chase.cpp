#include "music/chase.h"

#include <algorithm>

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

bool pressesKey(std::uint8_t status) {
    return (status & 0xF0) == kKeyPressure;
}

}  // namespace

void Chase::send(std::int64_t, std::uint8_t status, std::uint8_t data1, std::uint8_t data2) {
    const int kind = status & 0xF0;
    notes_.take(status, data1, data2);
    if (kind == kControlChange && data1 == kResetControllers)
        std::erase_if(messages_, [&](const Message& m) { return m.status == onChannel(kKeyPressure, status & 0x0F); });
    if (kind != kNoteOn && kind != kNoteOff) keep(status, data1, data2);
}

void Chase::sendSysex(std::int64_t, std::span<const std::uint8_t> message) {
    if (isReset(message)) {
        messages_.clear();
        notes_.clear();
    }
    messages_.push_back({kSystemExclusive, 0, 0, {message.begin(), message.end()}});
}

void Chase::keep(std::uint8_t status, std::uint8_t data1, std::uint8_t data2) {
    const bool ofMany = (status & 0xF0) == kControlChange || (status & 0xF0) == kKeyPressure;
    if (!standsWithOthers(status, data1))
        std::erase_if(messages_, [&](const Message& m) { return m.status == status && (!ofMany || m.data1 == data1); });
    messages_.push_back({status, data1, data2, {}});
}

void Chase::tell(MidiSink& sink, std::int64_t frame) const {
    const auto send = [&](std::uint8_t status, std::uint8_t data1, std::uint8_t data2) {
        sink.send(frame, status, data1, data2);
    };
    for (const Message& m : messages_) {
        if (m.status == kSystemExclusive)
            sink.sendSysex(frame, m.sysex);
        else if (!pressesKey(m.status))
            send(m.status, m.data1, m.data2);
    }
    notes_.strikeAgain(send);
    for (const Message& m : messages_)
        if (pressesKey(m.status)) send(m.status, m.data1, m.data2);
}

}  // namespace melvane::music
