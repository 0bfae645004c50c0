// Outlines of files that were read once, kept in a folder of the user's until they change. It holds so much at most;
// the ones that were not looked at for longest go.
//
// Any thread, and several programs at once. What can't be kept, or read again, is as if it had never been kept.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "rehearsal/waveform_pyramid.h"

namespace melvane {

class OutlineCache {
public:
    static constexpr std::uintmax_t kMostBytes = 64 << 20;

    // UTF-8; "": nothing is kept. The folder need not be there yet.
    explicit OutlineCache(std::string folder, std::uintmax_t mostBytes = kMostBytes)
        : folder_(std::move(folder)), mostBytes_(mostBytes) {}

    // A file as it is now.
    struct Key {
        std::string path;  // UTF-8
        std::uint64_t size = 0;
        std::int64_t changed = 0;  // as its file system counts

        bool operator==(const Key&) const = default;
    };
    static Key keyOf(const std::string& path);

    // nullptr where there is none.
    std::shared_ptr<WaveformPyramid> find(const Key& key) const;
    // A finished one. Readers see all of it or nothing.
    void keep(const Key& key, const WaveformPyramid& outline) const;

private:
    std::string placeOf(const Key& key) const;
    void makeRoom() const;

    std::string folder_;
    std::uintmax_t mostBytes_;
};

}  // namespace melvane
