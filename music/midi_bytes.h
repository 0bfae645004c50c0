// Reading from the front of a piece of a MIDI file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace melvane::music {

class MidiBytes {
public:
    explicit MidiBytes(std::span<const std::uint8_t> bytes) : rest_(bytes) {}

    bool empty() const { return rest_.empty(); }
    // More was asked for than there was; what was given then counts for nothing.
    bool overrun() const { return overrun_; }

    std::span<const std::uint8_t> take(std::size_t count) {
        if (count > rest_.size()) {
            overrun_ = true;
            count = rest_.size();
        }
        const auto taken = rest_.first(count);
        rest_ = rest_.subspan(count);
        return taken;
    }
    std::uint8_t byte() {
        const auto taken = take(1);
        return taken.empty() ? std::uint8_t{0} : taken.front();
    }
    // Whether the next byte is a data byte, without the high bit.
    bool dataByteNext() const { return !rest_.empty() && rest_.front() < 0x80; }

    std::uint32_t bigEndian(int bytes) {
        std::uint32_t value = 0;
        while (bytes-- > 0) value = value << 8 | byte();
        return value;
    }
    // Seven bits a byte, the last one without its high bit; at most four bytes.
    std::uint32_t variableLength() {
        std::uint32_t value = 0;
        for (int i = 0; i < 4; ++i) {
            const std::uint8_t next = byte();
            value = value << 7 | (next & 0x7FU);
            if (next < 0x80) break;
        }
        return value;
    }

private:
    std::span<const std::uint8_t> rest_;
    bool overrun_ = false;
};

}  // namespace melvane::music
