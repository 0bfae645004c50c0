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

}  // namespace

void Chase::send(std::int64_t, std::uint8_t status, std::uint8_t data1, std::uint8_t data2) {
    const int kind = status & 0xF0;
    notes_.take(status, data1, data2);
    if (kind != kNoteOn && kind != kNoteOff && kind != kKeyPressure) keep(status, data1, data2);
}

void Chase::sendSysex(std::int64_t, std::span<const std::uint8_t> message) {
    if (isReset(message)) {
        messages_.clear();
        notes_.clear();
    }
    messages_.push_back({kSystemExclusive, 0, 0, {message.begin(), message.end()}});
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
    notes_.strikeAgain(
        [&](std::uint8_t status, std::uint8_t data1, std::uint8_t data2) { sink.send(frame, status, data1, data2); });
}

}  // namespace melvane::music
