// Messages that wait for their time, in a fixed space. Not safe for several threads at once.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace melvane::music {

class MessageQueue {
public:
    bool empty() const { return read_ == written_; }
    void clear() { read_ = written_; }

    // False, and nothing done, when there is no room.
    bool push(std::int64_t frame, std::span<const std::uint8_t> message) {
        const Head head{frame, message.size()};
        if (written_ - read_ + sizeof(Head) + message.size() > kRoom) return false;
        write(std::bit_cast<HeadBytes>(head));
        write(message);
        return true;
    }

    // The frame of the first message; there must be one.
    std::int64_t firstFrame() const { return head().frame; }

    // Moves the first message to `message`, which is reused; there must be one.
    void pop(std::vector<std::uint8_t>& message) {
        message.resize(head().length);
        read_ += sizeof(Head);
        for (std::uint8_t& byte : message) byte = bytes_[read_++ % kRoom];
    }

private:
    struct Head {
        std::int64_t frame;
        std::size_t length;
    };
    using HeadBytes = std::array<std::uint8_t, sizeof(Head)>;
    static constexpr std::size_t kRoom = std::size_t{1} << 18;

    Head head() const {
        HeadBytes bytes;
        for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = bytes_[(read_ + i) % kRoom];
        return std::bit_cast<Head>(bytes);
    }

    void write(std::span<const std::uint8_t> bytes) {
        for (const std::uint8_t byte : bytes) bytes_[written_++ % kRoom] = byte;
    }

    std::vector<std::uint8_t> bytes_ = std::vector<std::uint8_t>(kRoom);
    std::size_t read_ = 0;
    std::size_t written_ = 0;
};

}  // namespace melvane::music
