#include "engine/decode/vorbis_books.h"

#include <ogg/ogg.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <map>
#include <string_view>

namespace melvane::decode {
namespace {

constexpr std::int64_t kMostEntries = 1 << 18;
constexpr std::int64_t kMostValues = 1 << 22;
constexpr std::size_t kMostStreams = 8;  // that wait for their set-up at a time
constexpr long kBlock = 65536;           // bytes
constexpr std::string_view kBegin = "\1vorbis";
constexpr std::string_view kSetUp = "\5vorbis";

// The books that a set-up begins with. What lies behind the end of the packet is 0.
class Books {
public:
    explicit Books(const ogg_packet& setUp) {
        oggpack_readinit(&bits_, setUp.packet, static_cast<int>(setUp.bytes));
        skip(8 * static_cast<long>(kSetUp.size()));
    }

    bool usual() {
        std::int64_t entries = 0;
        std::int64_t values = 0;
        for (long left = read(8) + 1; left > 0 && !ended_; --left) {
            skip(24);
            const long dimensions = read(16);
            const long own = read(24);
            entries += own;
            values += std::int64_t{own} * dimensions;
            if (entries > kMostEntries || values > kMostValues || dimensions == 0) return ended_;
            skipLengths(own);
            skipValues(own, dimensions);
        }
        return true;
    }

private:
    long read(int bits) {
        const long value = oggpack_read(&bits_, bits);
        ended_ = ended_ || value < 0;
        return ended_ ? 0 : value;
    }
    void skip(long bits) { oggpack_adv(&bits_, static_cast<int>(bits)); }

    void skipLengths(long entries) {
        if (read(1)) {
            skip(5);
            while (entries > 0 && !ended_)
                entries -= read(static_cast<int>(std::bit_width(static_cast<unsigned long>(entries))));
            return;
        }
        const bool sparse = read(1) != 0;
        for (; entries > 0; --entries)
            if (!sparse || read(1)) skip(5);
    }

    void skipValues(long entries, long dimensions) {
        const long kind = read(4);
        if (kind == 0) return;
        skip(2 * 32);
        const long bits = read(4) + 1;
        skip(1);
        skip(bits * (kind == 1 ? root(entries, dimensions) : entries * dimensions));
    }

    // The largest number whose power is no larger than `value`.
    static long root(long value, long power) {
        auto candidate = std::lround(std::pow(value, 1.0 / static_cast<double>(power)));
        return std::pow(candidate, power) > static_cast<double>(value) ? candidate - 1 : candidate;
    }

    oggpack_buffer bits_{};
    bool ended_ = false;
};

struct Stream {
    explicit Stream(int serial) { ogg_stream_init(&state, serial); }
    ~Stream() { ogg_stream_clear(&state); }
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

    ogg_stream_state state{};
};

// The streams of a file, page by page.
class Streams {
public:
    Streams() { ogg_sync_init(&sync_); }
    ~Streams() { ogg_sync_clear(&sync_); }
    Streams(const Streams&) = delete;
    Streams& operator=(const Streams&) = delete;

    // False where an unusual set-up is in it.
    bool take(InputFile& file) {
        ogg_page page{};
        while (const std::size_t got = file.read(ogg_sync_buffer(&sync_, kBlock), kBlock)) {
            ogg_sync_wrote(&sync_, static_cast<long>(got));
            while (const int found = ogg_sync_pageout(&sync_, &page))
                if (found > 0 && !takePage(page)) return false;
        }
        return true;
    }

private:
    bool takePage(ogg_page& page) {
        const int serial = ogg_page_serialno(&page);
        if (ogg_page_bos(&page)) {
            waiting_.erase(serial);
            waiting_.try_emplace(serial, serial);
        }
        const auto stream = waiting_.find(serial);
        if (stream == waiting_.end()) return true;
        ogg_stream_pagein(&stream->second.state, &page);
        ogg_packet packet{};
        while (ogg_stream_packetout(&stream->second.state, &packet) == 1) {
            const bool last = begins(packet, kSetUp);
            if (last && !Books(packet).usual()) return false;
            if (!last && (!packet.b_o_s || begins(packet, kBegin))) continue;
            waiting_.erase(stream);
            break;
        }
        return waiting_.size() <= kMostStreams;
    }

    static bool begins(const ogg_packet& packet, std::string_view with) {
        return packet.bytes >= std::ssize(with) && std::memcmp(packet.packet, with.data(), with.size()) == 0;
    }

    ogg_sync_state sync_{};
    std::map<int, Stream> waiting_;
};

}  // namespace

bool hasUsualBooks(InputFile& file) {
    const bool usual = Streams().take(file);
    file.seek(0, SEEK_SET);
    return usual;
}

}  // namespace melvane::decode
